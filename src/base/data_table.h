// The table of the records: columns with properties, rows of text cells, colours.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "base/row_block.h"
#include "base/row_hint.h"
#include "base/shared_value.h"
#include "base/text_view.h"
#include "platform/export.h"

namespace luadui {

class RowMerge;
class TableBody;

// What reading a cell needs of a table's storage, here so that it is compiled into the loops that read.
class TESSEL_API TableHead : public SharedBody {
  public:
    // The cells of the row; none when there is no such row or its cells lie under other columns.
    const RowBlock& Row(int row) const noexcept {
        const RowBlock* hinted = m_lastRow.Get<RowBlock>(row);
        return hinted ? *hinted : _findRow(row);
    }
    // The same for one who reads the whole row, and probably the next one after it.
    const RowBlock& OpenRow(int row) const noexcept {
        const RowBlock* prepared = m_nextRow.Get<RowBlock>(row);
        if (!prepared) return _openRow(row);
        _prepareRow(static_cast<uint32_t>(row) + 1);
        return *prepared;
    }
    // The cell, wherever it lies; empty when there is none.
    TextView Text(int row, int col) const noexcept;

  protected:
    RowHint m_lastRow;
    RowHint m_nextRow;  // found, and asked for from memory, while the row before it is read

  private:
    const RowBlock& _findRow(int row) const noexcept;
    const RowBlock& _openRow(int row) const noexcept;
    void _prepareRow(uint32_t row) const noexcept;
};

// One row for reading: found once for all of its cells, which is what a page that paints a window of a table
// wants. Valid as long as the texts of the table are.
class TableRow {
  public:
    // The cell; empty when there is none.
    TextView operator[](int col) const noexcept {
        if (static_cast<uint32_t>(col) < m_cells->Cells()) [[likely]]
            return m_cells->Text(static_cast<uint32_t>(col));
        return m_table ? m_table->Text(m_row, col) : TextView();
    }

  private:
    friend class CDataTable;
    TableRow(const TableHead* table, int row, const RowBlock& cells) noexcept
        : m_cells(&cells), m_table(table), m_row(row) {}

    const RowBlock* m_cells;
    const TableHead* m_table;
    int m_row;
};

// A table as servers send it and pages show it. A value: copies never see each other's later changes, and
// cost one count whatever the table holds (see base/shared_value.h for attached tables). Copies, and tables
// that were joined by InsertTable, share their rows until one is written; writing copies no more than that
// row and the path to it.
//
// Columns:   numbered from 0. The property "name" is a column's name; several columns may have the same one,
//            lookups by name then find the first.
// Rows:      numbered from 0; a cell never written is empty.
// Colours:   ARGB text such as "0xFFD2D2D2"; empty means none. Kept as given, not checked.
// Failure:   nothing throws for a row or column that does not exist: setters return false and change nothing,
//            getters answer empty text. What does not fit (2^31 - 1 rows, 2^26 columns, 2 GB of text in a
//            row) is refused and counted as "table_row_limit", "table_column_limit" and "table_text_limit".
// Texts:     those returned are valid until this table, or one attached to the same entry, is changed,
//            assigned or destroyed.
// Threads:   one thread at a time; const operations of one table may run on several threads at once. Copies
//            belong to their own threads.
class TESSEL_API CDataTable : public SharedValue<TableBody> {
  public:
    int GetRowNumber() const noexcept;
    int GetColumnNumber() const noexcept;

    // Appends a column and returns its number, -1 when no further column fits. Rows that exist have an empty
    // cell there.
    int AddColumn(std::string_view name);
    // The number of the first column of that name; -1 when there is none. Takes constant time.
    int FindColumn(std::string_view name) const noexcept;
    // True when both have columns of the same names in the same order. One comparison of bytes.
    bool HasSameColumns(const CDataTable& other) const noexcept;
    // Sets one property of a column. `col` equal to GetColumnNumber() appends a column with it (its name is
    // empty unless `property` is "name").
    bool SetColumnProperty(int col, std::string_view property, std::string_view value);
    TextView GetColumnProperty(int col, std::string_view property) const noexcept;

    // Appends an empty row and returns its number; -1 when no further row fits.
    int AppendRow();
    // The rows behind it move up by one.
    bool DeleteRow(int row);
    // Deletes the rows and keeps the columns.
    void DeleteAllRows();
    // Deletes rows and columns.
    void Clear();

    bool SetItemText(int row, int col, std::string_view text);
    bool SetItemText(int row, std::string_view name, std::string_view text);
    TextView GetItemText(int row, int col) const noexcept {
        const TableHead* head = _head();
        if (!head) return {};
        const RowBlock& cells = head->Row(row);
        if (static_cast<uint32_t>(col) < cells.Cells()) [[likely]]
            return cells.Text(static_cast<uint32_t>(col));
        return head->Text(row, col);
    }
    TextView GetItemText(int row, std::string_view name) const noexcept {
        return GetItemText(row, FindColumn(name));
    }
    // The row, whose cells are all empty when there is none of that number.
    TableRow GetRow(int row) const noexcept;

    bool SetItemTextColor(int row, int col, std::string_view color);
    bool SetItemTextColor(int row, std::string_view name, std::string_view color);
    TextView GetItemTextColor(int row, int col) const noexcept;
    TextView GetItemTextColor(int row, std::string_view name) const noexcept;
    bool SetRowColor(int row, std::string_view color);
    TextView GetRowColor(int row) const noexcept;

    // Takes over the columns of `source` with their properties. Rows that are here keep the cells of columns
    // that still exist by name (see InsertTable).
    void CopyHeader(const CDataTable& source);
    // Appends the rows of `source` with their colours; the table itself may be given. Cells go to the column
    // of the same name (the second of two equal names to the second one here). Source columns that this table
    // lacks are dropped, each counted as "table_column_dropped". The cost does not depend on the number of
    // rows. False, and nothing changed, when the rows do not fit.
    bool InsertTable(const CDataTable& source);
    // The same for one row of `source`. False when there is no such row, or no room for it.
    bool InsertRow(const CDataTable& source, int row);
    // Updates `row` with a row of `source`, for whose columns and this table's `merge` was made: a cell that says
    // something replaces the text here, others leave it. Colours stay as they are. What the row then holds is one
    // block: that of `source`, shared, when nothing of the old texts and colours is left. The numbers of columns whose
    // text became another one are appended to `changes`, if given, in ascending order. False, and nothing changed,
    // when there is no such row here or there, the columns are others, or the row would get too long (counted).
    bool MergeRow(int row, const CDataTable& source, int sourceRow, const RowMerge& merge,
                  std::vector<int>* changes = nullptr);
    // The same for many rows, one after the other; their memory is asked for before they are looked at. False when one
    // of them was left out.
    struct RowPair {
        int row, sourceRow;
    };
    bool MergeRows(std::span<const RowPair> rows, const CDataTable& source, const RowMerge& merge);
    // Asks for the memory of a row, if there is one, that will be read or merged a little later.
    void ExpectRow(int row) const noexcept;

  private:
    const TableHead* _head() const noexcept { return static_cast<const TableHead*>(_body()); }
};

inline TableRow CDataTable::GetRow(int row) const noexcept {
    const TableHead* head = _head();
    return TableRow(head, row, head ? head->OpenRow(row) : RowBlock::None());
}

using CHDTable = CDataTable;

}  // namespace luadui
