#include "base/table_body.h"

#include <algorithm>

#include "base/counters.h"

namespace luadui {
namespace {

constexpr uint32_t kMaxGuess = 4096;   // bytes that a new row gets on the strength of the last one
constexpr uint32_t kBytesPerCell = 8;  // and per column when there is no last one
constexpr size_t kPrefetchBytes = 512;
constexpr size_t kCacheLine = 64;

// A page reads row after row, and rows lie anywhere in memory.
void Prefetch(const RowBlock& row) noexcept {
    const char* bytes = reinterpret_cast<const char*>(&row);
    for (size_t i = 0; i < kPrefetchBytes; i += kCacheLine) __builtin_prefetch(bytes + i);
}

}  // namespace

SharedBody* TableBody::Clone() const {
    auto* clone = new TableBody();
    clone->m_header = m_header;
    clone->m_rows = SharedRows();
    clone->m_rowBytes = m_rowBytes;
    return clone;
}

const TableHeader& TableBody::Header() const noexcept {
    static const TableHeader none;
    return m_header ? *m_header : none;
}

TableHeader& TableBody::EditHeader() {
    if (!m_header || !m_header->IsUnique()) m_header = HeaderPtr::Adopt(new TableHeader(Header()));
    return *m_header;
}

const RowBlock& TableBody::FindDirect(uint32_t row) const noexcept {
    uint32_t first = 0;
    const RowNode* leaf = m_readLeaf.Last<RowNode>(first);
    if (!leaf || row - first >= RowTree::LeafSize(leaf)) {
        leaf = m_rows.DirectLeaf(row, first);
        if (!leaf) return RowBlock::None();
        m_readLeaf.Set(first, leaf);
    }
    const uint32_t index = row - first;
    const RowBlock& found = RowTree::LeafRow(leaf, index);
    m_lastRow.Set(row, &found);
    if (index + 1 < RowTree::LeafSize(leaf)) Prefetch(RowTree::LeafRow(leaf, index + 1));
    return found;
}

bool TableBody::SetText(uint32_t row, uint32_t cell, std::string_view text) {
    std::string kept;
    uint32_t first = 0;
    // The text may be one of this table's own, and rows under a map are rewritten as a whole leaf.
    if (!m_rows.DirectLeaf(row, first)) text = kept.assign(text);
    RowNode* leaf = nullptr;
    RowPtr& block = _editRow(row, leaf, first);
    if (!RowBlock::Fits(block.get(), text.size())) {
        CCounters::Add("table_text_limit");
        return false;
    }
    const uint32_t columns = Header().Columns();
    const uint32_t bytes =
        m_rowBytes ? m_rowBytes : std::min(columns, kMaxGuess / kBytesPerCell) * kBytesPerCell;
    RowBlock::SetText(block, cell, text, {columns, bytes});
    return true;
}

RowColors& TableBody::EditColors(uint32_t row) {
    RowNode* leaf = nullptr;
    uint32_t first = 0;
    return RowBlock::EditColors(_editRow(row, leaf, first));
}

void TableBody::Append() {
    if (RowCount() != 0) {
        uint32_t first = 0;
        RowNode* leaf = m_ownLeaf.Last<RowNode>(first);
        const uint32_t last = RowCount() - 1;
        if (leaf && last - first < RowTree::LeafSize(leaf)) {
            RowPtr& complete = RowTree::LeafRow(leaf, last - first);
            RowBlock::Trim(complete);
            if (complete)
                m_rowBytes = static_cast<uint32_t>(std::min<size_t>(complete->TextBytes(), kMaxGuess));
        }
    }
    _forget();
    RowNode* leaf = m_rows.Append();
    m_ownLeaf.Set(RowCount() - RowTree::LeafSize(leaf), leaf);
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
    const HeaderPtr old = m_header;
    size_t dropped = 0;
    if (RowCount() != 0) {
        static const TableHeader none;
        const MapPtr map = ColumnMap::Between(header ? *header : none, Header(), dropped);
        _forget();
        m_rows.Remap(map);
    }
    m_header = header;
    if (dropped) CCounters::Add("table_column_dropped", dropped);
}

void TableBody::Join(const RowTree& rows, const TableHeader& header) {
    size_t dropped = 0;
    const MapPtr map = &header == m_header.get() ? MapPtr() : ColumnMap::Between(Header(), header, dropped);
    _forget();
    m_rows.Join(rows, map);
    if (dropped) CCounters::Add("table_column_dropped", dropped);
}

const RowTree& TableBody::SharedRows() const noexcept {
    m_ownLeaf.Clear();
    return m_rows;
}

// The row for writing; reads go on from its leaf.
RowPtr& TableBody::_editRow(uint32_t row, RowNode*& leaf, uint32_t& first) {
    m_lastRow.Clear();
    leaf = m_ownLeaf.Last<RowNode>(first);
    if (!leaf || row - first >= RowTree::LeafSize(leaf)) {
        _forget();
        leaf = m_rows.EditLeaf(row, first);
        m_ownLeaf.Set(first, leaf);
    }
    m_readLeaf.Set(first, leaf);
    return RowTree::LeafRow(leaf, row - first);
}

void TableBody::_forget() const noexcept {
    m_lastRow.Clear();
    m_readLeaf.Clear();
    m_ownLeaf.Clear();
}

}  // namespace luadui
