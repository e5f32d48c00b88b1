// What quotes cost: merging pushes beside an SQL database in memory, publishing records beside maps filled by the C
// library, and a second of the busiest feed.
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/fixed_text.h"
#include "bench/report.h"
#include "datalists/hq_data.h"
#include "datalists/quote_field_table.h"

namespace luadui::bench {
namespace {

constexpr int kSecurities = 5'500;
constexpr int kRowsOfTable = 100;
constexpr size_t kColumns = kPushColumns.size();

std::string CodeOf(int security) { return std::to_string(600'000 + security); }

QuoteKind KindOf(std::string_view id) {
    for (const QuoteField& field : kQuoteFields) {
        if (field.id == id) return field.kind;
    }
    return QuoteKind::kAmount;
}

// What servers push: a row of 64 cells, some 340 bytes of text.
class Feed {
  public:
    using Row = std::array<std::string, kColumns>;

    Row Next(int security) {
        Row row;
        for (size_t i = 0; i < kColumns; ++i) row[i] = _cell(KindOf(kPushColumns[i]), security);
        return row;
    }
    // The same security a moment later: the market moved, its name and limits did not.
    Row Later(const Row& before, int security) {
        Row row = before;
        for (const std::string_view id :
             {"10", "13", "19", "1", "49", "14", "24", "25", "26", "27", "30", "31", "32", "33", "199112"}) {
            const size_t i = ColumnOf(id);
            row[i] = _cell(KindOf(id), security);
        }
        return row;
    }
    static size_t ColumnOf(std::string_view id) {
        size_t i = 0;
        while (kPushColumns[i] != id) ++i;
        return i;
    }
    uint32_t UpTo(uint32_t limit) { return static_cast<uint32_t>(m_random() % limit); }

  private:
    std::string _cell(QuoteKind kind, int security) {
        char text[32];
        switch (kind) {
            case QuoteKind::kCode:
                return CodeOf(security);
            case QuoteKind::kMarket:
                return "17";
            case QuoteKind::kStatus:
                return "T";
            case QuoteKind::kText:
                return "20240131";
            case QuoteKind::kPrice:
            case QuoteKind::kNumber:
            case QuoteKind::kChange:
                std::snprintf(text, sizeof text, "%u.%02u", 1 + UpTo(40), UpTo(100));
                return text;
            default:
                return std::to_string(UpTo(100'000));
        }
    }
    std::mt19937 m_random{7};
};

using Rows = std::vector<Feed::Row>;

// One row for each security.
Rows FirstRows(Feed& feed) {
    Rows rows;
    for (int i = 0; i < kSecurities; ++i) rows.push_back(feed.Next(i));
    return rows;
}
Rows LaterRows(Feed& feed, const Rows& before) {
    Rows rows;
    for (int i = 0; i < kSecurities; ++i) rows.push_back(feed.Later(before[static_cast<size_t>(i)], i));
    return rows;
}
// A part of the cells says nothing.
Rows Thinned(Feed& feed, Rows rows) {
    for (Feed::Row& row : rows) {
        for (size_t i = 0; i < kColumns; ++i) {
            const bool isKey = kPushColumns[i] == "3" || kPushColumns[i] == "4";
            if (!isKey && feed.UpTo(4) == 0) row[i] = feed.UpTo(2) ? "-" : "";
        }
    }
    return rows;
}

// Rows from `first` on in a table as it arrives; columns in the order of the push table, or turned by `turn`.
CDataTable TableOf(const Rows& rows, size_t first, size_t turn) {
    CDataTable table;
    for (size_t i = 0; i < kColumns; ++i) table.AddColumn(kPushColumns[(i + turn) % kColumns]);
    for (size_t row = first; row < std::min(rows.size(), first + kRowsOfTable); ++row) {
        const int number = table.AppendRow();
        for (size_t i = 0; i < kColumns; ++i)
            table.SetItemText(number, static_cast<int>(i), rows[row][(i + turn) % kColumns]);
    }
    return table;
}
std::vector<CDataTable> TablesOf(const Rows& rows, size_t turn = 0) {
    std::vector<CDataTable> tables;
    for (size_t first = 0; first < rows.size(); first += kRowsOfTable)
        tables.push_back(TableOf(rows, first, turn));
    return tables;
}

class Database {
  public:
    Database() {
        sqlite3_open(":memory:", &m_database);
        std::string create = "CREATE TABLE push(k TEXT PRIMARY KEY", insert = "INSERT INTO push VALUES(?",
                    update;
        for (size_t i = 0; i < kColumns; ++i) {
            const std::string name = "c" + std::to_string(i);
            create += "," + name + " TEXT";
            insert += ",?";
            update += (i ? "," : "") + name + "=CASE WHEN excluded." + name + " IN ('','-') THEN " + name +
                      " ELSE excluded." + name + " END";
        }
        sqlite3_exec(m_database, (create + ") WITHOUT ROWID").c_str(), nullptr, nullptr, nullptr);
        const std::string upsert = insert + ") ON CONFLICT(k) DO UPDATE SET " + update;
        if (sqlite3_prepare_v2(m_database, upsert.c_str(), -1, &m_upsert, nullptr) != SQLITE_OK) std::abort();
    }
    ~Database() {
        sqlite3_finalize(m_upsert);
        sqlite3_close(m_database);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Merge(const Rows& rows) {
        sqlite3_exec(m_database, "BEGIN", nullptr, nullptr, nullptr);
        for (const Feed::Row& row : rows) {
            const std::string key = row[Feed::ColumnOf("4")] + ":" + row[Feed::ColumnOf("3")];
            _bind(1, key);
            for (size_t i = 0; i < kColumns; ++i) _bind(static_cast<int>(i) + 2, row[i]);
            if (sqlite3_step(m_upsert) != SQLITE_DONE) std::abort();
            sqlite3_reset(m_upsert);
        }
        sqlite3_exec(m_database, "COMMIT", nullptr, nullptr, nullptr);
    }

  private:
    void _bind(int place, const std::string& text) {
        sqlite3_bind_text(m_upsert, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
    sqlite3* m_database = nullptr;
    sqlite3_stmt* m_upsert = nullptr;
};

void ReportMerge(std::string_view name, const Rows& rows, size_t turn) {
    const std::vector<CDataTable> tables = TablesOf(rows, turn);
    CHqData quotes;
    Database database;
    const auto merge = [&] {
        for (const CDataTable& table : tables) quotes.MergePushRows(table);
    };
    const Timing time = Compare(merge, [&] { database.Merge(rows); }, {.count = 5});
    AtLeast(name, time.Speedup(), 25);
    AtMost(std::string(name) + "_ns_a_row", time.ours * 1e9 / kSecurities, 1000);
}

LUADUI_REPORT(QuoteMerge) {
    Feed feed;
    const Rows rows = FirstRows(feed);
    const Rows thinned = Thinned(feed, rows);
    ReportMerge("quote_merge_full_rows_vs_sqlite", rows, 0);
    ReportMerge("quote_merge_thinned_rows_vs_sqlite", thinned, 0);
    ReportMerge("quote_merge_other_columns_vs_sqlite", thinned, 17);
}

// The fields of a record, made by the C library.
class PlainRecord {
  public:
    void Fill(const Feed::Row& row) {
        for (size_t i = 0; i < kColumns; ++i) {
            for (const QuoteField& field : s_fields[i]) _set(field, row[i].c_str());
        }
        const double last = _value("PriceZxjg"), close = _value("PriceZrsp");
        m_numbers["ZhenFu"] = (_value("ZuiGao") - _value("ZuiDi")) / close;
        m_numbers["Junjia"] = _value("Cjje") / _value("TotalAmount");
        m_numbers["YiJia"] = last - _value("Yjlx");
        m_numbers["Yjl"] = m_numbers["YiJia"] / _value("Yjlx") * 100;
        m_numbers["NeiPan"] = _value("TotalAmount") - _value("WaiPan");
    }

  private:
    static std::array<std::vector<QuoteField>, kColumns> Fields() {
        std::array<std::vector<QuoteField>, kColumns> fields;
        for (size_t i = 0; i < kColumns; ++i) {
            for (const QuoteField& field : kQuoteFields) {
                if (field.id == kPushColumns[i] && !field.name.empty()) fields[i].push_back(field);
            }
        }
        return fields;
    }
    void _set(const QuoteField& field, const char* cell) {
        if (*cell == '\0' || (cell[0] == '-' && cell[1] == '\0')) return;
        char text[400];
        switch (field.kind) {
            case QuoteKind::kPrice:
            case QuoteKind::kChange:
                std::snprintf(text, sizeof text, "%.2f", std::strtod(cell, nullptr));
                break;
            case QuoteKind::kVolume:
            case QuoteKind::kAmount:
                std::snprintf(text, sizeof text, "%lld", static_cast<long long>(std::strtod(cell, nullptr)));
                break;
            default:
                m_texts[std::string(field.name)] = cell;
                return;
        }
        m_texts[std::string(field.name)] = text;
    }
    double _value(const char* name) { return std::strtod(m_texts[name].c_str(), nullptr); }

    static inline const std::array<std::vector<QuoteField>, kColumns> s_fields = Fields();
    std::map<std::string, std::string> m_texts;
    std::map<std::string, double> m_numbers;
};

// Seconds that publishing takes, a record, when `states` come one after the other; merging is not counted.
double PublishSeconds(const std::vector<std::vector<CDataTable>>& states) {
    constexpr int kTurns = 12;
    CHqData quotes;
    std::vector<double> times;
    for (int turn = 0; turn < kTurns; ++turn) {
        size_t rows = 0;
        for (const CDataTable& table : states[static_cast<size_t>(turn) % states.size()]) {
            quotes.MergePushRows(table);
            rows += static_cast<size_t>(table.GetRowNumber());
        }
        const auto start = std::chrono::steady_clock::now();
        CUIData out;
        quotes.FlushPush(out);
        Keep(out);
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        quotes.ClearPush();
        if (turn > 1) times.push_back(seconds / static_cast<double>(rows));
    }
    return Median(std::move(times));
}

LUADUI_REPORT(QuotePublishing) {
    Feed feed;
    const Rows first = FirstRows(feed), later = LaterRows(feed, first), others = FirstRows(feed);
    std::vector<PlainRecord> records(kSecurities);
    std::vector<std::string> keys;
    for (const Feed::Row& row : first)
        keys.push_back(row[Feed::ColumnOf("4")] + ":" + row[Feed::ColumnOf("3")]);
    bool isLater = false;
    const double plain = Measure(
        [&] {
            const Rows& rows = (isLater = !isLater) ? later : first;
            std::map<std::string, PlainRecord*> out;
            std::set<std::string> codes;
            for (size_t i = 0; i < rows.size(); ++i) {
                records[i].Fill(rows[i]);
                out.emplace(keys[i], &records[i]);
                codes.insert(keys[i]);
            }
            Keep(out);
        },
        {.count = 5});
    const double moved = PublishSeconds({TablesOf(first), TablesOf(later)});
    const double changed = PublishSeconds({TablesOf(first), TablesOf(others)});
    AtLeast("quote_publish_15_fields_moved_vs_maps", plain / kSecurities / moved, 15);
    AtLeast("quote_publish_all_fields_changed_vs_maps", plain / kSecurities / changed, 15);
    AtMost("quote_publish_15_fields_moved_ns", moved * 1e9, 2000);
    AtMost("quote_publish_all_fields_changed_ns", changed * 1e9, 5000);
}

LUADUI_REPORT(FixedDecimals) {
    std::mt19937 random{3};
    std::vector<std::string> prices;
    for (int i = 0; i < 4096; ++i) {
        char text[32];
        std::snprintf(text, sizeof text, "%.*f", 1 + i % 4,
                      static_cast<double>(random() % 100'000'000) / 1e5);
        prices.emplace_back(text);
    }
    size_t next = 0;
    FixedBuffer buffer;
    char printed[64];
    const auto fix = [&] { Keep(FixedText(prices[next++ % prices.size()], 2, buffer)); };
    const auto print = [&] {
        Keep(std::snprintf(printed, sizeof printed, "%.2f",
                           std::strtod(prices[next++ % prices.size()].c_str(), nullptr)));
    };
    const Timing time = Compare(fix, print);
    AtMost("fixed_decimals_ns", time.ours * 1e9, 20);
    AtLeast("fixed_decimals_vs_strtod_snprintf", time.Speedup(), 8);
}

double CpuSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// What a second costs: 300,000 rows as they come, each security's a moment later than before, in tables of a hundred that
// were just received; told at two ticks. Receiving is not counted.
double BurstSeconds(const std::vector<Rows>& states, size_t turn) {
    constexpr size_t kRows = 300'000;
    CHqData quotes;
    CUIData page;
    std::vector<double> times;
    for (int second = 0; second < 4; ++second) {
        double spent = 0;
        size_t done = 0;
        for (size_t round = 0; done < kRows; ++round) {
            const Rows& rows = states[round % states.size()];
            for (size_t first = 0; first < rows.size(); first += kRowsOfTable) {
                const CDataTable table = TableOf(rows, first, turn);
                const bool isTick = done / (kRows / 2) != (done + kRowsOfTable) / (kRows / 2);
                done += kRowsOfTable;
                const double start = CpuSeconds();
                quotes.MergePushRows(table);
                if (isTick) {
                    CUIData out;
                    quotes.FlushPush(out);
                    quotes.ClearPush();
                    page = out;
                }
                spent += CpuSeconds() - start;
            }
        }
        times.push_back(spent * static_cast<double>(kRows) / static_cast<double>(done));
    }
    return Median(std::move(times));
}

LUADUI_REPORT(QuoteBurst) {
    Feed feed;
    Rows rows = FirstRows(feed);
    std::vector<Rows> full, thinned;
    for (int i = 0; i < 4; ++i) {
        full.push_back(rows);
        thinned.push_back(Thinned(feed, rows));
        rows = LaterRows(feed, rows);
    }
    AtMost("quote_burst_percent_of_a_core", BurstSeconds(full, 0) * 100, 10);
    AtMost("quote_burst_thinned_percent_of_a_core", BurstSeconds(thinned, 0) * 100, 10);
    AtMost("quote_burst_thinned_other_columns_percent_of_a_core", BurstSeconds(thinned, 17) * 100, 10);
}

LUADUI_REPORT(QuoteTicks) {
    Feed feed;
    const Rows rows = FirstRows(feed);
    const std::vector<CDataTable> tables = TablesOf(rows);
    CHqData large, small;
    for (const CDataTable& table : tables) large.MergePushRows(table);
    small.MergePushRows(tables[0]);
    CUIData out;
    large.FlushPush(out);
    small.FlushPush(out);
    large.ClearPush();
    small.ClearPush();
    const auto tickOf = [&](CHqData& quotes) {
        return [&] {
            quotes.MergePushRows(tables[0]);
            CUIData told;
            quotes.FlushPush(told);
            quotes.ClearPush();
        };
    };
    const Timing time = Compare(tickOf(large), tickOf(small));
    AtMost("quote_tick_of_100_rows_among_5500_vs_100", time.CostRatio(), 1.3);
    AtMost("quote_empty_tick_ns", Measure([&] { Keep(large.FlushPush(out)); }) * 1e9, 20);
}

}  // namespace
}  // namespace luadui::bench
