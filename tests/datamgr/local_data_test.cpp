// What is answered or kept without the server: local factories, saving, calls of the host's Lua side.
#include <fstream>

#include "datamgr/client_log.h"
#include "messaging/page_sign_registry.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

std::string g_skin;  // the module's

constexpr const char* kViewLists[] = {"entrust",  "entrustcredit",  "entrust_ggt",
                                      "deal",     "dealcredit",     "deal_ggt",
                                      "position", "positioncredit", "position_ggt"};

class LocalDataTest : public PageFixture {
  protected:
    LocalDataTest() {
        host.files["own.cfg"] = {{"a", "1"}, {"b", "2"}};
        g_skin = "blue";
        CUIDataManager::SetSkinAccess(
            {.get = [] { return g_skin; }, .set = [](const std::string& skin) { g_skin = skin; }});
    }
    ~LocalDataTest() override {
        CUIDataManager::SetSkinAccess({});
        for (const char* name : kViewLists) {
            for (const char* token : {"F1", "F2"}) {
                if (auto* const list = Common().Find(name)) list->Remove(token);
            }
        }
    }

    ListStore& Common() { return router.CommonData().Lists(); }
    std::string Calls() {
        std::string calls;
        for (const std::string& call : std::exchange(host.calls, {}))
            calls += (calls.empty() ? "" : " / ") + call;
        return ReplaceText(calls, "\\qsclient\\users\\", "");
    }
    void ShareHolidays(CUIDataManager& manager) {
        CUIData calendar("holidays");
        CDataSet dates;
        dates.Insert("20240108");
        calendar.SetData("holidays", dates);
        manager.ShareData("holidays", calendar);
    }
};

struct FactoryCase {
    const char* asked;
    const char* answer;  // after the kind and the handle; null: none
    const char* calls = "";
};
constexpr FactoryCase kFactoryCases[] = {
    {"config handle=H config_path=own.cfg config_key=a",
     "config handle=H config_path=own.cfg config_key=a pageName=P config_value=1", "read own.cfg a"},
    {"config handle=H config_key=<a,b>", "config handle=H config_key=<a,b> pageName=P config_value={a= b=}",
     "read user.cfg a / read user.cfg b"},
    {"config handle=H config_key=<>", nullptr},
    {"get_all_config handle=H config_path=own.cfg", "get_all_config a=1 b=2 handle=H", "all own.cfg"},
    {"erase_config handle=H config_path=own.cfg config_key=<a,c>",
     "erase_config handle=H config_path=own.cfg config_key=<a,c> pageName=P",
     "erase own.cfg a / erase own.cfg c"},
    {"setting_config handle=H setting_path=own.cfg setting_config_type=<a,b>",
     "setting_config handle=H setting_path=own.cfg setting_config_type=<a,b> pageName=P a=1 b=2",
     "read own.cfg a / read own.cfg b"},
    {"skin handle=H", "skin handle=H pageName=P skin=blue"},
    {"skin handle=H refresh=1", nullptr},
    {"is_trade_date handle=H date=20240105",
     "is_trade_date handle=H date=20240105 pageName=P is_trade_date=true"},
    {"is_trade_date handle=H date=20240108",
     "is_trade_date handle=H date=20240108 pageName=P is_trade_date=false"},
    {"trade_date handle=H date=20240105 shiftday=2",
     "trade_date handle=H date=20240105 shiftday=2 pageName=P tradeday=(20240109,20240110)"},
    {"trade_date handle=H date=today shiftday=2", nullptr},
    {"no_such_kind handle=H", nullptr},
    {" handle=H", nullptr},
};

TEST_F(LocalDataTest, FactoriesAnswerBothWaysOfAsking) {
    ShareHolidays(*page);
    for (const FactoryCase& row : kFactoryCases) {
        for (const bool isAsked : {true, false}) {
            const auto unknown = CCounters::Get("request_kind_unknown");
            CUIData record = RecordOf(row.asked, window.GetHandle());
            if (isAsked) {
                EXPECT_EQ(page->GetData(record, false, true), row.answer != nullptr) << row.asked;
            } else {
                page->SetData(&record, kSetFactoryRequest);
            }
            EXPECT_EQ(window.Take(), row.answer ? std::string(row.answer) + " ret_code=0 ret_message=" : "")
                << row.asked;
            EXPECT_EQ(Calls(), row.calls);
            EXPECT_EQ(CCounters::Get("request_kind_unknown") - unknown, row.answer ? 0 : 1) << row.asked;
            host.files["own.cfg"] = {{"a", "1"}, {"b", "2"}};
        }
    }
    EXPECT_TRUE(host.pushed.empty());
}

TEST_F(LocalDataTest, TheCalendarOfTheCommonDataServesAll) {
    CUIData record = RecordOf("is_trade_date date=20240105"),
            shift = RecordOf("trade_date date=20240105 shiftday=-1");
    EXPECT_TRUE(page->GetData(record, true, false));
    EXPECT_FALSE(record.GetDataBool("is_trade_date"));  // there is none yet
    EXPECT_FALSE(page->GetData(shift, true, false));
    ShareHolidays(router.CommonData());
    EXPECT_TRUE(page->GetData(record, true, false));
    EXPECT_TRUE(record.GetDataBool("is_trade_date"));
    EXPECT_TRUE(page->GetData(shift, true, false));
    EXPECT_EQ(Describe(shift.GetDataView("tradeday")), "(20240104)");
    router.CommonData().Lists().Shared().Remove("holidays");
}

TEST_F(LocalDataTest, ViewsAreMadeWhenAllAccountsAreHeld) {
    constexpr char kEnd[] = " ret_code=0 ret_message=";
    const auto ask = [&](const char* text) {
        CUIData record = RecordOf(text, window.GetHandle());
        page->GetData(record, false, false);
        return ReplaceText(window.Take(), kEnd, "");
    };
    auto& positions = *Common().FindOrMake("position");
    auto& ledger = RequestLedger::Instance();
    positions.TakeAnswer("F1", TableOf("SecurityID,Market,StockBalance;600000,1,100"), ledger.NextAge());
    EXPECT_EQ(ask("positionmulti handle=H fund_token=<F1,F2>"), "");
    ASSERT_EQ(host.pushed.size(), 2);  // one is missing: both are asked
    EXPECT_EQ(host.pushed[1].GetDataString("FundToken"), "F2");
    positions.TakeAnswer("F2", TableOf("SecurityID,Market,StockBalance;600000,1,50"), ledger.NextAge());
    EXPECT_EQ(ask("positionmulti handle=H fund_token=<F1,F2>"),
              "positionmulti handle=H fund_token=<F1,F2> pageName=P "
              "positionmulti=[SecurityID,Market,StockBalance|600000,1,100|600000,1,50]");
    EXPECT_EQ(ask("positionsum handle=H fund_token=<F1,F2>"),
              "positionsum handle=H fund_token=<F1,F2> pageName=P "
              "positionsum=[SecurityID,Market,StockBalance|600000,1,150]");
    EXPECT_EQ(ask("positionmulti handle=H fund_token=F2"),
              "positionmulti handle=H fund_token=<F2> pageName=P "
              "positionmulti=[SecurityID,Market,StockBalance|600000,1,50]");
    EXPECT_EQ(host.pushed.size(), 2);
    EXPECT_EQ(ask("positionmulti handle=H fund_token=<F1,F2> refresh=1"), "");
    EXPECT_EQ(host.pushed.size(), 4);

    // Each view is of its own list; two of them go out under the name of their list.
    for (const char* name : kViewLists)
        Common().FindOrMake(name)->TakeAnswer("V1", TableOf("of;" + std::string(name)), ledger.NextAge());
    for (const auto& [view, list, told] : std::initializer_list<std::array<std::string, 3>>{
             {"entrustmulti", "entrust", "entrustmulti"},
             {"entrustmulticredit", "entrustcredit", "entrustmulticredit"},
             {"entrust_ggt_multi", "entrust_ggt", "entrust_ggt"},
             {"dealmulti", "deal", "dealmulti"},
             {"dealmulticredit", "dealcredit", "dealmulticredit"},
             {"deal_ggt_multi", "deal_ggt", "deal_ggt"},
             {"positionmulti", "position", "positionmulti"},
             {"positionmulticredit", "positioncredit", "positionmulticredit"},
             {"position_ggt_multi", "position_ggt", "position_ggt_multi"}}) {
        EXPECT_EQ(ask((view + " handle=H fund_token=V1").c_str()),
                  told + " handle=H fund_token=<V1> pageName=P " + told + "=[of|" + list + ']');
    }
    EXPECT_EQ(host.pushed.size(), 4);
}

// All kinds that are kept for those who read them by name, and whether other pages find them, too.
struct SharedKind {
    const char* kind;
    bool isCommon = false;
};
constexpr SharedKind kSharedKinds[] = {
    {"basketmemberalloclistui"},
    {"basketmemberalloclistuicredit"},
    {"account_param_filter", true},
    {"sub_account_filter", true},
    {"checked_account"},
    {"mutiinst_allocstratefy"},
    {"mutiinst_grouptype"},
    {"mutiinst_usertoken_list"},
    {"mutiinst_usertoken_list_credit"},
    {"update_weightfactor_pt"},
    {"update_weightfactor_xy"},
    {"mutiinst_accountorder"},
    {"etf_check_notrade"},
    {"fund_update_extravalue", true},
};

TEST_F(LocalDataTest, WhatIsSavedIsReadByNameAndTold) {
    for (const auto& [kind, isCommon] : kSharedKinds) {
        SCOPED_TRACE(kind);
        page->RegisterNotify(neighbour.GetHandle(), kind);
        otherPage->RegisterNotify(stranger.GetHandle(), kind);
        const std::string name = kind, news = name + " list=<x,y> n=1 handle=-1";
        Set(kSetSave, name + " handle=H list=<x,y> n=1");
        EXPECT_EQ(neighbour.Take(), news);
        EXPECT_EQ(stranger.Take(), isCommon ? news : "");
        EXPECT_EQ(Describe(page->GetData(name)), "list=<x,y> n=1");
        EXPECT_EQ(Describe(otherPage->GetData(name)), isCommon ? "list=<x,y> n=1" : "");

        CUIData attached;
        ASSERT_TRUE(page->GetDataShared(name, attached));
        Set(kSetSave, name + " handle=H n=2");
        EXPECT_EQ(Describe(attached), "n=2");
        EXPECT_EQ(neighbour.Take(), name + " n=2 handle=-1");
        EXPECT_EQ(stranger.Take().empty(), !isCommon);
        router.CommonData().Lists().Shared().Remove(name);
    }
    EXPECT_EQ(window.Take(), "");
    EXPECT_EQ(Calls(), "");
}

TEST_F(LocalDataTest, PagesSaveForAllWhereTheySaySo) {
    Set(kSetSave, "checked_account handle=H force_sendmoudle=module_commondata a=1");
    EXPECT_EQ(Describe(router.CommonData().GetData("checked_account")), "a=1");
    EXPECT_TRUE(page->GetData("checked_account").IsEmpty());
    router.CommonData().Lists().Shared().Remove("checked_account");
}

struct SaveCase {
    const char* saved;
    const char* news;   // to those who listen for its kind
    const char* calls;  // of the host
};
constexpr SaveCase kSaveCases[] = {
    {"set_skin handle=H skin=dark", "set_skin skin=dark handle=-1", "write user.cfg skin dark"},
    {"config handle=H setting_path=own.cfg config_save_type=x a=5 set=<b>", "", "write own.cfg a 5"},
    {"mutiinst_config_save handle=H x=1 basket_alloc_type=2 set=<b>", "",
     "write user.cfg x 1 / write user.cfg basket_alloc_type 2"},
    {"refresh_hq_event handle=H code=600000", "refresh_hq_event code=600000 handle=-1", ""},
    {"page_sign handle=H page_sign=sign", "", ""},
};

TEST_F(LocalDataTest, SavingDoesItsWork) {
    page->RegisterNotify(stranger.GetHandle(), "mutiinst_config");
    for (const auto& [saved, news, calls] : kSaveCases) {
        page->RegisterNotify(neighbour.GetHandle(), RecordOf(saved).GetType());
        Set(kSetSave, saved);
        EXPECT_EQ(neighbour.Take(), news) << saved;
        EXPECT_EQ(Calls(), calls) << saved;
    }
    EXPECT_EQ(g_skin, "dark");
    EXPECT_EQ(CPageSignRegistry::Instance().Find("sign"), std::to_string(page->GetHandle()));
    EXPECT_EQ(Describe(page->GetData("mutiinst_config")), "x=1 basket_alloc_type=2");
    EXPECT_EQ(stranger.Take(), "mutiinst_config x=1 basket_alloc_type=2 handle=-1");

    const std::pair<const char*, const char*> refused[] = {{"page_sign", "page_sign_missing"},
                                                           {"no_such_kind x=1", "save_kind_unknown"},
                                                           {"", "save_kind_unknown"}};
    for (const auto& [text, counter] : refused) {
        const auto before = CCounters::Get(counter);
        Set(kSetSave, text);
        EXPECT_EQ(CCounters::Get(counter), before + 1) << text;
    }
}

// The settings of baskets are there with their defaults before anybody saves one.
TEST_F(LocalDataTest, BasketSettingsChangeWhereTheyAreRead) {
    host.files["\\qsclient\\users\\user.cfg"] = {{"algorithm_type", "7"}};
    CUIPageData baskets("MULTIINST_DUI");
    ASSERT_TRUE(baskets.Init());
    baskets.RegisterNotify(stranger.GetHandle(), "mutiinst_config");
    CUIData attached;
    ASSERT_TRUE(baskets.GetDataShared("mutiinst_config", attached));
    CUIData saved = RecordOf("mutiinst_config_save handle=H basket_alloc_type=2", window.GetHandle());
    baskets.SetData(&saved, kSetSave);
    const CUIData read = baskets.GetData("mutiinst_config");
    EXPECT_EQ(stranger.Take(), "mutiinst_config " + Describe(attached) + " handle=-1");
    for (const CUIData& config : {attached, read}) {
        EXPECT_EQ(config.GetDataString("basket_alloc_type"), "2");
        EXPECT_EQ(config.GetDataString("algorithm_type"), "7");
        EXPECT_EQ(config.GetDataString("commbine_position"), "true");
    }
    EXPECT_EQ(host.files["\\qsclient\\users\\user.cfg"]["basket_alloc_type"], "2");
}

TEST_F(LocalDataTest, PagesWriteLogsByNameOnly) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / "luadui_local_data_test";
    fs::remove_all(folder);
    fs::create_directories(folder);
    SetClientFolder(folder);
    Set(kSetSave, "write_log log_filename=trade log_value=bought");
    const auto refused = CCounters::Get("client_log_name_refused");
    const char* const names[] = {"..\\trade", "../trade", "C:trade", "NUL", "com1.txt", "a/b", "trade."};
    for (const std::string name : names) Set(kSetSave, "write_log log_value=bought log_filename=" + name);
    EXPECT_EQ(CCounters::Get("client_log_name_refused"), refused + std::size(names));
    SetClientFolder({});
    std::vector<std::string> files;
    for (const auto& file : fs::recursive_directory_iterator(folder)) {
        if (!file.is_regular_file()) continue;
        files.push_back(file.path().filename().string());
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        EXPECT_TRUE(text.ends_with("    bought\n ")) << text;
    }
    ASSERT_EQ(files.size(), 1);
    EXPECT_TRUE(files[0].ends_with("_trade.log"));
    fs::remove_all(folder);
}

TEST_F(LocalDataTest, CallsTheHostsScripts) {
    host.onAsk = [](CQueueReqItem& request) {
        const CUIData params = FakeHost::Params(request);
        std::string call;
        for (const char* key : {"cmd", "method", "params", "page_sign"})
            call += params.GetDataString(key) + ' ';
        request.SetData("result", call);
    };
    const std::pair<const char*, const char*> cases[] = {
        {"getInfo handle=H a=x set=<1,2> none=<> rec={b=1}",
         R"(sync getInfo {"a":"x","set":["1","2"],"none":[]}  )"},
        {"lua_request handle=H method=m params=[1] a=x", "sync m [1]  "},
        {"lua_request handle=H method=m page_sign=s", "sync m {} s "},
        // A character of code page 936 whose second byte is a backslash, and a true backslash.
        {"getInfo handle=H name=\x81\x5c path=a\\b",
         "sync getInfo {\"name\":\"\x81\x5c\",\"path\":\"a\\\\b\"}  "},
    };
    const auto dropped = CCounters::Get("lua_parameter_dropped");
    for (const auto& [call, result] : cases) {
        CUIData record = RecordOf(call, window.GetHandle());
        page->SetData(&record, kSetLua);
        EXPECT_EQ(record.GetDataString("result"), result);
        EXPECT_TRUE(window.Take().ends_with("result=" + std::string(result))) << call;
    }
    EXPECT_EQ(CCounters::Get("lua_parameter_dropped"), dropped + 1);
    const auto lost = CCounters::Get("record_without_receiver");
    CUIData values("f");
    values.SetData("i", 5);
    values.SetData("d", 0.5);
    values.SetData("b", true);
    CDataList list;
    list.Append("x");
    values.SetData("l", list);
    CJsonObject object;
    ASSERT_TRUE(object.Parse(R"({"y":[null]})"));
    values.SetData("o", object);
    values.SetData("handle", CBaseObject::kNoHandle);
    page->SetData(&values, kSetLua);
    EXPECT_EQ(values.GetDataString("result"),
              R"(sync f {"i":5,"d":0.5,"b":true,"l":["x"],"o":{"y":[null]}}  )");
    EXPECT_EQ(CCounters::Get("record_without_receiver"), lost);  // nobody waits for it
    EXPECT_TRUE(host.pushed.empty());
}

TEST_F(LocalDataTest, MessagesToTheHostGoOutAsRequests) {
    const std::pair<const char*, const char*> cases[] = {
        {"send_copydata code=600000", "1070 600000 "},
        {"dui_send_2_lua code=1 method=m", "65539 1 m"},
        {"start_tactic code=2", "65539 2 start_tactic"},
        {"send_http_request code=3", "1468 3 "},
    };
    for (const auto& [message, sent] : cases) {
        Set(kSetLua, message);
        ASSERT_FALSE(host.pushed.empty()) << message;
        const CUIData params = FakeHost::Params(host.pushed.back());
        EXPECT_EQ(std::to_string(RequestTypeOf(host.pushed.back())) + ' ' + params.GetDataString("code") +
                      ' ' + params.GetDataString("method"),
                  sent);
    }
    EXPECT_TRUE(host.asked.empty());
}

TEST_F(LocalDataTest, ThePageMayEndWhileTheHostIsAsked) {
    const std::pair<SET_DATA, const char*> cases[] = {
        {kSetFactoryRequest, "config handle=H config_key=<a,b>"},
        {kSetSave, "set_skin handle=H skin=x"},
        {kSetSave, "mutiinst_config_save handle=H x=1 y=2"},
        {kSetSave, "config handle=H x=1 y=2"},
        {kSetLua, "getInfo handle=H a=1"},
    };
    page.reset();
    for (const auto& [mode, text] : cases) {
        CUIData record = RecordOf(text, window.GetHandle());
        host.onAsk = [](CQueueReqItem&) {};
        page = std::make_unique<CUIPageData>("P");
        ASSERT_TRUE(page->Init());
        page->RegisterNotify(neighbour.GetHandle(), record.GetType());
        host.onAsk = [this](CQueueReqItem&) { page.reset(); };
        page->SetData(&record, mode);
        EXPECT_EQ(window.Take() + neighbour.Take(), "") << text;
        EXPECT_FALSE(page) << text;
    }
    host.onAsk = [](CQueueReqItem&) {};
    page = std::make_unique<CUIPageData>("P");
    ASSERT_TRUE(page->Init());
    host.onAsk = [this](CQueueReqItem&) { page.reset(); };
    CUIData asked = RecordOf("config handle=H config_key=a", window.GetHandle());
    page->GetData(asked, false, true);
    EXPECT_EQ(window.Take(), "");
    EXPECT_FALSE(page);
    // Even while it is set up.
    for (const char* name : {"P", "MULTIINST_DUI"}) {
        auto* const dying = new CUIPageData(name);
        page.reset(dying);
        EXPECT_FALSE(dying->Init()) << name;
        EXPECT_FALSE(page) << name;
    }
}

}  // namespace
}  // namespace luadui
