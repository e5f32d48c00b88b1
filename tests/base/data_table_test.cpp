#include "base/data_table.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "base/counters.h"
#include "base/row_merge.h"

namespace luadui {
namespace {

// A table as plainly as it can be written: every copy is deep.
struct Model {
    struct Row {
        std::map<size_t, std::string> texts, colors;
        std::string color;
        bool operator==(const Row&) const = default;
    };
    std::vector<std::map<std::string, std::string>> columns;
    std::vector<Row> rows;

    int Find(const std::string& name) const {
        for (size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].at("name") == name) return static_cast<int>(i);
        }
        return -1;
    }
    void Insert(const Model& source) {
        std::vector<int> target(source.columns.size(), -1);
        std::vector<bool> used(columns.size());
        for (size_t from = 0; from < target.size(); ++from) {
            for (size_t to = 0; to < columns.size() && target[from] < 0; ++to) {
                if (used[to] || columns[to].at("name") != source.columns[from].at("name")) continue;
                target[from] = static_cast<int>(to);
                used[to] = true;
            }
        }
        for (const Row& row : source.rows) {
            Row added;
            added.color = row.color;
            const auto take = [&](const auto& cells, auto& to) {
                for (const auto& [col, text] : cells) {
                    if (target[col] >= 0) to[static_cast<size_t>(target[col])] = text;
                }
            };
            take(row.texts, added.texts);
            take(row.colors, added.colors);
            rows.push_back(std::move(added));
        }
    }
    void CopyHeader(const Model& source) {
        Model changed{source.columns, {}};
        changed.Insert(*this);
        *this = std::move(changed);
    }
};

// Reads the whole table through its interface; cells both by GetItemText and by GetRow.
Model Read(const CDataTable& table, const Model& expected) {
    Model model;
    for (int col = 0; col < table.GetColumnNumber(); ++col) {
        auto& column = model.columns.emplace_back();
        if (static_cast<size_t>(col) >= expected.columns.size()) continue;
        for (const auto& [property, value] : expected.columns[static_cast<size_t>(col)]) {
            column[property] = table.GetColumnProperty(col, property);
        }
        EXPECT_EQ(table.FindColumn(column["name"]), expected.Find(column["name"]));
    }
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        auto& to = model.rows.emplace_back();
        to.color = table.GetRowColor(row);
        const TableRow cells = table.GetRow(row);
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            const TextView text = table.GetItemText(row, col);
            EXPECT_EQ(text, cells[col]);
            EXPECT_EQ(*(text.data() + text.size()), '\0');
            if (!text.empty()) to.texts[static_cast<size_t>(col)] = text;
            const TextView color = table.GetItemTextColor(row, col);
            if (!color.empty()) to.colors[static_cast<size_t>(col)] = color;
        }
        EXPECT_TRUE(cells[table.GetColumnNumber()].empty());
    }
    return model;
}

void ExpectEqual(const CDataTable& table, const Model& model) {
    const Model read = Read(table, model);
    ASSERT_EQ(read.columns, model.columns);
    ASSERT_EQ(read.rows.size(), model.rows.size());
    for (size_t row = 0; row < read.rows.size(); ++row)
        ASSERT_EQ(read.rows[row], model.rows[row]) << "row " << row;
}

CDataTable WithColumns(std::initializer_list<std::string_view> names) {
    CDataTable table;
    for (const auto name : names) table.AddColumn(name);
    return table;
}

// Tables beside their models, changed at random in all ways, with every text taken from the table itself now
// and then.
class RandomTables {
  public:
    explicit RandomTables(uint32_t seed) : m_random(seed) {}

    void Step() {
        Pair& pair = m_pairs[_upTo(m_pairs.size())];
        const int row = static_cast<int>(_upTo(pair.model.rows.size() + 1));
        const int col = static_cast<int>(_upTo(pair.model.columns.size() + 1));
        const uint32_t kind = _upTo(1000);
        if (kind < 600) {
            _setText(pair, row, col);
        } else if (kind < 700) {
            _setColor(pair, row, col);
        } else if (kind < 830) {
            EXPECT_EQ(pair.table.AppendRow(), static_cast<int>(pair.model.rows.size()));
            pair.model.rows.emplace_back();
        } else if (kind < 900) {
            _deleteRows(pair, static_cast<size_t>(row));
        } else {
            _changeWhole(pair, kind - 900, col);
        }
    }

    void CheckAll() {
        for (const Pair& pair : m_pairs) ExpectEqual(pair.table, pair.model);
        for (const Pair& pair : m_earlier) ExpectEqual(pair.table, pair.model);
    }

  private:
    struct Pair {
        CDataTable table;
        Model model;
    };

    uint32_t _upTo(size_t limit) { return static_cast<uint32_t>(m_random() % limit); }

    std::string _text() {
        static constexpr size_t kLimits[] = {1, 4, 10, 10, 10, 40, 400};
        return std::string(_upTo(kLimits[_upTo(std::size(kLimits))]), static_cast<char>('a' + _upTo(26)));
    }

    void _setText(Pair& pair, int row, int col) {
        const bool valid = row < pair.table.GetRowNumber() && col < pair.table.GetColumnNumber();
        const std::string name = pair.table.GetColumnProperty(col, "name");
        const bool byName = valid && _upTo(4) == 0;
        const int target = byName ? pair.model.Find(name) : col;
        const int ownRow = _upTo(2) ? row : static_cast<int>(_upTo(pair.model.rows.size() + 1));
        const TextView own = pair.table.GetItemText(ownRow, static_cast<int>(_upTo(8)));
        const bool ofOwn = _upTo(4) == 0;
        const std::string text = ofOwn ? std::string(own) : _text();
        const std::string_view given = ofOwn ? std::string_view(own) : std::string_view(text);
        EXPECT_EQ(byName ? pair.table.SetItemText(row, name, given) : pair.table.SetItemText(row, col, given),
                  valid);
        if (!valid) return;
        EXPECT_EQ(pair.table.GetItemText(row, target), text);
        _store(pair.model.rows[static_cast<size_t>(row)].texts, target, text);
    }

    void _setColor(Pair& pair, int row, int col) {
        const std::string color = _upTo(3) ? "0xFF" + std::to_string(_upTo(1000)) : std::string();
        const bool hasRow = row < pair.table.GetRowNumber();
        if (_upTo(2)) {
            EXPECT_EQ(pair.table.SetRowColor(row, color), hasRow);
            if (hasRow) pair.model.rows[static_cast<size_t>(row)].color = color;
            return;
        }
        const bool valid = hasRow && col < pair.table.GetColumnNumber();
        EXPECT_EQ(pair.table.SetItemTextColor(row, col, color), valid);
        if (valid) _store(pair.model.rows[static_cast<size_t>(row)].colors, col, color);
    }

    static void _store(std::map<size_t, std::string>& cells, int col, const std::string& text) {
        cells.erase(static_cast<size_t>(col));
        if (!text.empty()) cells[static_cast<size_t>(col)] = text;
    }

    // One row, or all that follow it up to a random one: large tables become small now and then.
    void _deleteRows(Pair& pair, size_t row) {
        const size_t count = _upTo(40) ? 1 : _upTo(600);
        for (size_t i = 0; i < count; ++i) {
            const bool valid = row < pair.model.rows.size();
            EXPECT_EQ(pair.table.DeleteRow(static_cast<int>(row)), valid);
            if (!valid) return;
            pair.model.rows.erase(pair.model.rows.begin() + static_cast<ptrdiff_t>(row));
        }
    }

    // Of another table, or of the same one; the row may not be there.
    void _insertRow(Pair& pair) {
        Pair& source = m_pairs[_upTo(m_pairs.size())];
        const size_t row = _upTo(source.model.rows.size() + 1);
        const bool valid = row < source.model.rows.size();
        Model single = source.model;
        single.rows.clear();
        if (valid) single.rows.push_back(source.model.rows[row]);
        EXPECT_EQ(pair.table.InsertRow(source.table, static_cast<int>(row)), valid);
        pair.model.Insert(single);
    }

    // The same; nearly always the other has some columns in common, and often all.
    void _mergeRow(Pair& pair) {
        const std::string nothing(1, static_cast<char>('a' + _upTo(26)));
        const Pair& source = m_pairs[_upTo(m_pairs.size())];
        const size_t row = _upTo(pair.model.rows.size() + 1), from = _upTo(source.model.rows.size() + 1);
        const bool valid = row < pair.model.rows.size() && from < source.model.rows.size();
        const RowMerge merge(pair.table, source.table, nothing);
        std::vector<int> changes, expected;
        EXPECT_EQ(
            pair.table.MergeRow(static_cast<int>(row), source.table, static_cast<int>(from), merge, &changes),
            valid);
        if (!valid) return;
        const auto texts = source.model.rows[from].texts;
        auto& merged = pair.model.rows[row].texts;
        const auto old = merged;
        for (const auto& [col, text] : texts) {
            const int to = pair.model.Find(source.model.columns[col].at("name"));
            if (to >= 0 && text != nothing) merged[static_cast<size_t>(to)] = text;
        }
        for (const auto& [col, text] : merged) {
            if (!old.count(col) || old.at(col) != text) expected.push_back(static_cast<int>(col));
        }
        EXPECT_EQ(changes, expected);
    }

    void _changeWhole(Pair& pair, uint32_t kind, int col) {
        const Pair other = m_pairs[_upTo(m_pairs.size())];
        if (kind < 30) {
            pair = other;
        } else if (kind < 40) {
            m_earlier[_upTo(m_earlier.size())] = pair;
        } else if (kind < 50) {
            _mergeRow(pair);
        } else if (kind < 60) {
            _insertRow(pair);
        } else if (kind < 75) {
            if (pair.model.rows.size() + other.model.rows.size() > 2000) return;
            EXPECT_TRUE(pair.table.InsertTable(other.table));
            pair.model.Insert(other.model);
        } else if (kind < 80) {
            pair.table.CopyHeader(other.table);
            pair.model.CopyHeader(other.model);
        } else if (kind < 97) {
            _changeColumn(pair, col);
        } else if (kind < 99) {
            pair.table.DeleteAllRows();
            pair.model.rows.clear();
        } else {
            pair.table.Clear();
            pair.model = Model();
        }
    }

    // Names come from a few, so that they repeat and tables often have some but not all columns in common.
    void _changeColumn(Pair& pair, int col) {
        const std::string value(1, static_cast<char>('a' + _upTo(8)));
        const bool appends = static_cast<size_t>(col) == pair.model.columns.size();
        if (appends && col >= 12) return;
        const std::string property = _upTo(2) ? "name" : "width";
        EXPECT_TRUE(pair.table.SetColumnProperty(col, property, value));
        if (appends) pair.model.columns.push_back({{"name", ""}});
        pair.model.columns[static_cast<size_t>(col)][property] = value;
    }

    std::mt19937 m_random;
    std::array<Pair, 6> m_pairs;
    std::array<Pair, 4> m_earlier;
};

TEST(DataTableTest, RandomOperationsAnswerAsDeepCopiesDo) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        RandomTables tables(seed);
        for (int step = 0; step < 60'000; ++step) {
            tables.Step();
            if (step % 3000 == 0) tables.CheckAll();
            ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed << " step " << step;
        }
        tables.CheckAll();
    }
}

TEST(DataTableTest, WhatDoesNotExistIsRefused) {
    CDataTable one = WithColumns({"a", "b"});
    one.AppendRow();
    one.SetItemText(0, 0, "x");
    CDataTable noColumns;
    EXPECT_EQ(noColumns.AppendRow(), 0);
    const CDataTable tables[] = {CDataTable(), noColumns, WithColumns({"a"}), one};
    for (CDataTable table : tables) {
        const int rows = table.GetRowNumber();
        const int cols = table.GetColumnNumber();
        for (const auto& [row, col] : {std::pair(-1, 0),
                                       {rows, 0},
                                       {0, -1},
                                       {0, cols},
                                       {INT32_MIN, INT32_MIN},
                                       {INT32_MAX, INT32_MAX},
                                       {1 << 21, 0},
                                       {-(1 << 21), 0}}) {
            EXPECT_EQ(table.GetItemText(row, col), "");
            EXPECT_EQ(table.GetRow(row)[col], "");
            EXPECT_EQ(table.GetItemTextColor(row, col), "");
            EXPECT_FALSE(table.SetItemText(row, col, "y"));
            EXPECT_FALSE(table.SetItemTextColor(row, col, "0xFFD2D2D2"));
            if (row != 0) {
                EXPECT_FALSE(table.SetRowColor(row, "0xFFD2D2D2"));
                EXPECT_EQ(table.GetRowColor(row), "");
                EXPECT_FALSE(table.DeleteRow(row));
            }
        }
        EXPECT_EQ(table.FindColumn("none"), -1);
        EXPECT_FALSE(table.SetItemText(0, "none", "y"));
        EXPECT_EQ(table.GetItemText(0, "none"), "");
        for (const int col : {-1, cols + 1, INT32_MAX}) {
            EXPECT_FALSE(table.SetColumnProperty(col, "name", "y"));
            EXPECT_EQ(table.GetColumnProperty(col, "name"), "");
        }
        EXPECT_EQ(table.GetRowNumber(), rows);
        EXPECT_EQ(table.GetColumnNumber(), cols);
    }
}

TEST(DataTableTest, InsertCountsDroppedColumnsAndKeepsEqualNamesApart) {
    CDataTable source = WithColumns({"a", "x", "a", "a", "y"});
    source.AppendRow();
    for (int col = 0; col < 5; ++col)
        source.SetItemText(0, col, std::string(1, static_cast<char>('0' + col)));
    CDataTable target = WithColumns({"a", "b", "a"});
    const uint64_t before = CCounters::Get("table_column_dropped");
    EXPECT_TRUE(target.InsertTable(source));
    EXPECT_EQ(CCounters::Get("table_column_dropped") - before, 3u);
    EXPECT_EQ(target.GetItemText(0, 0), "0");
    EXPECT_EQ(target.GetItemText(0, 1), "");
    EXPECT_EQ(target.GetItemText(0, 2), "2");
}

TEST(DataTableTest, MergedRowsShareTheBlockThatSaysAll) {
    CDataTable source = WithColumns({"a", "b"});
    source.AppendRow();
    source.SetItemText(0, 0, "1");
    CDataTable target = source;
    const RowMerge merge(target, source, "-");
    for (const auto& [old, isShared] : {std::pair("", true), {"2", false}}) {
        target.SetItemText(0, 0, "x");
        target.SetItemText(0, 1, old);
        EXPECT_TRUE(target.MergeRow(0, source, 0, merge));
        EXPECT_EQ(target.GetItemText(0, 0), "1");
        EXPECT_EQ(target.GetItemText(0, 1), old);
        EXPECT_EQ(target.GetItemText(0, 0).data() == source.GetItemText(0, 0).data(), isShared);
    }
    target.AddColumn("c");
    EXPECT_FALSE(target.MergeRow(0, source, 0, merge)) << "made for other columns";
}

TEST(DataTableTest, TextsConvertAndOutliveOtherCopies) {
    CDataTable table = WithColumns({"code"});
    table.AppendRow();
    table.SetItemText(0, "code", std::string_view("600\0x", 5));
    const std::string code = table.GetItemText(0, "code");
    EXPECT_EQ(code, std::string_view("600\0x", 5));
    TextView text;
    {
        CDataTable other = table;
        other.SetItemText(0, "code", "changed");
        text = table.GetItemText(0, "code");
    }
    EXPECT_EQ(text, code);
    EXPECT_EQ("sh" + text, "sh" + code);
}

TEST(DataTableTest, HostileSizes) {
    CDataTable wide;
    for (int col = 0; col < 1000; ++col) EXPECT_EQ(wide.AddColumn(std::to_string(col)), col);
    EXPECT_EQ(wide.FindColumn("999"), 999);
    wide.AppendRow();
    for (int col = 999; col >= 0; --col) EXPECT_TRUE(wide.SetItemText(0, col, std::string(64, 'w')));
    const std::string huge(64 << 20, 'h');
    EXPECT_TRUE(wide.SetItemText(0, "500", huge));
    EXPECT_TRUE(wide.SetItemText(0, 3, "shorter"));
    EXPECT_EQ(wide.GetItemText(0, 500), huge);
    EXPECT_EQ(wide.GetItemText(0, 501), std::string(64, 'w'));

    CDataTable tall = WithColumns({"n"});
    constexpr int kRows = 1'000'000;
    for (int row = 0; row < kRows; ++row) {
        ASSERT_EQ(tall.AppendRow(), row);
        ASSERT_TRUE(tall.SetItemText(row, 0, std::to_string(row)));
    }
    const CDataTable copy = tall;
    for (int row = kRows / 2; row < kRows / 2 + 1000; ++row) ASSERT_TRUE(tall.DeleteRow(kRows / 2));
    EXPECT_EQ(tall.GetItemText(kRows / 2, 0), std::to_string(kRows / 2 + 1000));
    EXPECT_EQ(copy.GetItemText(kRows / 2, 0), std::to_string(kRows / 2));

    // Nearly 2^31 rows that share everything, then more than fit.
    while (tall.GetRowNumber() < 1 << 30) {
        const int rows = tall.GetRowNumber();
        ASSERT_TRUE(tall.InsertTable(tall));
        ASSERT_EQ(tall.GetItemText(rows + 7, 0), "7");
    }
    const uint64_t refused = CCounters::Get("table_row_limit");
    const int rows = tall.GetRowNumber();
    EXPECT_FALSE(tall.InsertTable(tall));
    EXPECT_EQ(tall.GetRowNumber(), rows);
    EXPECT_EQ(CCounters::Get("table_row_limit") - refused, static_cast<uint64_t>(rows));
    EXPECT_EQ(tall.GetItemText(rows - 1, 0), "999999");
    EXPECT_TRUE(tall.DeleteRow(rows / 3));
}

// A list that puts new rows in front, and one that takes rows from single-row tables: trees joined over and
// over.
TEST(DataTableTest, JoinedRowByRow) {
    CDataTable behind = WithColumns({"n"}), front = behind;
    constexpr int kRows = 20'000;
    for (int row = 0; row < kRows; ++row) {
        CDataTable one = WithColumns({"n"});
        one.AppendRow();
        one.SetItemText(0, 0, std::to_string(row));
        behind.InsertTable(one);
        one.InsertTable(front);
        front = std::move(one);
    }
    for (int row = 0; row < kRows; ++row) {
        ASSERT_EQ(behind.GetItemText(row, 0), std::to_string(row));
        ASSERT_EQ(front.GetItemText(row, 0), std::to_string(kRows - 1 - row));
    }
}

}  // namespace
}  // namespace luadui
