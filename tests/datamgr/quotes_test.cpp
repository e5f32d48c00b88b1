// Quotes on their whole way: asked for, subscribed to, pushed, and told at each tick to the pages that show them.
#include <functional>
#include <random>
#include <set>

#include "datalists/hq_data.h"
#include "datamgr/quote_names.h"
#include "datamgr/ui_registry.h"
#include "tests/datamgr/page_fixture.h"

namespace luadui {
namespace {

constexpr int kOfAllPages = 2004;  // "DATATYPE"

// Writes down what quotes it is told of: "hq push 600000:17@10.01", "hq 600000:17@10.01", "hq failed 7".
class Watcher : public CBaseObject {
  public:
    void OnNotify(void* data) override {
        last = *static_cast<CUIData*>(data);
        std::string text = last.GetType() + (last.GetDataLong("is_push") == 1 ? " push" : "");
        if (const int64_t code = last.GetDataLong("ret_code")) text += " failed " + std::to_string(code);
        CDataSet keys;
        EXPECT_TRUE(last.GetData("updatecode", keys) || last.GetTypeText() == "error_msg");
        for (const std::string& key : keys) {
            CUIData quote;
            EXPECT_TRUE(last.GetData(key, quote)) << key;
            text += ' ' + key + '@' + quote.GetDataString("PriceZxjg");
        }
        m_told += (m_told.empty() ? "" : " / ") + text;
        if (onTold) std::exchange(onTold, nullptr)();
    }
    std::string Take() { return std::exchange(m_told, {}); }

    CUIData last;
    std::function<void()> onTold;  // once

  private:
    std::string m_told;
};

class QuotesTest : public PageFixture {
  protected:
    QuotesTest() { Tick(); }
    ~QuotesTest() override {
        host.onPush = [](CQueueReqItem&) {};
        page.reset();
        otherPage.reset();
        Tick();
        for (const auto& request : m_asked) RequestLedger::Instance().Drop(request.GetDataString("UUID"));
    }

    static CUIData RecordFor(const CBaseObject& window, std::string_view text) {
        return RecordOf(std::string(text) + " handle=H", window.GetHandle());
    }
    static bool Ask(CUIPageData& from, const CBaseObject& window, std::string_view text) {
        CUIData request = RecordFor(window, text);
        return from.GetData(request, false, false);
    }
    static void SetFor(CUIPageData& from, const CBaseObject& window, SET_DATA mode, std::string_view text) {
        CUIData record = RecordFor(window, text);
        from.SetData(&record, mode);
    }
    static void Register(CUIPageData& from, const CBaseObject& window, const char* kind = "hq") {
        from.RegisterNotify(static_cast<unsigned>(window.GetHandle()), kind);
    }
    // What left since the last call: "1051 isSub 600000 / 1058 1,2".
    std::string Sent() {
        std::string text;
        for (const CQueueReqItem& item : host.pushed) {
            if (RequestTypeOf(item) == RequestTypeOfKind("log_operation")) continue;
            const CUIData params = FakeHost::Params(item);
            text += (text.empty() ? "" : " / ") + std::to_string(RequestTypeOf(item));
            for (const char* flag : {"isSub", "unsub"}) {
                if (params.GetDataText(flag) == "true") text += std::string(" ") + flag;
            }
            text += ' ' + params.GetDataString("stock_code");
        }
        m_asked.insert(m_asked.end(), host.pushed.begin(), host.pushed.end());
        host.pushed.clear();
        return text;
    }
    // To the request that was sent `back` requests before the last one.
    void Answer(std::string_view text, size_t back = 0) {
        Sent();
        const CQueueReqItem& item = m_asked.at(m_asked.size() - 1 - back);
        CQueueRespData response = ResponseOf(text);
        for (const char* key : {"REQTYPE", "UUID"}) response.SetData(key, item.GetDataView(key));
        response.SetData("DATATYPE", kOfAllPages);
        response.SetData("Request", static_cast<const CUIData&>(item));
        router.OnResponse(&response);
    }
    void Push(std::string_view topic, CQueueRespData push) {
        push.SetData("Topic", topic);
        push.SetData("DATATYPE", kOfAllPages);
        router.OnResponse(&push);
    }
    // "600000,10.01;600001,9.99", in Shanghai.
    void Push(std::string_view rows, std::string_view topic = "hq") {
        Push(topic, ResponseOf("4,10,3;" + ReplaceText(std::string(rows), ";", ",17;") + ",17"));
    }
    void Tick() {
        CUIData tick("update_push_hq");
        router.CommonData().GetData(tick, true, false);
    }
    static uint64_t Counted(const char* reason) {
        static std::map<std::string, uint64_t> counts;
        const uint64_t now = CCounters::Get(reason);
        return now - std::exchange(counts[reason], now);
    }

    Watcher window, neighbour;  // of the page
    Watcher stranger;           // of the other page
    std::vector<CQueueReqItem> m_asked;
};

TEST_F(QuotesTest, TheAskerGetsWhatTheServerAnswers) {
    constexpr char kRow[] = "4,10,3;600000,10.01,17";
    struct {
        const char *asked, *sent, *answer, *told;
    } const kCases[] = {
        {"hq stock_code=600000", "1051 600000", kRow, "hq 600000:17@10.01"},
        {"hq_zq stock_code=600000:17", "1058 600000:17", kRow, "hq_zq 600000:17@10.01"},
        {"hq_quote stock_code=600000", "1055 600000", kRow, "hq_quote 600000:17@10.01"},
        {"hq stock_code=600000,000001", "1051 600000,000001", "4,3,10;600000,17,-;000001,33,9.00;,17,8",
         "hq 000001:33@9.00 600000:17@10.01"},
        {"hq stock_code=600000", "1051 600000", "No;1", "hq"},
        {"hq stock_code=600000", "1051 600000", R"({"updatecode":"x","is_push":1})", "hq"},
        {"hq stock_code=600000", "1051 600000", R"({"retcode":7,"message":"m"}4,10,3;600000,10.02,17)",
         "error_msg / hq failed 7"},
        {"hq_quote stock_code=600000", "1055 600000", R"({"retcode":7,"message":"m"}4,10,3;600000,10.02,17)",
         "error_msg / hq_quote failed 7"},
        {"hq stock_code=600000", "1051 600000", "4,10,3;600000,-,17", "hq 600000:17@10.01"},  // as it was
    };
    for (const auto& [asked, sent, answer, told] : kCases) {
        EXPECT_FALSE(Ask(*page, window, asked));
        EXPECT_EQ(Sent(), sent);
        Answer(answer);
        EXPECT_EQ(window.Take(), told) << asked << answer;
        EXPECT_EQ(neighbour.Take() + stranger.Take(), "");
    }
}

TEST_F(QuotesTest, ATickTellsWhatWasPushedToThoseWhoShowIt) {
    Register(*page, window);
    Register(*otherPage, stranger);
    Push("600000,10.01");
    Push("600001,9.99;600000,10.02;,1;600000,-");
    EXPECT_EQ(window.Take(), "");
    Tick();
    constexpr char kBoth[] = "hq push 600000:17@10.02 600001:17@9.99";
    EXPECT_EQ(window.Take(), kBoth);
    EXPECT_EQ(stranger.Take(), kBoth);
    EXPECT_EQ(neighbour.Take(), "");
    Tick();
    EXPECT_EQ(window.Take() + stranger.Take(), "");
    // From now on these show one security each.
    Ask(*page, window, "hq stock_code=600000");
    CUIData bundle = RecordFor(stranger, "bundle req_level=2");
    bundle.SetData("one", RecordOf("hq stock_code=600001:17"));
    otherPage->SetData(&bundle, kSetRequest);
    struct {
        const char *pushed, *page, *other;
    } const kCases[] = {
        {"600000,10.03", "hq push 600000:17@10.03", ""},
        {"600001,9.98", "", "hq push 600001:17@9.98"},
        {"600001,9.97;600000,10.04", "hq push 600000:17@10.04 600001:17@9.97",
         "hq push 600000:17@10.04 600001:17@9.97"},
        {"600002,1.00", "", ""},
        {"60000,1.00", "", ""},
        {"6000001,1.00", "", ""},
        {"600002,1.01;600003,1.00;600004,1.00;600001,9.96", "",
         "hq push 600001:17@9.96 600002:17@1.01 600003:17@1.00 600004:17@1.00"},
    };
    for (const auto& [pushed, own, other] : kCases) {
        Push(pushed);
        Counted("quotes_not_shown");
        Tick();
        EXPECT_EQ(Counted("quotes_not_shown"), (*own == 0 ? 1u : 0u) + (*other == 0 ? 1u : 0u));
        EXPECT_EQ(window.Take(), own) << pushed;
        EXPECT_EQ(stranger.Take(), other) << pushed;
    }
    Push("600000,3.00", "hq_zq");
    Tick();
    EXPECT_EQ(window.Take() + stranger.Take(), "");  // of another kind
    Register(*page, neighbour);                      // without naming any
    Push("600005,3.00");
    Tick();
    EXPECT_EQ(neighbour.Take(), "hq push 600005:17@3.00");
    EXPECT_EQ(window.Take(), "hq push 600005:17@3.00");  // its page shows it
}

TEST_F(QuotesTest, WhatIsNamedIsForgottenWithTheWindowAndItsSubscription) {
    auto closing = std::make_unique<Watcher>();
    SetFor(*page, window, kSetSubscribe, "hq stock_code=600000,600001");
    SetFor(*page, neighbour, kSetSubscribe, "hq stock_code=600002");
    Register(*page, *closing);
    Ask(*page, *closing, "hq stock_code=600003");
    const auto isTold = [&](const char* code) {
        Push(std::string(code) + ",1.00");
        Tick();
        stranger.Take();
        return std::to_string(!window.Take().empty()) + std::to_string(!neighbour.Take().empty());
    };
    EXPECT_EQ(isTold("600003"), "11");
    closing.reset();
    EXPECT_EQ(isTold("600003"), "00");
    SetFor(*page, window, kSetUnsubscribe, "hq stock_code=600001");
    EXPECT_EQ(isTold("600001") + isTold("600000") + isTold("600002"), "001111");
    SetFor(*page, window, kSetUnsubscribe, "hq stock_code=600000");  // the window listens no longer
    EXPECT_EQ(isTold("600000") + isTold("600002"), "0001");
    // Who registered, too, and takes back all that he named, shows none.
    Register(*page, neighbour);
    SetFor(*page, neighbour, kSetUnsubscribe, "hq stock_code=600002");
    EXPECT_EQ(isTold("600002"), "00");
    SetFor(*page, neighbour, kSetSubscribe, "hq");  // all there are
    EXPECT_EQ(isTold("600004"), "01");
    SetFor(*page, neighbour, kSetUnsubscribe, "hq");
    EXPECT_EQ(isTold("600004"), "00");
    page->UnRegisterNotify(static_cast<unsigned>(neighbour.GetHandle()), "hq");
    Register(*page, neighbour);  // a new beginning
    EXPECT_EQ(isTold("600004"), "01");
}

TEST_F(QuotesTest, TheServerPushesWhatSomebodyHolds) {
    constexpr char kRows[] = "4,10,3;600000,10.01,17;600001,9.99,17";
    SetFor(*page, window, kSetSubscribe, "hq stock_code=600000,600001");
    EXPECT_EQ(Sent(), "1051 isSub 600000,600001");
    EXPECT_FALSE(Ask(*page, window, "hq stock_code=600000"));             // not answered yet
    EXPECT_FALSE(Ask(*page, window, "hq stock_code=600000 isSub=true"));  // the answer is on its way
    EXPECT_EQ(Sent(), "1051 600000");
    EXPECT_FALSE(Ask(*page, neighbour, "hq stock_code=600000 isSub=true"));
    EXPECT_FALSE(Ask(*page, neighbour, "hq stock_code=600000 unsub=true"));
    EXPECT_EQ(Sent(), "1051 600000");
    Answer(kRows, 2);
    EXPECT_EQ(window.Take(), "hq 600000:17@10.01 600001:17@9.99");
    // What is pushed is current: nobody asks the server again.
    SetFor(*otherPage, stranger, kSetSubscribe, "hq stock_code=600001,600002");
    EXPECT_EQ(Sent(), "1051 isSub 600002");
    EXPECT_EQ(stranger.Take(), "hq 600001:17@9.99");
    Push("600000,10.02");
    Tick();
    window.Take();
    struct {
        const char *asked, *told, *sent;
    } const kAsks[] = {
        {"hq stock_code=600000", "hq 600000:17@10.02", ""},
        {"hq stock_code=600000:17,600001", "hq 600000:17@10.02 600001:17@9.99", ""},
        {"hq stock_code=600000:33", "", "1051 600000:33"},
        {"hq stock_code=600000 refresh=1", "", "1051 600000"},
        {"hq stock_code=600000,600002", "", "1051 600000,600002"},
        {"hq_zq stock_code=600000", "", "1058 600000"},
        {"hq", "", "1051 "},
    };
    for (const auto& [asked, told, sent] : kAsks) {
        EXPECT_EQ(Ask(*page, neighbour, asked), *told != 0) << asked;
        EXPECT_EQ(neighbour.Take(), told) << asked;
        EXPECT_EQ(Sent(), sent) << asked;
    }
    SetFor(*page, window, kSetUnsubscribe, "hq stock_code=600001");
    EXPECT_EQ(Sent(), "");  // the other page shows it
    SetFor(*otherPage, stranger, kSetUnsubscribe, "hq stock_code=600001,600002");
    EXPECT_EQ(Sent(), "1051 unsub 600001,600002");
    Ask(*page, neighbour, "hq stock_code=600001");
    EXPECT_EQ(Sent(), "1051 600001");  // what is held may be old
    SetFor(*otherPage, stranger, kSetSubscribe, "hq stock_code=600001");
    EXPECT_EQ(Sent() + stranger.Take(), "1051 isSub 600001");
    // Bonds: a query may subscribe by itself, and what fails is tried again by the next one.
    Ask(*page, window, "hq_zq stock_code=2,3 isSub=true");
    EXPECT_EQ(Sent(), "1058 isSub 2,3");
    Answer(R"({"retcode":7,"message":"m"})");
    Ask(*page, window, "hq_zq stock_code=3 unsub=true");  // the server does not push it
    CUIData bundle = RecordFor(neighbour, "bundle req_level=2");
    bundle.SetData("one", RecordOf("hq_zq stock_code=2,4 isSub=true"));
    bundle.SetData("two", RecordOf("hq_zq stock_code=5 unsub=true"));
    page->SetData(&bundle, kSetRequest);
    EXPECT_EQ(Sent(), "1058 isSub 2,4");
    Answer("4,10,3;2,1.00,19;4,2.00,19");
    Ask(*page, window, "hq_zq stock_code=2,4,5 isSub=true");
    EXPECT_EQ(Sent(), "1058 isSub 5 / 1058 2,4,5");
    for (const Watcher* each : {&window, &neighbour}) Ask(*page, *each, "hq_zq stock_code=2,4,5 unsub=true");
    EXPECT_EQ(Sent(), "1058 unsub 5 / 1058 unsub 2,4");
    // Who goes without a word leaves later, a page at once.
    auto closing = std::make_unique<Watcher>();
    Ask(*page, *closing, "hq_zq stock_code=1 isSub=true");
    EXPECT_EQ(Sent(), "1058 isSub 1");
    closing.reset();
    for (unsigned tick = 0; tick < QuoteFeed::kTicksBetweenLooks; ++tick) Tick();
    EXPECT_EQ(Sent(), "1058 unsub 1");
    page.reset();
    EXPECT_EQ(Sent(), "1051 unsub 600000");
}

TEST_F(QuotesTest, PagesThatSleepCatchUpOnWaking) {
    Register(*page, window);
    SetFor(*page, window, kSetSubscribe, "hq stock_code=600000,600001,600002:17");
    Register(*otherPage, stranger);
    Answer("4,10,3;600000,10.01,17;600001,9.99,17;600002,1.00,17");
    window.Take();
    page->Sleep(true);
    for (const char* rows : {"600000,10.02;600003,1.00", "600003,2.00", "600000,10.03;600002,2.00"}) {
        Push(rows);
        Tick();
    }
    EXPECT_EQ(window.Take(), "");
    EXPECT_EQ(stranger.Take(),
              "hq push 600000:17@10.02 600003:17@1.00 / hq push 600003:17@2.00 / hq push "
              "600000:17@10.03 600002:17@2.00");
    SetFor(*page, window, kSetUnsubscribe, "hq stock_code=600002:17");
    Sent();
    page->Sleep(false);
    EXPECT_EQ(window.Take(), "hq 600000:17@10.03");  // current, so that nobody asks the server
    EXPECT_EQ(stranger.Take() + Sent(), "");
    Tick();
    EXPECT_EQ(window.Take(), "");
    // What is pushed but not told yet comes with the next tick.
    page->Sleep(true);
    Push("600001,9.98");
    page->Sleep(false);
    Tick();
    EXPECT_EQ(window.Take(), "hq push 600001:17@9.98");
    // All there are: all that changed are asked for.
    otherPage->Sleep(true);
    Push("600007,7.00;600001,9.97");
    Tick();
    otherPage->Sleep(false);
    EXPECT_EQ(Sent(), "1051 600001:17,600007:17");
    stranger.Take();
    Answer("4,10,3;600007,7.01,17");
    EXPECT_EQ(stranger.Take(), "hq 600007:17@7.01");
}

// Quotes that were told are attached to the list: see quote_handlers.h.
TEST_F(QuotesTest, AKeptRecordShowsLaterQuotesACopyDoesNot) {
    Register(*page, window);
    Push("600000,10.01");
    Tick();
    const CUIData kept = window.last;
    CUIData copy, quote;
    ASSERT_TRUE(kept.GetData("600000:17", copy));
    Push("600000,10.02");
    EXPECT_TRUE(kept.GetData("600000:17", quote));
    EXPECT_EQ(quote.GetDataText("PriceZxjg"), "10.01");  // nothing changes between ticks
    Tick();
    EXPECT_TRUE(kept.GetData("600000:17", quote));
    EXPECT_EQ(quote.GetDataText("PriceZxjg"), "10.02");
    EXPECT_EQ(copy.GetDataText("PriceZxjg"), "10.01");
    CDataSet keys;
    EXPECT_TRUE(kept.GetData("updatecode", keys) && keys.Size() == 1);
}

TEST_F(QuotesTest, PagesMayGoAndPushesMayComeWhileATickIsTold) {
    Register(*page, window);
    Register(*page, neighbour);
    Register(*otherPage, stranger);
    // While the first one is told, its page goes, and more is pushed, and ticks.
    window.onTold = [&] {
        Push("600001,9.99");
        Tick();
        Push("600002,1.00");
        page.reset();
    };
    Push("600000,10.01");
    Tick();
    EXPECT_EQ(window.Take(), "hq push 600000:17@10.01 / hq push 600001:17@9.99");
    EXPECT_EQ(stranger.Take(), "hq push 600001:17@9.99 / hq push 600000:17@10.01");
    Tick();
    EXPECT_EQ(stranger.Take(), "hq push 600002:17@1.00");
    EXPECT_EQ(window.Take(), "");
    // The host ends a page while it hears of its subscriptions.
    constexpr char kOne[] = "hq stock_code=600000", kTwo[] = "hq stock_code=600000,600001 isSub=true";
    for (const int way : {0, 1, 2}) {
        otherPage = std::make_unique<CUIPageData>("Q");
        otherPage->Init();
        if (way != 0) SetFor(*otherPage, stranger, kSetSubscribe, kOne);
        host.onPush = [&](CQueueReqItem&) { otherPage.reset(); };
        CUIData bundle = RecordFor(stranger, "bundle req_level=2");
        bundle.SetData("one", RecordOf(kTwo));
        bundle.SetData("two", RecordOf("hq_zq stock_code=1 isSub=true"));
        if (way == 0) SetFor(*otherPage, stranger, kSetSubscribe, kOne);
        if (way == 1) Ask(*otherPage, stranger, kTwo);
        if (way == 2) otherPage->SetData(&bundle, kSetRequest);
        EXPECT_FALSE(otherPage) << way;
        host.onPush = [](CQueueReqItem&) {};
    }
}

TEST_F(QuotesTest, ASubscriptionThatWasLostIsTriedAgain) {
    static uint32_t now;
    QuoteFeed feed(router.CommonData(), [] { return now; });
    const std::vector<std::string> names{"600000"};
    const auto first = static_cast<uint32_t>(window.GetHandle()),
               second = static_cast<uint32_t>(neighbour.GetHandle());
    CDataSet keys;
    keys.Insert("600000:17");
    CUIData quote;
    Push("600000,10.01");
    Tick();
    feed.Subscribe("hq", names, first);
    EXPECT_EQ(Sent(), "1051 isSub 600000");
    feed.Answered("hq", names, keys, false);  // to somebody else's question
    now += QuoteFeed::kFreshTime;
    EXPECT_FALSE(feed.FindCurrent("600000", "17", quote));
    now = QuoteFeed::kPatience - 1;
    feed.Subscribe("hq", names, first);
    EXPECT_EQ(Sent(), "");
    ++now;
    feed.Subscribe("hq", names, second);
    EXPECT_EQ(Sent(), "1051 isSub 600000");
    feed.Answered("hq", names, keys, true);
    now += QuoteFeed::kPatience;
    EXPECT_TRUE(feed.FindCurrent("600000", "17", quote));
    feed.Unsubscribe("hq", names, first);
    EXPECT_EQ(Sent(), "");
    feed.Unsubscribe("hq", names, second);
    EXPECT_EQ(Sent(), "1051 unsub 600000");
}

TEST_F(QuotesTest, GarbageChangesNothing) {
    Register(*page, window);
    Push("600000,10.01");
    Tick();
    EXPECT_EQ(window.Take(), "hq push 600000:17@10.01");
    Counted("push_failed_not_merged");
    Counted("push_without_table");
    std::mt19937 random(7);
    for (int i = 0; i < 200; ++i) {
        CDataTable table;
        const auto text = [&] {
            std::string bytes(random() % 12, '\0');
            for (char& byte : bytes) byte = static_cast<char>(random());
            return bytes;
        };
        for (unsigned col = random() % 20; col > 0; --col) table.AddColumn(random() % 2 ? "10" : text());
        for (unsigned row = random() % 5; row > 0; --row) {
            table.AppendRow();
            for (int col = 0; col < table.GetColumnNumber(); ++col) table.SetItemText(0, col, text());
        }
        CQueueRespData push;
        push.SetData("Table", table);
        Push(i % 2 ? "hq" : "hq_zq", push);
    }
    Push("hq", ResponseOf(R"({"retcode":-1,"message":"down"}4,10,3;600000,1.00,17)"));
    Push("hq", ResponseOf(R"({"a":1})"));
    Tick();
    EXPECT_EQ(window.Take(), "");
    EXPECT_EQ(Counted("push_failed_not_merged") * 10 + Counted("push_without_table"), 11u);
    Push("600000,-");
    Tick();
    EXPECT_EQ(window.Take(), "hq push 600000:17@10.01");
}

TEST_F(QuotesTest, OrderPricesComeFromQuotesThatAreNotOld) {
    const auto price = [&](std::string_view code) {
        CUIData request = RecordOf("price_level price_level=0 stock_marketid=17");
        request.SetData("stock_code", code);
        page->GetData(request, true, false);
        return request.GetDataString("price");
    };
    const auto answer = [&](const char* rows) { Answer(std::string("4,10,3;") + rows); };
    EXPECT_EQ(price("600600"), "");
    Ask(*page, window, "hq stock_code=600600");
    answer("600600,10.01,17");
    EXPECT_EQ(price("600600"), "10.01");  // answered just now
    SetFor(*page, window, kSetSubscribe, "hq stock_code=600601");
    answer("600601,9.99,17");
    Push("600601,9.98");
    Tick();
    EXPECT_EQ(price("600601"), "9.98");
    Push("600602,9.97");  // nobody asked for it
    Tick();
    EXPECT_EQ(price("600602"), "");
}

// Everything at random, against a plain model of who is to be told what at each tick, what is asked on waking, and
// what the server pushes.
class QuotesModelTest : public QuotesTest {
  protected:
    using Names = std::set<std::string>;
    struct Window {
        std::unique_ptr<Watcher> watcher = std::make_unique<Watcher>();
        bool isRegistered = false, takesAll = false, hasNamed = false;
        Names topics, named;

        bool Listens() const { return isRegistered || !topics.empty(); }
        bool TakesAll() const { return Listens() && (takesAll || !hasNamed); }
        bool Takes(const std::string& key) const {
            const std::string code = key.substr(0, key.find(':'));
            return TakesAll() || (Listens() && (named.contains(key) || named.contains(code)));
        }
    };
    struct Page {
        std::unique_ptr<CUIPageData> data;
        std::vector<Window> windows = std::vector<Window>(2);
        bool isAsleep = false;
        Names noted;
    };

    QuotesModelTest() {
        for (size_t number = 0; number < m_pages.size(); ++number) Open(number);
    }
    void Open(size_t number) {
        m_pages[number] = Page();
        m_pages[number].data = std::make_unique<CUIPageData>("M" + std::to_string(number));
        m_pages[number].data->Init();
    }
    size_t Below(size_t limit) { return m_random() % limit; }
    Names Securities() {
        constexpr const char* kMarkets[] = {"", "", ":17", ":33"};  // nothing is pushed of the last one
        Names names;
        for (size_t count = 1 + Below(3); count > 0; --count)
            names.insert(std::to_string(600000 + Below(8)) + kMarkets[Below(4)]);
        return names;
    }
    static std::string Joined(const Names& names) {
        return JoinSecurities(std::vector<std::string>(names.begin(), names.end()));
    }
    static Names Split(std::string_view names) {
        Names set;
        for (const auto name : SplitText(names, ',')) set.emplace(name);
        return set;
    }
    void Change(Page& page, Window& window);
    void Subscribe(Page& page, Window& window, bool subscribe);
    void SleepOrWake(Page& page);
    void PushSome();
    void TickAll();
    void ReadSent();
    Names HeldByPages() const;

    std::mt19937 m_random{20};
    std::vector<Page> m_pages = std::vector<Page>(3);
    std::map<std::string, std::string> m_changed;  // key -> price
    Names m_atServer;
    int m_prices = 0, m_told = 0, m_requeries = 0;
};

void QuotesModelTest::ReadSent() {
    const std::string sent = Sent();
    for (const auto request : SplitText(sent, '/')) {
        const auto words = SplitText(TrimText(request), ' ');
        if (words.size() != 3) continue;
        for (const std::string& name : Split(words[2]))
            words[1] == "isSub" ? m_atServer.insert(name).second : m_atServer.erase(name) != 0;
    }
}

QuotesModelTest::Names QuotesModelTest::HeldByPages() const {
    Names held;
    for (const Page& page : m_pages) {
        for (const Window& window : page.windows) held.insert(window.topics.begin(), window.topics.end());
    }
    held.erase("");
    return held;
}

void QuotesModelTest::Subscribe(Page& page, Window& window, bool subscribe) {
    const Names names = Below(5) == 0 ? Names{""} : Securities();
    for (const std::string& name : names) {
        if (name.empty()) {
            window.takesAll = subscribe;
        } else if (subscribe) {
            window.named.insert(name);
            window.hasNamed = true;
        } else {
            window.named.erase(name);
        }
        subscribe ? window.topics.insert(name).second : window.topics.erase(name) != 0;
    }
    SetFor(*page.data, *window.watcher, subscribe ? kSetSubscribe : kSetUnsubscribe,
           "hq stock_code=" + Joined(names));
}

void QuotesModelTest::SleepOrWake(Page& page) {
    Names asked;
    for (const std::string& name : page.noted) {
        if (std::ranges::any_of(page.windows, [&](const Window& window) { return window.Takes(name); }))
            asked.insert(name);
    }
    page.noted.clear();
    page.isAsleep = !page.isAsleep;
    ReadSent();
    page.data->Sleep(page.isAsleep);
    EXPECT_EQ(Sent(), asked.empty() ? "" : "1051 " + Joined(asked));
    m_requeries += asked.empty() ? 0 : 1;
}

void QuotesModelTest::PushSome() {
    for (size_t rows = Below(4); rows > 0; --rows) {
        const std::string code = std::to_string(600000 + Below(8));
        const std::string price = std::to_string(100 + ++m_prices % 800) + ".25";
        Push(code + ',' + price);
        m_changed[code + ":17"] = price;
    }
}

void QuotesModelTest::TickAll() {
    std::string news = "hq push";
    for (const auto& [key, price] : m_changed) news += ' ' + key + '@' + price;
    std::vector<std::string> expected;
    for (Page& page : m_pages) {
        bool isFor = false, isForAll = false;
        Names met;
        for (const Window& window : page.windows) {
            isForAll = isForAll || (window.TakesAll() && !m_changed.empty());
            for (const auto& [key, price] : m_changed) {
                isFor = isFor || window.Takes(key);
                for (const std::string& name : {key, key.substr(0, key.find(':'))}) {
                    if (window.Listens() && window.named.contains(name)) met.insert(name);
                }
            }
        }
        if (isForAll) {
            met.clear();
            for (const auto& [key, price] : m_changed) met.insert(key);
        }
        if (page.isAsleep) page.noted.insert(met.begin(), met.end());
        for (const Window& window : page.windows)
            expected.push_back(isFor && !page.isAsleep && window.Listens() ? news : "");
    }
    Tick();
    auto text = expected.begin();
    for (Page& page : m_pages) {
        for (Window& window : page.windows) {
            m_told += text->empty() ? 0 : 1;
            EXPECT_EQ(window.watcher->Take(), *text++);
        }
    }
    m_changed.clear();
}

void QuotesModelTest::Change(Page& page, Window& window) {
    const auto handle = static_cast<unsigned>(window.watcher->GetHandle());
    const bool wasListening = window.Listens();
    switch (Below(6)) {
        case 0:
            page.data->RegisterNotify(handle, "hq");
            window.isRegistered = true;
            break;
        case 1:
            page.data->UnRegisterNotify(handle, "hq");
            window.isRegistered = false;
            break;
        case 2: {
            const Names names = Securities();
            window.named.insert(names.begin(), names.end());
            window.hasNamed = true;
            Ask(*page.data, *window.watcher, "hq stock_code=" + Joined(names));
            break;
        }
        default:
            Subscribe(page, window, Below(3) == 0);
    }
    if (wasListening && !window.Listens()) {
        window.takesAll = window.hasNamed = false;
        window.named.clear();
    }
}

TEST_F(QuotesModelTest, WhoIsToldWhat) {
    for (int step = 0; step < 20'000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        const size_t number = Below(m_pages.size());
        Page& page = m_pages[number];
        Window& window = page.windows[Below(page.windows.size())];
        const size_t what = Below(100);
        if (what < 45) {
            Change(page, window);
        } else if (what < 55) {
            SleepOrWake(page);
        } else if (what < 57) {
            window = Window();  // the one before closed without a word
        } else if (what < 58) {
            Open(number);
        } else if (what < 80) {
            PushSome();
        } else {
            TickAll();
        }
        ReadSent();
        EXPECT_TRUE(std::ranges::includes(m_atServer, HeldByPages()));
    }
    for (unsigned tick = 0; tick < QuoteFeed::kTicksBetweenLooks; ++tick) TickAll();
    ReadSent();
    EXPECT_EQ(m_atServer, HeldByPages());
    m_pages.clear();
    ReadSent();
    EXPECT_EQ(m_atServer, Names());
    EXPECT_GT(m_told, 2'000);
    EXPECT_GT(m_requeries, 200);
}

}  // namespace
}  // namespace luadui
