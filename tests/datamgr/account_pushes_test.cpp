// News of who is logged in, and of groups: what those see who show accounts and ask nobody.
#include <gtest/gtest.h>

#include "base/counters.h"
#include "tests/datamgr/traffic.h"

namespace luadui {
namespace {

struct Step {
    const char*
        what;  // "answer", "early" (to what was asked first), or the account that a push is about, "" for all
    const char* rows;
    const char* accounts;  // that everybody finds afterwards
    const char* credit;
    const char* heard;  // the kinds of what was told
};
constexpr char kPlain[] = "account accountdatalist accountdatalist_push ";
constexpr char kBoth[] =
    "account accountdatalist accountdatalist_push accountdatalistcredit accountdatalist_push_credit ";
constexpr Step kSteps[] = {
    {"", "accountkey,fund_token;0|7|1,F0", "0", "0", "account "},  // nobody asked for accounts so far
    {"answer", "account_id,trade_type,fund_token;1,1,F1;2,2,C1;3,1,",
     "[account_id,trade_type,fund_token,canuse|1,1,F1,|2,2,C1,|3,1,,]",
     "[account_id,trade_type,fund_token,canuse|2,2,C1,]",
     "account accountdatalist accountdatalist_push account_xy accountdatalistcredit "
     "accountdatalist_push_credit "},
    {"", "accountkey,accountid,qsid,tradetype,AccountMsg,canuse;1|7|1,1,7,1,ok,1",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,1,ok|2,2,C1,,|3,1,,,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,,]", kPlain},
    {"", "accountid,tradetype,portfolios;2,2,[]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,0,|2,2,C1,1,|3,1,,,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,1,]", kBoth},
    {"", "No;1", "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,0,|2,2,C1,1,|3,1,,,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,1,]", "account "},  // about no account
    {"F3", "account_id,trade_type,fund_token;3,1,F3;,,",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,0,|2,2,C1,1,|3,1,F3,1,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,1,]", kPlain},
    {"", "accountid,tradetype,fund_token;2,2,C1;3,1,F3;4,1,F4",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,0,|2,2,C1,1,|3,1,F3,1,|4,1,F4,1,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,1,]", kPlain},
    // Older than what is known.
    {"early", "account_id,trade_type,canuse;1,1,1",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|1,1,F1,0,|2,2,C1,1,|3,1,F3,1,|4,1,F4,1,]",
     "[account_id,trade_type,fund_token,canuse,AccountMsg|2,2,C1,1,]", "account "},
    // Who is logged in at this terminal the server need not know.
    {"answer", "account_id,trade_type;2,2;3,1", "[account_id,trade_type,fund_token,canuse|2,2,C1,1|3,1,F3,1]",
     "[account_id,trade_type,fund_token,canuse|2,2,C1,1]",
     "account accountdatalist accountdatalist_push account_xy accountdatalistcredit "},
    {"answer", "account_id,trade_type,canuse;2,2,0;3,1,1", "[account_id,trade_type,canuse|2,2,0|3,1,1]",
     "[account_id,trade_type,canuse|2,2,0]",
     "account accountdatalist accountdatalist_push account_xy accountdatalistcredit "
     "accountdatalist_push_credit "},
};

std::string KindsOf(const std::string& heard) {
    std::string kinds;
    for (size_t at = 0; at < heard.size(); at = std::min(heard.size(), heard.find(" / ", at) + 3)) {
        kinds += heard.substr(at, heard.find(' ', at) - at) + ' ';
        if (heard.find(" / ", at) == std::string::npos) break;
    }
    return kinds;
}

TEST(AccountPushes, WhoIsLoggedInIsSeenWithoutAsking) {
    TestManager manager;
    Receiver window;
    for (const char* kind : {"account", "account_xy", "accountdatalist", "accountdatalist_push",
                             "accountdatalistcredit", "accountdatalist_push_credit"})
        manager.RegisterNotify(window.GetHandle(), kind);
    const TestManager::Ask ask{.type = 1034, .kind = "account", .fundToken = ""};
    const CQueueReqItem early = manager.Send(ask);
    for (const Step& step : kSteps) {
        const std::string_view what = step.what;
        if (what == "answer") {
            manager.Answer(ask, step.rows);
        } else if (what == "early") {
            manager.Answer(early, ResponseOf(step.rows));
        } else {
            CQueueRespData push = ResponseOf(step.rows);
            push.SetData("FundToken", what);
            manager.Push("AccountOnline", push);
        }
        const auto held = [&](const char* kind) { return Describe(manager.GetData(kind).GetDataView(kind)); };
        EXPECT_EQ(held("account"), step.accounts) << step.rows;
        EXPECT_EQ(held("account_xy"), step.credit) << step.rows;
        EXPECT_EQ(KindsOf(window.Take()), step.heard) << step.rows;
    }
}

TEST(AccountPushes, GroupsAreThoseOfTheLastPush) {
    TestManager manager;
    Receiver window;
    for (const char* kind : {"accountgroup", "accountgroupcredit", "accountdatalist"})
        manager.RegisterNotify(window.GetHandle(), kind);
    manager.Answer({.type = 1034, .kind = "account", .fundToken = ""},
                   "account_id,trade_type,fund_token;1,1,F1;2,1,F2");
    manager.Answer({.type = 1035, .kind = "accountgroup", .fundToken = ""},
                   R"(groupid,groupname,account;g,G,["1"])");
    window.Take();
    manager.Push("AccountGroup",
                 ResponseOf(R"({"clientgroups":[{"groupid":"g","groupname":"G","accountlist":"[\"2\"]"}]})"));
    EXPECT_EQ(KindsOf(window.Take()), "accountgroup accountgroupcredit accountdatalist ");
    CUIData request("accountdatalist");
    request.SetData("groupname", "G");
    EXPECT_TRUE(manager.Lists().Accounts(ListStore::kPlain)->GetData(request));
    EXPECT_EQ(Describe(request.GetDataView("usertoken_set")), "<F2>");
    manager.Push("AccountGroup", ResponseOf("No;1"));
    EXPECT_EQ(KindsOf(window.Take()), "accountgroup accountgroupcredit ");
    for (const char* kind : {"accountgroup", "accountgroupcredit"})
        EXPECT_EQ(Describe(manager.GetData(kind).GetDataView(kind)),
                  R"([groupid,groupname,account|g,G,["2"]])");
}

}  // namespace
}  // namespace luadui
