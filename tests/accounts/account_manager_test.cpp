#include "accounts/account_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "base/counters.h"
#include "tests/accounts/service_probe.h"

namespace luadui {
namespace {

using Lines = std::vector<std::string>;

// Whoever hears of accounts writes it down, in UTF-8: "page ...", "host ...", "push ...", "timer ...", and notifications as
// "KEY json". Requests to the account service are "ask type".
class AccountManagerTest : public testing::Test, public AccountEvents {
  protected:
    AccountManagerTest() {
        service.host.onPush = [this](CQueueReqItem& request) {
            heard.push_back("ask " + std::to_string(RequestTypeOf(request)));
        };
        service.host.onAsk = [this](CQueueReqItem& request) {
            const CUIData params = FakeHost::Params(request);
            if (RequestTypeOf(request) == kReqConfigRead && params.GetDataText("Key") == "FullElkLog") {
                request.SetData("result", "true");
                ++settingsRead;
            }
            if (RequestTypeOf(request) == kReqConfigWrite) Hear("file " + params.GetDataString("Value"));
            const std::string method = params.GetDataString("method");
            if (method.starts_with("On")) Hear("host " + method + ' ' + params.GetDataString("params"));
            if (method == "get_passInfo") request.SetData("result", R"({"1|7|1":{"Password":"planted"}})");
        };
    }

    void Start(int accounts = 2) {
        manager = std::make_unique<CAccountManager>(*this, PasswordEncryption(L"accounts_test_cipher.dll"));
        manager->OnUser();
        service.Answer(1035,
                       MakeTable({"groupid", "groupname", "account"}, {{"g", "G", R"(["1","2","3"])"}}));
        Rows rows;
        for (int code = 1; code <= accounts; ++code) {
            const std::string text = std::to_string(code);
            rows.push_back({"id" + text, text, "N" + text, "7", "B", "1", "P",
                            R"([{"portfolio_id":"p","portfolio_name":"u","fund_token":"T)" + text + "\"}]"});
        }
        service.Answer(1033, MakeTable({"account_id", "account_code", "account_name", "broker_id",
                                        "broker_name", "trade_type", "product_name", "portfolios"},
                                       rows));
    }

    // What is heard of one call.
    template <class Call>
    Lines HeardOf(Call call) {
        heard.clear();
        call();
        return std::exchange(heard, {});
    }
    void Message(const std::string& json) {
        CQueueRespData push;
        push.SetData("Topic", CAccountManager::kTopic);
        push.SetData("RawData", Gbk(json));
        manager->OnResponse(&push);
    }
    // A command as web pages send it.
    Lines Command(const std::string& name, const std::string& params) {
        return HeardOf(
            [&] { Message(R"({"cmd":")" + name + R"(","key":"K","uuid":"u","params":)" + params + '}'); });
    }
    static Lines Starts(const Lines& lines) {
        Lines starts;
        for (const std::string& line : lines) starts.push_back(line.substr(0, line.find('{')));
        return starts;
    }

    // AccountEvents
    AccountUser User() const override {
        AccountUser user;
        user.name = userName;
        user.isPbMode = isPbMode;
        return user;
    }
    void Subscribe(const std::string& topic, int32_t) override { topics += topic + ' '; }
    bool AnswerPage(const AccountAsker& asker, CQueueRespData& response) override {
        Hear("page " + asker.from + ' ' + response.GetDataString("UUID") + ' ' +
             Describe(response.GetDataView("JsonData")) +
             (response.Has("Table") ? Describe(response.GetDataView("Table")) : ""));
        return true;
    }
    bool Publish(CQueueReqItem& request) override {
        const CUIData params = FakeHost::Params(request);
        EXPECT_EQ(RequestTypeOf(request), 65537);
        const std::string uuid = params.GetDataText("_UUID") == "u" ? " u " : " ";
        Hear(params.GetDataString("_SUBKEY") + uuid + params.GetDataString("_SEND_DATA"));
        if (onPublish) onPublish();
        return true;
    }
    void HandlePush(const CQueueRespData& push) override {
        EXPECT_EQ(push.GetDataText("To"), "CLIENT_CACHE");
        EXPECT_EQ(push.GetDataLong("DATATYPE"), 2011);
        CDataTable table;
        push.GetData("Table", table);
        std::string keys;
        for (int row = 0; row < table.GetRowNumber(); ++row)
            (keys += table.GetItemText(row, "accountkey")) += ' ';
        EXPECT_EQ(table.FindColumn("password"), -1);
        Hear("push " + push.GetDataString("Topic") + ' ' + keys);
    }
    bool StartTimer(uint32_t id, uint32_t) override {
        Hear("timer " + std::to_string(id));
        return true;
    }
    bool StopTimer(uint32_t id) override {
        Hear("stop " + std::to_string(id));
        return true;
    }
    void Hear(const std::string& text) { heard.push_back(GbkToUtf8(text)); }

    ServiceProbe service;
    Lines heard;
    std::string topics;
    std::string userName = "user";
    bool isPbMode = false;
    int settingsRead = 0;
    std::function<void()> onPublish;
    std::unique_ptr<CAccountManager> manager;
};

const std::string kDone = R"(K u {"result":{"code":"0","message":"操作成功！","data":{}}})";
std::string Refused(const std::string& message) {
    return R"(K u {"result":{"code":"-8989","message":")" + message + R"(","data":{}}})";
}

struct CommandCase {
    const char *name, *params;
    Lines heard;  // up to the JSON where the line has none here
};

TEST_F(AccountManagerTest, EveryCommandDoesItsWorkAndAnswersBadArguments) {
    Start();
    // clang-format off
    const CommandCase cases[] = {
        {"getAccountList", "{}", {"K u "}},
        {"getGroupList", "{}",
         {R"(K u {"result":{"code":"0","message":"","data":{"grouplist":[{"groupid":"g","groupname":"G","grouptype":"","issimulate":"","accountlist":"[\"1\",\"2\",\"3\"]"}]}}})"}},
        {"queryOrderFromPage", "{}",
         {R"(K u {"result":{"code":"0","message":"","data":{"AllAccountOrder":[{"accountkey":"1|7|1","order":"1"},{"accountkey":"2|7|1","order":"2"}]}}})"}},
        {"refreshSelAccountList", R"({"accountkeys":["1|7|1"]})", {"ask 1807"}},
        {"refreshSelAccountList", R"({"accountkeys":[{}]})", {Refused("参数错误：accountkeys")}},
        {"addAccount", R"({"accountid":3,"qsid":"7","tradetype":"1","password":"p"})", {"ask 1047"}},
        {"addAccount", R"({"accountid":{},"qsid":"7"})", {Refused("参数错误：account_code")}},
        {"deleteAccount", R"({"accountkey":"1|7|1"})", {"ask 1048"}},
        {"deleteAccount", R"({"accountkey":["1|7|1"]})", {Refused("参数错误：accountkey")}},
        {"deleteAccount", R"({"accountkey":"9"})", {Refused("删除账户，账户不存在！")}},
        {"logoutAccount", R"({"accountkey":"1|7|1"})", {"ask 1032"}},
        {"logoutAccount", "{}", {Refused("参数错误：accountkey")}},
        {"bindAccount", R"({"accountkey":"1|7|1"})", {"ask 1036"}},
        {"unbindAccount", R"({"accountkey":"1|7|1"})", {Refused("解绑账户，未绑定！")}},
        {"editAccount", R"({"accountkey":"1|7|1","accountmark":"m"})", {"ask 1049"}},
        {"editAccount", R"({"accountkey":"1|7|1","accountmark":[]})", {Refused("参数错误：account_mark")}},
        {"editPassword", R"({"accountkey":"1|7|1","accountid":"1","password":"p"})", {"ask 1808"}},
        {"editPassword", R"({"accountkey":"1|7|1"})", {Refused("参数错误：password")}},
        {"add_portfolio", R"({"accountkey":"1|7|1","portfolioname":"n"})", {"ask 1127"}},
        {"add_portfolio", R"({"portfolioname":"n"})", {Refused("参数错误：AccountKey")}},
        {"addAccountGroup", R"({"groupid":"h","groupname":"H"})", {"ask 1038"}},
        {"addAccountGroup", R"({"groupid":"g"})", {Refused("添加账户组，已存在，添加失败！")}},
        {"deleteAccountGroup", R"({"groupid":"g"})", {"ask 1039"}},
        {"deleteAccountGroup", R"({"groupid":"x"})", {Refused("删除账户组，不存在，删除失败！")}},
        {"addAccountToGroup", R"({"groupid":"g","accountlist":["1","8","9"]})", {kDone, "ask 1040", "ask 1040"}},
        {"addAccountToGroup", R"({"groupid":"g","accountlist":[{}]})", {Refused("解析账户组内账户失败!")}},
        {"deleteAccountFromGroup", R"({"groupid":"g","accountlist":"[\"1\"]"})", {kDone, "ask 1041"}},
        {"deleteAccountFromGroup", R"({"accountlist":["1"]})", {Refused("解析账户组内账户失败!")}},
        {"modifyAccountOrder", R"({"accountorder":[{"accountkey":"1|7|1","order":"x"}]})", {Refused("解析账户排序失败！")}},
        {"modifyAccountOrder", R"({"accountorder":[{"accountkey":"1|7|1","order":3}]})", {"timer 1127", kDone}},
        {"modifyAccountOrder", R"({"accountorder":"[1|7|1=3;]"})", {kDone}},
        {"notifyOrderToPage", "{}",
         {kDone, "file [1|7|1=3;2|7|1=2;]", R"(ClientAccountOrderChanged {"account_order_source":"AccountManager","accountorder":[{"accountkey":"2|7|1","order":"2"},{"accountkey":"1|7|1","order":"3"}]})"}},
        {"notifyOrderToServer", "{}", {"ask 1804", "stop 1127", kDone}},
        {"notifyOrderToServer", "{}", {"stop 1127", kDone}},
        {"modifyOrderInGroup", R"({"curGroupID":"g","GrpAccountOrder":["3","9"]})",
         {R"(K u {"result":{"code":"0","message":"","data":{"curGroupID":"g","GrpAccountOrder":"[\"3\",\"1\",\"2\"]"}}})", "CLIENT_ACCOUNTGROUP_CHANGED ", "push AccountGroup "}},
        {"modifyOrderInGroup", R"({"curGroupID":"g","GrpAccountOrder":[{"accountkey":"2|7|1","order":1}]})",
         {R"(K u {"result":{"code":"0","message":"","data":{"curGroupID":"g","GrpAccountOrder":"[\"2\",\"3\",\"1\"]"}}})", "CLIENT_ACCOUNTGROUP_CHANGED ", "push AccountGroup "}},
        {"modifyOrderInGroup", R"({"curGroupID":"x","GrpAccountOrder":["3"]})", {Refused("账户组不存在！")}},
        {"dance", "{}", {Refused("没有该命令！")}},
    };
    // clang-format on
    for (const CommandCase& row : cases) {
        Lines got = Command(row.name, row.params);
        for (size_t i = 0; i < got.size() && i < row.heard.size(); ++i) {
            if (row.heard[i].find('{') == std::string::npos) got[i] = got[i].substr(0, got[i].find('{'));
        }
        EXPECT_EQ(got, row.heard) << row.name << row.params;
    }
    const CUIData bound = FakeHost::Params(service.Sent(1036));
    EXPECT_EQ(bound.GetDataString("account_code") + bound.GetDataString("useraccount"), "1user");
    EXPECT_FALSE(manager->Execute("dance", CUIData()));
}

TEST_F(AccountManagerTest, RequestRecordsAreAnsweredAsSuch) {
    Start();
    CUIData arguments;
    arguments.SetData("REQTYPE", 1801);
    arguments.SetData("UUID", "q");
    arguments.SetData("From", "12");
    EXPECT_EQ(
        HeardOf([&] { manager->Execute("queryOrderFromPage", arguments); }),
        Lines{
            R"(page 12 q {"retcode":"0","message":"","result":{"code":"0","message":"","data":{"AllAccountOrder":)"
            R"([{"accountkey":"1|7|1","order":"1"},{"accountkey":"2|7|1","order":"2"}]}}})"
            "[Index,AccountKey,AccountOrder|0,1|7|1,1|1,2|7|1,2]"});
    arguments.SetData("Table", MakeTable({"AccountKey", "AccountOrder"}, {{"1|7|1", "9"}, {"gone", "1"}}));
    EXPECT_EQ(Starts(HeardOf([&] { manager->Execute("modifyAccountOrder", arguments); })),
              (Lines{"timer 1127", "page 12 q "}));
    EXPECT_EQ(manager->Accounts().Order().Find("1|7|1"), 9);
    // The timers ask for nobody.
    EXPECT_EQ(HeardOf([&] { manager->Execute("notifyOrderToServer", CUIData()); }),
              (Lines{"ask 1804", "stop 1127"}));
}

TEST_F(AccountManagerTest, PagesSubscribersAndHostHearOfEveryEventOnce) {
    isPbMode = true;
    Start();
    EXPECT_EQ(
        topics,
        "cmd_accountmanager subkey_session_event subkey_account_errorinfo pb_notify_portfolio_permission ");
    // The second account has no password, which the new list says; the first one is uploaded.
    EXPECT_EQ(Starts(heard), (Lines{"ask 1035", "ask 1033", "CLIENT_ACCOUNTGROUP_CHANGED ",
                                    "push AccountGroup ", "ClientAccountChanged ", "ask 1807"}));
    const CDataTable login = MakeTable({"fund_token", "error_code"}, {{"T1", "0"}});
    Lines lines = HeardOf([&] { service.Answer(1807, login); });
    EXPECT_EQ(Starts(lines), (Lines{"ClientAccountChanged ", "host OnAccountChanged ", "timer 1128"}));
    EXPECT_NE(lines[0].find(R"("password":"planted")"), std::string::npos);
    EXPECT_EQ(
        lines[1],
        R"(host OnAccountChanged {"action":"login","accountList":[{"state":"login","AccountID":"1","AccountName":"N1",)"
        R"("AccountIDMark":"","QsID":"7","SalesName":"B","TradeType":"1","IsSimulate":"","userKey":"","fund_token":"T1",)"
        R"("portfolio_id":"p","portfolio_name":"u","product_id":"","product_name":"P","portfolioname_ex":"u P"}]})");
    const auto tick = [&] { manager->Execute(std::string(CAccountManager::kOnlineCommand), CUIData()); };
    EXPECT_EQ(HeardOf(tick), Lines{"push AccountOnline 1|7|1 "});
    EXPECT_EQ(HeardOf(tick), Lines{});

    Command("addAccountToGroup", R"({"groupid":"g","accountlist":["7"]})");
    lines = HeardOf([&] { service.AnswerJson(1040, "{}", true); });
    EXPECT_EQ(Starts(lines), (Lines{"K u ", "CLIENT_ACCOUNTGROUP_CHANGED ", "push AccountGroup ",
                                    "host OnAccountGroupChanged "}));
    EXPECT_EQ(
        lines[3],
        R"(host OnAccountGroupChanged {"action":"addaccount","groupInfo":{"groupid":"g","groupname":"G",)"
        R"("grouptype":"","issimulate":"","accountList":"[\"1\",\"2\",\"3\",\"7\"]"}})");
    EXPECT_EQ(HeardOf([&] { service.AnswerJson(1040, "{}", true); }), Lines{});  // a second answer

    Command("editPassword", R"({"accountkey":"1|7|1","password":"x"})");
    EXPECT_EQ(
        HeardOf([&] { service.AnswerJson(1808, R"({"code":"17","message":"密码错误"})", false); }),
        Lines{R"(K u {"result":{"success":false,"code":"17","message":"登陆账户密码错误","data":{}}})"});
    const std::string line =
        R"(account:MODULE_ACCOUNTMANAGER{"accountkey":"1|7|1","code":"17","msg":"登陆账户密码错误"})";
    EXPECT_EQ(std::ranges::count(service.Lines(), line), 1);
    EXPECT_EQ(settingsRead, 1);

    Command("logoutAccount", R"({"accountkey":"1|7|1"})");
    lines = HeardOf([&] { service.AnswerJson(1032, "{}", true); });
    EXPECT_EQ(Starts(lines), (Lines{"K u ", "ClientAccountChanged ", "CLIENT_MODIFY_ACCOUNT_STATUS ",
                                    "host OnAccountChanged ", "timer 1128"}));
    EXPECT_EQ(
        lines[2],
        R"(CLIENT_MODIFY_ACCOUNT_STATUS {"accountkey":"1|7|1","accountname":"N1","nickname":"N1_B","canuse":"0",)"
        R"("AccountMsg":"手动注销","AccountStatus":"logout"})");
    EXPECT_EQ(HeardOf(tick), Lines{"push AccountOnline "});
    for (const std::string& line : lines) EXPECT_EQ(line.find("planted"), std::string::npos) << line;
}

TEST_F(AccountManagerTest, LostSessionsAreToldWithoutAnAsker) {
    Start();
    service.Answer(1807, MakeTable({"fund_token", "error_code"}, {{"T1", "0"}}));
    CQueueRespData push;
    push.SetData("Topic", "subkey_session_event");
    for (const char* text : {R"({"code":"5","msg":"server"})", R"({"fund_token":"T1","code":"0"})", "]"}) {
        push.SetData("RawData", text);
        EXPECT_EQ(HeardOf([&] { manager->OnResponse(&push); }), Lines{}) << text;
    }
    push.SetData("RawData", R"({"fund_token":"T1","code":"5","msg":"gone"})");
    EXPECT_EQ(
        HeardOf([&] { manager->OnResponse(&push); }),
        (Lines{
            R"(UnKnowKey_Event {"result":{"success":false,"code":"5","message":"账户断线gone","data":{}}})",
            R"(CLIENT_MODIFY_ACCOUNT_STATUS {"accountkey":"1|7|1","accountname":"N1","nickname":"N1_B",)"
            R"("canuse":"0","AccountMsg":"gone","AccountStatus":"logout"})"}));
    heard.clear();
    Message(R"({"cmd":"getGroupList"})");
    EXPECT_EQ(Starts(heard), Lines{"UnKnowKey_Ret "});
}

// Another user has lists of his own. What was under way for the one before ends.
TEST_F(AccountManagerTest, NothingOfAUserReachesTheNext) {
    Start();
    service.Answer(1807, MakeTable({"fund_token", "error_code"}, {{"T1", "0"}}));
    const auto tick = [&] { manager->Execute(std::string(CAccountManager::kOnlineCommand), CUIData()); };
    tick();
    manager->OnUser();  // the same again
    Command("editAccount", R"({"accountkey":"1|7|1","accountmark":"m"})");
    manager->Accounts().Query();
    manager->Groups().Query();
    const CQueueReqItem accounts = service.Sent(1033), groups = service.Sent(1035), edit = service.Sent(1049);
    userName = "next";
    const Lines lines = HeardOf([&] { manager->OnUser(); });
    EXPECT_EQ(Starts(lines), (Lines{"K u ", "ClientAccountChanged ", "CLIENT_ACCOUNTGROUP_CHANGED ",
                                    "push AccountGroup ", "timer 1128", "ask 1035", "ask 1033"}));
    EXPECT_EQ(lines[0], Refused("用户已切换！"));
    EXPECT_EQ(lines[1], R"(ClientAccountChanged {"clientaccounts":[],"clientgroups":[]})");
    EXPECT_EQ(HeardOf(tick), Lines{"push AccountOnline "});
    EXPECT_EQ(Starts(Command("notifyOrderToPage", "{}")), (Lines{"K u ", "ClientAccountOrderChanged "}))
        << "an order that nobody knows yet is not written";
    EXPECT_EQ(FakeHost::Params(service.Sent(1033)).GetDataString("useraccount"), "next");

    const CDataTable old = MakeTable({"account_code", "broker_id", "trade_type"}, {{"1", "7", "1"}});
    heard.clear();
    service.Answer(accounts, old);
    service.Answer(groups, MakeTable({"groupid"}, {{"g"}}));
    service.Answer(edit);
    EXPECT_EQ(heard, Lines{});
    EXPECT_TRUE(manager->Accounts().All().empty() && manager->Groups().All().empty());
    service.Answer(1033, old);
    EXPECT_EQ(manager->Accounts().All().begin()->second->Get(AccountField::kPassword), "planted")
        << "as the host remembers it for him";
}

// What hears may end everything: the sanitizers would tell.
TEST_F(AccountManagerTest, MayEndInsideAnythingThatItSays) {
    for (int published = 1; published <= 6; ++published) {
        int left = published;
        onPublish = [&] {
            if (--left == 0) manager.reset();
        };
        Start();
        if (manager) service.Answer(1807, MakeTable({"fund_token", "error_code"}, {{"T1", "0"}}));
        if (manager) Command("addAccountToGroup", R"({"groupid":"g","accountlist":["7","8"]})");
        if (manager) service.AnswerJson(1040, "{}", true);
        EXPECT_EQ(manager, nullptr) << published;
    }
}

TEST_F(AccountManagerTest, ManyAccountsArePublishedInOnePass) {
    Start(5000);
    const CDataTable login = MakeTable({"fund_token", "error_code"}, {{"T1", "0"}});
    EXPECT_EQ(Starts(HeardOf([&] { service.Answer(1807, login); })),
              (Lines{"ClientAccountChanged ", "host OnAccountChanged ", "timer 1128"}));
    // One account's news say nothing of the others.
    CQueueRespData push;
    push.SetData("Topic", "subkey_session_event");
    push.SetData("RawData", R"({"accountkey":"1|7|1","code":"5","msg":"gone"})");
    for (const std::string& line : HeardOf([&] { manager->OnResponse(&push); })) EXPECT_LT(line.size(), 300U);
}

}  // namespace
}  // namespace luadui
