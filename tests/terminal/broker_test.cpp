// The simulated broker, its account book, and the text tables that show its answers.
#include "broker/broker.h"

#include <gtest/gtest.h>

#include <optional>

#include "base/data_table.h"
#include "base/json_object.h"
#include "base/text.h"
#include "broker/account_tables.h"
#include "broker/books.h"
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
        {1034, "", 2007, 4, "trade_type"},
        {1035, "", 2008, 2, "account"},
        {1099, "", 2001, -1, ""},
        {1201, "880002", 2002, 1, "TotalAssets"},
        {1202, "880003", 2003, 0, "SecurityID"},
        {1203, "880001", 2004, 0, "ExecID"},
        {1204, "880001", 2005, 0, "OrderID"},
        {1205, "990001", 2002, 1, "FinEnableQuota"},
        {1228, "", 2001, 0, ""},
        {1250, "880001", 2001, 0, "Balance"},
        {131078, "", 2001, 2, "Currency"},
        {131087, "", 2001, 11, "GGT_JCZ"},
    };
    for (const Case& test : kCases) {
        const CUIData answer = Ask(Query(test.type, test.fundToken));
        CDataTable table;
        EXPECT_EQ(answer.GetDataLong("DATATYPE"), test.dataType) << test.type;
        EXPECT_EQ(ErrorCode(answer), 0) << test.type;
        EXPECT_EQ(answer.GetData("Table", table), test.rows >= 0) << test.type;
        if (test.rows < 0) continue;
        EXPECT_EQ(table.GetRowNumber(), test.rows) << test.type;
        EXPECT_TRUE(!*test.column || table.FindColumn(test.column) >= 0) << test.type;
    }
}

// An order, its deals and its end, as the client hears of them: topic, then status, dealt volume or "".
TEST_F(BrokerTest, PushesWhatAnOrderChanged) {
    CQueueReqItem order = Query(1101, "880002");
    CUIData params;
    for (const auto& [key, value] : {std::pair{"stock_code", "601398"},
                                     {"entrust_amount", "6000"},
                                     {"entrust_type", "sell"},
                                     {"InstanceID", "B1"},
                                     {"TaskID", "T1"}})
        params.SetData(key, value);
    order.SetData("Params", params);
    CJsonObject created;
    ASSERT_TRUE(Ask(order).GetData("JsonData", created));
    EXPECT_EQ(created.GetText("OrderID"), "W1");
    const std::vector<std::string> expected = {"Entrust|880002 未成交 0",
                                               "entrustret 未成交 0",
                                               "Position|880002",
                                               "Fund|880002",
                                               "Entrust|880002 部分成交 5000",
                                               "entrustret 部分成交 5000",
                                               "Trade|880002 5000",
                                               "traderet 5000",
                                               "Position|880002",
                                               "Fund|880002",
                                               "Entrust|880002 全部成交 6000",
                                               "entrustret 全部成交 6000",
                                               "Trade|880002 1000",
                                               "traderet 1000",
                                               "Position|880002",
                                               "Fund|880002"};
    const auto heard = [](const CUIData& push) {
        CDataTable table;
        push.GetData("Table", table);
        std::string text = push.GetDataString("Topic");
        for (const char* column : {"OrderStatus", "DealVolume", "TradeVolume"})
            if (table.FindColumn(column) >= 0) text.append(" ").append(table.GetItemText(0, column));
        return luadui::GbkToUtf8(text);
    };
    for (const std::string& text : expected) {
        const CUIData push = Next().value_or(CUIData());
        EXPECT_EQ(push.GetDataText("To"), "CLIENT_CACHE");
        EXPECT_EQ(heard(push), text);
        CJsonObject fields;
        if (!text.starts_with("entrustret")) continue;
        ASSERT_TRUE(fields.Parse(push.GetDataText("RawData")));
        EXPECT_EQ(fields.GetText("from"), "topic.oms.order");
        EXPECT_EQ(fields.GetText("LocalID"), "L1");
        EXPECT_EQ(fields.GetText("InstanceID"), "B1");
    }
    EXPECT_EQ(m_broker.Replay(), 10);
    EXPECT_EQ(heard(Next().value_or(CUIData())), expected[0]);
    for (int push = 1; push < 10; ++push) EXPECT_TRUE(Next());

    CQueueReqItem detail = Query(1228, "");
    detail.SetData("Params", params);
    const CUIData answer = Ask(detail);
    CDataTable orders;
    CJsonObject arrays;
    ASSERT_TRUE(answer.GetData("Table", orders) && arrays.Parse(answer.GetDataText("RawData")));
    EXPECT_EQ(orders.GetRowNumber(), 1);
    EXPECT_EQ(arrays.GetArray("DealOrderArray").Size(), 2U);
    EXPECT_EQ(arrays.GetArray("PendingOrderArray").Size(), 1U);

    for (const auto& [key, value] : {std::pair{"entrust_amount", "9000"}, {"entrust_price", "1e3"}}) {
        params.SetData(key, value);
        order.SetData("Params", params);
        EXPECT_EQ(ErrorCode(Ask(order)), -110) << key;
    }
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
                             {1151, "880001", -110},
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
    for (int push = 0; push < 6; ++push)
        EXPECT_EQ(Next().value_or(CUIData()).GetDataText("To"), "CLIENT_CACHE");
    m_broker.Submit(Query(1202, "880001", "unsub"));
    ASSERT_TRUE(m_broker.Trade("880001", "600000", 100, error)) << error;
    for (int push = 0; push < 6; ++push)
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

TEST(Exchange, TradesOnlyWhatIsThere) {
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
        {"880002", "000001", -2600, true},      {"880002", "none", 100, false},
    };
    Exchange exchange;
    std::string error;
    for (const Case& test : cases)
        EXPECT_EQ(exchange.Trade(test.fundToken, test.code, test.volume, error), test.done)
            << test.code << test.volume;
    const Account& account = *exchange.Book().Find("880002");
    ASSERT_EQ(account.positions.size(), 1U);
    EXPECT_EQ(account.positions[0].volume, 100);
    EXPECT_EQ(account.funds[0].available, 5'240'033 - 68'700 + 5'496'000 + 3'000'400);
    EXPECT_EQ(FundTable(account).GetItemText(0, "TotalAssets"), "137364.33");
    // 8,000 and 2,600 shares fell from 6.90 and 11.62 to 6.87 and 11.54; those bought today did not move.
    EXPECT_EQ(FundTable(account).GetItemText(0, "DayProfit"), "-448.00");
}

struct Sent {
    const char* account;
    const char* code;
    Shares volume;  // below 0: sale
    const char* price;
    const char* error;     // of the order; then the rest does not matter
    const char* statuses;  // after one, two and three steps, and cancelled after that
};

// All orders of a row of scenarios are there before the first step.
TEST(Exchange, MatchesByPriceAndTime) {
    const std::vector<std::vector<Sent>> scenarios = {
        // The market takes 5,000 a step.
        {{"880001", "600000", -12'000, "10.300", "",
          "部分成交 5000;部分成交 10000;全部成交 12000;全部成交 12000"}},
        // Too far from the market, then cancelled.
        {{"880003", "600000", 1'000, "9.500", "", "未成交 0;未成交 0;未成交 0;全部撤单 0"}},
        {{"880003", "600000", 1'000, "9.278", "", "废单 0;废单 0;废单 0;废单 0"}},  // 10 % of 10.31 is 1.031
        {{"880001", "688981", -200, "110.160", "", "未成交 0;未成交 0;未成交 0;全部撤单 0"}},
        // The better price first: the market's, then the second order's, then the first one's.
        {{"880001", "600000", -300, "10.500", "", "全部成交 300;全部成交 300;全部成交 300;全部成交 300"},
         {"880001", "600000", -300, "10.450", "", "全部成交 300;全部成交 300;全部成交 300;全部成交 300"},
         {"880003", "600000", 20'000, "10.500", "",
          "部分成交 5600;部分成交 10600;部分成交 15600;部分撤单 15600"}},
        // At equal prices the earlier one, and accounts before the market.
        {{"880001", "600000", -300, "10.480", "", "全部成交 300;全部成交 300;全部成交 300;全部成交 300"},
         {"880001", "600000", -300, "10.480", "", "部分成交 100;部分成交 100;部分成交 100;部分撤单 100"},
         {"880003", "600000", 5'400, "10.480", "",
          "全部成交 5400;全部成交 5400;全部成交 5400;全部成交 5400"}},
        // Nobody trades with himself.
        {{"880001", "600000", -300, "10.400", "", "未成交 0;未成交 0;未成交 0;全部撤单 0"},
         {"880001", "600000", 300, "10.340", "", "未成交 0;未成交 0;未成交 0;全部撤单 0"}},
        {{"880002", "600519", 100, "", "not enough money", ""},
         {"880002", "601398", -8'100, "", "not enough shares", ""},
         {"880002", "601398", -150, "", "the volume is not a multiple of the lot", ""},
         {"880002", "000002", 100, "", "no such security", ""},
         {"880002", "900905", 100, "", "not enough money", ""},  // no dollars
         {"880002", "601398", 100, "0", "the price is out of range", ""}}};
    for (const auto& scenario : scenarios) {
        Exchange exchange;
        std::string error;
        for (const Sent& sent : scenario) {
            error.clear();
            exchange.Accept(sent.account,
                            {.code = sent.code,
                             .volume = std::abs(sent.volume),
                             .isSale = sent.volume < 0,
                             .price = ParsePrice(sent.price)},
                            error);
            EXPECT_EQ(error, sent.error) << sent.code << sent.volume;
        }
        std::map<std::string, std::string> seen;
        for (int step = 0; step < 4; ++step) {
            if (step < 3) exchange.Step();
            for (const Account& account : exchange.Book().Accounts()) {
                for (const Order& order : account.orders) {
                    if (step == 3) exchange.Cancel(account.fundToken, order.id, error);
                    seen[order.id].append(step > 0 ? ";" : "").append(luadui::GbkToUtf8(StatusOf(order)));
                    seen[order.id].append(" ").append(std::to_string(order.dealt));
                }
            }
        }
        size_t number = 0;
        for (const Sent& sent : scenario) {
            if (*sent.error) continue;
            EXPECT_EQ(seen["W" + std::to_string(++number)], sent.statuses) << sent.code << sent.volume;
        }
        const AccountBook opening;
        // Nothing is held for orders that ended, and no cent got lost.
        for (const Account& account : exchange.Book().Accounts()) {
            const Account& before = *opening.Find(account.fundToken);
            Cents money = before.funds[0].available;
            for (const Deal& deal : account.deals) money += deal.isSale ? deal.Amount() : -deal.Amount();
            EXPECT_EQ(account.funds[0].available, money) << account.id;
            EXPECT_EQ(account.funds[0].frozen, before.funds[0].frozen) << account.id;
        }
    }
}

TEST(Exchange, HoldsMoneyWhileAnOrderIsOpen) {
    Exchange exchange;
    std::string error;
    ASSERT_TRUE(exchange.Accept("880003", {.code = "600000", .volume = 6'000, .price = 10'400}, error));
    const Fund& fund = exchange.Book().Find("880003")->funds[0];
    EXPECT_EQ(fund.frozen, 6'240'000);
    exchange.Step();  // 5,000 at 10.36
    EXPECT_EQ(fund.frozen, 1'040'000);
    EXPECT_EQ(fund.available, 100'000'000 - 5'180'000 - 1'040'000);
    exchange.TakeChanges();
    ASSERT_TRUE(exchange.SetPrice("600000", 10'500));
    EXPECT_EQ(exchange.TakeChanges().size(), 2U);  // who holds it
    const CUIData totals = TotalsOf(*exchange.Book().Find("880003"));
    EXPECT_EQ(totals.GetDataLong("CNY_assets"), 100'000'000 + 5'000 * 14);
    EXPECT_EQ(totals.GetDataLong("CNY_day_profit"), 5'000 * 14);
    EXPECT_EQ(totals.GetDataLong("open_orders"), 1);
    EXPECT_EQ(totals.GetDataLong("turnover"), 5'180'000);
}

TEST(Money, ReadsPrices) {
    for (const char* text :
         {"", ".", "1.", ".5", "-1", "1e3", "1.2345", "1,000", "100000.001", "99999999999999999999"})
        EXPECT_FALSE(ParsePrice(text)) << text;
    EXPECT_EQ(ParsePrice("10.36"), 10'360);
    EXPECT_EQ(ParsePrice("7"), 7'000);
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
