// RowIndex: finds the rows of a table by the text of one column.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "base/data_table.h"

namespace luadui {

// Holds row numbers and hashes only, the keys stay in the table, which every call gets. Empty keys are not
// indexed; of rows with the same key the first counts.
//
// Threads: those of the table.
class RowIndex {
  public:
    // Whether the index is one of a table with that key column and that many rows. It is not told of other
    // changes.
    bool Fits(const CDataTable& table, int keyColumn) const noexcept {
        return m_keyColumn == keyColumn && m_rows == table.GetRowNumber();
    }
    // Reads all rows.
    void Build(const CDataTable& table, int keyColumn);
    // The row with that key; -1 when there is none.
    int Find(const CDataTable& table, std::string_view key) const;
    // Takes in the row that was appended to the table, which has the key already.
    void Add(const CDataTable& table, int row);
    void Clear() noexcept;

  private:
    struct Slot {
        uint32_t hash = 0;
        int32_t row = -1;  // -1: free
    };

    // Where the key is, or would go.
    size_t _locate(const CDataTable& table, std::string_view key, uint32_t hash) const;
    void _grow();

    // A power of two, at most three quarters used; a key lies in the first free one from its hash on.
    std::vector<Slot> m_slots;
    size_t m_used = 0;
    int m_keyColumn = -1;
    int m_rows = 0;
};

}  // namespace luadui
