#include "base/data_table.h"

#include <string>

#include "base/counters.h"
#include "base/row_merge.h"
#include "base/table_body.h"

namespace luadui {
namespace {

const TableBody* AsBody(const TableHead* head) noexcept { return static_cast<const TableBody*>(head); }

bool HasRow(const TableHead* head, int row) noexcept {
    return head && static_cast<uint32_t>(row) < AsBody(head)->RowCount();
}

bool HasCell(const TableHead* head, int row, int col) noexcept {
    return HasRow(head, row) && static_cast<uint32_t>(col) < AsBody(head)->ColumnCount();
}

constexpr size_t kPrefetchBytes = 256;
constexpr size_t kCacheLine = 64;

// A page reads row after row, and rows lie anywhere in memory.
void Prefetch(const RowBlock* row) noexcept {
    const char* bytes = reinterpret_cast<const char*>(row);
    for (size_t i = 0; i < kPrefetchBytes; i += kCacheLine) __builtin_prefetch(bytes + i);
}

TextView View(const std::string& text) noexcept { return TextView(text.c_str(), text.size()); }

}  // namespace

const RowBlock& TableHead::_findRow(int row) const noexcept {
    const RowBlock& cells = OpenRow(row);
    m_lastRow.Set(static_cast<uint32_t>(row), &cells);
    return cells;
}

const RowBlock& TableHead::_openRow(int row) const noexcept {
    const RowBlock& cells = AsBody(this)->Direct(static_cast<uint32_t>(row));
    _prepareRow(static_cast<uint32_t>(row) + 1);
    return cells;
}

void TableHead::_prepareRow(uint32_t row) const noexcept {
    const RowBlock& cells = AsBody(this)->Direct(row);
    Prefetch(&cells);
    m_nextRow.Set(row, &cells);
}

TextView TableHead::Text(int row, int col) const noexcept {
    const TableBody& body = *AsBody(this);
    if (static_cast<uint32_t>(row) >= body.RowCount() || col < 0) return {};
    auto cell = static_cast<uint32_t>(col);
    const RowBlock& cells = body.Locate(static_cast<uint32_t>(row), cell);
    return cell < cells.Cells() ? cells.Text(cell) : TextView();
}

int CDataTable::GetRowNumber() const noexcept {
    return _head() ? static_cast<int>(AsBody(_head())->RowCount()) : 0;
}

int CDataTable::GetColumnNumber() const noexcept {
    return _head() ? static_cast<int>(AsBody(_head())->ColumnCount()) : 0;
}

int CDataTable::AddColumn(std::string_view name) {
    if (static_cast<uint32_t>(GetColumnNumber()) >= TableBody::kMaxColumns) {
        CCounters::Add("table_column_limit");
        return -1;
    }
    const std::string kept(name);  // it may be text of the header that is about to change
    return static_cast<int>(_edit().EditHeader().Add(kept));
}

int CDataTable::FindColumn(std::string_view name) const noexcept {
    return GetColumnNumber() != 0 ? AsBody(_head())->Header()->Find(name) : -1;
}

bool CDataTable::HasSameColumns(const CDataTable& other) const noexcept {
    if (GetColumnNumber() != other.GetColumnNumber()) return false;
    return GetColumnNumber() == 0 || AsBody(_head())->Header()->StartsWith(*AsBody(other._head())->Header());
}

bool CDataTable::SetColumnProperty(int col, std::string_view property, std::string_view value) {
    if (col < 0 || col > GetColumnNumber()) return false;
    const std::string keptProperty(property);
    const std::string keptValue(value);
    if (col == GetColumnNumber()) {
        const bool isName = keptProperty == TableHeader::kName;
        if (AddColumn(isName ? std::string_view(keptValue) : std::string_view()) < 0) return false;
        if (isName) return true;
    }
    _edit().EditHeader().SetProperty(static_cast<uint32_t>(col), keptProperty, keptValue);
    return true;
}

TextView CDataTable::GetColumnProperty(int col, std::string_view property) const noexcept {
    if (col < 0 || col >= GetColumnNumber()) return {};
    return AsBody(_head())->Header()->Property(static_cast<uint32_t>(col), property);
}

int CDataTable::AppendRow() {
    const int row = GetRowNumber();
    if (static_cast<uint32_t>(row) == RowTree::kMaxRows) {
        CCounters::Add("table_row_limit");
        return -1;
    }
    _edit().Append();
    return row;
}

bool CDataTable::DeleteRow(int row) {
    if (!HasRow(_head(), row)) return false;
    _edit().Erase(static_cast<uint32_t>(row));
    return true;
}

void CDataTable::DeleteAllRows() {
    if (GetRowNumber() != 0) _edit().EraseAll();
}

void CDataTable::Clear() { *this = CDataTable(); }

bool CDataTable::SetItemText(int row, int col, std::string_view text) {
    if (!HasCell(_head(), row, col)) return false;
    const auto at = static_cast<uint32_t>(row);
    const auto cell = static_cast<uint32_t>(col);
    if (AsBody(_head())->Holds(at, cell, text)) return true;  // copies stay shared
    return _edit().SetText(at, cell, text);
}

bool CDataTable::SetItemText(int row, std::string_view name, std::string_view text) {
    return SetItemText(row, FindColumn(name), text);
}

bool CDataTable::SetItemTextColor(int row, int col, std::string_view color) {
    if (!HasCell(_head(), row, col)) return false;
    if (GetItemTextColor(row, col) == color) return true;
    const std::string kept(color);
    _edit().EditColors(static_cast<uint32_t>(row)).SetCell(static_cast<uint32_t>(col), kept);
    return true;
}

bool CDataTable::SetItemTextColor(int row, std::string_view name, std::string_view color) {
    return SetItemTextColor(row, FindColumn(name), color);
}

TextView CDataTable::GetItemTextColor(int row, int col) const noexcept {
    if (!HasCell(_head(), row, col)) return {};
    auto cell = static_cast<uint32_t>(col);
    const RowBlock& cells = AsBody(_head())->Locate(static_cast<uint32_t>(row), cell);
    const std::string* color = cells.Colors() ? cells.Colors()->Cell(cell) : nullptr;
    return color ? View(*color) : TextView();
}

TextView CDataTable::GetItemTextColor(int row, std::string_view name) const noexcept {
    return GetItemTextColor(row, FindColumn(name));
}

bool CDataTable::SetRowColor(int row, std::string_view color) {
    if (!HasRow(_head(), row)) return false;
    if (GetRowColor(row) == color) return true;
    const std::string kept(color);
    _edit().EditColors(static_cast<uint32_t>(row)).row = kept;
    return true;
}

TextView CDataTable::GetRowColor(int row) const noexcept {
    if (!HasRow(_head(), row)) return {};
    uint32_t noCell = ColumnMap::kNowhere;
    const RowBlock& cells = AsBody(_head())->Locate(static_cast<uint32_t>(row), noCell);
    return cells.Colors() ? View(cells.Colors()->row) : TextView();
}

void CDataTable::CopyHeader(const CDataTable& source) {
    const HeaderPtr header = source._head() ? AsBody(source._head())->Header() : nullptr;
    if (header || GetColumnNumber() != 0) _edit().TakeHeader(header);
}

bool CDataTable::InsertTable(const CDataTable& source) {
    if (source.GetRowNumber() == 0) return true;
    const auto total = static_cast<uint64_t>(GetRowNumber()) + static_cast<uint64_t>(source.GetRowNumber());
    if (total > RowTree::kMaxRows) {
        CCounters::Add("table_row_limit", static_cast<uint64_t>(source.GetRowNumber()));
        return false;
    }
    // A table may be inserted into itself: the copy keeps what is read from being what is written.
    const CDataTable kept = SharesWith(source) ? source : CDataTable();
    const TableBody& from = *AsBody(source._head());
    _edit().Join(from.SharedRows(), from.Header());
    return true;
}

bool CDataTable::InsertRow(const CDataTable& source, int row) {
    if (!HasRow(source._head(), row)) return false;
    // A row of this table itself: the copy keeps what is read from being what is written.
    const CDataTable kept = SharesWith(source) ? source : CDataTable();
    const TableBody& from = *AsBody(source._head());
    const RowPtr block = from.RowOf(static_cast<uint32_t>(row));
    if (!HasSameColumns(source)) {
        CDataTable single;
        single.CopyHeader(source);
        single.AppendRow();
        single._edit().SetRow(0, block);
        return InsertTable(single);
    }
    const int added = AppendRow();
    if (added >= 0) _edit().SetRow(static_cast<uint32_t>(added), block);
    return added >= 0;
}

bool CDataTable::MergeRow(int row, const CDataTable& source, int sourceRow, const RowMerge& merge,
                          std::vector<int>* changes) {
    if (!HasRow(_head(), row) || !HasRow(source._head(), sourceRow) || !merge.Fits(*this, source))
        return false;
    const RowPtr update = AsBody(source._head())->RowOf(static_cast<uint32_t>(sourceRow));
    return _edit().MergeRow(static_cast<uint32_t>(row), update, merge, changes);
}

bool CDataTable::MergeRows(std::span<const RowPair> rows, const CDataTable& source, const RowMerge& merge) {
    if (!_head() || !source._head() || !merge.Fits(*this, source)) return rows.empty();
    constexpr size_t kAhead = 6;
    const CDataTable kept = SharesWith(source) ? source : CDataTable();
    const TableBody& from = *AsBody(SharesWith(source) ? kept._head() : source._head());
    TableBody& body = _edit();
    bool isComplete = true;
    for (size_t i = 0; i < rows.size(); ++i) {
        if (i + kAhead < rows.size()) {
            body.Expect(static_cast<uint32_t>(rows[i + kAhead].row));
            from.Expect(static_cast<uint32_t>(rows[i + kAhead].sourceRow));
        }
        const auto [row, sourceRow] = rows[i];
        isComplete &=
            HasRow(&body, row) && HasRow(&from, sourceRow) &&
            body.MergeRow(static_cast<uint32_t>(row), from, static_cast<uint32_t>(sourceRow), merge);
    }
    return isComplete;
}

void CDataTable::ExpectRow(int row) const noexcept {
    if (_head()) AsBody(_head())->Expect(static_cast<uint32_t>(row));
}

}  // namespace luadui
