// The simulated broker, its account book, and the text tables that show its answers.
#include "broker/broker.h"

#include <gtest/gtest.h>

#include <optional>

#include "base/data_table.h"
#include "base/json_object.h"
#include "base/text.h"
#include "broker/account_tables.h"
#include "messaging/queue_data.h"
#include "page/text_table.h"

namespace terminal {
namespace {

using luadui::CDataTable;
using luadui::CJsonObject;
using luadui::CQueueReqItem;
using luadui::CUIData;
using luadui::Gbk;
using std::chrono::milliseconds;

class BrokerTest : public testing::Test {
  protected:
    BrokerTest() { m_broker.Start(); }

    CQueueReqItem Query(int type, const char* fundToken, const char* flag = "") {
        CQueueReqItem request;
        request.SetData("REQTYPE", type);
        request.SetData("FundToken", fundToken);
        request.SetData("From", "77");
        request.SetData("UUID", "u1");
        CUIData params;
        params.SetData(flag, "true");
        request.SetData("Params", params);
        return request;
    }
    // The next record that the broker delivers within `limit`.
    std::optional<CUIData> Next(milliseconds limit = milliseconds(2000)) {
        std::unique_lock lock(m_mutex);
        if (!m_arrived.wait_for(lock, limit, [&] { return !m_records.empty(); })) return std::nullopt;
        CUIData record = m_records.front();
        m_records.pop_front();
        return record;
    }
    CUIData Ask(const CUIData& request) {
        EXPECT_TRUE(m_broker.Submit(request));
        return Next().value_or(CUIData());
    }

    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<CUIData> m_records;
    Broker m_broker{[this](CUIData& record) {
        std::lock_guard lock(m_mutex);
        m_records.push_back(record);
        m_arrived.notify_all();
    }};
};

int ErrorCode(const CUIData& answer) {
    CJsonObject error;
    answer.GetData("JsonData", error);
    return static_cast<int>(error.GetLong("retcode"));
}

TEST_F(BrokerTest, AnswersCarryWhatTheLibraryRoutesBy) {
    CQueueReqItem request = Query(1201, "880001");
    ASSERT_TRUE(m_broker.Submit(request));
    request.SetData("UUID", "changed after sending");
    const CUIData answer = Next().value_or(CUIData());
    EXPECT_EQ(answer.GetDataText("To"), "77");
    EXPECT_EQ(answer.GetDataText("UUID"), "u1");
    EXPECT_EQ(answer.GetDataText("FundToken"), "880001");
    EXPECT_EQ(answer.GetDataLong("REQTYPE"), 1201);
    EXPECT_EQ(answer.GetDataLong("DATATYPE"), 2002);
    CUIData sent;
    ASSERT_TRUE(answer.GetData("Request", sent));
    EXPECT_EQ(sent.GetDataText("UUID"), "u1");
    CDataTable table;
    ASSERT_TRUE(answer.GetData("Table", table));
    EXPECT_EQ(table.GetRowNumber(), 3);
}

TEST_F(BrokerTest, AnswersEachKindUnderItsDataType) {
    struct Case {
        int type;
        const char* fundToken;
        int dataType;
        int rows;            // -1: no table
        const char* column;  // that the library's lists look for
    };
    constexpr Case kCases[] = {
        {1034, "", 2007, 3, "fund_token"},
        {1035, "", 2008, 2, "account"},
        {1099, "", 2001, -1, ""},
        {1201, "880002", 2002, 1, "TotalAssets"},
        {1202, "880003", 2003, 0, "SecurityID"},
        {1203, "880001", 2004, 0, "ExecID"},
        {1204, "880001", 2005, 0, "OrderID"},
        {1250, "880001", 2001, 0, "Balance"},
    };
    for (const Case& test : kCases) {
        const CUIData answer = Ask(Query(test.type, test.fundToken));
        CDataTable table;
        EXPECT_EQ(answer.GetDataLong("DATATYPE"), test.dataType) << test.type;
        EXPECT_EQ(ErrorCode(answer), 0) << test.type;
        EXPECT_EQ(answer.GetData("Table", table), test.rows >= 0) << test.type;
        if (test.rows < 0) continue;
        EXPECT_EQ(table.GetRowNumber(), test.rows) << test.type;
        EXPECT_GE(table.FindColumn(test.column), 0) << test.type;
    }
}

TEST_F(BrokerTest, PushesWhatAnOrderChanged) {
    CQueueReqItem order = Query(1101, "880002");
    CUIData params;
    for (const auto& [key, value] :
         {std::pair{"stock_code", "601398"}, {"entrust_amount", "500"}, {"entrust_type", "sell"}})
        params.SetData(key, value);
    order.SetData("Params", params);
    CJsonObject created;
    ASSERT_TRUE(Ask(order).GetData("JsonData", created));
    EXPECT_EQ(created.GetText("OrderID"), "W1");
    for (const char* topic : {"Entrust|880002", "Trade|880002", "Fund|880002", "Position|880002"}) {
        const CUIData push = Next().value_or(CUIData());
        CDataTable table;
        EXPECT_EQ(push.GetDataText("Topic"), topic);
        EXPECT_EQ(push.GetDataText("To"), "CLIENT_CACHE");
        ASSERT_TRUE(push.GetData("Table", table)) << topic;
        if (table.FindColumn("OrderID") >= 0) {
            EXPECT_EQ(table.GetItemText(0, "OrderID"), "W1") << topic;
        }
    }
    params.SetData("entrust_amount", "9000");
    order.SetData("Params", params);
    EXPECT_EQ(ErrorCode(Ask(order)), -110);
    EXPECT_FALSE(Next(milliseconds(50)));
}

TEST_F(BrokerTest, RefusesWhatItCannotAnswer) {
    struct Case {
        int type;
        const char* fundToken;
        int code;
    };
    for (const Case& test : {Case{1201, "none", -101},
                             {1202, "", -101},
                             {1101, "880001", -110},
                             {9999, "880001", -102},
                             {0, "", -102}})
        EXPECT_EQ(ErrorCode(Ask(Query(test.type, test.fundToken))), test.code) << test.type;
    EXPECT_EQ(ErrorCode(Ask(CUIData())), -102);
}

TEST_F(BrokerTest, TellsSubscribersUntilTheyLeave) {
    std::string error;
    Ask(Query(1202, "880001", "isSub"));
    Ask(Query(1202, "880001", "isSub"));  // twice is once
    ASSERT_TRUE(m_broker.Trade("880001", "600000", 100, error)) << error;
    const CUIData notice = Next().value_or(CUIData());
    EXPECT_EQ(notice.GetDataLong("DATATYPE"), 2010);
    EXPECT_EQ(notice.GetDataLong("REQTYPE"), 1202);
    EXPECT_EQ(notice.GetDataText("To"), "77");
    EXPECT_EQ(notice.GetDataType("Request"), luadui::kDataAbsent);
    for (int push = 0; push < 4; ++push)
        EXPECT_EQ(Next().value_or(CUIData()).GetDataText("To"), "CLIENT_CACHE");
    m_broker.Submit(Query(1202, "880001", "unsub"));
    ASSERT_TRUE(m_broker.Trade("880001", "600000", 100, error)) << error;
    for (int push = 0; push < 4; ++push)
        EXPECT_FALSE(Next().value_or(CUIData()).GetDataText("Topic").empty());
    EXPECT_FALSE(Next(milliseconds(50)));
}

TEST_F(BrokerTest, ShowsFaultsInTheirOrder) {
    m_broker.PlanFault(Fault::kDelay, 1, milliseconds(30));
    m_broker.PlanFault(Fault::kSilence, 1, {});
    m_broker.PlanFault(Fault::kError, 1, {});
    for (const char* token : {"880001", "880002", "880003"}) m_broker.Submit(Query(1201, token));
    EXPECT_EQ(ErrorCode(Next().value_or(CUIData())), -150);  // overtakes the delayed one
    EXPECT_EQ(Next().value_or(CUIData()).GetDataText("FundToken"), "880001");
    m_broker.PlanFault(Fault::kFailure, 1, {});
    const CUIData failure = Ask(Query(1201, "880001"));
    EXPECT_EQ(failure.GetDataLong("DATATYPE"), -1);
    EXPECT_EQ(ErrorCode(failure), -150);
    m_broker.PlanFault(Fault::kGarbage, 4, {});
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Ask(Query(1201, "880001")).GetDataText("To"), "77");
    CDataTable table;
    EXPECT_TRUE(Ask(Query(1201, "880001")).GetData("Table", table));
    EXPECT_FALSE(Next(milliseconds(20)));
}

TEST_F(BrokerTest, StopsWithWorkWaiting) {
    m_broker.PlanFault(Fault::kDelay, 100, milliseconds(60'000));
    for (int i = 0; i < 100; ++i) m_broker.Submit(Query(1201, "880001"));
    m_broker.Stop();
    EXPECT_FALSE(m_broker.Submit(Query(1201, "880001")));
    std::string error;
    EXPECT_FALSE(m_broker.Trade("880001", "600000", 100, error));
    EXPECT_TRUE(m_broker.Accounts().empty());
}

TEST(AccountBook, TradesOnlyWhatIsThere) {
    struct Case {
        const char* fundToken;
        const char* code;
        Shares volume;
        bool done;
    };
    const Case cases[] = {
        {"880002", "601398", 100, true},        {"880002", "601398", -8000, true},
        {"880002", "601398", -1, false},  // what is left was bought today
        {"880002", "000001", 0, false},         {"880002", "600519", 100, false},
        {"none", "601398", 100, false},         {"880002", "000001", 100'000, false},
        {"880002", "000001", 1LL << 60, false}, {"880002", "000001", -(1LL << 60), false},
        {"880002", "000001", -2600, true},
    };
    AccountBook book;
    std::string error;
    for (const Case& test : cases)
        EXPECT_EQ(book.Trade(test.fundToken, test.code, test.volume, error), test.done)
            << test.code << test.volume;
    const Account& account = *book.Find("880002");
    ASSERT_EQ(account.positions.size(), 1U);
    EXPECT_EQ(account.positions[0].volume, 100);
    EXPECT_EQ(account.funds[0].available, 5'240'033 - 68'700 + 5'496'000 + 3'000'400);
    EXPECT_EQ(FundTable(account).GetItemText(0, "TotalAssets"), "137364.33");
}

TEST(TextTable, AlignsAndSurvivesBrokenText) {
    TextTable table;
    table.AddColumn(Gbk("名称"), TextTable::Align::kLeft);
    table.AddColumn("N", TextTable::Align::kRight);
    table.AddRow({Gbk("浦发银行"), TextTable::Grouped("-1234567.80")});
    table.AddRow({"a\nb\x1B[2J\xB0", "1", "dropped"});
    table.AddRow({std::string(60, 'x')});
    EXPECT_EQ(luadui::GbkToUtf8(table.ToText(0, 8)),
              "名称             N\n--------  --------\n浦发银行  -1,234,5\na b [2J?         1\nxxxxxxxx\n");
    EXPECT_EQ(luadui::GbkToUtf8(table.ToText(3)), "名\n---\n浦\na b\nxxx\n");
    for (const char* text : {"", "-", "12", "abc", "-12", "1.2345"})
        EXPECT_EQ(TextTable::Grouped(text), text);
    EXPECT_EQ(TextTable::Grouped("1234"), "1,234");
}

}  // namespace
}  // namespace terminal
