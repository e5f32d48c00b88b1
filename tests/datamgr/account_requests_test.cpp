#include "datamgr/account_requests.h"

#include "accounts/account_commands.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

class Commands : public AccountCommands {
  public:
    bool Execute(const std::string& command, const CUIData& arguments) override {
        received = command + ' ' + Describe(arguments);
        return accepts;
    }
    std::string received;
    bool accepts = true;
};

constexpr char kAll[] =
    " fund_token=F account_order_source=1 ActOrderSource=2 account_type=3 curGroupID=4 AccountOrder=5 "
    "AccountKey=6 "
    "Index=7 AccountProperty=8 version=9 expire=10 InstitutionID=11 balance=12 trade_type=13 broker_id=14 "
    "portfolio_name=15 security_account_id=16 security_account_code=17 remark=18 product_id=19 qsflag=20";
constexpr char kOrder[] =
    "account_order_source=1 ActOrderSource=2 account_type=3 curGroupID=4 AccountOrder=5 AccountKey=6 Index=7 "
    "AccountProperty=8";
constexpr char kPortfolio[] =
    "version=9 expire=10 InstitutionID=11 balance=12 trade_type=13 broker_id=14 portfolio_name=15 "
    "security_account_id=16 security_account_code=17 remark=18 product_id=19 qsflag=20";

struct CommandCase {
    const char* kind;
    const char* type;
    const char* command;
    const char* fields;
};
constexpr CommandCase kCommandCases[] = {
    {"create_portfoil_account", "1130", "add_portfolio", kPortfolio},
    {"all_account_order", "1801", "queryOrderFromPage", kOrder},
    {"update_defaultgrp_accountorder", "1802", "modifyAccountOrder", kOrder},
    {"update_customgrp_groupindex", "1803", "modifyOrderInGroup", kOrder},
};

using AccountRequestsTest = PageFixture;

TEST_F(AccountRequestsTest, BecomeCommands) {
    Commands commands;
    router.SetAccountCommands(&commands);
    for (const auto& [kind, type, command, fields] : kCommandCases) {
        Set(kSetRequest, std::string(kind) + " handle=H" + kAll);
        std::string got =
            ReplaceText(commands.received, "handle=" + std::to_string(window.GetHandle()), "handle=H");
        const size_t uuid = got.find("UUID=");
        ASSERT_NE(uuid, std::string::npos) << got;
        got.erase(uuid, got.find(' ', uuid) + 1 - uuid);
        EXPECT_EQ(got, std::string(command) + " module=MODULE_STOCK_DATAMANAGER REQTYPE=" + type +
                           " handle=H From=" + std::to_string(page->GetHandle()) + ' ' + fields);
    }
    CQueueReqItem request;
    request.SetData("REQTYPE", 1801);
    request.SetData("Params", RecordOf(" strSourceHandle=7 From= strFrom=8 struuid=u Index=1"));
    request.SetData("Table", TableOf("a;1"));
    EXPECT_TRUE(DisPatchReq2AccountManager(&commands, request));
    EXPECT_EQ(commands.received,
              "queryOrderFromPage module=MODULE_STOCK_DATAMANAGER REQTYPE=1801 handle=7 From=8 UUID=u "
              "Index=1 Table=[a|1]");
    // What the request says of itself comes first.
    CQueueReqItem named = request;
    named.SetData("From", "1");
    named.SetData("Params", RecordOf(" handle=2 strSourceHandle=7 From=8 strFrom=9 struuid=u"));
    EXPECT_TRUE(DisPatchReq2AccountManager(&commands, named));
    EXPECT_TRUE(commands.received.ends_with(" handle=2 From=1 UUID=u Table=[a|1]")) << commands.received;
    commands.accepts = false;
    EXPECT_FALSE(DisPatchReq2AccountManager(&commands, request));
    router.SetAccountCommands(nullptr);
    const auto before = CCounters::Get("account_manager_missing");
    EXPECT_FALSE(DisPatchReq2AccountManager(nullptr, request));
    EXPECT_EQ(CCounters::Get("account_manager_missing"), before + 1);
    request.SetData("REQTYPE", 1804);
    commands.received.clear();
    EXPECT_FALSE(DisPatchReq2AccountManager(&commands, request));
    EXPECT_EQ(commands.received, "");
    EXPECT_TRUE(host.pushed.empty());
}

TEST(UIEventTest, TakesItsPartsFromTheRequestOrItsParameters) {
    const auto eventOf = [](const CQueueReqItem& request) {
        const CQueueRespData event = MakeUIEvent(request);
        return event.GetDataString("Topic") + ' ' + Describe(event.GetDataView("MapData")) +
               (event.Has("Table") ? Describe(event.GetDataView("Table")) : "");
    };
    CQueueReqItem request;
    request.SetData("REQTYPE", 1605);
    EXPECT_EQ(eventOf(request), "subkey_dui_uievent {Topic=}");
    request.SetData("Params", RecordOf(" Topic=inner MapData={a=inner}"));
    EXPECT_EQ(eventOf(request), "subkey_dui_uievent {a=inner Topic=inner}");
    request.SetData("Topic", "own");
    request.SetData("MapData", RecordOf(" a=own"));
    request.SetData("Table", TableOf("a;1"));
    EXPECT_EQ(eventOf(request), "subkey_dui_uievent {a=own Topic=own}[a|1]");
}

}  // namespace
}  // namespace luadui
