#include "base/table_body.h"

#include <algorithm>

#include "base/counters.h"

namespace luadui {
namespace {

constexpr uint32_t kMaxGuess = 4096;   // bytes that a new row gets on the strength of the last one
constexpr uint32_t kBytesPerCell = 8;  // and per column when there is no last one

// For reading rows written under `source` in columns `target`; columns that are lost are counted.
MapPtr MapBetween(const HeaderPtr& target, const HeaderPtr& source) {
    if (!source || target.get() == source.get()) return {};
    static const TableHeader none;
    size_t dropped = 0;
    const MapPtr map = ColumnMap::Between(target ? *target : none, *source, dropped);
    if (dropped) CCounters::Add("table_column_dropped", dropped);
    return map;
}

}  // namespace

SharedBody* TableBody::Clone() const {
    auto* clone = new TableBody();
    clone->m_header = m_header;
    clone->m_rows = SharedRows();
    clone->m_rowBytes = m_rowBytes;
    return clone;
}

TableHeader& TableBody::EditHeader() {
    if (!m_header) {
        m_header = HeaderPtr::Adopt(new TableHeader());
    } else if (!m_header->IsUnique()) {
        m_header = HeaderPtr::Adopt(new TableHeader(*m_header));
    }
    return *m_header;
}

const RowBlock& TableBody::Direct(uint32_t row) const noexcept {
    uint32_t first = 0;
    const RowLeaf* leaf = m_lastLeaf.Last<RowLeaf>(first);
    if (!leaf || row - first >= leaf->count) {
        leaf = row < RowCount() ? _readLeaf(row, first) : nullptr;
        if (!leaf) return RowBlock::None();
    }
    return leaf->Row(row - first);
}

bool TableBody::Holds(uint32_t row, uint32_t cell, std::string_view text) const noexcept {
    uint32_t first = 0;
    const RowLeaf* leaf = _readLeaf(row, first);
    const RowBlock& cells = leaf ? leaf->Row(row - first) : Locate(row, cell);
    return cell < cells.Cells() ? cells.Text(cell) == text : text.empty();
}

bool TableBody::SetText(uint32_t row, uint32_t cell, std::string_view text) {
    std::string kept;
    uint32_t first = 0;
    // The text may be one of this table's own, and rows under a map are rewritten as a whole leaf.
    if (!_ownLeaf(row, first) && !_readLeaf(row, first)) text = kept.assign(text);
    const uint32_t columns = ColumnCount();
    const uint32_t guess = std::min(columns, kMaxGuess / kBytesPerCell) * kBytesPerCell;
    if (RowBlock::SetText(_editRow(row), cell, text, {columns, m_rowBytes ? m_rowBytes : guess})) return true;
    CCounters::Add("table_text_limit");
    return false;
}

RowColors& TableBody::EditColors(uint32_t row) { return RowBlock::EditColors(_editRow(row)); }

RowPtr TableBody::RowOf(uint32_t row) const {
    uint32_t first = 0;
    if (const RowLeaf* leaf = _readLeaf(row, first)) return leaf->rows[row - first];
    RowPtr copy;
    uint32_t noCell = ColumnMap::kNowhere;
    const RowColors* const colors = Locate(row, noCell).Colors();
    if (colors) RowBlock::EditColors(copy).row = colors->row;
    for (uint32_t col = 0; col < ColumnCount(); ++col) {
        uint32_t cell = col;
        const RowBlock& cells = Locate(row, cell);
        if (cell < cells.Cells())
            RowBlock::SetText(copy, col, cells.Text(cell), {ColumnCount(), cells.TextBytes()});
        const std::string* const color = colors ? colors->Cell(cell) : nullptr;
        if (color) RowBlock::EditColors(copy).SetCell(col, *color);
    }
    return copy;
}

void TableBody::SetRow(uint32_t row, const RowPtr& cells) { _editRow(row) = cells; }

bool TableBody::MergeRow(uint32_t row, const RowPtr& update, const RowMerge& merge,
                         std::vector<int>* changes) {
    if (RowBlock::Merge(_editRow(row), update, merge, changes)) return true;
    CCounters::Add("table_text_limit");
    return false;
}

bool TableBody::MergeRow(uint32_t row, const TableBody& source, uint32_t sourceRow, const RowMerge& merge) {
    uint32_t first = 0;
    const RowLeaf* const leaf = source._readLeaf(sourceRow, first);
    return leaf ? MergeRow(row, leaf->rows[sourceRow - first], merge, nullptr)
                : MergeRow(row, source.RowOf(sourceRow), merge, nullptr);
}

void TableBody::Expect(uint32_t row) const noexcept {
    constexpr size_t kBytes = 640, kLine = 64;  // rows of quotes
    uint32_t first = 0;
    const RowLeaf* const leaf = row < RowCount() ? _readLeaf(row, first) : nullptr;
    if (!leaf || !leaf->rows[row - first]) return;
    const auto* const block = reinterpret_cast<const char*>(leaf->rows[row - first].get());
    for (size_t at = 0; at < kBytes; at += kLine) __builtin_prefetch(block + at);
}

void TableBody::Append() {
    uint32_t first = 0;
    if (RowLeaf* last = RowCount() ? _ownLeaf(RowCount() - 1, first) : nullptr) {
        RowPtr& complete = last->rows[last->count - 1];
        RowBlock::Trim(complete);
        if (complete) m_rowBytes = static_cast<uint32_t>(std::min<size_t>(complete->TextBytes(), kMaxGuess));
    }
    _forget();
    const RowLeaf* leaf = m_rows.Append();
    m_ownedLeaf.Set(RowCount() - leaf->count, leaf);
}

void TableBody::Erase(uint32_t row) {
    _forget();
    m_rows.Erase(row);
}

void TableBody::EraseAll() {
    _forget();
    m_rows = RowTree();
}

void TableBody::TakeHeader(const HeaderPtr& header) {
    _forget();
    if (RowCount() != 0) m_rows.Remap(MapBetween(header, m_header));
    m_header = header;
}

void TableBody::Join(const RowTree& rows, const HeaderPtr& header) {
    _forget();
    m_rows.Join(rows, MapBetween(m_header, header));
}

const RowTree& TableBody::SharedRows() const noexcept {
    m_ownedLeaf.Clear();
    return m_rows;
}

// The leaf of the row, unless that is read through maps.
const RowLeaf* TableBody::_readLeaf(uint32_t row, uint32_t& first) const noexcept {
    const RowLeaf* leaf = m_lastLeaf.Last<RowLeaf>(first);
    if (leaf && row - first < leaf->count) return leaf;
    leaf = m_rows.DirectLeaf(row, first);
    if (leaf) m_lastLeaf.Set(first, leaf);
    return leaf;
}

// The leaf of the row, if that may be written at once.
RowLeaf* TableBody::_ownLeaf(uint32_t row, uint32_t& first) const noexcept {
    RowLeaf* leaf = m_ownedLeaf.Last<RowLeaf>(first);
    return leaf && row - first < leaf->count ? leaf : nullptr;
}

// The row for writing; reads go on from its leaf.
RowPtr& TableBody::_editRow(uint32_t row) {
    m_lastRow.Clear();
    m_nextRow.Clear();
    uint32_t first = 0;
    RowLeaf* leaf = _ownLeaf(row, first);
    if (!leaf) {
        _forget();
        leaf = m_rows.EditLeaf(row, first);
        m_ownedLeaf.Set(first, leaf);
        m_lastLeaf.Set(first, leaf);
    }
    return leaf->rows[row - first];
}

void TableBody::_forget() const noexcept {
    m_lastRow.Clear();
    m_nextRow.Clear();
    m_lastLeaf.Clear();
    m_ownedLeaf.Clear();
}

}  // namespace luadui
