#include "accounts/account.h"

#include <gmock/gmock.h>

#include <memory>

#include "base/counters.h"
#include "tests/accounts/service_probe.h"

namespace luadui {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum AccountField;

constexpr auto Values = ServiceProbe::Values;

class AccountTest : public testing::Test {
  protected:
    AccountTest() {
        for (const AccountFieldInfo& info : kAccountFieldTable)
            account->Set(info.field,
                         info.IsSerialised() && !info.isSecret ? "[" + std::string(info.key) + "]" : "");
        account->Set(kAccountId, "1001");
        account->Set(kBrokerId, "7");
        account->Set(kTradeType, "1");
        account->Set(kBindStatus, "0");
        account->Set(kCanUse, "1");
        account->RebuildKey();
    }

    void Answer(const CQueueRespData& response) { account->OnResponse(&response); }
    // The account after a re-entry of passwords was asked for.
    bool EnterPassword() {
        return account->EditPassword(
            Values({{"password", "clear-1"}, {"txpassword", "clear-2"}, {"token", "T"}}),
            [](std::string_view text) { return "<" + std::to_string(text.size()) + ">"; });
    }

    ServiceProbe service;
    std::unique_ptr<CAccount> account = std::make_unique<CAccount>(service);
};

TEST_F(AccountTest, AnswersChangeTheAccount) {
    const auto login = [](const std::vector<std::string>& row) {
        return MakeTable({"account_name", "permission_code", "error_code", "msg"}, {row});
    };
    struct Case {
        std::function<bool()> ask;
        std::string request;  // empty: refused
        CDataTable answer;
        std::string event;
        std::vector<std::string> lines;
        std::string state;  // bound, usable, message, name, nickname, mark, permissions, password
    };
    const CDataTable none;
    const auto bind = [&] { return account->Bind(Values({{"useraccount", "u"}})); };
    const auto unbind = [&] { return account->Unbind(Values({{"useraccount", "u"}, {"user_id", "x"}})); };
    const auto enter = [&] { return EnterPassword(); };
    const std::string entered =
        "1808 "
        "Table=[account_code,trade_type,institution_id,broker_id,issimulate,password,txpassword,hardware_"
        "info,"
        "version,trade_server,verification,qsflag,token,user_id,key_password,key_account_code,key_fund_token|"
        "1001,1,[institutionid],7,[issimulate],<7>,<7>,,,,,,T,[userid],,,]";
    // clang-format off
    const Case cases[] = {
        {unbind, "", none, "", {"，未绑定！"}, "0 1 [AccountMsg] [accountname] [nickname] [accountmark] [PermissionCode] "},
        {bind, "1036 useraccount=u account_code=1001 product_id=[productid] institution_id=[institutionid] user_id=[userid]",
         none, "bind_account", {"，绑定请求已发送！", "，绑定成功！"},
         "1 1 [AccountMsg] [accountname] [nickname] [accountmark] [PermissionCode] "},
        {bind, "", none, "", {"，已绑定！"}, "1 1 [AccountMsg] [accountname] [nickname] [accountmark] [PermissionCode] "},
        {unbind, "1037 useraccount=u account_code=1001 product_id=[productid] institution_id=[institutionid] user_id=x",
         none, "unbind_account", {"，解绑请求已发送！", "，解绑成功！"},
         "0 1 [AccountMsg] [accountname] [nickname] [accountmark] [PermissionCode] "},
        {[&] { return account->Edit(Values({{"account_mark", "mark"}, {"alias", "别名"}, {"unknown", "x"}})); },
         "1049 Table=[account_code,trade_type,institution_id,broker_id,issimulate,account_mark,alias,user_id|"
         "1001,1,[institutionid],7,[issimulate],mark,别名,[userid]]",
         none, "edit_account", {"，编辑成功！"}, "0 1 [AccountMsg] [accountname] 别名 mark [PermissionCode] "},
        {enter, entered, login({Gbk("张三"), "9", "5", Gbk("密码错误")}), "edit_password", {"，重输密码成功！"},
         "0 0 密码错误 张三 张三_[qsname] mark 9 "},
        {enter, entered, login({Gbk("李四"), "8", "0", "?"}), "edit_password", {"，重输密码成功！"},
         "0 1 正常 李四 李四_[qsname] mark 8 clear-1"},
        {enter, entered, MakeTable({"error_code"}, {{"0"}}), "edit_password", {"，重输密码成功！"},
         "0 1 正常 李四 李四_[qsname] mark 8 clear-1"},
        {[&] { return account->Logout(Values({{"client_user_id", "c"}})); }, "1032 fund_token=[fund_token] client_user_id=c",
         none, "logout_account", {"，注销成功！"}, "0 0 手动注销 李四 李四_[qsname] mark 8 "},
    };
    // clang-format on
    for (const Case& each : cases) {
        const size_t sent = service.host.pushed.size();
        ASSERT_EQ(each.ask(), !each.request.empty());
        ASSERT_EQ(service.host.pushed.size() - sent, each.request.empty() ? 0u : 1u);
        if (!each.request.empty()) {
            EXPECT_EQ(GbkToUtf8(service.LastRequest()), each.request);
            Answer(ServiceProbe::WithTable(service.AnswerToLast(), each.answer));
            ASSERT_EQ(service.events.size(), 1u) << each.event;
            EXPECT_EQ(service.events[0].payload.ToText(), account->ToJson().ToText());
            EXPECT_EQ(service.events[0].uuid, service.host.pushed.back().GetDataString("UUID"));
            EXPECT_THAT(service.Events(), ElementsAre(each.event + "_success ACCOUNT 1001|7|1"));
        }
        std::vector<std::string> lines;
        for (const std::string& end : each.lines) lines.push_back("account:账户ID:1001" + end);
        EXPECT_EQ(service.Lines(), lines);
        std::string state(account->Get(kBindStatus));
        for (const AccountField field :
             {kCanUse, kMessage, kAccountName, kNickname, kAccountMark, kPermissionCode, kPassword})
            (state += ' ') += account->Get(field);
        EXPECT_EQ(GbkToUtf8(state), each.state) << each.event;
    }
    EXPECT_TRUE(account->Password(kTxPassword).IsEmpty());
    const CQueueReqItem& request = service.host.pushed.back();
    EXPECT_EQ(request.GetDataText("FundToken"), "[fund_token]");
    EXPECT_EQ(request.GetDataText("log_source") + FakeHost::Params(request).GetDataText("log_source"),
              "MODULE_ACCOUNTMANAGERMODULE_ACCOUNTMANAGER");
    EXPECT_EQ(request.GetDataText("From"), std::to_string(account->GetHandle()));
    EXPECT_EQ(request.GetDataText("UUID").size(), 36u);
}

TEST_F(AccountTest, PasswordsDoNotLeaveWithoutCipher) {
    const CUIData values = Values({{"password", "clear-3"}});
    EXPECT_TRUE(account->EditPassword(values, nullptr));
    EXPECT_TRUE(account->EditPassword(values, [](auto) { return std::nullopt; }));
    EXPECT_THAT(service.host.pushed, IsEmpty());
    const std::string failed = "edit_password_failed ACCOUNT 1001|7|1 -8989 发送重输密码请求失败！";
    EXPECT_THAT(service.Events(), ElementsAre(failed, failed));
}

TEST_F(AccountTest, FailuresTellTheReason) {
    const std::pair<std::string, std::string> cases[] = {
        {R"({"error_code":"E1","msg":"m1","code":"E2","message":"m2"})", "E1 m1"},
        {R"({"code":"E2","message":"m2"})", "E2 m2"},
        {R"({"code":-3,"msg":1.5})", "-3.000 1.500"},
        {R"({"error_code":null,"code":7,"msg":[1],"message":"m2"})", "7.000"},
        {R"({})", "-8989 绑定失败！"},
        {"", "-8989 绑定失败！"},
    };
    for (const auto& [json, reason] : cases) {
        account->Bind({});
        CQueueRespData response = service.AnswerToLast(false);
        CJsonObject object;
        if (object.Parse(json)) response.SetData("JsonData", object);
        Answer(response);
        EXPECT_THAT(service.Events(), ElementsAre("bind_account_failed ACCOUNT 1001|7|1 " + reason)) << json;
        EXPECT_FALSE(account->IsBound());
    }
}

TEST_F(AccountTest, LoginAnswerWithoutARowIsAFailure) {
    const CDataTable noRow = MakeTable({"error_code"}, {});
    for (const CDataTable* const table : {static_cast<const CDataTable*>(nullptr), &noRow}) {
        EnterPassword();
        CQueueRespData response = service.AnswerToLast();
        response.SetData("Table", "no table");
        if (table) response.SetData("Table", *table);
        response.SetData("RawData", Gbk("<乱>"));
        Answer(response);
        EXPECT_EQ(GbkToUtf8(service.events.at(0).payload.ToText()),
                  R"({"error_code":"-8989","msg":"获取应答数据生成表格失败！原始数据：<乱>"})");
        EXPECT_THAT(service.Events(), ElementsAre("edit_password_failed ACCOUNT 1001|7|1 -8989 "
                                                  "获取应答数据生成表格失败！原始数据：<乱>"));
        EXPECT_TRUE(account->CanUse());
        EXPECT_TRUE(account->Password(kPassword).IsEmpty());
    }
}

TEST_F(AccountTest, EachRequestHasOneAnswer) {
    const uint64_t before = CCounters::Get("account_answer_repeated");
    account->Bind(Values({{"UUID", "one"}}));
    CQueueRespData wrong = service.AnswerToLast(false);
    wrong.SetData("REQTYPE", 1037);
    Answer(wrong);                                      // of another request's type
    CQueueRespData late = service.AnswerToLast(false);  // says the opposite
    Answer(service.AnswerToLast());
    Answer(late);
    Answer(CQueueRespData());
    account->OnResponse(nullptr);
    EXPECT_TRUE(account->IsBound());
    EXPECT_THAT(service.Events(), ElementsAre("bind_account_success ACCOUNT 1001|7|1"));
    EXPECT_EQ(CCounters::Get("account_answer_repeated") - before, 3u);

    // Two requests under one identifier: the second is refused, the first is still answered. An answer that lost
    // what was asked is as good as one that did not.
    EXPECT_TRUE(account->Edit(Values({{"UUID", "two"}, {"alias", "first"}})));
    EXPECT_TRUE(account->Edit(Values({{"UUID", "two"}, {"alias", "second"}})));
    CQueueRespData bare = service.AnswerToLast();
    bare.Remove("Request");
    Answer(bare);
    EXPECT_THAT(service.Events(),
                ElementsAre("edit_account_failed ACCOUNT 1001|7|1 -8989 发送编辑账户请求失败！",
                            "edit_account_success ACCOUNT 1001|7|1"));
    EXPECT_EQ(account->Get(kNickname), "first");
}

TEST_F(AccountTest, AnswersInPartsAreOne) {
    EnterPassword();
    CQueueRespData part, last;
    CQueueRespData host = ServiceProbe::WithTable(service.AnswerToLast(),
                                                  MakeTable({"account_name", "error_code"}, {{"A", "0"}}));
    host.SetData("IsLast", false);
    part.CopyFrom(host);
    Answer(part);
    EXPECT_THAT(service.Events(), IsEmpty());
    last.CopyFrom(service.AnswerToLast());
    Answer(last);
    EXPECT_EQ(service.Events().size(), 1u);
    EXPECT_EQ(account->Get(kAccountName), "A");
}

TEST_F(AccountTest, MayBeDestroyedByWhoeverItCalls) {
    service.onEvent = [this](const ResultEvent&) { account.reset(); };
    account->Bind({});
    Answer(service.AnswerToLast());
    EXPECT_EQ(service.Events().size(), 1u);

    account = std::make_unique<CAccount>(service);
    EXPECT_TRUE(account->EditPassword({}, nullptr));  // the event destroys it
    EXPECT_FALSE(account);
    account = std::make_unique<CAccount>(service);
    service.host.onPush = [this](CQueueReqItem&) { account.reset(); };
    EXPECT_TRUE(account->Bind({}));
    EXPECT_FALSE(account);
}

TEST_F(AccountTest, JsonKeepsTheOrderOfFields) {
    account->Set(kPassword, "p");
    account->Set(kSpare1, "spare");
    Portfolios portfolios;
    EXPECT_TRUE(ReadPortfolios(Gbk(R"([{"portfolio_id":"2","portfolio_name":"淺丶","fund_token":"F2"},
        {"portfolio_id":10,"portfolio_code":"c","remarks":"r","is_default":1,"fund_token":"F10"}])"),
                               portfolios));
    account->SetPortfolios(portfolios);
    EXPECT_EQ(
        GbkToUtf8(account->ToJson().ToText()),
        R"({"accountkey":"1001|7|1","id":"[id]","accountid":"1001","accountname":"[accountname]","nickname":"[nickname]",)"
        R"("accountmark":"[accountmark]","qsid":"7","qsname":"[qsname]","yybid":"[yybid]","yybname":"[yybname]",)"
        R"("productid":"[productid]","productname":"[productname]","institutionid":"[institutionid]","userid":"[userid]",)"
        R"("issimulate":"[issimulate]","tradetype":"1","userkey":"[userkey]","PermissionCode":"[PermissionCode]",)"
        R"("bindstatus":"0","allowlogin":"[allowlogin]","AccountMsg":"[AccountMsg]","fund_token":"F10","password":"p",)"
        R"("txpassword":"","dynamicpassword":"","canuse":"1","portfolios":[)"
        R"({"portfolioid":"10","portfolioname":"","portfoliocode":"c","portfolioremarks":"r","is_default":"1","fund_token":"F10"},)"
        R"({"portfolioid":"2","portfolioname":"淺丶","portfoliocode":"","portfolioremarks":"","is_default":"","fund_token":"F2"}]})");
}

TEST(Portfolios, ReadWhatCanBeRead) {
    struct Case {
        std::string text;
        bool isRead;
        std::string ids, token;  // the default one's
    };
    // clang-format off
    const Case cases[] = {
        {" [] ", true, "", ""},
        {"{}", false, "", ""},
        {R"([1,{"portfolio_id":"b","fund_token":"B"}])", false, "b,", "B"},
        {R"([{"portfolio_id":"b","fund_token":"B"},{"portfolio_id":"a","fund_token":"A"},{"remarks":""}])", true, "a,b,", "A"},
        {R"([{"portfolio_id":"a","is_default":"1"},{"portfolio_id":"b","is_default":"1","fund_token":"B"}])", true, "a,b,", "B"},
        {R"([{"portfolio_id":"a"},{"portfolio_id":"b)", false, "a,", ""},
    };
    // clang-format on
    for (const Case& each : cases) {
        Portfolios portfolios;
        portfolios.Put({"old", "", "", "", "", "old"});
        EXPECT_EQ(ReadPortfolios(each.text, portfolios), each.isRead) << each.text;
        std::string ids;
        for (const Portfolio& portfolio : portfolios.All()) ids += portfolio.id + ',';
        EXPECT_EQ(ids, each.ids) << each.text;
        EXPECT_EQ(portfolios.Default() ? portfolios.Default()->fundToken : "", each.token) << each.text;
    }
}

}  // namespace
}  // namespace luadui
