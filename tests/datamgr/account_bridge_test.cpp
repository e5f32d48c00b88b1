// The account manager among the real router, a page, the timer window and a host that hands news back.
#include "datamgr/account_bridge.h"

#include "accounts/account_operations.h"
#include "datalists/data_timer_wnd.h"
#include "datamgr/ui_registry.h"
#include "messaging/handle_text.h"
#include "messaging/request_object.h"
#include "messaging/response_routing.h"
#include "tests/datamgr/page_fixture.h"
#include "tests/platform/probe.h"

namespace luadui {
namespace {

// Subscribed to a topic like the objects of a page.
class Subscriber : public CRequestObject {
  public:
    explicit Subscriber(const char* topic) {
        CQueueReqItem request;
        request.SetData("REQTYPE", 1601);
        request.SetData("From", std::to_string(GetHandle()));
        request.SetData("Params", RecordOf(std::string(" key=") + topic));
        CUIStockDataManager::get_mutable_instance().Request(request);
    }
    void OnResponse(const CQueueRespData* response) override {
        received += response->GetDataString("RawData");
    }

    std::string received;
};

class AccountBridgeTest : public PageFixture {
  protected:
    AccountBridgeTest() {
        CJsonObject user, login;
        user.Set("username", "user");
        login.Set("g_user", user);
        router.Init(login.ToText(), HWND());
        bridge = std::make_unique<AccountBridge>();
        Serve(kQueryAccounts.type, TableOf("account_id,account_code,broker_id,trade_type;7,1,8,1;9,2,8,1"));
        host.pushed.clear();
    }

    // The account service's answer to the last request of that type.
    void Serve(int type, const CDataTable& table) {
        for (const CQueueReqItem& request : std::vector(host.pushed)) {
            if (RequestTypeOf(request) != type) continue;
            CQueueRespData answer;
            answer.SetData("DATATYPE", 2001);
            answer.SetData("REQTYPE", type);
            answer.SetData("UUID", request.GetDataText("UUID"));
            answer.SetData("Request", static_cast<const CUIData&>(request));
            answer.SetData("Table", table);
            DeliverResponse(HandleFromText(request.GetDataText("From")), answer);
        }
    }
    void Push(std::string_view topic, const std::string& json) {
        CQueueRespData push;
        push.SetData("DATATYPE", 2001);
        push.SetData("Topic", topic);
        push.SetData("RawData", json);
        router.OnResponse(&push);
    }
    // What left through the push callback since the last call: types, of notifications their keys. Log lines leave
    // with every tick that passes.
    std::string Left() {
        std::string text;
        for (const CQueueReqItem& request : std::exchange(host.pushed, {})) {
            if (RequestTypeOf(request) == RequestTypeOfKind("log_operation")) continue;
            const CUIData params = FakeHost::Params(request);
            text += RequestTypeOf(request) == 65537 ? params.GetDataString("_SUBKEY")
                                                    : std::to_string(RequestTypeOf(request));
            text += ' ';
        }
        return text;
    }
    std::unique_ptr<AccountBridge> bridge;
};

TEST_F(AccountBridgeTest, ThePageThatAsksGetsItsAnswerRecord) {
    Set(kSetRequest, "all_account_order handle=H refresh=1");
    EXPECT_EQ(
        window.Take(),
        R"(all_account_order retcode=0 message= result={"code":"0","message":"","data":{"AllAccountOrder":)"
        R"([{"accountkey":"1|8|1","order":"1"},{"accountkey":"2|8|1","order":"2"}]}} )"
        "all_account_order=[Index,AccountKey,AccountOrder|0,1|8|1,1|1,2|8|1,2] handle=H ret_code=0 "
        "ret_message=");
    for (const std::string kind : {"update_customgrp_groupindex", "create_portfoil_account"}) {
        Set(kSetRequest, kind + " handle=H curGroupID=none AccountOrder=x");
        EXPECT_NE(window.Take().find(kind + " retcode=-8989 "), std::string::npos) << kind;
    }
    EXPECT_EQ(neighbour.Take() + stranger.Take() + Left(), "");
}

TEST_F(AccountBridgeTest, CommandsComeInAndNotificationsGoRoundOnce) {
    Subscriber subscriber("K");
    host.pushed.clear();
    Push("cmd_accountmanager", R"({"cmd":"getGroupList","key":"K","uuid":"u"})");
    ASSERT_EQ(host.pushed.size(), 1U);
    const CUIData params = FakeHost::Params(host.pushed[0]);
    EXPECT_EQ(params.GetDataText("_UUID"), "u");
    EXPECT_EQ(Left(), "K ");
    EXPECT_EQ(subscriber.received, "");  // the way is through the host
    const std::string answer = params.GetDataString("_SEND_DATA");
    Push("K", answer);
    EXPECT_EQ(subscriber.received, answer);
    EXPECT_EQ(Left(), "");
}

TEST_F(AccountBridgeTest, WhoIsLoggedInGoesToTheRouterAtOnce) {
    for (const auto& [key, account] : bridge->Manager().Accounts().All()) account->SetUsable();
    bridge->Manager().Execute(std::string(CAccountManager::kOnlineCommand), CUIData());
    EXPECT_EQ(Left(), "1903 ");
    CDataTable online;
    router.CommonData().CUIDataManager::GetData("AccountOnline").GetData("AccountOnline", online);
    EXPECT_EQ(online.GetRowNumber(), 2);
}

TEST_F(AccountBridgeTest, TimersRunTheirCommandsUntilTheyAreStopped) {
    Push(
        "cmd_accountmanager",
        R"({"cmd":"modifyAccountOrder","key":"K","params":{"accountorder":[{"accountkey":"1|8|1","order":9}]}})");
    EXPECT_EQ(Left(), "K ");
    router.CommonData().StartTimer(CAccountManager::kOrderTimer, CDataTimerWnd::kMinPeriod);  // sooner
    std::string left;
    EXPECT_TRUE(platform_test::PumpUntil([&] { return !(left += Left()).empty(); }));
    EXPECT_EQ(left, "1804 ");
    EXPECT_FALSE(router.CommonData().StopTimer(CAccountManager::kOrderTimer));  // it did that itself
}

TEST_F(AccountBridgeTest, NobodyServesAccountsBehindIt) {
    const auto missing = CCounters::Get("account_manager_missing");
    bridge.reset();
    Set(kSetRequest, "all_account_order handle=H refresh=1");
    Push("cmd_accountmanager", R"({"cmd":"getGroupList","key":"K"})");
    EXPECT_EQ(Left() + window.Take(), "");
    EXPECT_EQ(CCounters::Get("account_manager_missing"), missing + 1);
}

}  // namespace
}  // namespace luadui
