// Lists of tables by account beside the plainest way to keep rows by key: a hash map of rows, each a vector
// of strings.
#include "datalists/token_table_list.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "bench/report.h"

namespace luadui::bench {
namespace {

constexpr int kColumns = 30;

CDataTable Orders(int first, int rows) {
    CDataTable table;
    for (int col = 0; col < kColumns; ++col) table.AddColumn("OrderColumn" + std::to_string(col));
    for (int row = 0; row < rows; ++row) {
        table.AppendRow();
        for (int col = 0; col < kColumns; ++col)
            table.SetItemText(row, col, std::to_string(100'000 + first + row));
    }
    return table;
}

CDataSet Tokens(int count) {
    CDataSet tokens;
    for (int account = 0; account < count; ++account) tokens.Insert(std::to_string(880'000 + account));
    return tokens;
}

// Changes the same cell of one order again and again, while somebody holds a merged view of what was there at
// first.
class PushLoop {
  public:
    PushLoop(int rows, bool publishes)
        : m_list("entrust", "entrustmulti", "OrderColumn0"), m_publishes(publishes) {
        m_list.TakeAnswer("880000", Orders(0, rows), 1);
        for (const char* status : {"open", "done"}) {
            CDataTable push = Orders(rows / 2, 1);
            push.SetItemText(0, 1, status);
            m_pushes.push_back(push);
        }
        m_merged.SetData("fund_token", Tokens(1));
        m_list.MergeMultiAccount(m_merged);
    }
    void operator()() {
        ++m_count;
        m_list.TakePush("880000", m_pushes[m_count % 2], m_count, false);
        if (m_publishes) m_list.MakeRecord("880000", m_published);  // and somebody keeps it
    }

  private:
    CTokenTableList m_list;
    const bool m_publishes;
    std::vector<CDataTable> m_pushes;
    CUIData m_published, m_merged;
    uint64_t m_count = 1;
};

LUADUI_REPORT(PushOfARow) {
    const Timing bare = Compare(PushLoop(50'000, false), PushLoop(50, false));
    AtMost("push_to_50000_rows_us", bare.ours * 1e6, 3);
    AtMost("push_to_50000_rows_vs_50", bare.CostRatio(), 1.5);
    const Timing published = Compare(PushLoop(50'000, true), PushLoop(50, true));
    AtMost("push_and_publish_50000_rows_us", published.ours * 1e6, 3);
    AtMost("push_and_publish_50000_rows_vs_50", published.CostRatio(), 3);

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
    AtLeast("push_and_publish_50_rows_vs_copy", Compare(PushLoop(50, true), copying).Speedup(), 5);
}

LUADUI_REPORT(MergedView) {
    CTokenTableList list("entrust", "entrustmulti", "OrderColumn0");
    const CDataSet tokens = Tokens(200);
    for (const std::string& token : tokens) list.TakeAnswer(token, Orders(0, 50), 1);
    const auto merge = [&] {
        CUIData request;
        request.SetData("fund_token", tokens);
        list.MergeMultiAccount(request);
        Keep(request);
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
    AtMost("merge_200_accounts_us", time.ours * 1e6, 50);
    AtLeast("merge_200_accounts_vs_copy", time.Speedup(), 20);
}

}  // namespace
}  // namespace luadui::bench
