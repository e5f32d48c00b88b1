// Quotes on their whole way, from the server's pushes to the pages at the next tick. What a tick costs must follow what changed,
// and hardly the pages.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "bench/datamgr/desk.h"
#include "datalists/quote_field_table.h"

namespace luadui::bench {
namespace {

constexpr int kSecurities = 5'500, kPages = 50, kCodesOfPage = 50;

std::string Code(int security) { return std::to_string(600'000 + security); }

// What of a row the server fills: all, as it does when it answers, or every third field, when these changed.
enum class Cells { kAll, kChanged };

// Rows of securities first, first + 1, ... as the quote server pushes them; a whole one has some 350 bytes of text.
CQueueRespData PushOf(int first, int rows, int price, Cells cells) {
    CDataTable table;
    for (const auto field : kPushColumns) table.AddColumn(field);
    for (int row = 0; row < rows; ++row) {
        table.AppendRow();
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            const bool isFilled = cells == Cells::kAll || col % 3 == 0;
            table.SetItemText(row, col, isFilled ? std::to_string(10'000 + price + col) : "-");
        }
        table.SetItemText(row, "4", Code(first + row));
        table.SetItemText(row, "3", "17");
        table.SetItemText(row, "10", std::to_string(10 + price) + ".25");
    }
    CQueueRespData push;
    push.SetData("DATATYPE", 2004);
    push.SetData("Topic", "hq");
    push.SetData("Table", table);
    return push;
}

// Pages of one window each, and the market that they watch.
class Market {
  public:
    // Each page shows 50 securities from `first` on, or each those after the ones of the page before.
    enum Shown { kSame, kOthers };
    explicit Market(int pages, int first = 0, Shown shown = kOthers) : m_pages(MakePages(pages)) {
        for (const auto& page : m_pages) {
            page->data.RegisterNotify(page->window.GetHandle(), "hq");
            CUIData request("hq");
            request.SetData("handle", page->window.GetHandle());
            std::string codes;
            for (int i = 0; i < kCodesOfPage; ++i) codes += Code(first + i) + ',';
            if (shown == kOthers) first += kCodesOfPage;
            request.SetData("stock_code", codes);
            page->data.GetData(request, false, false);
        }
    }
    uint64_t Told() const {
        uint64_t told = 0;
        for (const auto& page : m_pages) told += page->window.received;
        return told;
    }

  private:
    DeskPages m_pages;
};

void Tick() {
    CUIData tick("update_push_hq");
    Router().CommonData().GetData(tick, true, false);
}

// Pushes the same securities alternately at two prices.
class Pushes {
  public:
    Pushes(int first, int securities, int rowsOfPush, Cells cells = Cells::kAll) {
        for (int price = 0; price < 2; ++price) {
            for (int row = 0; row < securities; row += rowsOfPush)
                m_pushes[price].push_back(
                    PushOf(first + row, std::min(rowsOfPush, securities - row), price, cells));
        }
    }
    void operator()() {
        for (const CQueueRespData& push : m_pushes[++m_turn % 2]) Router().OnResponse(&push);
    }

  private:
    std::vector<CQueueRespData> m_pushes[2];
    size_t m_turn = 0;
};

// Seconds that a tick takes when `pushes` came before it.
double TickTime(Pushes& pushes) {
    constexpr int kTicks = 15;
    std::vector<double> times;
    const auto tick = [] { Tick(); };
    for (int i = 0; i < kTicks; ++i) {
        pushes();
        times.push_back(SecondsOf(tick, 1));
    }
    return Median(std::move(times));
}

LUADUI_REPORT(QuoteTick) {
    constexpr double kMicro = 1e6;
    Pushes all(0, kSecurities, 500), few(0, kCodesOfPage, kCodesOfPage);
    const Market page(1);
    TickTime(few);
    const double fewOfFew = TickTime(few);
    TickTime(all);
    std::vector<double> one, many, fewToOne, fewToMany, fewPassedBy;
    for (int round = 0; round < 5; ++round) {
        one.push_back(TickTime(all));
        fewToOne.push_back(TickTime(few));
        {
            const Market others(kPages - 1, 0, Market::kSame);
            fewToMany.push_back(TickTime(few));
            if (round == 0)
                AtLeast("quote_tick_told_others", static_cast<double>(others.Told()), 15 * (kPages - 1));
        }
        const Market others(kPages - 1, kCodesOfPage);
        fewPassedBy.push_back(TickTime(few));
        if (round == 0)
            AtMost("quote_tick_told_those_who_show_others", static_cast<double>(others.Told()), 0);
        many.push_back(TickTime(all));
    }
    AtMost("quote_tick_50_of_5500_vs_of_50", Median(fewToOne) / fewOfFew, 1.5);
    AtMost("quote_tick_5500_changed_50_pages_vs_1", Median(many) / Median(one), 1.5);
    AtMost("quote_tick_5500_changed_50_pages_ms", Median(many) * 1e3, 25);
    AtMost("quote_tick_page_told_us", (Median(fewToMany) - Median(fewToOne)) * kMicro / (kPages - 1), 5);
    AtMost("quote_tick_page_passed_by_us", (Median(fewPassedBy) - Median(fewToOne)) * kMicro / (kPages - 1),
           10);
    AtMost("quote_tick_unchanged_us", Measure([] { Tick(); }) * kMicro, 2);
}

// Half a second of a burst: 150,000 rows in pushes of 500, then the tick with all 5,500 securities, told to 50 pages.
double ShareOfBurst(Cells cells) {
    constexpr int kRows = 150'000;
    const Market market(kPages);
    Pushes all(0, kSecurities, 500, cells);
    std::vector<double> times;
    const auto burst = [&] {
        for (int rows = 0; rows < kRows; rows += kSecurities) all();
        Tick();
    };
    burst();
    const uint64_t told = market.Told();
    for (int i = 0; i < 7; ++i) times.push_back(SecondsOf(burst, 1));
    AtLeast("quote_burst_told_pages", static_cast<double>(market.Told() - told) / 7, kPages);
    return Median(std::move(times)) / 0.5;
}

LUADUI_REPORT(QuoteBurst) {
    AtMost("quote_burst_share_of_core", ShareOfBurst(Cells::kAll), 0.10);
    AtMost("quote_burst_of_changes_share_of_core", ShareOfBurst(Cells::kChanged), 0.10);
}

}  // namespace
}  // namespace luadui::bench
