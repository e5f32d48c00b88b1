// Tables beside the plainest way to hold the same text: a vector of rows, each a vector of strings.
#include "base/data_table.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <random>
#include <string>
#include <vector>

#include "bench/report.h"

namespace luadui::bench {
namespace {

using Strings = std::vector<std::vector<std::string>>;

constexpr int kAccounts = 200;
constexpr int kAccountRows = 500;
constexpr int kColumns = 40;
constexpr int kWindowRows = 50;

// The cells of an order: mostly codes, states, prices and volumes, some names, times and identifiers.
std::vector<std::string> OrderRow(std::mt19937& random) {
    static constexpr int kDigits[] = {6, 1, 8, 5, 18, 2, 7, 10, 4, 1};
    std::vector<std::string> row;
    for (int col = 0; col < kColumns; ++col) {
        std::string& cell = row.emplace_back();
        for (int i = kDigits[col % std::size(kDigits)]; i > 0; --i)
            cell += static_cast<char>('0' + random() % 10);
    }
    return row;
}

Strings OrderRows(int rows, uint32_t seed) {
    std::mt19937 random(seed);
    Strings all;
    for (int row = 0; row < rows; ++row) all.push_back(OrderRow(random));
    return all;
}

CDataTable WithColumns() {
    CDataTable table;
    for (int col = 0; col < kColumns; ++col) table.AddColumn("OrderColumn" + std::to_string(col));
    return table;
}

void Append(CDataTable& table, const std::vector<std::string>& cells) {
    const int row = table.AppendRow();
    for (int col = 0; col < kColumns; ++col) table.SetItemText(row, col, cells[static_cast<size_t>(col)]);
}

CDataTable TableOf(const Strings& rows) {
    CDataTable table = WithColumns();
    for (const auto& row : rows) Append(table, row);
    return table;
}

// The tables of all accounts, each with columns of its own, as they come from answers.
struct Accounts {
    std::vector<CDataTable> tables;
    Strings merged;

    Accounts() {
        for (int account = 0; account < kAccounts; ++account) {
            const Strings rows = OrderRows(kAccountRows, static_cast<uint32_t>(account));
            tables.push_back(TableOf(rows));
            merged.insert(merged.end(), rows.begin(), rows.end());
        }
    }
    static const Accounts& Get() {
        static const Accounts accounts;
        return accounts;
    }
};

CDataTable Merge(const std::vector<CDataTable>& tables) {
    CDataTable view;
    view.CopyHeader(tables.front());
    for (const CDataTable& table : tables) view.InsertTable(table);
    return view;
}

// What a page does with each cell: where the text is, how long, how it begins.
size_t Use(std::string_view text) { return text.size() + static_cast<unsigned char>(*text.data()); }

[[gnu::noinline]] size_t ReadCells(const CDataTable& table, int from) {
    size_t sum = 0;
    for (int row = from; row < from + kWindowRows; ++row) {
        for (int col = 0; col < kColumns; ++col) sum += Use(table.GetItemText(row, col));
    }
    return sum;
}

[[gnu::noinline]] size_t ReadRows(const CDataTable& table, int from) {
    size_t sum = 0;
    for (int row = from; row < from + kWindowRows; ++row) {
        const TableRow cells = table.GetRow(row);
        for (int col = 0; col < kColumns; ++col) sum += Use(cells[col]);
    }
    return sum;
}

[[gnu::noinline]] size_t ReadStrings(const Strings& rows, int from) {
    size_t sum = 0;
    for (int row = from; row < from + kWindowRows; ++row) {
        for (int col = 0; col < kColumns; ++col) {
            sum += Use(rows[static_cast<size_t>(row)][static_cast<size_t>(col)]);
        }
    }
    return sum;
}

// Where a user scrolls to: one of so many windows anywhere in the view.
class Scroll {
  public:
    explicit Scroll(uint32_t windows) : m_windows(windows) {}
    int operator()() {
        std::minstd_rand place(m_random() % m_windows + 1);
        place.discard(3);
        return static_cast<int>(place() % (kAccounts * kAccountRows - kWindowRows));
    }

  private:
    uint32_t m_windows;
    std::minstd_rand m_random{7};
};

void FillTable(benchmark::State& state) {
    const Strings rows = OrderRows(kAccountRows, 1);
    for (auto _ : state) benchmark::DoNotOptimize(TableOf(rows));
    state.SetItemsProcessed(state.iterations() * kAccountRows * kColumns);
}
BENCHMARK(FillTable);

void MergeAccounts(benchmark::State& state) {
    const Accounts& accounts = Accounts::Get();
    for (auto _ : state) benchmark::DoNotOptimize(Merge(accounts.tables));
}
BENCHMARK(MergeAccounts)->Unit(benchmark::kMicrosecond);

// One cell of a row under a column that only the source's layout has elsewhere: read and written through a
// column map.
void ReadThroughColumnMap(benchmark::State& state) {
    CDataTable view;
    for (int col = kColumns - 1; col >= 0; --col) view.AddColumn("OrderColumn" + std::to_string(col));
    view.InsertTable(Accounts::Get().tables.front());
    for (auto _ : state) benchmark::DoNotOptimize(ReadCells(view, 100));
    state.SetItemsProcessed(state.iterations() * kWindowRows * kColumns);
}
BENCHMARK(ReadThroughColumnMap);

LUADUI_REPORT(Merge) {
    const Accounts& accounts = Accounts::Get();
    AtMost("table_merge_200_accounts_us", Measure([&] { Keep(Merge(accounts.tables)); }) * 1e6, 20);

    // One account changes before each merge, while the last view is still shown.
    std::vector<CDataTable> tables = accounts.tables;
    CDataTable shown = Merge(tables);
    size_t round = 0;
    const double changed = Measure([&] {
        CDataTable& account = tables[++round % kAccounts];
        account.SetItemText(static_cast<int>(round % kAccountRows), 3, (round & 1) ? "11111" : "22222");
        shown = Merge(tables);
    });
    AtMost("table_merge_after_change_us", changed * 1e6, 20);

    const auto copy = Compare([&] { Keep(Merge(accounts.tables)); }, [&] { Keep(Strings(accounts.merged)); });
    AtLeast("table_merge_vs_cell_by_cell", copy.Speedup(), 1000);
}

LUADUI_REPORT(Window) {
    const CDataTable view = Merge(Accounts::Get().tables);
    const Strings& rows = Accounts::Get().merged;
    const auto report = [&](const char* byRow, const char* byCell, uint32_t windows) {
        Scroll ours(windows), theirs(windows);
        const auto strings = [&] { Keep(ReadStrings(rows, theirs())); };
        AtMost(byRow, Compare([&] { Keep(ReadRows(view, ours())); }, strings).CostRatio(), 1.2);
        AtMost(byCell, Compare([&] { Keep(ReadCells(view, ours())); }, strings).CostRatio(), 1.2);
    };
    report("table_window_scrolled_by_row_vs_strings", "table_window_scrolled_by_cell_vs_strings", UINT32_MAX);
    // The same few windows over and over, all in the nearest caches. By cell this is missed, by row it
    // depends on where the compiler puts the loop.
    report("table_window_repeated_by_row_vs_strings", "table_window_repeated_by_cell_vs_strings", 8);
}

LUADUI_REPORT(Memory) {
    const Strings rows = OrderRows(kAccountRows, 1);
    size_t text = 0;
    for (const auto& row : rows) {
        for (const auto& cell : row) text += cell.size();
    }
    const double allowed = 1.5 * static_cast<double>(text) + 8.0 * kAccountRows * kColumns;
    const size_t before = mallinfo2().uordblks;  // bytes in use, with what the allocator adds
    const CDataTable table = TableOf(rows);
    AtMost("table_bytes_vs_allowed", static_cast<double>(mallinfo2().uordblks - before) / allowed, 1);
}

// Seconds of one write to a table of so many rows while a copy and a merged view of it are held: that of
// making the table and writing it, less that of making it.
template <class Write>
double HeldWriteSeconds(int rows, Write&& write, double* freshSeconds = nullptr) {
    const CDataTable copy = TableOf(OrderRows(rows, 2));
    CDataTable view = copy;
    view.InsertTable(copy);
    const auto change = [&] {
        CDataTable table = copy;
        write(table);
    };
    const size_t fresh = static_cast<size_t>(rows) / 10 + 1;
    if (freshSeconds) *freshSeconds = SecondsOf(change, fresh) / static_cast<double>(fresh);
    for (int i = 0; i < 2 * rows; ++i) change();  // from here on the table is in use, not fresh from memory
    const Timing time = Compare(change, [&] { Keep(CDataTable(copy)); });
    return time.ours - time.baseline;
}

void ReportWrite(const char* name, const char* ratioName, double small, double large) {
    AtMost(name, large * 1e6, 3);
    // A thousand times the rows: two more levels to copy, and rows that are not in the nearest cache.
    AtMost(ratioName, large / small, 8);
}

LUADUI_REPORT(Write) {
    mallopt(M_TRIM_THRESHOLD,
            1 << 30);  // else the allocator returns the last page to the system over and over
    std::mt19937 random(3);
    const auto change = [&](CDataTable& table) {
        const int row = static_cast<int>(random() % static_cast<uint32_t>(table.GetRowNumber()));
        table.SetItemText(row, 3, table.GetItemText(row, 3) == "11111" ? "22222" : "11111");
    };
    double fresh = 0;
    const double changeLarge = HeldWriteSeconds(50'000, change, &fresh);
    AtMost("table_change_50000_rows_fresh_us", fresh * 1e6, 3);
    ReportWrite("table_change_50000_rows_us", "table_change_50000_vs_50_rows", HeldWriteSeconds(50, change),
                changeLarge);
    const auto append = [](CDataTable& table) { table.SetItemText(table.AppendRow(), 0, "600000"); };
    ReportWrite("table_append_50000_rows_us", "table_append_50000_vs_50_rows", HeldWriteSeconds(50, append),
                HeldWriteSeconds(50'000, append));
    const auto erase = [&](CDataTable& table) {
        table.DeleteRow(static_cast<int>(random() % static_cast<uint32_t>(table.GetRowNumber())));
        table.AppendRow();
    };
    ReportWrite("table_delete_50000_rows_us", "table_delete_50000_vs_50_rows", HeldWriteSeconds(50, erase),
                HeldWriteSeconds(50'000, erase));

    const Strings rows = OrderRows(kAccountRows, 1);
    const auto fill = Compare([&] { Keep(TableOf(rows)); },
                              [&] {
                                  Strings filled;
                                  for (const auto& row : rows) {
                                      auto& to = filled.emplace_back(kColumns);
                                      for (size_t col = 0; col < kColumns; ++col) to[col] = row[col];
                                  }
                                  Keep(filled);
                              });
    AtMost("table_fill_vs_strings", fill.CostRatio(), 2);
}

}  // namespace
}  // namespace luadui::bench
