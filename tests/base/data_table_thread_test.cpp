#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/data_table.h"

namespace luadui {
namespace {

constexpr int kRows = 300;
constexpr int kColumns = 4;

CDataTable Numbered() {
    CDataTable table;
    for (int col = 0; col < kColumns; ++col) table.AddColumn("c" + std::to_string(col));
    for (int row = 0; row < kRows; ++row) {
        table.AppendRow();
        for (int col = 0; col < kColumns; ++col)
            table.SetItemText(row, col, std::to_string(row * kColumns + col));
    }
    return table;
}

// Whether the table still is what Numbered() made; reads in an order that differs between threads.
bool IsNumbered(const CDataTable& table, int stride) {
    bool same = table.GetRowNumber() == kRows;
    for (int i = 0; i < kRows; ++i) {
        const int row = i * stride % kRows;
        for (int col = 0; col < kColumns; ++col) {
            same &= table.GetItemText(row, col) == std::to_string(row * kColumns + col);
        }
    }
    return same;
}

TEST(DataTableThreadTest, CopiesAreWrittenWhileOthersRead) {
    const CDataTable original = Numbered();
    std::vector<std::thread> threads;
    std::vector<int> failures(4);
    for (int number = 0; number < 4; ++number) {
        // The copy is made here, as it is when a table is handed to another thread; it shares all storage.
        threads.emplace_back([copy = original, number, &failures]() mutable {
            CDataTable merged;
            for (int round = 0; round < 30; ++round) {
                const CDataTable before = copy;
                merged.CopyHeader(copy);
                merged.InsertTable(copy);
                for (int row = number; row < kRows; row += 7)
                    copy.SetItemText(row, row % kColumns, "changed");
                copy.DeleteRow(round);
                copy.AppendRow();
                failures[static_cast<size_t>(number)] +=
                    !IsNumbered(before, 7) + (merged.GetRowNumber() != kRows);
                copy = before;
                merged.DeleteAllRows();
            }
        });
    }
    for (int round = 0; round < 30; ++round) EXPECT_TRUE(IsNumbered(original, 11));
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(4));
    EXPECT_TRUE(IsNumbered(original, 1));
}

// The last writer of a pair owns the storage alone and writes in place what the other read until a moment
// ago.
TEST(DataTableThreadTest, LastOwnerWritesInPlace) {
    for (int round = 0; round < 200; ++round) {
        CDataTable mine = Numbered();
        std::thread reader([theirs = mine, round]() mutable {
            EXPECT_TRUE(IsNumbered(theirs, 7));
            if (round % 2) theirs.SetItemText(5, 1, "theirs");
            theirs = CDataTable();
        });
        for (int row = 0; row < kRows; ++row) mine.SetItemText(row, 0, "mine");
        reader.join();
        EXPECT_EQ(mine.GetItemText(5, 1), "21");
    }
}

TEST(DataTableThreadTest, OneConstTableIsReadByMany) {
    CDataTable joined = Numbered();
    CDataTable other;
    other.AddColumn("c1");
    other.InsertTable(joined);
    joined.InsertTable(other);
    const CDataTable& table = joined;
    std::vector<std::thread> threads;
    for (const int stride : {1, 7, 11, 13}) {
        threads.emplace_back([&table, stride] {
            for (int i = 0; i < 20 * 2 * kRows; ++i) {
                const int row = i * stride % (2 * kRows);
                EXPECT_EQ(table.GetItemText(row, 1), std::to_string(row % kRows * kColumns + 1));
                EXPECT_EQ(table.GetRow(row)[1], table.GetItemText(row, 1));
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace luadui
