#include <gmock/gmock.h>

#include "base/counters.h"
#include "tests/accounts/account_list_probe.h"

namespace luadui {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class AccountList : public AccountListProbe {};

TEST_F(AccountList, TheFirstAnswerIsNumberedByTheSettingsFile) {
    AccountOrder::ReadAgain();
    const uint64_t unknown = CCounters::Get("account_order_unknown");
    orderText = "[1002|7|1=5;gone|7|1=90;1001|7|1=x;]";
    Load({ListRow("1003"), ListRow("1001"), ListRow("1002")});
    EXPECT_EQ(Describe(list->Order().Table()),
              "[Index,AccountKey,AccountOrder|0,1002|7|1,5|1,1001|7|1,6|2,1003|7|1,7]");
    EXPECT_EQ(list->InOrder().front()->Get(AccountField::kAccountId), "1002");
    EXPECT_EQ(CCounters::Get("account_order_unknown") - unknown, 1U);

    EXPECT_TRUE(list->SetOrder({{"1003|7|1", 1}, {"gone|7|1", 2}}));
    EXPECT_TRUE(list->SaveOrder());
    EXPECT_FALSE(list->Order().HasUnsaved());
    const CUIData params = FakeHost::Params(service.Sent(1804));
    EXPECT_EQ(params.GetDataString("From") + params.GetDataString("Refresh") + params.GetDataString("action"),
              "MODULE_ACCOUNT_LISTtruebatch_modifyaccount");
    EXPECT_THAT(
        Describe(service.RowsOf(service.Sent(1804))),
        HasSubstr("[order,user_id,account_code,institution_id,product_id|1,,1003,,|5,,1002,,|6,,1001"));
    service.AnswerJson(1804, R"({"code":"1"})", false);
    EXPECT_TRUE(list->Order().HasUnsaved());
    list->NotifyOrder(CAccountList::kSave);
    EXPECT_EQ(service.events.back().name, "modifyAccountOrder");

    service.events.clear();
    CDataTable rows = MakeTable(kListColumns, {ListRow("1001"), ListRow("1002"), ListRow("1003")});
    rows.AddColumn("order");
    rows.SetItemText(2, "order", "9");  // older than the user's wish
    list->SaveOrder();
    service.AnswerJson(1804, "{}");
    rows.SetItemText(1, "order", "8");
    list->Query();
    service.Answer(1033, rows);
    EXPECT_EQ(OrderText(list->Order().Numbers()), "[1001|7|1=6;1002|7|1=8;1003|7|1=9;]");
    EXPECT_THAT(service.Events(),
                ElementsAre("account_refresh_finished ACCOUNT_LIST", "notifyOrderToPage ACCOUNT_LIST"));
}

TEST_F(AccountList, IsQueriedBuiltAndLoggedIn) {
    list->Query(Values({{"req_from", "cef"}}));
    EXPECT_THAT(Describe(FakeHost::Params(service.Sent(1033))),
                HasSubstr("useraccount=user institutionid=i1 req_from=cef PB_MODE=false user_id=u1 "
                          "with_permission=true log_source=MODULE_ACCOUNTMANAGER"));
    service.Answer(1033, MakeTable(kListColumns, {ListRow("1001"), ListRow("1002"), ListRow("1003")}));
    EXPECT_THAT(service.Events(), ElementsAre("initialize_finished ACCOUNT_LIST"));
    EXPECT_EQ(list->ProductInfo(), "[\"products\"]");
    EXPECT_THAT(luaCalls, ElementsAre(HasSubstr("get_ProductInfo"),
                                      R"(get_passInfo {"UserName":"user","UserFloder":"folder"})"));
    EXPECT_THAT(service.Lines(),
                ElementsAre("account:record local password!=InitPassword:: record local password!\n has "
                            "password:[1001|7|1,1002|7|1]\n no password:[1003|7|1]",
                            "error:UploadAccountInfo:: empty password!=1003|7|1"));
    const CDataTable rows = service.RowsOf(service.Sent(1807));
    ASSERT_EQ(rows.GetRowNumber(), 2);
    EXPECT_TRUE(rows.GetItemText(0, "password").starts_with("ppww11//"));
    EXPECT_TRUE(rows.GetItemText(0, "txpassword").starts_with("ttxx11//"));
    EXPECT_EQ(rows.GetItemText(1, "txpassword"), "");
    EXPECT_EQ(rows.GetItemText(1, "fund_token") + rows.GetItemText(1, "token"), "T1002tok");
    EXPECT_EQ(FakeHost::Params(service.Sent(1807)).GetDataString("accountkeylist"), "1001|7|1;1002|7|1");
    EXPECT_THAT(States(), ElementsAre("1001|7|1:0待验证", "1002|7|1:0待验证", "1003|7|1:0密码为空"));

    AnswerUpload({{"T1002", Gbk("张三"), "P", "", "0"}, {"T1001", "", "", Gbk("密码错"), "5"}, {"T9"}});
    EXPECT_THAT(States(), ElementsAre("1001|7|1:0密码错", "1002|7|1:1正常", "1003|7|1:0密码为空"));
    EXPECT_EQ(list->Find("1002|7|1")->Get(AccountField::kNickname), Gbk("张三_B"));
    EXPECT_EQ(list->Find("1001|7|1")->Get(AccountField::kNickname), "N1001_B");
    EXPECT_THAT(service.Events(), ElementsAre("upload_actinfo_finished ACCOUNT_LIST"));
    AnswerUpload({{"T1002", "", "", "late", "5"}});  // once answered
    EXPECT_THAT(service.Events(), IsEmpty());
}

TEST_F(AccountList, ARefreshKeepsStatesAndDropsWhatTheServiceNoLongerNames) {
    Load({ListRow("1001"), ListRow("1002")});
    AnswerUpload({{"T1001", "", "", "", "0"}, {"T1002", "", "", "", "0"}});
    const CAccount* const kept = list->Find("1001|7|1");
    service.events.clear();
    auto renamed = ListRow("1001");
    renamed[2] = "Renamed";
    Load({renamed, ListRow("1003")});
    EXPECT_EQ(list->Find("1001|7|1"), kept);
    EXPECT_EQ(kept->Get(AccountField::kAccountName), "Renamed");
    EXPECT_THAT(States(), ElementsAre("1001|7|1:1正常", "1003|7|1:0密码为空"));
    EXPECT_EQ(service.events[1].payload.ToText(), R"({"added":["1003|7|1"],"removed":["1002|7|1"]})");
    EXPECT_THAT(service.Events(),
                ElementsAre("account_refresh_finished ACCOUNT_LIST", "account_changed_push ACCOUNT_LIST",
                            "notifyOrderToPage ACCOUNT_LIST", "upload_actinfo_finished ACCOUNT_LIST"));
    EXPECT_EQ(service.CountSent(1807), 1);  // who is logged in is left alone, who has no password too
    Load({renamed, ListRow("1002")});
    EXPECT_THAT(States(), ElementsAre("1001|7|1:1正常", "1002|7|1:1正常"));  // as it was before

    list->Query();
    service.AnswerJson(1033, R"({"code":7,"message":"查询错"})", false);
    EXPECT_EQ(list->All().size(), 2U);
    EXPECT_EQ(service.Events().back(), "account_refresh_failed ACCOUNT_LIST 7.000 查询错");
}

TEST_F(AccountList, BadAnswersLoseNothing) {
    Load({ListRow("1001"), ListRow("1002")});
    service.Lines();
    list->Query();
    CQueueRespData answer = ServiceProbe::AnswerTo(service.Sent(1033));
    answer.SetData("RawData", "rubbish");
    list->OnResponse(&answer);
    EXPECT_THAT(service.Lines(),
                ElementsAre("account:query accout result!=InitAccountList:: result[rubbish]"));
    list->Query();
    service.Answer(1033, MakeTable({"account_code", "broker_id"}, {{"1003", "7"}}));
    EXPECT_EQ(list->All().size(), 2U);

    const uint64_t repeated = CCounters::Get("account_row_repeated");
    const uint64_t nameless = CCounters::Get("account_row_without_code");
    const std::string key = Gbk("誠|誠") + "|7|1";  // second bytes that look like separators
    auto strange = ListRow(Gbk("誠|誠")), broken = ListRow("1001"), last = ListRow("1002");
    broken.back() = "[{";
    last[2] = "Last";
    Load({strange, broken, ListRow("1002"), last, {"", ""}});
    ASSERT_EQ(list->All().size(), 3U);
    EXPECT_EQ(list->Find(key)->Get(AccountField::kAccountKey), key);
    EXPECT_EQ(list->Find("1001|7|1")->FundToken(), "T1001");  // known from before
    EXPECT_EQ(list->Find("1002|7|1")->Get(AccountField::kAccountName), "Last");
    EXPECT_EQ(CCounters::Get("account_row_repeated") - repeated, 1U);
    EXPECT_EQ(CCounters::Get("account_row_without_code") - nameless, 1U);
    passInfo = "no json";
    service.Lines();
    list->Upload();
    EXPECT_EQ(service.Lines().front(), "error:parse password error!=InitPassword:: parse password error!");
}

struct UploadCase {
    const char* name;
    const wchar_t* cipher;
    bool isPbMode;
    Rows accounts;
    std::string passInfo, state,
        row;  // of the last account; the row: password and the ordinary account's, "-" is none
};
const std::string kCipherText = std::string(171, 'x') + "=";
constexpr const wchar_t *kModule = L"accounts_test_cipher.dll", *kNoModule = L"no_such_cipher.dll";
const std::string kPassword = R"({"1|7|1":{"Password":"pw"}})", kOnCredit = R"({"1|7|2":{"Password":"pw"}})";
// clang-format off
const UploadCase kUploads[] = {
    {"no password", kModule, false, {ListRow("1")}, "{}", "0密码为空", "-"},
    {"too long", kModule, false, {ListRow("1")}, R"({"1|7|1":{"Password":"fail"}})", "0密码加密失败", "-"},
    {"no module", kNoModule, false, {ListRow("1")}, kPassword, "0密码加密失败", "-"},
    {"encrypted before", kNoModule, false, {ListRow("1")}, R"({"1|7|1":{"Password":")" + kCipherText + "\"}}", "0待验证", "xxxx,,"},
    {"credit", kModule, false, {ListRow("1", "2")}, kOnCredit, "0待验证", "ppww,,"},
    {"credit alone", kModule, true, {ListRow("1", "2")}, kOnCredit, "0未获取到信用账户对应的普通账户", "-"},
    {"credit, no other password", kModule, true, {ListRow("1"), ListRow("1", "2")}, kOnCredit, "0信用账户对应的普通账户密码为空", "-"},
    {"credit and ordinary", kModule, true, {ListRow("1"), ListRow("1", "2")},
     R"({"1|7|1":{"Password":"or"},"1|7|2":{"Password":"pw"}})", "0待验证", "ppww,oorr,1T1"},
};
// clang-format on

TEST_F(AccountList, OnlyCipherTextIsUploaded) {
    for (const UploadCase& each : kUploads) {
        SCOPED_TRACE(each.name);
        service.host.pushed.clear();
        MakeList(each.cipher, each.isPbMode);
        passInfo = each.passInfo;
        Load(each.accounts);
        EXPECT_EQ(States().back().substr(States().back().find(':') + 1), each.state);
        std::string row = "-";
        if (service.CountSent(1807) > 0) {
            const CDataTable rows = service.RowsOf(service.Sent(1807));
            const int last = rows.GetRowNumber() - 1;
            const auto start = [&](const char* column) {
                return std::string(rows.GetItemText(last, column)).substr(0, 4);
            };
            const bool isItsRow =
                (rows.GetItemText(last, "fund_token").back() == 'c') == (each.accounts.back()[6] == "2");
            if (isItsRow)
                row = start("password") + ',' + start("key_password") + ',' + start("key_account_code") +
                      start("key_fund_token");
        }
        EXPECT_EQ(row, each.row);
        for (const CQueueReqItem& request : service.host.pushed)
            EXPECT_THAT(Describe(request), Not(HasSubstr("=pw"))) << "clear text";
    }
}

TEST_F(AccountList, SelectedAccountsAreUploadedAgain) {
    Load({ListRow("1001"), ListRow("1003")});
    AnswerUpload({{"T1001", "", "", "", "0"}});
    service.events.clear();
    list->Find("1001|7|1")->WipePasswords();
    list->Find("1003|7|1")->SetUsable();
    list->SetUser({"user", "u1", "i1", "tok2", "v1", "folder", false});  // the same with another token
    list->Upload(
        Values({{"selrefresh", "true"}, {"accountkeylist", "1003|7|1;no;1001|7|1"}, {"UUID", "page"}}));
    EXPECT_EQ(FakeHost::Params(service.Sent(1807)).GetDataString("selrefresh"), "true");
    EXPECT_EQ(service.RowsOf(service.Sent(1807)).GetRowNumber(), 1);  // the host was asked again
    EXPECT_EQ(service.RowsOf(service.Sent(1807)).GetItemText(0, "token"), "tok2");
    AnswerUpload({{"T1001", "", "", Gbk("错"), "2"}});
    EXPECT_EQ(service.events.back().uuid, "page");
    list->Upload(Values({{"selrefresh", "true"}, {"accountkeylist", "1003|7|1"}}));
    list->Upload();
    service.AnswerJson(1807, R"({"code":"9","message":"down"})", false);
    list->Upload();
    ServiceProbe::Deliver(service.Sent(1807), ServiceProbe::AnswerTo(service.Sent(1807)));
    EXPECT_THAT(service.Events(), ElementsAre("modify_account_status ACCOUNT_LIST 1003|7|1",
                                              "account_select_refresh_finished ACCOUNT_LIST",
                                              "account_select_refresh_finished ACCOUNT_LIST",
                                              "upload_actinfo_failed ACCOUNT_LIST 9 down",
                                              HasSubstr("upload_actinfo_failed ACCOUNT_LIST -8989")));
}

struct AddCase {
    const char* tradeType;
    const char* json;
    bool isGood;
    const char* event;  // without the module
    const char* state;  // of the account; empty: there is none
};
// clang-format off
constexpr AddCase kAdds[] = {
    {"1", R"({"return_info":{"error_code":0,"account_id":"id9","portfolios":[{"portfolio_id":"p","fund_token":"T9"}]}})", true,
     "add_account_success", "1正常T9"},
    {"1", R"({"return_info":"{\"error_code\":\"12\",\"msg\":\"密码错\"}"})", true, "add_account_success", "0密码错"},
    {"2", R"({"return_info":{"error_code":"401","msg":"第二步"}})", true, "add_creditaccount_second", "0第二步"},
    {"1", R"({"return_info":{"error_code":"401","msg":"m"}})", true, "add_account_success", "0m"},
    {"1", R"({"code":"5","message":"坏"})", false, "add_account_failed", ""},
    {"1", R"({"code":"0"})", true, "add_account_failed", ""},
};
// clang-format on

TEST_F(AccountList, AnAccountIsAddedAndDeleted) {
    for (const AddCase& each : kAdds) {
        SCOPED_TRACE(each.json);
        luaCalls.clear();
        const std::string key = std::string("9|7|") + each.tradeType;
        CUIData asked = Values({{"account_code", "9"}, {"broker_id", "7"}, {"trade_type", each.tradeType}});
        for (const char* const name : {"account_name", "broker_name"}) asked.SetData(name, "N");
        asked.SetData("password", "pw9");
        list->AddAccount(asked);
        EXPECT_EQ(service.RowsOf(service.Sent(1047)).GetItemText(0, "alias"), "N_N");
        EXPECT_THAT(Describe(service.RowsOf(service.Sent(1047))), Not(HasSubstr("pw9")));
        service.AnswerJson(1047, each.json, each.isGood);
        EXPECT_THAT(service.Events().front(), testing::StartsWith(each.event));
        const CAccount* const account = list->Find(key);
        ASSERT_EQ(account != nullptr, *each.state != '\0');
        if (!account) continue;
        EXPECT_EQ(States().back() + account->FundToken(), key + ':' + each.state);
        EXPECT_THAT(
            luaCalls.back(),
            testing::AllOf(
                testing::StartsWith("save_passInfo {\"useraccount\":\"user\",\"accountList\":{\"1001|7|1\":"),
                HasSubstr(key + R"(":{"Password":"pw9","TxPassword":"","DynamicPassword":""})")));

        EXPECT_TRUE(list->DeleteAccount(Values({{"accountkey", key}})));
        EXPECT_EQ(service.RowsOf(service.Sent(1048)).GetItemText(0, "account_code"), "9");
        service.AnswerJson(1048, R"({"error_code":"4","msg":"no"})", false);
        list->DeleteAccount(Values({{"accountkey", key}}));
        service.AnswerJson(1048, "{}");
        service.AnswerJson(1048, "{}");
        EXPECT_EQ(service.events.back().payload.GetText("canuse"), "0");
        EXPECT_EQ(service.events.back().payload.GetText("password"), "");
        EXPECT_THAT(service.Events(), ElementsAre("delete_account_failed ACCOUNT_LIST " + key + " 4 no",
                                                  "delete_account_success ACCOUNT_LIST " + key));
        EXPECT_THAT(luaCalls.back(), HasSubstr(key + R"(":{"Password":"")"));
        EXPECT_FALSE(list->DeleteAccount(Values({{"accountkey", key}})));
    }
    EXPECT_THAT(service.Lines(), testing::Contains("account:账户ID:9，删除成功！"));
    MakeList(L"no_such_cipher.dll");
    list->AddAccount(Values({{"account_code", "9"}, {"password", "pw9"}, {"UUID", "page"}}));
    EXPECT_EQ(service.events.back().uuid, "page");
    EXPECT_THAT(service.Events(),
                ElementsAre("add_account_failed ACCOUNT_LIST 9|| -8989 发送添加账户请求失败！"));
}

TEST_F(AccountList, PortfoliosAreAdded) {
    Load({ListRow("1001")});
    service.Lines();
    list->AddPortfolio(Values(
        {{"AccountKey", "1001|7|1"}, {"portfolio_name", "新"}, {"balance", "10"}, {"password", "pw"}}));
    EXPECT_EQ(FakeHost::Params(service.Sent(1127)).GetDataString("balance"), "10");
    EXPECT_FALSE(FakeHost::Params(service.Sent(1127)).Has("password"));
    service.Answer(1127, MakeTable({"portfolio_id", "portfolio_name", "fund_token", "is_default"},
                                   {{"p2", Gbk("新"), "T2", "1"}, {"p3", "c", "T3", "0"}}));
    EXPECT_EQ(list->Find("1001|7|1")->FundToken(), "T2");
    EXPECT_EQ(service.events.back().payload.ToText(),
              R"({"portfolioid":"p3","fund_token":"T3","default_fund_token":"T2"})");
    EXPECT_EQ(service.Lines().front(), "account:单元名称:新，添加成功！");
    list->AddPortfolio(Values({{"AccountKey", "1001|7|1"}}));
    service.AnswerJson(1127, R"({"code":"8","message":"full"})", false);
    EXPECT_EQ(service.Events().back(), "add_portfolio_failed ACCOUNT_LIST 1001|7|1 8 full");
}

TEST_F(AccountList, AChangeNoticeAsksForTheWholeList) {
    CQueueRespData notice;
    notice.SetData("DATATYPE", 2010);
    notice.SetData("REQTYPE", 1033);
    EXPECT_TRUE(list->PreHandleResponse(&notice));
    EXPECT_EQ(FakeHost::Params(service.Sent(1033)).GetDataString("useraccount"), "user");
    service.Answer(1033, MakeTable(kListColumns, {ListRow("1001")}));
    EXPECT_EQ(list->All().size(), 1U);
}

// One of them: a logged-out account has none in memory, and the host keeps the other.
TEST_F(AccountList, PasswordsThatWereEnteredAgainAreRemembered) {
    Load({ListRow("1001")});
    list->Logout(Values({{"accountkey", "1001|7|1"}}));
    service.Answer(1032);
    EXPECT_TRUE(list->Find("1001|7|1")->Password(AccountField::kTxPassword).IsEmpty());
    list->EditPassword(Values({{"accountkey", "1001|7|1"}, {"password", "new"}}));
    EXPECT_EQ(service.RowsOf(service.Sent(1808)).GetItemText(0, "institution_id"), "i1");
    service.Answer(1808, MakeTable({"account_name", "error_code"}, {{"N", "0"}}));
    EXPECT_THAT(luaCalls.back(),
                HasSubstr(R"("1001|7|1":{"Password":"new","TxPassword":"tx1","DynamicPassword":""})"));
    EXPECT_EQ(service.Events().back(), "edit_password_success ACCOUNT 1001|7|1");
}

TEST_F(AccountList, WhatAQuerySaysIsNotLostToWhatIsConfirmedMeanwhile) {
    Load({ListRow("1001")});
    auto renamed = ListRow("1001");
    renamed[2] = "Renamed", renamed[7] = "0";
    list->Query();
    AnswerUpload({{"T1001", "", "", "", "0"}});  // says nothing of what rows say
    service.Answer(1033, MakeTable(kListColumns, {renamed}));
    EXPECT_EQ(list->Find("1001|7|1")->Get(AccountField::kAccountName), "Renamed");

    list->Query();
    list->Bind(Values({{"accountkey", "1001|7|1"}}));
    EXPECT_EQ(FakeHost::Params(service.Sent(1036)).GetDataString("useraccount"), "user");
    service.Answer(1036);
    renamed[2] = "Again";
    const auto queries = service.CountSent(1033);
    service.Answer(1033, MakeTable(kListColumns, {renamed}));  // perhaps from before
    EXPECT_TRUE(list->Find("1001|7|1")->IsBound());
    ASSERT_EQ(service.CountSent(1033), queries + 1) << "and so it is asked again";
    renamed[7] = "1";
    service.Answer(1033, MakeTable(kListColumns, {renamed}));
    EXPECT_EQ(list->Find("1001|7|1")->Get(AccountField::kAccountName), "Again");
    EXPECT_EQ(service.CountSent(1033), queries + 1);
}

TEST_F(AccountList, RequestsOfAccountsThatGoEndAsFailed) {
    for (const bool isDeleted : {true, false}) {
        Load({ListRow("1001"), ListRow("1002")});
        list->Edit(Values({{"accountkey", "1001|7|1"}}));
        list->Logout(Values({{"accountkey", "1001|7|1"}}));
        service.events.clear();
        if (isDeleted) {
            list->DeleteAccount(Values({{"accountkey", "1001|7|1"}}));
            service.AnswerJson(1048, "{}");
        } else {
            Load({ListRow("1002")});
        }
        service.Answer(1049);  // nobody is there
        EXPECT_THAT(
            service.Events(),
            testing::AllOf(testing::Contains("edit_account_failed ACCOUNT 1001|7|1 -8989 账户不存在！"),
                           testing::Contains("logout_account_failed ACCOUNT 1001|7|1 -8989 账户不存在！"),
                           testing::SizeIs(isDeleted ? 3 : 4)));
    }
}

uint64_t g_now = 0;

TEST_F(AccountList, RequestsThatNobodyAnswersAreGivenUp) {
    CAccountRequester::SetClock([] { return g_now; });
    list->Query();
    g_now += CAccountRequester::kPatience;
    const CQueueReqItem first = service.Sent(1033);
    list->Query();
    EXPECT_THAT(service.Events(), ElementsAre("initialize_finished ACCOUNT_LIST",
                                              "account_refresh_failed ACCOUNT_LIST -8989 没有收到应答！"));
    service.Answer(1033, MakeTable(kListColumns, {ListRow("1001"), ListRow("1002")}));
    service.Answer(first, MakeTable(kListColumns, {}));
    EXPECT_EQ(list->All().size(), 2U) << "too late";
    service.events.clear();

    // The passwords go with the request.
    list->EditPassword(Values({{"accountkey", "1001|7|1"}, {"password", "new"}}));
    g_now += CAccountRequester::kPatience;
    list->Logout(Values({{"accountkey", "1002|7|1"}}));
    EXPECT_THAT(service.Events(),
                testing::Contains("edit_password_failed ACCOUNT 1001|7|1 -8989 没有收到应答！"));
    service.Answer(1808, MakeTable({"error_code"}, {{"0"}}));
    EXPECT_EQ(list->Find("1001|7|1")->Get(AccountField::kPassword), "pw1");
    for (size_t i = 0; i <= CAccountRequester::kMaxUnanswered; ++i) list->SaveOrder();
    EXPECT_EQ(list->PendingRequests(), CAccountRequester::kMaxUnanswered);
    EXPECT_EQ(list->Find("1002|7|1")->PendingRequests(), 0U);
    CAccountRequester::SetClock(nullptr);
}

TEST_F(AccountList, TheHostMayEndTheListWhileItAsks) {
    for (const char* const ending : {"get_ProductInfo", "get_passInfo", "save_passInfo", "PortfolioOrder"}) {
        AccountOrder::ReadAgain();
        MakeList(kModule);
        onAsk = [&](const CUIData& params) {
            if (params.GetDataText("method") == ending || params.GetDataText("Key") == ending) list.reset();
        };
        Load({ListRow("1001")});
        if (list) list->AddAccount(Values({{"account_code", "9"}, {"password", "pw9"}}));
        if (list) service.AnswerJson(1047, kAdds[0].json);
        EXPECT_EQ(list, nullptr) << ending;
    }
}

}  // namespace
}  // namespace luadui
