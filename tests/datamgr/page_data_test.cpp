// A page's data manager: what its asks become, what it takes of the news, and what it asks when it wakes.
#include "datamgr/account_news.h"
#include "datamgr/quote_fields.h"
#include "datamgr/request_route.h"
#include "messaging/request_types.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

constexpr int kTrading = 2004;

class PageDataTest : public PageFixture {
  protected:
    // Nobody has asked for other forms of the account data lists.
    PageDataTest() { Common().MakeCommonLists(); }
    ~PageDataTest() override {
        for (const char* kind : {"fund", "position", "entrust", "deal"}) {
            for (const char* token : {"F1", "F2", "F3"}) {
                if (auto* const list = Common().Find(kind)) list->Remove(token);
            }
        }
        for (const auto& request : m_open) RequestLedger::Instance().Drop(request.GetDataString("UUID"));
    }

    ListStore& Common() { return router.CommonData().Lists(); }
    bool Ask(std::string_view text, bool cacheOnly = false, bool flag = false) {
        CUIData request = RecordOf(text, window.GetHandle());
        return page->GetData(request, cacheOnly, flag);
    }
    // What was sent since the last call: "type token kind-of-route".
    std::string Sent() {
        std::string text;
        for (const CQueueReqItem& item : host.pushed) {
            text += (text.empty() ? "" : " / ") + std::to_string(RequestTypeOf(item));
            const std::string token = item.GetDataString("FundToken");
            text += token.empty() ? "" : ' ' + token;
        }
        m_open.insert(m_open.end(), host.pushed.begin(), host.pushed.end());
        host.pushed.clear();
        return text;
    }
    // The answer to the request that was sent `back` requests before the last one.
    void Answer(std::string_view text, int dataType = kTrading, size_t back = 0, bool withRequest = true) {
        Sent();
        const CQueueReqItem& item = m_open.at(m_open.size() - 1 - back);
        CQueueRespData response = ResponseOf(text);
        for (const char* key : {"REQTYPE", "UUID", "FundToken"}) response.SetData(key, item.GetDataView(key));
        response.SetData("DATATYPE", dataType);
        if (withRequest) response.SetData("Request", static_cast<const CUIData&>(item));
        response.Remove("IsLast");  // a host that does not say has sent the whole answer
        CQueueRespData arrived;
        arrived.CopyFrom(response);
        router.OnResponse(&arrived);
    }
    void Push(std::string_view topic, std::string_view table) {
        CQueueRespData push = ResponseOf(table);
        push.SetData("Topic", topic);
        push.SetData("DATATYPE", kTrading);
        router.OnResponse(&push);
    }
    // Both as the common manager would publish them: to all, or to one window.
    void Publish(std::string_view text, int handle = -1) {
        CUIData record = RecordOf(text);
        record.SetData("handle", handle);
        router.CommonData().ResponseNotify(&record, handle, true);
    }
    void Hold(const char* kind, const char* token, const char* table = "No;1") {
        Common().FindOrMake(kind)->TakeAnswer(token, TableOf(table), RequestLedger::Instance().NextAge());
    }
    void SetAccounts() {
        for (const auto family : {ListStore::kPlain, ListStore::kCredit, ListStore::kGGT}) {
            AccountDataList* const list = Common().Accounts(family);
            list->SetAccounts(TableOf("account_id,fund_token,trade_type;A1,F1,0;A2,F2,0;A3,F3,0;A4,C1,2"));
            CDataTable groups;
            for (const char* column : {"groupid", "groupname", "account"}) groups.AddColumn(column);
            groups.AppendRow();
            groups.SetItemText(0, 1, "g");
            groups.SetItemText(0, 2, R"(["A1","A2","A4"])");
            list->SetGroups(groups);
        }
    }
    void Register(Receiver& receiver, std::initializer_list<const char*> kinds) {
        for (const char* kind : kinds)
            page->RegisterNotify(static_cast<unsigned>(receiver.GetHandle()), kind);
    }
    void Tick() {
        CUIData tick("update_push_hq");
        page->GetData(tick, false, false);
    }
    uint64_t Counted(const char* reason) {
        const uint64_t now = CCounters::Get(reason);
        return now - std::exchange(m_counts[reason], now);
    }

    std::vector<CQueueReqItem> m_open;

  private:
    std::map<std::string, uint64_t> m_counts;
};

struct AskCase {
    const char* asked;
    const char* item;    // of the request, besides UUID, From and Params; null: nothing is sent
    const char* params;  // besides those that every request has
};
constexpr AskCase kAskCases[] = {
    {"fund handle=H fund_token=F1", "REQTYPE=1201 Refresh=false FundToken=F1 RouteType=Specific-Tunnel",
     "fund_token=F1 pageName=P handle=H"},
    {"fund handle=H fund_token=F1 refresh=1 TraceID=t",
     "REQTYPE=1201 Refresh=true FundToken=F1 TraceID=t RouteType=Specific-Tunnel",
     "fund_token=F1 refresh=1 TraceID=t pageName=P handle=H bNeedRefresh=true"},
    {"hq stock_code=600000", "REQTYPE=1051 Refresh=false FundToken= RouteType=Main-Tunnel",
     "stock_code=600000 pageName=P codeID=600000 DataItems=..."},
    {"hq_zq stock_code=1,2", "REQTYPE=1058 Refresh=false FundToken= RouteType=Main-Tunnel",
     "stock_code=1,2 pageName=P codeID=1,2 DataItems=..."},
    {"fund_detail fund_token=F1 date=1 nested={a=b} set=<a>",
     "REQTYPE=1250 Refresh=false FundToken=F1 RouteType=Specific-Tunnel",
     "fund_token=F1 date=1 nested={a=b} pageName=P"},
    {"query_grid_inst", "REQTYPE=1217 Refresh=false FundToken= RouteType=All-Tunnel", "pageName=P"},
    {"query_grid_inst session_flag=s",
     "REQTYPE=1217 Refresh=false FundToken= DestServer=s RouteType=Specific-Tunnel",
     "session_flag=s pageName=P destServer=s"},
    {"no_such_kind handle=H fund_token=F1", nullptr, ""},
    {" handle=H", nullptr, ""},
    {"accountgroup handle=H refresh=1", nullptr, ""},
    {"accountgroupcredit handle=H refresh=1", nullptr, ""},
    {"allocate handle=H refresh=1", nullptr, ""},
};

TEST_F(PageDataTest, AsksBecomeRequests) {
    for (const auto& [asked, item, params] : kAskCases) {
        EXPECT_FALSE(Ask(asked));
        ASSERT_EQ(host.pushed.size(), item ? 1u : 0u) << asked;
        if (!item) continue;
        CQueueReqItem request = host.pushed[0];
        CUIData got = FakeHost::Params(request);
        EXPECT_EQ(got.GetDataString("id"), request.GetDataString("UUID"));
        EXPECT_EQ(got.GetDataString("log_source"), "");
        EXPECT_EQ(got.GetDataString("routeType"), request.GetDataString("RouteType"));
        EXPECT_EQ(request.GetDataString("From"), std::to_string(router.GetHandle()));
        for (const char* key : {"id", "log_source", "routeType"}) got.Remove(key);
        if (got.GetDataText("destServer").empty()) got.Remove("destServer");
        const std::string text = ReplaceText(Describe(got), kQuoteDataItems, "...");
        EXPECT_EQ(ReplaceText(text, "=" + std::to_string(window.GetHandle()), "=H"), params) << asked;
        std::string what;
        for (const char* key : {"REQTYPE", "Refresh", "FundToken", "DestServer", "TraceID", "RouteType"}) {
            if (!request.Has(key) || (std::string_view(item).find(key) == std::string_view::npos)) continue;
            what += (what.empty() ? "" : " ") + std::string(key) + '=' + Describe(request.GetDataView(key));
        }
        EXPECT_EQ(what, item) << asked;
        Sent();
    }
}

// A set of accounts is asked one by one; a bundle is as many asks.
TEST_F(PageDataTest, OneAskMayBecomeSeveralRequests) {
    Hold("fund", "F1");
    struct {
        const char *asked, *sent;
    } const kCases[] = {
        {"fund_detail fund_token=<F1,F2,F3>", "1250 F1 / 1250 F2 / 1250 F3"},
        {"fund_detail fund_token=<>", ""},
        {"fund fund_token=<F1,F2>", "1201 F1 / 1201 F2"},  // found only when all are held
        {"fund fund_token=<F1>", ""},
        {"fund fund_token=F1 refresh=1", "1201 F1"},
        {"fund_detail req_level=1 fund_token=F1", "1250 F1"},
        {"fund_detail req_level=0 fund_token=F1", ""},
        {"fund_detail req_level=3 fund_token=F1", ""},
        {"fund_detail req_level=2 fund_token=F1", ""},
        {"create_mutiinst refresh_record=1 fund_token=F1", "1123 F1"},
    };
    for (const auto& [asked, sent] : kCases) {
        Ask(asked);
        EXPECT_EQ(Sent(), sent) << asked;
    }
    Ask("fund_detail fund_token=<F1,F2,F3> TraceID=t");
    std::string traces;
    for (const auto& item : host.pushed)
        traces += item.GetDataString("TraceID") + '/' + FakeHost::Params(item).GetDataString("TraceID") + ' ';
    EXPECT_EQ(traces, "t/t / / ");
    Sent();

    CUIData bundle = RecordOf("bundle req_level=2 handle=H other=text", window.GetHandle());
    bundle.SetData("b", RecordOf("fund_detail fund_token=<F1,F2>"));
    bundle.SetData("a", RecordOf("PeiHao fund_token=F3"));
    CUIData inner = RecordOf("bundle req_level=2");
    inner.SetData("c", RecordOf("PeiHao fund_token=F4"));
    bundle.SetData("d", inner);  // bundles do not nest
    page->GetData(bundle, false, false);
    for (const auto& item : host.pushed)
        EXPECT_EQ(FakeHost::Params(item).GetDataString("handle"), std::to_string(window.GetHandle()));
    EXPECT_EQ(Sent(), "1250 F1 / 1250 F2 / 1252 F3");
}

TEST_F(PageDataTest, LaterRequestsGoToTheServerOfTheInstruction) {
    Ask("instruction_cancel handle=H InstanceID=other");
    EXPECT_EQ(host.pushed.at(0).GetDataString("DestServer"), "");
    Ask("create_mutiinst handle=H fund_token=F1");
    Sent();
    const CQueueReqItem& item = m_open.back();
    CQueueRespData response = ResponseOf(R"({"InstanceID":"I-77"})");
    for (const char* key : {"REQTYPE", "UUID"}) response.SetData(key, item.GetDataView(key));
    response.SetData("Request", static_cast<const CUIData&>(item));
    response.SetData("SrcServer", "server2");
    router.OnResponse(&response);
    Ask("instruction_cancel handle=H InstanceID=I-77");
    ASSERT_EQ(host.pushed.size(), 1u);
    EXPECT_EQ(host.pushed[0].GetDataString("DestServer"), "server2");
    EXPECT_EQ(FakeHost::Params(host.pushed[0]).GetDataString("routeType"), "Specific-Tunnel");
    Sent();

    // Orders over several accounts are written down, each with a later second.
    Ask("basket_entrust InstanceID=B1");
    Ask("basket_entrust InstanceID=B2");
    auto& record = InstructionRecord::Instance();
    EXPECT_GE(record.StampOf("B2"), record.StampOf("B1") + 1);
    EXPECT_EQ(host.files["\\log\\TradeLog\\basketIsntRecord.log"]["B2"],
              std::to_string(record.StampOf("B2")));
}

TEST_F(PageDataTest, FurtherWaysToAsk) {
    Hold("fund", "F1");
    Hold("position", "F1");
    CUIData out("untouched");
    CDataSet tokens;
    tokens.Insert("F1");
    const auto handle = static_cast<unsigned>(window.GetHandle());
    EXPECT_TRUE(page->GetData(handle, "fund", tokens, out));
    EXPECT_EQ(Describe(out.GetDataView("fund")), "[No|1]");
    EXPECT_TRUE(page->GetData(handle, "position", std::string("F1"), out));
    tokens.Insert("F2");
    CUIData none("none");
    EXPECT_FALSE(page->GetData(handle, "fund", tokens, none));
    EXPECT_TRUE(none.GetTypeText() == "none" && none.IsEmpty());
    EXPECT_EQ(Sent(), "1201 F1 / 1201 F2");
    EXPECT_EQ(window.Take(), "");  // what is returned is not delivered
    CDataTable table;
    EXPECT_TRUE(page->GetData(handle, "fund", "F1", table));
    EXPECT_FALSE(page->GetData(handle, "fund", "F9", table));
    EXPECT_EQ(Sent(), "");
    EXPECT_EQ(Describe(table), "[No|1]");
    EXPECT_EQ(Describe(page->GetData("fund").GetDataView("F1")), "[No|1]");
    CUIData shared;
    ASSERT_TRUE(page->GetDataShared("fund", shared));
    Hold("fund", "F1", "No;2");
    EXPECT_EQ(Describe(shared.GetDataView("F1")), "[No|2]");
    EXPECT_EQ(Describe(router.GetUIData("fund", "P").GetDataView("F1")), "[No|2]");
    EXPECT_TRUE(router.GetUIData("fund", "nobody").IsEmpty());
    EXPECT_TRUE(router.GetUIData("fund", "").IsEmpty());
    EXPECT_TRUE(Ask("fund handle=H fund_token=F1", true));  // a look only
    EXPECT_FALSE(Ask("fund handle=H fund_token=F2", true));
    EXPECT_EQ(Sent() + window.Take(), "");
}

TEST_F(PageDataTest, FailuresReachTheAskerHoweverTheyCome) {
    constexpr char kError[] = R"({"retcode":7,"message":"no"})";
    Receiver messages;
    router.CommonData().RegisterNotify(static_cast<unsigned>(messages.GetHandle()), "messagecenter");
    struct {
        const char* asked;
        int dataType;
        bool withRequest;
        bool isMessage;  // a row of the message center
    } const kCases[] = {
        {"fund", kTrading, true, false}, {"fund", kTrading, false, false},  {"fund", -1, true, true},
        {"fund", -1, false, true},       {"fund_detail", 0, true, false},   {"fund_detail", 0, false, false},
        {"fund_detail", -1, true, true}, {"positionmulti", -1, true, true},
    };
    for (const auto& [kind, dataType, withRequest, isMessage] : kCases) {
        Ask(std::string(kind) + " handle=H fund_token=F1 refresh=1");
        Answer(kError, dataType, 0, withRequest);
        const std::string got = window.Take();
        EXPECT_EQ(got.substr(0, got.find(" / ")), "error_msg error_msg=no handle=H") << kind << dataType;
        EXPECT_NE(got.find(std::string(" / ") + kind + ' '), std::string::npos) << got;
        EXPECT_NE(got.find("ret_code=7 ret_message=no"), std::string::npos) << got;
        EXPECT_EQ(!messages.Take().empty(), isMessage) << kind << dataType;
        Answer(kError, dataType == -1 ? 0 : dataType);  // again
        EXPECT_EQ(window.Take(), "") << kind << dataType;
    }
    router.CommonData().UnRegisterNotify(static_cast<unsigned>(messages.GetHandle()), "messagecenter");
}

// From the list of its page, or from the common one; failures of other pages also where the page has a list.
TEST_F(PageDataTest, MessagesReachEveryWindowOnce) {
    CUIPageData tips("MESSAGETIP");
    ASSERT_TRUE(tips.Init());
    Receiver shown;
    tips.RegisterNotify(static_cast<unsigned>(shown.GetHandle()), "messagecenter");
    Register(window, {"messagecenter"});
    constexpr std::string_view kMessage = "messagecenter messagecenter=";
    const std::string order = "OrderStatus,Side;" + Gbk("全部成交") + ",0";
    for (const char* topic : {"entrustret", "orderret", "multiinst_order", "grade_order", "condition_order",
                              "risk_push", "a failure"}) {
        if (std::string_view(topic) == "a failure") {
            Ask("fund handle=H fund_token=F1 refresh=1");
            Answer(R"({"retcode":7,"message":"no"})", -1);
        } else {
            Push(topic, order);
        }
        std::string ofPage = window.Take(), ofTips = shown.Take();
        for (std::string* got : {&ofPage, &ofTips}) {
            const size_t at = got->find(kMessage);
            EXPECT_TRUE(at != got->npos && got->find(kMessage, at + 1) == got->npos) << topic << *got;
        }
        EXPECT_NE(ofPage, ofTips) << topic;  // the numbers of the two lists
    }
}

TEST_F(PageDataTest, FailuresWithoutAServerReachTheAsker) {
    router.CommonData().ResponseError("fund", window.GetHandle(), 7, "no");
    EXPECT_EQ(window.Take(), "");  // of no page yet
    Register(window, {"deal"});
    router.CommonData().ResponseError("fund", window.GetHandle(), 7, "no");
    EXPECT_EQ(window.Take(), "fund handle=H ret_code=7 ret_message=no");
}

TEST_F(PageDataTest, AnswersReachTheAskerOnce) {
    constexpr char kRecord[] =
        "fund fund=[No|1] fund_token=F1 handle=H ret_code=0 ret_message= update_user=F1";
    for (const bool withRequest : {true, false}) {
        Ask("fund handle=H fund_token=F1 refresh=1");
        Answer("No;1", kTrading, 0, withRequest);
        EXPECT_EQ(window.Take(), kRecord);
        Answer("No;1");
        EXPECT_EQ(window.Take(), "");
    }
    // The end of a refresh that was to be reported, once.
    Ask("fund handle=H fund_token=F1 refresh=1 refresh_record=1");
    Answer("No;1");
    const std::string uuid = m_open.back().GetDataString("UUID");
    EXPECT_EQ(window.Take(), std::string(kRecord) + " / record_req_end UUID=" + uuid + " handle=H");
    Answer("No;1");
    EXPECT_EQ(window.Take(), "");
    // Late for a page that has gone.
    Register(window, {"fund"});
    Ask("fund handle=H fund_token=F1 refresh=1");
    Ask("fund_detail handle=H fund_token=F1");
    page.reset();
    Counted("record_page_gone");
    Counted("response_without_receiver");
    Answer("No;1", kTrading, 1);
    Answer("No;1", 0);
    EXPECT_EQ(window.Take(), "");
    EXPECT_EQ(Counted("record_page_gone"), 1u);
    EXPECT_EQ(Counted("response_without_receiver"), 1u);
}

// What a page does with news while it sleeps: told at once, asked again on waking, or neither.
TEST_F(PageDataTest, NewsForASleepingPage) {
    SetAccounts();
    struct {
        const char* news;
        bool isTold;
        const char* asked;  // on waking
    } const kCases[] = {
        {"fund fund_token=F1", false, "1201 F1"},
        {"fund fund_token=<F1,F2>", false, "1201 F1 / 1201 F2"},
        {"credit_fund fund_token=F1", false, "1205 F1"},
        {"position fund_token=F1", false, "1202 F1"},
        {"positioncredit fund_token=F1", false, "1206 F1"},
        {"entrust fund_token=F1", false, "1204 F1"},
        {"entrustcredit fund_token=F1", false, "1208 F1"},
        {"deal fund_token=F1", false, "1203 F1"},
        {"dealcredit fund_token=F1", false, "1207 F1"},
        {"hq updatecode=600000", false, "1051"},
        {"hq_zq updatecode=<1,2>", false, "1058"},
        {"fund", true, ""},  // nothing to ask for
        {"entrustpush fund_token=F1", true, ""},
        {"entrustpushcredit fund_token=F1", true, ""},
        {"dealpush fund_token=F1", true, ""},
        {"dealpushcredit fund_token=F1", true, ""},
        {"entrustmulti fund_token=F1", true, ""},
        {"positionmulticredit fund_token=F1", true, ""},
        {"accountdatalist_push fund_token=F1", true, ""},
        {"accountdatalist_push_credit fund_token=C1", true, ""},
        {"accountgroup", true, ""},
        {"entrust_cancel", true, ""},
        {"currency fund_token=F1", true, ""},  // no row in the table
        {"fund_ggt fund_token=F1", true, ""},
    };
    for (const auto& [news, isTold, asked] : kCases) {
        const std::string kind = RecordOf(news).GetType();
        Register(window, {kind.c_str()});
        page->Sleep(true);
        for (int times = 0; times < 3; ++times) Publish(news);
        EXPECT_EQ(!window.Take().empty(), isTold) << news;
        EXPECT_EQ(Sent(), "");
        Tick();
        EXPECT_EQ(Sent(), "");
        page->Sleep(false);
        EXPECT_EQ(Sent(), asked) << news;
        page->Sleep(false);
        Tick();
        EXPECT_EQ(Sent(), "");  // nothing twice
        // What it asked reaches it asleep.
        if (*asked != 0) {
            page->Sleep(true);
            Answer("No;1");
            EXPECT_NE(window.Take().find("sleep_refresh_request=true"), std::string::npos) << news;
            page->Sleep(false);
        }
        page->UnRegisterNotify(static_cast<unsigned>(window.GetHandle()), kind);
    }
    // An answer to its window is for it alone.
    page->Sleep(true);
    Publish("fund fund_token=F1", window.GetHandle());
    EXPECT_EQ(window.Take(), "fund fund_token=F1 handle=H");
    page->Sleep(false);
    EXPECT_EQ(Sent(), "");
}

TEST_F(PageDataTest, APageMayAskInsteadOfTakingWhileItIsAwake) {
    Register(window, {"fund", "hq"});
    page->SetPushToQuery(true);
    Publish("fund fund_token=F1");
    Publish("hq updatecode=1");
    Publish("fund fund_token=<F2,F3>");
    Publish("hq updatecode=<2>");
    EXPECT_EQ(Sent() + window.Take(), "");
    Tick();
    EXPECT_EQ(FakeHost::Params(host.pushed.at(3)).GetDataString("codeID"), "1,2");
    EXPECT_EQ(Sent(), "1201 F1 / 1201 F2 / 1201 F3 / 1051");
    Tick();
    EXPECT_EQ(Sent(), "");
    page->SetPushToQuery(false);
    Publish("fund fund_token=F1");
    EXPECT_EQ(window.Take(), "fund fund_token=F1 handle=-1");
}

// Account data: cut to the accounts of the page's group.
TEST_F(PageDataTest, NewsOfAccountsAreForThePagesGroup) {
    SetAccounts();
    Register(window,
             {"accountdatalist", "accountdatalistcredit", "accountdatalist_ggt", "accountdatalist_push",
              "currency_accountdatalist_push", "accountdatalist_push_credit"});
    EXPECT_TRUE(Ask("accountdatalist handle=H groupname=g"));
    EXPECT_NE(window.Take().find("|A1||0,A1,,,,,,0,,,F1,,,,,,,,|A2||0,A2,,,,,,0,,,F2,,,,,,,,] "),
              std::string::npos);
    Ask("accountdatalistcredit handle=H groupname=g");
    Ask("accountdatalist_ggt handle=H groupname=g");
    window.Take();
    struct {
        const char *news, *heard;
    } const kCases[] = {
        {"accountdatalist_push fund_token=F1", "accountdatalist_push fund_token=F1"},
        {"accountdatalist_push fund_token=F3", ""},
        {"accountdatalist_push fund_token=C1", ""},
        {"currency_accountdatalist_push fund_token=F2", "currency_accountdatalist_push fund_token=F2"},
        {"currency_accountdatalist_push fund_token=F3", ""},
        {"accountdatalist_push_credit fund_token=C1", "accountdatalist_push_credit fund_token=C1"},
        {"accountdatalist_push_credit fund_token=F1", ""},
        {"accountdatalist_push fund_token=<F1,F3> all_update_account=<F2,F3> operate=add",
         "accountdatalist_push fund_token=<F1> all_update_account=<F2> operate=add"},
        {"accountdatalist_push fund_token=<F3,F9>", ""},
        {"accountdatalist_push fund_token=<>", ""},
        {"accountdatalist_push other=1", "accountdatalist_push other=1"},
    };
    for (const auto& [news, heard] : kCases) {
        Counted("record_outside_group");
        Publish(news);
        const std::string got = window.Take();
        EXPECT_EQ(got.substr(0, got.find(" handle")), heard) << news;
        EXPECT_EQ(Counted("record_outside_group"), *heard == 0 ? 1u : 0u) << news;
    }
    // Rows go with their accounts.
    CUIData record = RecordOf("accountdatalist fund_token=<F2,F3> handle=-1");
    record.SetData("accountdatalist", TableOf("fund_token,No;F1,1;F2,2;F3,3"));
    router.CommonData().ResponseNotify(&record, -1, true);
    EXPECT_NE(window.Take().find("accountdatalist=[fund_token,No|F1,1|F2,2]"), std::string::npos);

    // On waking each family is asked once, whatever was missed.
    page->Sleep(true);
    for (const char* news : {"accountdatalist fund_token=<F1>", "account", "accountdatalist fund_token=<F2>"})
        Publish(news);
    EXPECT_EQ(window.Take(), "");
    page->Sleep(false);
    const std::string got = window.Take();
    std::string kinds;
    for (const auto& part : SplitText(got, '/'))
        kinds += std::string(TrimText(part).substr(0, TrimText(part).find(' '))) + ' ';
    EXPECT_EQ(kinds, "accountdatalist accountdatalistcredit accountdatalist_ggt ");
    EXPECT_NE(got.find("groupname=g"), std::string::npos);
    EXPECT_EQ(Sent(), "");
}

// Money, and accounts that go, are told to pages whose group has or had the account, in the page's mode.
TEST_F(PageDataTest, NewsOfMoneyAreForThePagesGroup) {
    SetAccounts();
    CUIData& credit = *Common().Accounts(ListStore::kCredit);
    Register(window, {"accountdatalist_push", "accountdatalist_ggt_push", "accountdatalist_push_credit"});
    for (const char* kind : {"accountdatalist", "accountdatalist_ggt", "accountdatalistcredit"})
        Ask(std::string(kind) + " handle=H groupname=g");
    window.Take();
    struct {
        const char *kind, *token, *heard;
    } const kCases[] = {
        {"fund", "F1", "accountdatalist_push operate=update all_update_account=<F1> fund_token=<F1>"},
        {"fund", "F1", ""},  // again
        {"fund", "F3", ""},  // of no account of the group
        {"fund_ggt", "F1", "accountdatalist_ggt_push operate=update all_update_account=<F1> fund_token=<F1>"},
        {"credit_fund", "C1",
         "accountdatalist_push_credit operate=update all_update_account=<C1> fund_token=<C1>"},
        {"entrust", "F2", ""},
    };
    const auto heard = [&] {
        const std::string got = window.Take();
        const size_t rows = got.find(' '), operate = got.find(" operate");
        return got.substr(0, rows) +
               (operate == got.npos ? "" : got.substr(operate, got.find(" handle") - operate));
    };
    for (const auto& [kind, token, expected] : kCases) {
        EXPECT_TRUE(TellAccountData(router.CommonData(), kind, token, TableOf("Currency,TotalAssets;CNY,7")));
        EXPECT_EQ(heard(), expected) << kind << token;
    }
    EXPECT_NE(Describe(credit.GetDataView("accountdatalistcredit")).find("C1,,,CNY,7,"), std::string::npos);

    // Whoever changes the money while he is told of it lets nobody hear of it in the wrong order.
    class Spender : public CBaseObject {
      public:
        void OnNotify(void*) override {
            const auto funds = TableOf("TotalAssets;" + std::to_string(--left));
            if (left > 0)
                TellAccountData(CUIStockDataManager::get_mutable_instance().CommonData(), "fund", "F2",
                                funds);
        }
        int left = 4;
    } spender;
    Receiver after;  // is told after him
    page->RegisterNotify(static_cast<unsigned>(spender.GetHandle()), "accountdatalist_push");
    Register(after, {"accountdatalist_push"});
    TellAccountData(router.CommonData(), "fund", "F2", TableOf("TotalAssets;4"));
    std::string totals;
    const std::string told = after.Take();
    for (const auto record : SplitText(told, '/')) {
        const size_t at = record.find("F2,,,,");
        totals += at == record.npos ? '-' : record[at + 6];
    }
    EXPECT_EQ(totals, "4321");
    window.Take();
    page->UnRegisterNotify(static_cast<unsigned>(spender.GetHandle()), "accountdatalist_push");
    AccountDataList& plain = *Common().Accounts(ListStore::kPlain);
    plain.Queue(plain.SetAccounts(TableOf("account_id,fund_token,trade_type;A2,F2,0")));
    EXPECT_TRUE(TellQueued(router.CommonData(), plain));
    EXPECT_EQ(heard(), "accountdatalist_push operate=delete all_update_account=<F1> fund_token=<F1>");

    Ask("accountdatalistcredit handle=H groupname=g client_type=PB_MODE");
    window.Take();
    Counted("record_of_other_mode");
    TellAccountData(router.CommonData(), "credit_fund", "C1", TableOf("Inst_AvailableValue,TotalAssets;1,8"));
    EXPECT_EQ(
        heard(),
        "accountdatalist_push_credit operate=update all_update_account=<C1> fund_token=<C1> PB_MODE=true");
    EXPECT_EQ(Counted("record_of_other_mode"), 1u);
}

// A page that sleeps misses nothing: what it asks on waking is the newest, also when older answers are on their way.
TEST_F(PageDataTest, WakingBringsTheNewest) {
    Register(window, {"position"});
    Ask("position handle=H fund_token=F1");
    Answer("No;1");
    Ask("position handle=H fund_token=F1 refresh=1");
    Sent();
    page->Sleep(true);
    Push("Position|F1", "No;2");
    window.Take();
    page->Sleep(false);
    EXPECT_NE(window.Take().find("position=[No|2]"), std::string::npos);
    Answer("No;1");  // left before the push
    EXPECT_NE(window.Take().find("position=[No|2]"), std::string::npos);
}

TEST_F(PageDataTest, RecordsOfACommonSenderGoThere) {
    Set(kSetRequest, "fund_detail handle=H fund_token=F1 force_sendmoudle=module_commondata");
    Answer("No;1", kTrading);
    EXPECT_NE(window.Take().find("fund_detail fund_detail=[No|1]"), std::string::npos);
    Set(static_cast<SET_DATA>(17), "fund_detail handle=H");
    page->SetData(nullptr, kSetRequest);
    EXPECT_EQ(Sent(), "");
}

}  // namespace
}  // namespace luadui
