// News on their way to pages: to many at once, beside the bare messages to their windows; and pushes into lists, which must not
// cost more where there is more of everything.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/datamgr/allocations.h"
#include "bench/datamgr/desk.h"

namespace luadui::bench {
namespace {

constexpr int kPages = 40;

CUIData News(int rows) {
    CUIData record("entrustpush");
    record.SetData("fund_token", Token(0));
    record.SetData("entrustpush", Rows("OrderID", 0, rows));
    record.SetData("ret_code", 0);
    return record;
}

class FanOut {
  public:
    FanOut() : m_common(Router().CommonData()), m_pages(MakePages(kPages)) {
        for (const auto& page : m_pages) page->data.RegisterNotify(page->window.GetHandle(), "entrustpush");
    }
    void Publish(CUIData& record) { m_common.ResponseNotify(&record, CBaseObject::kNoHandle, true); }
    void SendBare(CUIData& record) {
        for (const auto& page : m_pages) {
            ::SendMessageW(page->window.GetHWND(), CDuiBaseWnd::kRecordMessage,
                           reinterpret_cast<WPARAM>(&record), 0);
        }
    }
    // How many of the pages got something else than the very record that was published.
    int Copies(CUIData& record) {
        for (const auto& page : m_pages) page->window.keeps = true;
        Publish(record);
        int copies = 0;
        for (const auto& page : m_pages) {
            copies += page->window.last.SharesWith(record) ? 0 : 1;
            page->window.keeps = false;
            page->window.last = CUIData();
        }
        return copies;
    }

  private:
    CUICommonData& m_common;
    DeskPages m_pages;
};

LUADUI_REPORT(FanOut) {
    FanOut pages;
    CUIData record = News(5'000), small = News(1);
    AtMost("fan_out_records_copied", pages.Copies(record), 0);
    const auto publish = [&] { pages.Publish(record); };
    const auto publishSmall = [&] { pages.Publish(small); };
    const AllocationsPerCall bytes = CountAllocations(publish), fewBytes = CountAllocations(publishSmall);
    AtMost("fan_out_allocations_a_page", bytes.count / kPages, 2);
    AtMost("fan_out_more_bytes_for_more_rows", bytes.bytes - fewBytes.bytes, 0);
    const Timing time = Compare(publish, [&] { pages.SendBare(record); });
    AtMost("fan_out_a_page_us", time.ours * 1e6 / kPages, 2);
    AtMost("fan_out_a_page_above_send_message_us", (time.ours - time.baseline) * 1e6 / kPages, 1);
}

// How many there are of what a push must not depend on.
struct Crowd {
    int accounts;
    int rows;  // of each account
    int pages;
};

// Pushes to one account of a list, alternately two contents, on the whole way from the router to the window of the one page
// that registered for the news.
class PushLoop {
  public:
    // `key`: of the topic; `column`: the key of the list's rows; `news`: one of the kinds published.
    PushLoop(std::string key, const char* list, const char* column, const char* news)
        : m_list(*Router().CommonData().Lists().FindOrMake(list)), m_column(column) {
        m_page.data.RegisterNotify(m_page.window.GetHandle(), news);
        for (const char* status : {"open", "done"}) {
            CDataTable table = Rows(column, 0, 1);
            table.SetItemText(0, 1, status);
            CQueueRespData push;
            push.SetData("DATATYPE", 2005);
            push.SetData("Topic", key + Token(0));
            push.SetData("FundToken", Token(0));
            push.SetData("Table", table);
            m_pushes.push_back(push);
        }
    }
    ~PushLoop() { Gather({0, 0, 1}); }

    // Makes the crowd. Tables are made once.
    void Gather(const Crowd& crowd) {
        for (int account = 0; account < m_accounts; ++account) m_list.Remove(Token(account));
        auto& tables = m_tables[crowd.rows];
        for (int account = 0; account < crowd.accounts; ++account) {
            if (tables.size() == static_cast<size_t>(account))
                tables.push_back(Rows(m_column, 0, crowd.rows));
            const Age age = RequestLedger::Instance().NextAge();
            m_list.TakeAnswer(Token(account), tables[static_cast<size_t>(account)], age);
        }
        m_accounts = crowd.accounts;
        m_others.clear();
        m_others = MakePages(crowd.pages - 1);
    }
    void operator()() { Router().OnResponse(&m_pushes[++m_count % 2]); }
    uint64_t Received() const { return m_page.window.received; }

  private:
    CTokenTableList& m_list;
    const char* const m_column;
    DeskPage m_page;
    DeskPages m_others;
    std::map<int, std::vector<CDataTable>> m_tables;
    int m_accounts = 0;
    std::vector<CQueueRespData> m_pushes;
    size_t m_count = 0;
};

// Takes turns with both crowds, as Compare() does with two bodies.
Timing CompareCrowds(PushLoop& push, const Crowd& large, const Crowd& small) {
    constexpr int kRounds = 9;
    constexpr double kTurnSeconds = 0.02;
    std::vector<double> largeTimes, smallTimes;
    for (int round = 0; round < kRounds; ++round) {
        for (const bool isLarge : {true, false}) {
            push.Gather(isLarge ? large : small);
            const size_t calls = CallsPerTurn(push, kTurnSeconds);
            const double seconds = SecondsOf(push, calls) / static_cast<double>(calls);
            (isLarge ? largeTimes : smallTimes).push_back(seconds);
        }
    }
    return {Median(std::move(largeTimes)), Median(std::move(smallTimes))};
}

void ReportGrowth(const std::string& name, PushLoop& push, const Crowd& large) {
    constexpr double kLimit = 1.5;
    AtMost(name + "_20_accounts_vs_1", CompareCrowds(push, large, {1, large.rows, large.pages}).CostRatio(),
           kLimit);
    AtMost(name + "_5000_rows_vs_100",
           CompareCrowds(push, large, {large.accounts, 100, large.pages}).CostRatio(), kLimit);
    const Timing pages = CompareCrowds(push, large, {large.accounts, large.rows, 1});
    AtMost(name + "_40_pages_vs_1", pages.CostRatio(), kLimit);
    AtMost(name + "_us", pages.ours * 1e6, 20);
    const uint64_t before = push.Received();
    push();
    AtLeast(name + "_is_received", static_cast<double>(push.Received() - before), 1);
}

LUADUI_REPORT(PushGrowth) {
    constexpr Crowd kLarge = {.accounts = 20, .rows = 5'000, .pages = kPages};
    PushLoop orders("Entrust|", "entrust", "OrderID", "entrustpush");
    ReportGrowth("order_push", orders, kLarge);
    // Stands for all positions of its account.
    PushLoop positions("Position|", "position", "", "position");
    ReportGrowth("position_push", positions, kLarge);
    // The account's positions follow.
    FillList("position", "SecurityID", 1, 1);
    PushLoop funds("Fund|", "fund", "Currency", "position");
    const Timing accounts = CompareCrowds(funds, {5'000, 1, 1}, {10, 1, 1});
    AtMost("fund_push_5000_accounts_vs_10", accounts.CostRatio(), 1.5);
    AtMost("fund_push_5000_accounts_us", accounts.ours * 1e6, 20);
}

}  // namespace
}  // namespace luadui::bench
