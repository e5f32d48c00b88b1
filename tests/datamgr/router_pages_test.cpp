// The router: which pages there are, and which of them a record reaches.
#include "messaging/request_types.h"
#include "messaging/response_routing.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

class RouterPagesTest : public PageFixture {
  protected:
    // What each listener received since the last call.
    std::string Heard() {
        std::string text;
        for (auto& [name, receiver] : std::initializer_list<std::pair<const char*, Receiver*>>{
                 {"window", &window}, {"neighbour", &neighbour}, {"stranger", &stranger}}) {
            const std::string got = receiver->Take();
            if (!got.empty())
                text += (text.empty() ? "" : " ") + std::string(name) + ':' + got.substr(0, got.find(' '));
            if (got.find('/') != std::string::npos) text += "+";
        }
        return text;
    }
    // Of a reason since the last call.
    uint64_t Counted(const char* reason) {
        const uint64_t now = CCounters::Get(reason);
        return now - std::exchange(m_counts[reason], now);
    }

  private:
    std::map<std::string, uint64_t> m_counts;
};

TEST_F(RouterPagesTest, PagesAreKnownByTheirNames) {
    CUIPageData second("P");
    EXPECT_EQ(router.RegisterPage("", page.get()), -3);
    EXPECT_EQ(router.RegisterPage("R", nullptr), -3);
    EXPECT_EQ(router.RegisterPage("P", &second), 0);
    EXPECT_FALSE(second.Init());
    EXPECT_EQ(router.UnRegisterPage(""), -3);
    EXPECT_EQ(router.UnRegisterPage("R"), 0);

    CUIData record("news");
    page->RegisterNotify(static_cast<unsigned>(window.GetHandle()), "news");
    second.RegisterNotify(static_cast<unsigned>(stranger.GetHandle()), "news");
    EXPECT_EQ(router.NotifyPage(nullptr, "P"), -3);
    EXPECT_EQ(router.NotifyPage(&record, ""), -3);
    EXPECT_EQ(router.NotifyPage(nullptr, 1, true), -3);
    EXPECT_EQ(router.NotifyPage(&record, "P"), 1);
    EXPECT_EQ(Heard(), "window:news");  // the first registration stays
    Counted("record_page_gone");
    EXPECT_EQ(router.NotifyPage(&record, "R"), 1);
    EXPECT_EQ(Counted("record_page_gone"), 1u);

    // One that was refused asks for nothing, and takes nothing along when it goes.
    CUIData request = RecordOf("fund_detail fund_token=F1");
    EXPECT_FALSE(second.GetData(request, false, false));
    EXPECT_TRUE(host.pushed.empty());
    page.reset();
    EXPECT_EQ(router.UnRegisterPage("P"), 0);
}

struct DeliveryCase {
    const char* record;
    char handle;  // of: w(indow), c(losed), u(nknown), p(age gone), n(obody)
    bool broadcast;
    const char* heard;
    const char* reason;  // why somebody did not
};
// The window, its neighbour and the stranger on the other page listen for "fund".
constexpr DeliveryCase kDeliveryCases[] = {
    {"fund", 'n', true, "window:fund neighbour:fund stranger:fund", nullptr},
    {"fund", 'n', false, "", "record_without_page"},
    {"fund", 'u', true, "window:fund neighbour:fund stranger:fund", nullptr},
    {"fund", 'w', true, "window:fund neighbour:fund", nullptr},  // never those who only subscribed
    {"fund", 'w', false, "window:fund", nullptr},
    {"fund sleep_refresh_request=true", 'w', false, "window:fund neighbour:fund", nullptr},
    {"fund sleep_refresh_request=false", 'w', false, "window:fund", nullptr},
    {"fund sleep_refresh_request=true", 'n', true, "", "record_without_page"},
    {"fund sleep_refresh_request=true", 'u', true, "", "record_without_page"},
    {"fund", 'c', true, "window:fund neighbour:fund", "record_receiver_gone"},
    {"fund", 'c', false, "", "record_without_receiver"},
    {"fund", 'p', true, "", "record_page_gone"},
    {"deal", 'n', true, "", "record_without_subscriber"},
    {"deal", 'w', true, "window:deal", nullptr},
    {"own_kind", 'w', true, "window:own_kind", nullptr},
};

TEST_F(RouterPagesTest, RecordsReachTheAskersPageOrTheSubscribers) {
    for (auto* const receiver : {&window, &neighbour})
        page->RegisterNotify(static_cast<unsigned>(receiver->GetHandle()), "fund");
    otherPage->RegisterNotify(static_cast<unsigned>(stranger.GetHandle()), "fund");
    for (const auto& [text, whose, broadcast, heard, reason] : kDeliveryCases) {
        int32_t handle = whose == 'n' ? -1 : 0x7FFFFFF0;
        if (whose == 'w') handle = window.GetHandle();
        if (whose == 'c' || whose == 'p') {
            Receiver closed;
            CUIPageData gone("gone");
            ASSERT_TRUE(gone.Init());
            CUIData owner = RecordOf(whose == 'c' ? " pageName=P" : " pageName=gone");
            owner.SetData("handle", handle = closed.GetHandle());
            router.SaveHandle2Page(owner);
        }
        if (reason) Counted(reason);
        const CUIData record = RecordOf(text);
        EXPECT_EQ(router.NotifyPage(&record, handle, broadcast), 1);
        EXPECT_EQ(Heard(), heard) << text << ' ' << whose << broadcast;
        EXPECT_EQ(reason ? Counted(reason) : 1u, 1u) << text << ' ' << whose << broadcast;
    }
}

TEST_F(RouterPagesTest, OnlineAccountsForTheCacheAreHandedToTheHost) {
    struct {
        const char* to;
        int type;
        const char* topic;
        bool hasTable;
        bool isSent;
    } const kCases[] = {
        {"CLIENT_CACHE", 2011, "AccountOnline", true, true},
        {"CLIENT_CACHE", 2011, "AccountOnline", false, false},
        {"CLIENT_CACHE", 2010, "AccountOnline", true, false},
        {"CLIENT_CACHE", 2011, "accountonline", true, false},
        {"CLIENT", 2011, "AccountOnline", true, false},
        {"", 2011, "AccountOnline", true, false},
    };
    for (const auto& row : kCases) {
        auto push = std::make_unique<CQueueRespData>();
        push->SetData("To", row.to);
        push->SetData("DATATYPE", row.type);
        push->SetData("Topic", row.topic);
        if (row.hasTable) push->SetData("Table", TableOf("account;A1"));
        host.pushed.clear();
        router.OnResponse(push.get());
        ASSERT_EQ(host.pushed.size(), row.isSent ? 1u : 0u) << row.to << row.type << row.topic;
        if (!row.isSent) continue;
        const CQueueReqItem& request = host.pushed[0];
        EXPECT_EQ(RequestTypeOf(request), 1903);
        EXPECT_EQ(request.GetDataLong("Refresh"), 1);
        EXPECT_FALSE(request.GetDataString("UUID").empty());
        EXPECT_EQ(Describe(request.GetDataView("Table")), "[account|A1]");
        // The host addresses it by name.
        host.pushed.clear();
        EXPECT_EQ(RouteResponse(std::move(push)), 1);
        EXPECT_EQ(host.pushed.size(), 1u);
    }
}

TEST_F(RouterPagesTest, InitReadsWhoIsLoggedIn) {
    host.files["\\qsclient\\system\\systemset.cfg"] = {{"RunMode", "7"}};
    host.files["C:\\u/user.cfg"] = {{"isbroker", "1"}, {"qsid", "42"}};
    constexpr char kLogin[] = R"({"userfolder":"C:\\u","g_user":{"username":"n","userid":"1","token":"t",)"
                              R"("institutionid":"i","roleid":"r","version":"v"}})";
    const auto text = [this] {
        const UserInfo& user = router.GetUserInfo();
        std::string joined;
        for (const std::string* field :
             {&user.username, &user.userid, &user.token, &user.institutionid, &user.roleid, &user.version,
              &user.userfolder, &user.runMode, &user.isbroker, &user.qsid})
            joined += *field + ' ';
        return joined;
    };
    EXPECT_EQ(router.Init(kLogin, nullptr), 1);
    EXPECT_EQ(text(), "n 1 t i r v C:\\u 7 1 42 ");
    for (const char* bad : {"", "{", "[1]", "null", "\"n\""}) EXPECT_EQ(router.Init(bad, nullptr), -3) << bad;
    EXPECT_EQ(text(), "n 1 t i r v C:\\u 7 1 42 ");
    // The host's Lua side is told of a login, and so is the router before.
    CQueueReqItem login;
    CUIData params = RecordOf(" method=initLoginInfo");
    params.SetData("params", R"({"g_user":{"username":"second"}})");
    login.SetData("REQTYPE", static_cast<int>(kReqLuaCall));
    login.SetData("Params", params);
    page->Request(login);
    EXPECT_EQ(router.GetUserInfo().username, "second");
    router.Init("{}", nullptr);
    EXPECT_EQ(router.GetUserInfo().username, "");
}

// SetData answers common kinds from the cache in two of its modes.
TEST_F(RouterPagesTest, RequestsForCommonDataAreAnsweredFromTheCache) {
    auto* const list = router.CommonData().Lists().FindOrMake("fund");
    list->TakeAnswer("cached", TableOf("No;1"), RequestLedger::Instance().NextAge());
    struct {
        const char* record;
        SET_DATA mode;
        const char* heard;
        size_t sent;
    } const kCases[] = {
        {"fund handle=H pageName=P fund_token=cached", kSetRequest, "window:fund", 0},
        {"fund handle=H pageName=P fund_token=cached", kSetFactoryRequest, "window:fund", 0},
        {"fund handle=H pageName=P fund_token=cached refresh=1", kSetRequest, "", 1},
        {"fund handle=H pageName=P fund_token=other", kSetRequest, "", 1},
        {"fund handle=H pageName=P fund_token=cached", static_cast<SET_DATA>(9), "", 0},
        {"fund_detail handle=H pageName=P fund_token=cached", kSetRequest, "", 1},
    };
    for (const auto& row : kCases) {
        host.pushed.clear();
        CUIData record = RecordOf(row.record);
        record.SetData("handle", window.GetHandle());
        router.SetData(&record, row.mode);
        EXPECT_EQ(Heard(), row.heard) << row.record << row.mode;
        EXPECT_EQ(host.pushed.size(), row.sent) << row.record << row.mode;
    }
    router.SetData(nullptr, kSetRequest);
    list->Remove("cached");
}

}  // namespace
}  // namespace luadui
