#include "datamgr/push_routes.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "base/counters.h"
#include "datamgr/quote_names.h"
#include "datamgr/ui_registry.h"
#include "tests/datamgr/push_cases.h"
#include "tests/datamgr/traffic.h"

namespace luadui {
namespace {

// "RawData", or nothing, and the text of a table, or nothing; the server is always named.
CQueueRespData PushOf(std::string_view text) {
    CQueueRespData push = ResponseOf(text);
    push.Remove("JsonData");
    push.SetData("RawData", text.substr(0, text.rfind('}') + 1));
    push.SetData("SrcServer", "s");
    return push;
}

class PushRoutesTest : public testing::Test {
  protected:
    PushRoutesTest() {
        for (const PushRoute& route : PushRoutes()) {
            for (const auto kind : route.kinds)
                m_manager.RegisterNotify(m_window.GetHandle(), std::string(kind));
        }
        // Pushes count for accounts that were asked for.
        for (const KindType& row : TypeCodes()) {
            if (m_manager.Lists().FindOrMake(row.kind))
                m_manager.Answer({row.type, std::string(row.kind)}, "No");
        }
        m_window.Take();
    }

    std::string Pushed(std::string_view topic, CQueueRespData push) {
        m_manager.Push(topic, std::move(push));
        return m_window.Take();
    }

    TestManager m_manager;
    Receiver m_window;
};

TEST_F(PushRoutesTest, TheListenersReceive) {
    std::set<std::string_view> keys;
    for (const auto& row : kPushCases) {
        EXPECT_EQ(Pushed(row.topic, PushOf(row.push)),
                  ReplaceText(row.records, "/", std::string(kPushEnd + 1) + " /") + kPushEnd)
            << row.topic;
        const PushRoute* const route = FindPushRoute(row.topic);
        if (route) keys.insert(route->key);
    }
    for (const std::string_view kind : kQuoteKinds) {  // told at ticks
        EXPECT_EQ(Pushed(kind, PushOf("3,4,10;17,600000,1")), "");
        if (FindPushRoute(kind)) keys.insert(kind);
    }
    EXPECT_EQ(keys.size(), PushRoutes().size());
}

TEST(PushRouteTest, TopicsMatchWholeOrUpToTheirFirstBar) {
    constexpr std::pair<const char*, const char*> kTopics[] = {
        {"Fund|F1", "Fund|"},
        {"Fund|", "Fund|"},
        {"Fund|F1|x", "Fund|"},
        {"Fund", nullptr},
        {"fund|F1", nullptr},
        {"xFund|F1", nullptr},
        {"|", nullptr},
        {"", nullptr},
        {"entrustret", "entrustret"},
        {"entrustret|F1", nullptr},
        {"FundCredit|F1", "FundCredit|"},
    };
    for (const auto& [topic, key] : kTopics) {
        const PushRoute* const route = FindPushRoute(topic);
        EXPECT_EQ(route ? route->key : "", std::string_view(key ? key : "")) << topic;
    }
}

TEST_F(PushRoutesTest, ListsDecideWhatIsPublished) {
    constexpr char kEnd[] = " fund_token=F1 handle=-1 ret_code=0 ret_message=";
    const auto published = [&](std::string_view rows, std::string_view table) {
        std::string text;
        for (const std::string kind : {"entrustpush", "entrustmulti", "entrust"}) {
            const std::string_view cells = kind == "entrust" ? table : rows;
            if (cells.empty()) continue;
            text += (text.empty() ? "" : " / ") + kind + ' ' + kind + "=[" + std::string(cells) + ']' + kEnd;
        }
        return text;
    };
    const uint64_t unknown = CCounters::Get("push_for_unqueried_account");
    CQueueRespData push;
    push.SetData("Table", TableOf("OrderID,No;O1,1"));
    EXPECT_EQ(Pushed("Entrust|F9", push), "");  // never asked for
    EXPECT_EQ(CCounters::Get("push_for_unqueried_account"), unknown + 1);
    EXPECT_EQ(Pushed("Entrust|F1", push), published("No,OrderID|1,O1", "No,OrderID|1,O1"));
    // Others may not know what the list does.
    EXPECT_EQ(Pushed("Entrust|F1", push), published("No,OrderID|1,O1", "No,OrderID|1,O1"));
    push.SetData("Table", TableOf("OrderID;O2"));
    EXPECT_EQ(Pushed("Entrust|F1", push), published("No,OrderID|,O2", "No,OrderID|1,O1|,O2"));
    EXPECT_EQ(Describe(m_manager.GetData("entrust").GetDataView("F1")), "[No,OrderID|1,O1|,O2]");

    // While the account's first query is under way the push is news at once, and part of the answer later.
    push.SetData("Table", TableOf("OrderID,No;O1,1"));
    const auto ask =
        m_manager.Send({.type = 1204, .kind = "entrust", .fundToken = "F2", .handle = m_window.GetHandle()});
    EXPECT_EQ(Pushed("Entrust|F2", push), ReplaceText(published("OrderID,No|O1,1", ""), "F1", "F2"));
    m_manager.Answer(ask, ResponseOf("OrderID,No;O1,0;O2,0"));
    EXPECT_EQ(m_window.Take(),
              "entrust entrust=[OrderID,No|O1,1|O2,0] fund_token=F2 handle=H ret_code=0 ret_message=");

    // Where that query fails, nothing is left for the push to wait for.
    const auto failing = m_manager.Send({.type = 1204, .kind = "entrust", .fundToken = "F3"});
    Pushed("Entrust|F3", push);
    EXPECT_EQ(CCounters::Get("push_for_unqueried_account"), unknown + 1);
    m_manager.Answer(failing, ResponseOf(R"({"retcode":1})"));
    EXPECT_EQ(CCounters::Get("push_for_unqueried_account"), unknown + 2);
}

// The query for the funds of all accounts names none of them.
TEST_F(PushRoutesTest, PushesOutrunTheAnswerForAllAccounts) {
    const uint64_t unknown = CCounters::Get("push_for_unqueried_account");
    const auto push = PushOf("Currency,TotalAssets;CNY,50");
    for (const char* answer : {R"({"retcode":1})", "fund_token,Currency,TotalAssets;F5,CNY,100"}) {
        const auto ask = m_manager.Send({.type = 131093, .kind = "all_fund", .fundToken = ""});
        m_manager.Push("Fund|F5", push);
        m_manager.Push("Fund|F6", push);
        m_manager.Answer(ask, ResponseOf(answer));
    }
    const CUIData funds = m_manager.GetData("fund");
    EXPECT_EQ(Describe(funds.GetDataView("F5")), "[fund_token,Currency,TotalAssets|,CNY,50]");
    EXPECT_FALSE(funds.Has("F6"));
    EXPECT_EQ(CCounters::Get("push_for_unqueried_account"), unknown + 3);  // the answers lack them
}

TEST_F(PushRoutesTest, FailedPushesChangeNothing) {
    const uint64_t before = CCounters::Get("push_failed_not_merged");
    m_manager.Answer({1201, "fund"}, "Currency,TotalAssets;CNY,6");
    m_window.Take();
    EXPECT_EQ(Pushed("Fund|F1", PushOf(R"({"retcode":3,"msg":"m"}Currency,TotalAssets;CNY,0)")),
              "fund retcode=3 msg=m SrcServer=s fund=[Currency,TotalAssets|CNY,0] fund_token=F1 handle=-1 "
              "ret_code=3 ret_message=m");
    EXPECT_EQ(Describe(m_manager.GetData("fund").GetDataView("F1")), "[Currency,TotalAssets|CNY,6]");
    EXPECT_EQ(CCounters::Get("push_failed_not_merged"), before + 1);
}

// The rows may be the "Table", an array among the fields of "RawData", or "RawData" itself; fields may come
// in three places.
TEST_F(PushRoutesTest, WhatAPushIsMadeOf) {
    struct {
        const char *topic, *rawData, *json, *mapData;
        const char* records;
    } const kCases[] = {
        {"FundGGT|F1", R"({"data":[{"A":1},{"A":2}]})", "", "",
         "fund_ggt data=[A|1|2] fund_ggt=[A|1|2] fund_token=F1"},
        {"FundGGT|F1", R"([{"A":3}])", "", "", "fund_ggt fund_ggt=[A|3] fund_token=F1"},
        {"FundGGT|", R"({"fund_token":"F1","data":[{"A":4}]})", "", "",
         "fund_ggt fund_token=F1 data=[A|4] fund_ggt=[A|4]"},
        {"Fund|", R"([{"A":5}])", "", "", ""},  // whose?
        {"Fund|F1", R"({"A":5})", "", "", ""},  // no rows
        {"Fund|F1", "", "", "", ""},
        {"etflist_push", "[1,2]", "", "", ""},
        {"etflist_push", "not JSON", "", "", ""},
        {"etflist_push", R"({"a":1)", "", "", ""},
        {"etflist_push", "not JSON", R"({"a":1})", "", "etf_pushlist a=1"},
        {"etflist_push", R"({"a":3,"handle":5})", R"({"a":2,"b":2})", "a b c", "etf_pushlist a=3 b=2 c=m"},
        {"etflist_push", R"({"retcode":3,"msg":"m"})", R"({"retcode":0})", "",
         "etf_pushlist retcode=3 msg=m !"},
        {"AccountGroup", "[]", "", "", ""},
    };
    for (const auto& row : kCases) {
        CQueueRespData push = ResponseOf(row.json);
        push.SetData("RawData", row.rawData);
        CUIData mapData;
        if (row.mapData[0] != 0) {
            for (const auto name : SplitText(row.mapData, ' ')) mapData.SetData(name, "m");
        }
        push.SetData("MapData", mapData);
        std::string expected = row.records;
        if (!expected.empty()) expected += kPushEnd;
        expected = ReplaceText(expected,
                               " ! handle=-1 ret_code=0 ret_message=", " handle=-1 ret_code=3 ret_message=m");
        EXPECT_EQ(Pushed(row.topic, push), expected) << row.topic << row.rawData;
    }
    const uint64_t before = CCounters::Get("push_unreadable");
    CQueueRespData named;
    named.SetData("SrcServer", "s");
    EXPECT_EQ(Pushed("subkey_session_event", named), std::string("sub_session_event SrcServer=s") + kPushEnd);
    named.SetData("RawData", "not JSON");
    EXPECT_EQ(Pushed("AccountGroup", named), "");  // two kinds, one count
    EXPECT_EQ(CCounters::Get("push_unreadable"), before + 1);
}

// A receiver may run messages, and with them newer pushes, while it is told of a push.
TEST_F(PushRoutesTest, NobodyIsLeftWithOlderContent) {
    struct : CBaseObject {
        void OnNotify(void*) override {
            if (!std::exchange(isDone, true)) manager->Push("Fund|F1", PushOf("Currency,TotalAssets;CNY,3"));
        }
        TestManager* manager = nullptr;
        bool isDone = false;
    } busy;
    Receiver late;
    busy.manager = &m_manager;
    m_manager.Answer({.type = 1034, .kind = "account", .fundToken = ""}, "account_id,fund_token;A1,F1");
    m_manager.Answer({1201, "fund"}, "Currency,TotalAssets;CNY,1");
    for (const CBaseObject* object : {static_cast<CBaseObject*>(&busy), static_cast<CBaseObject*>(&late)})
        m_manager.RegisterNotify(object->GetHandle(), "fund");
    m_manager.Push("Fund|F1", PushOf("Currency,TotalAssets;CNY,2"));
    EXPECT_EQ(late.Take().find("CNY,2"), std::string::npos);
    CDataTable accounts;
    m_manager.GetData("accountdatalist").GetData("accountdatalist", accounts);
    EXPECT_EQ(accounts.GetItemText(0, "TotalAssets"), "3");
}

TEST_F(PushRoutesTest, PagesListsTakePushesOfTheirAccounts) {
    m_manager.Lists().MakePageLists("AUTO_ALGORITHM");
    m_manager.Answer({1240, "query_inst_autoalgo"}, "InstanceID,State;I1,0;I2,0");
    CQueueRespData push;
    push.SetData("FundToken", "F1");
    push.SetData("Table", TableOf("InstanceID,State;I2,1"));
    EXPECT_EQ(Pushed("rechase_instruction", push),
              std::string(
                  "str_subkey_inst_autoalgo str_subkey_inst_autoalgo=[InstanceID,State|I2,1] fund_token=F1") +
                  kPushEnd);
    EXPECT_EQ(Describe(m_manager.GetData("auto_algo_inst").GetDataView("F1")),
              "[InstanceID,State|I1,0|I2,1]");
}

}  // namespace
}  // namespace luadui
