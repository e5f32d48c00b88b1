// Subscriptions of windows: which topics the page gets, and which windows hear of what came.
#include "datamgr/quote_fields.h"
#include "datamgr/subscription_book.h"
#include "messaging/request_types.h"
#include "messaging/subscription_dispatcher.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

class SubscribeTest : public PageFixture {
  protected:
    bool Gets(std::string_view topic) {
        CQueueRespData push;
        push.SetData("Topic", topic);
        const auto receivers = CSubscriptionDispatcher::Instance().Receivers(push);
        return std::ranges::find(receivers, page->GetHandle()) != receivers.end();
    }
    void SetFor(const Receiver& receiver, SET_DATA mode, std::string_view text) {
        CUIData record = RecordOf(text, receiver.GetHandle());
        page->SetData(&record, mode);
    }
    void Push(std::string_view topic, std::string_view json) {
        CQueueRespData push = ResponseOf(json);
        push.SetData("Topic", topic);
        router.OnResponse(&push);
    }
};

struct TopicCase {
    const char* record;
    const char* topic;
};
constexpr TopicCase kTopicCases[] = {
    {"fund handle=H fund_token=F1", "Fund|F1"},
    {"fund handle=H fund_token=<F1>", "Fund|F1"},
    {"fund handle=H key=Fund|F1 fund_token=F1", "Fund|F1"},  // complete already
    {"credit_fund handle=H fund_token=F1", "FundCredit|F1"},
    {"positionsum handle=H fund_token=F1", "Position|F1"},
    {"positionmulticredit handle=H fund_token=F1", "PositionCredit|F1"},
    {"entrustmulti handle=H fund_token=F1", "Entrust|F1"},
    {"entrustpushcredit handle=H fund_token=F1", "EntrustCredit|F1"},
    {"dealpush handle=H key=Trade| fund_token=F1", "Trade|F1"},
    {"dealpushcredit handle=H fund_token=F1", "TradeCredit|F1"},
    {"fund_ggt handle=H fund_token=F1", "FundGGT|F1"},
    {"position_ggt_multi handle=H fund_token=F1", "PositionGGT|F1"},
    {"entrust_ggt handle=H fund_token=F1", "EntrustGGT|F1"},
    {"deal_ggt handle=H fund_token=F1", "TradeGGT|F1"},
    {"fund fund_token=F1", "Fund|F1"},                        // for the page itself
    {"fund handle=H REQTYPE=1101 fund_token=F1", "Fund|F1"},  // nobody orders by subscribing
    {"own handle=H fund_token=F1 key=Mine|", "Mine|F1"},
    {"own handle=H fund_token=F1 key=mine", "mine"},
    {"fund handle=H fund_token=<F1,F2>", "Fund|F2"},
    {"hq handle=H stock_code=600000", "600000"},
    {"hq_zq handle=H stock_code=600000", "600000"},
    {"other handle=H REQTYPE=1602 code=600001", "600001"},
    {"sub_dui_uievent handle=H", "subkey_dui_uievent"},
    {"STR_PB_SINGLE_INSTRUCTION handle=H instruction_id=1 stock_code=2", "instruction_push"},
    {"str_subkey_inst_cond handle=H REQTYPE=1701", "condition_instruction"},
};

TEST_F(SubscribeTest, ThePageGetsTheTopic) {
    const size_t topics = CSubscriptionDispatcher::Instance().TopicCount();
    for (const auto& [record, topic] : kTopicCases) {
        EXPECT_FALSE(Gets(topic)) << record;
        Set(kSetSubscribe, record);
        EXPECT_TRUE(Gets(topic)) << record;
        Set(kSetUnsubscribe, record);
        EXPECT_FALSE(Gets(topic)) << record;
    }
    EXPECT_EQ(CSubscriptionDispatcher::Instance().TopicCount(), topics);
    for (const CQueueReqItem& sent : host.pushed) EXPECT_FALSE(IsSubscription(RequestTypeOf(sent)));
    const auto before = CCounters::Get("request_without_account");
    Set(kSetSubscribe, "fund handle=H fund_token=<>");
    EXPECT_EQ(CCounters::Get("request_without_account"), before + 1);
}

struct RequestCase {
    const char* record;
    int type;
    const char* params;  // after the handle
};
constexpr RequestCase kRequestCases[] = {
    {"fund handle=H fund_token=F1", 1601, "fund_token=F1 handle=H key=Fund|"},
    {"fund_ggt handle=H fund_token=F1 set=<a>", 1601, "fund_token=F1 handle=H key=FundGGT|F1"},
    {"hq handle=H stock_code=1", 1602, "stock_code=1 handle=H DataItems=... code=1"},
    {"hq_zq handle=H stock_code=1 code=2", 1602, "stock_code=1 code=2 handle=H DataItems=..."},
    {"sub_dui_uievent handle=H", 1604, "handle=H key=subkey_dui_uievent"},
    {"STR_PB_SINGLE_INSTRUCTION handle=H stock_code=2", 1702,
     "stock_code=2 handle=H code=2 key=instruction_push"},
    {"own handle=H key=k Params={a=1}", 1601, "a=1 key=k handle=H"},
};

TEST_F(SubscribeTest, WhatIsRequested) {
    class Page : public CUIPageData {
      public:
        using CUIPageData::CUIPageData;
        bool Request(CQueueReqItem& request) override {
            requested = RequestTypeOf(request);
            params = FakeHost::Params(request);
            return true;
        }
        int requested = 0;
        CUIData params;
    } asking("asking");
    ASSERT_TRUE(asking.Init());
    for (const auto& [text, type, params] : kRequestCases) {
        for (const auto mode : {kSetSubscribe, kSetUnsubscribe}) {
            CUIData record = RecordOf(text, window.GetHandle());
            asking.SetData(&record, mode);
            asking.params.Remove("pageName");
            const std::string got = ReplaceText(ReplaceText(Describe(asking.params), kQuoteDataItems, "..."),
                                                "handle=" + std::to_string(window.GetHandle()), "handle=H");
            EXPECT_EQ(got, std::string(params) + (mode == kSetUnsubscribe ? " unsub=true" : ""));
            EXPECT_EQ(asking.requested, type) << text;
        }
    }
}

TEST_F(SubscribeTest, ATopicIsLeftByTheLastWindowOnly) {
    constexpr char kBoth[] = "fund handle=H fund_token=<F1,F2>", kOne[] = "fund handle=H fund_token=F1";
    SetFor(window, kSetSubscribe, kBoth);
    SetFor(neighbour, kSetSubscribe, kOne);
    SetFor(neighbour, kSetSubscribe, kOne);
    SetFor(window, kSetUnsubscribe, kOne);
    EXPECT_TRUE(Gets("Fund|F1") && Gets("Fund|F2"));
    EXPECT_TRUE(page->Wants(window.GetHandle(), "fund"));  // of the other account
    SetFor(neighbour, kSetUnsubscribe, kOne);
    EXPECT_FALSE(Gets("Fund|F1"));
    EXPECT_FALSE(page->Wants(neighbour.GetHandle(), "fund"));
    page->RegisterNotify(window.GetHandle(), "fund");
    SetFor(window, kSetUnsubscribe, kBoth);
    SetFor(window, kSetUnsubscribe, kBoth);
    EXPECT_FALSE(Gets("Fund|F2"));
    EXPECT_TRUE(page->Wants(window.GetHandle(), "fund"));  // it registered besides
}

TEST_F(SubscribeTest, KindsOfOneTopicAreLeftOneByOne) {
    Set(kSetSubscribe, "position handle=H fund_token=F1");
    Set(kSetSubscribe, "positionmulti handle=H fund_token=F1");
    for (const char* other :
         {"position handle=H fund_token=F2", "positionsum handle=H fund_token=F1",
          "position handle=H key=Fund| fund_token=F1", "position fund_token=F1", "position handle=H"})
        Set(kSetUnsubscribe, other);  // nobody subscribed to that
    EXPECT_TRUE(Gets("Position|F1") && page->Wants(window.GetHandle(), "position"));
    Set(kSetUnsubscribe, "position handle=H fund_token=F1");
    EXPECT_TRUE(Gets("Position|F1") && page->Wants(window.GetHandle(), "positionmulti"));
    EXPECT_FALSE(page->Wants(window.GetHandle(), "position"));
    Set(kSetUnsubscribe, "positionmulti handle=H fund_token=F1");
    EXPECT_FALSE(Gets("Position|F1") || page->Wants(window.GetHandle(), "positionmulti"));
}

TEST_F(SubscribeTest, ManyAccountsAtOnce) {
    constexpr int kAccounts = 10'000;
    CDataSet tokens;
    for (int i = 0; i < kAccounts; ++i) tokens.Insert("F" + std::to_string(i));
    CUIData record = RecordOf("fund handle=H", window.GetHandle());
    record.SetData("fund_token", tokens);
    const auto& dispatcher = CSubscriptionDispatcher::Instance();
    const size_t topics = dispatcher.TopicCount();
    for (int i = 0; i < 2; ++i) {  // again is no harm
        page->SetData(&record, kSetSubscribe);
        EXPECT_EQ(dispatcher.TopicCount(), topics + kAccounts);
    }
    EXPECT_TRUE(Gets("Fund|F0") && Gets("Fund|F9999"));
    page->SetData(&record, kSetUnsubscribe);
    EXPECT_EQ(dispatcher.TopicCount(), topics);
    EXPECT_FALSE(page->Wants(window.GetHandle(), "fund"));
}

TEST_F(SubscribeTest, EventsReachTheWindowsThatSubscribed) {
    constexpr char kSubscription[] = "sub_dui_uievent handle=H";
    constexpr char kEvent[] =
        "sub_dui_uievent code=600000 Topic=chosen sub_dui_uievent=[a|1] handle=-1 ret_code=0 ret_message=";
    CUIData own = RecordOf(kSubscription, stranger.GetHandle());
    otherPage->SetData(&own, kSetSubscribe);
    SetFor(window, kSetSubscribe, kSubscription);
    CUIData event = RecordOf("send_dui_uievent handle=H Topic=chosen MapData={code=600000}", 1);
    event.SetData("table", TableOf("a;1"));
    otherPage->SetData(&event, kSetRequest);
    EXPECT_EQ(window.Take(), kEvent);
    EXPECT_EQ(stranger.Take(), kEvent);
    EXPECT_EQ(neighbour.Take(), "");
    SetFor(window, kSetUnsubscribe, kSubscription);
    page->SetData(&event, kSetRequest);
    EXPECT_EQ(window.Take(), "");
    EXPECT_EQ(stranger.Take(), kEvent);
    EXPECT_TRUE(host.pushed.empty());
}

TEST_F(SubscribeTest, APageMayEndInsideItsOwnEvent) {
    class Closer : public CBaseObject {
      public:
        explicit Closer(std::unique_ptr<CUIPageData>& closed) : m_page(closed) {}
        void OnNotify(void*) override {
            ++told;
            m_page.reset();
        }
        int told = 0;

      private:
        std::unique_ptr<CUIPageData>& m_page;
    } closer(page);
    CUIData subscription = RecordOf("sub_dui_uievent handle=H", closer.GetHandle());
    page->SetData(&subscription, kSetSubscribe);
    CUIData own = RecordOf("sub_dui_uievent handle=H", stranger.GetHandle());
    otherPage->SetData(&own, kSetSubscribe);
    CUIData events = RecordOf("send_dui_uievent Topic=end fund_token=<F1,F2>");
    page->SetData(&events, kSetRequest);
    EXPECT_FALSE(page);
    EXPECT_EQ(closer.told, 1);
    EXPECT_EQ(stranger.Take(), "sub_dui_uievent Topic=end handle=-1 ret_code=0 ret_message=");
}

// The common data manager alone publishes these, and to its own listeners only.
TEST_F(SubscribeTest, NewsOfTheCommonDataReachSubscribersOnce) {
    constexpr char kRecord[] = "entrustsubpush handle=H", kNews[] = R"({"no":1})";
    SetFor(window, kSetSubscribe, kRecord);
    page->RegisterNotify(window.GetHandle(), "entrustsubpush");
    Push("entrustret", kNews);
    EXPECT_EQ(window.Take(), "entrustsubpush no=1 handle=-1 ret_code=0 ret_message=");
    page->UnRegisterNotify(window.GetHandle(), "entrustsubpush");
    Push("entrustret", kNews);
    EXPECT_NE(window.Take(), "");
    SetFor(window, kSetUnsubscribe, kRecord);
    Push("entrustret", kNews);
    EXPECT_EQ(window.Take(), "");
    SetFor(window, kSetSubscribe, kRecord);
    page.reset();
    Push("entrustret", kNews);
    EXPECT_EQ(window.Take(), "");
}

// What is made here has no topic: to subscribe is to register.
TEST_F(SubscribeTest, NewsWithoutTopic) {
    SetFor(neighbour, kSetSubscribe, "checked_account handle=H");
    Set(kSetSave, "checked_account a=1");
    EXPECT_EQ(neighbour.Take(), "checked_account a=1 handle=-1");
    SetFor(neighbour, kSetUnsubscribe, "checked_account handle=H");
    Set(kSetSave, "checked_account a=2");
    EXPECT_EQ(neighbour.Take(), "");
}

TEST_F(SubscribeTest, WindowsThatCloseWithoutAWordLeaveTheirTopics) {
    const auto refused = CCounters::Get("subscription_refused");
    SetFor(window, kSetSubscribe, "hq handle=H stock_code=stays");
    for (size_t i = 0; i <= 2 * SubscriptionBook::kKept; ++i) {
        const Receiver closing;
        SetFor(closing, kSetSubscribe, "hq handle=H stock_code=" + std::to_string(i));
        SetFor(closing, kSetSubscribe, "checked_account handle=H");  // without topic
    }
    EXPECT_EQ(CCounters::Get("subscription_refused"), refused);
    EXPECT_TRUE(Gets("stays"));
    EXPECT_FALSE(Gets("0"));
    EXPECT_FALSE(Gets(std::to_string(SubscriptionBook::kKept)));
}

}  // namespace
}  // namespace luadui
