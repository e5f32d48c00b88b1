// The storage of a table: header, rows, and where it last read and wrote.
#pragma once

#include "base/data_table.h"
#include "base/row_tree.h"
#include "base/table_header.h"

namespace luadui {

// Rows and columns that callers pass in exist, unless said otherwise.
class TableBody final : public TableHead {
  public:
    static constexpr uint32_t kMaxColumns = 1u << 26;

    static TableBody* Create() { return new TableBody(); }
    SharedBody* Clone() const override;

    uint32_t RowCount() const noexcept { return m_rows.Size(); }
    uint32_t ColumnCount() const noexcept { return m_header ? m_header->Columns() : 0; }

    // Null while there are no columns.
    const HeaderPtr& Header() const noexcept { return m_header; }
    TableHeader& EditHeader();

    // The row and the place of the column in it, see RowTree::Locate.
    const RowBlock& Locate(uint32_t row, uint32_t& cell) const noexcept { return m_rows.Locate(row, cell); }
    // The row, which need not exist, if it can be read without a map; else the row without cells.
    const RowBlock& Direct(uint32_t row) const noexcept;
    bool Holds(uint32_t row, uint32_t cell, std::string_view text) const noexcept;
    // False when the row would get too long.
    bool SetText(uint32_t row, uint32_t cell, std::string_view text);
    RowColors& EditColors(uint32_t row);
    // The row in the columns of this table: shared, unless it is read through maps. May be null: empty.
    RowPtr RowOf(uint32_t row) const;
    void SetRow(uint32_t row, const RowPtr& cells);
    // False when the row would get too long.
    bool MergeRow(uint32_t row, const RowPtr& update, const RowMerge& merge, std::vector<int>* changes);
    // The same for a row of another table.
    bool MergeRow(uint32_t row, const TableBody& source, uint32_t sourceRow, const RowMerge& merge);
    // Asks for the memory of the row, which need not exist.
    void Expect(uint32_t row) const noexcept;
    void Append();
    void Erase(uint32_t row);
    void EraseAll();
    void TakeHeader(const HeaderPtr& header);
    void Join(const RowTree& rows, const HeaderPtr& header);

    // The rows, which from now on may have more owners.
    const RowTree& SharedRows() const noexcept;

  private:
    TableBody() = default;
    const RowLeaf* _readLeaf(uint32_t row, uint32_t& first) const noexcept;
    RowLeaf* _ownLeaf(uint32_t row, uint32_t& first) const noexcept;
    RowPtr& _editRow(uint32_t row);
    void _forget() const noexcept;

    HeaderPtr m_header;
    RowTree m_rows;
    RowHint m_lastLeaf;       // leaf read last, by its first row
    RowHint m_ownedLeaf;      // leaf written last, while the path to it has no other owner
    uint32_t m_rowBytes = 0;  // text bytes of the last complete row: what the next one will need
};

}  // namespace luadui
