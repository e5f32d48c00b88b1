// Lists of tables by account beside the plainest way to keep rows by key: a hash map of rows, each a vector
// of strings.
#include <string>
#include <unordered_map>
#include <vector>

#include "base/text.h"
#include "bench/report.h"
#include "datalists/deal_list.h"
#include "datalists/entrust_list.h"

namespace luadui::bench {
namespace {

constexpr int kColumns = 30;

// Rows of orders or deals, whose key and other cells are numbers.
CDataTable Rows(std::string_view key, int first, int rows) {
    CDataTable table;
    for (const std::string_view name : {key, std::string_view("OrderStatus"), std::string_view("DealVolume")})
        table.AddColumn(name);
    for (int col = table.GetColumnNumber(); col < kColumns; ++col)
        table.AddColumn("OrderColumn" + std::to_string(col));
    const std::string status = Gbk("部分成交");
    for (int row = 0; row < rows; ++row) {
        table.AppendRow();
        for (int col = 0; col < kColumns; ++col)
            table.SetItemText(row, col, std::to_string(100'000 + first + row));
        table.SetItemText(row, 1, status);
        table.SetItemText(row, 2, "0");
    }
    return table;
}

CDataSet Tokens(int count) {
    CDataSet tokens;
    for (int account = 0; account < count; ++account) tokens.Insert(std::to_string(880'000 + account));
    return tokens;
}

// Dealt more and more: the same row changes again and again, while somebody holds a merged view and a published copy
// of what was there at first; or, with `publishes`, of what was there before.
template <class List>
class PushLoop {
  public:
    PushLoop(std::string_view key, int rows, bool publishes)
        : m_push(Rows(key, rows / 2, 1)), m_publishes(publishes) {
        m_list.TakeAnswer("880000", Rows(key, 0, rows), 1);
        m_merged.SetData("fund_token", Tokens(1));
        m_list.MergeMultiAccount(m_merged);
        m_list.MakeRecord("880000", m_published);
    }
    void operator()() {
        ++m_count;
        m_push.SetItemText(0, 2, LongText(static_cast<int64_t>(m_count)));
        m_list.TakePush("880000", m_push, m_count, false);
        if (m_publishes) m_list.MakeRecord("880000", m_published);
    }

  private:
    List m_list;
    CDataTable m_push;
    const bool m_publishes;
    CUIData m_published, m_merged;
    uint64_t m_count = 1;
};

template <class List>
void ReportPushes(const std::string& name, std::string_view key) {
    const auto loop = [key](int rows, bool publishes) { return PushLoop<List>(key, rows, publishes); };
    const Timing bare = Compare(loop(50'000, false), loop(50, false));
    AtMost(name + "_push_to_50000_rows_us", bare.ours * 1e6, 3);
    AtMost(name + "_push_to_50000_rows_vs_50", bare.CostRatio(), 1.5);
    const Timing published = Compare(loop(50'000, true), loop(50, true));
    AtMost(name + "_push_and_publish_50000_rows_us", published.ours * 1e6, 3);
    AtMost(name + "_push_and_publish_50000_rows_vs_50", published.CostRatio(), 3);
}

LUADUI_REPORT(PushOfAnOrder) {
    ReportPushes<CEntrustList>("order", "OrderID");

    using Row = std::vector<std::string>;
    std::vector<Row> rows(50, Row(kColumns, "100000"));
    std::unordered_map<std::string, size_t> places;
    for (size_t row = 0; row < rows.size(); ++row) places[std::to_string(100'000 + row)] = row;
    const Row pushed(kColumns, "100025");
    std::vector<Row> kept;
    const auto copying = [&] {
        rows[places["100025"]] = pushed;
        kept = rows;
    };
    const Timing copied = Compare(PushLoop<CEntrustList>("OrderID", 50, true), copying);
    AtLeast("order_push_and_publish_50_rows_vs_copy", copied.Speedup(), 5);
}

// The second answer of two, with and without a look at what pushes made of the orders; `isMoved`: no row stands where it
// stood.
template <class List>
double SecondsOfAnswer(std::string_view key, bool isMoved) {
    constexpr int kRows = 50'000;
    const CDataTable first = Rows(key, 0, kRows), second = Rows(key, isMoved ? 1 : 0, kRows);
    CDataTable push = Rows(key, kRows / 2, 1);
    push.SetItemText(0, 2, "100");
    List list;
    uint64_t age = 0;
    return Measure([&] {
        age += 1;
        list.TakeAnswer("880000", age % 4 == 1 ? first : second, age);
        list.TakePush("880000", push, ++age, false);
    });
}

LUADUI_REPORT(AnswerAfterAnswer) {
    AtMost("order_answer_of_50000_rows_ms", SecondsOfAnswer<CEntrustList>("OrderID", false) * 1e3, 50);
    AtMost("order_answer_of_50000_moved_rows_ms", SecondsOfAnswer<CEntrustList>("OrderID", true) * 1e3, 50);
    AtMost("deal_answer_of_50000_rows_ms", SecondsOfAnswer<CDealList>("ExecID", false) * 1e3, 25);
}

LUADUI_REPORT(PushOfADeal) { ReportPushes<CDealList>("deal", "ExecID"); }

LUADUI_REPORT(MergedView) {
    CEntrustList list;
    const CDataSet tokens = Tokens(200);
    for (const std::string& token : tokens) list.TakeAnswer(token, Rows("OrderID", 0, 50), 1);
    CDataTable push = Rows("OrderID", 25, 1);
    uint64_t count = 1;
    CUIData view;  // pages hold the last one
    const auto merge = [&] {
        push.SetItemText(0, 2, LongText(static_cast<int64_t>(++count)));
        list.TakePush("880100", push, count, false);
        CUIData request;
        request.SetData("fund_token", tokens);
        list.MergeMultiAccount(request);
        view = std::move(request);
    };
    const auto copy = [&] {
        CDataTable all;
        for (const std::string& token : tokens) {
            CDataTable table;
            list.GetTable(token, table);
            if (all.GetColumnNumber() == 0) all.CopyHeader(table);
            for (int row = 0; row < table.GetRowNumber(); ++row) {
                const int added = all.AppendRow();
                for (int col = 0; col < kColumns; ++col)
                    all.SetItemText(added, col, table.GetItemText(row, col));
            }
        }
        Keep(all);
    };
    const Timing time = Compare(merge, copy);
    AtMost("merge_200_accounts_after_push_us", time.ours * 1e6, 50);
    AtLeast("merge_200_accounts_after_push_vs_copy", time.Speedup(), 20);
}

}  // namespace
}  // namespace luadui::bench
