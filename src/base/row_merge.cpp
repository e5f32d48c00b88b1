#include "base/row_merge.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "base/row_block.h"
#include "base/table_body.h"

namespace luadui {

RowMerge::RowMerge(const CDataTable& target, const CDataTable& source, std::string_view nothing)
    : m_nothing(nothing),
      m_from(static_cast<size_t>(target.GetColumnNumber()), kNowhere),
      m_before(static_cast<size_t>(source.GetColumnNumber()), kNowhere) {
    m_target.CopyHeader(target);
    m_source.CopyHeader(source);
    for (uint32_t cell = 0; cell < m_before.size(); ++cell) {
        const int to =
            target.FindColumn(source.GetColumnProperty(static_cast<int>(cell), TableHeader::kName));
        if (to >= 0) m_before[cell] = std::exchange(m_from[static_cast<size_t>(to)], cell);
    }
    m_isSame = target.HasSameColumns(source);
    for (uint32_t cell = 0; m_isSame && cell < m_from.size(); ++cell) m_isSame = m_from[cell] == cell;
}

// The cell, if it says something.
bool RowBlock::_says(uint32_t cell, std::string_view nothing) const noexcept {
    if (cell >= m_cells) return false;
    const uint32_t* start = _starts() + cell;
    const uint32_t size = start[1] - start[0] - 1;
    return size != 0 && (size != nothing.size() || Text(cell) != nothing);
}

// Whether all that a row of `old` holds goes when this row's cells come, one by one, into its place.
bool RowBlock::_replaces(const RowBlock& old, std::string_view nothing) const noexcept {
    if (m_colors || old.m_colors || m_cells < old.m_cells) return false;
    for (uint32_t cell = 0; cell < m_cells; ++cell) {
        const bool isLost = cell < old.m_cells && !old.Text(cell).empty();
        if (!_says(cell, nothing) && (isLost || !Text(cell).empty())) return false;
    }
    return true;
}

void RowBlock::_appendMerged(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept {
    const auto appendOld = [&](uint32_t first, uint32_t last) {
        _appendFrom(old, std::min(first, old.m_cells), std::min(last, old.m_cells));
        _appendEmptyUpTo(last);
    };
    if (merge.m_isSame) {  // neighbours that come from the same row are copied together
        const uint32_t cells = std::max(old.m_cells, update.m_cells);
        for (uint32_t cell = 0; cell < cells;) {
            const uint32_t first = cell;
            const bool isNew = update._says(cell, merge.m_nothing);
            while (++cell < cells && update._says(cell, merge.m_nothing) == isNew) {
            }
            isNew ? _appendFrom(update, first, cell) : appendOld(first, cell);
        }
        return;
    }
    for (uint32_t cell = 0; cell < merge.m_from.size(); ++cell) {
        uint32_t from = merge.m_from[cell];
        while (from != RowMerge::kNowhere && !update._says(from, merge.m_nothing))
            from = merge.m_before[from];
        from != RowMerge::kNowhere ? _append(update.Text(from)) : appendOld(cell, cell + 1);
    }
}

bool RowBlock::Merge(RowPtr& row, const RowPtr& update, const RowMerge& merge) {
    constexpr size_t kSmallRow = 4096;
    const RowBlock& old = row ? *row : None();
    const RowBlock& from = update ? *update : None();
    if (merge.m_isSame && from._replaces(old, merge.m_nothing)) {
        row = update;
        return true;
    }
    const size_t cells = merge.m_from.size();
    const size_t bytes = old.TextBytes() + from.TextBytes() + cells;
    if (bytes > kMaxText) return false;
    if (sizeof(RowBlock) + (cells + 1) * sizeof(uint32_t) + bytes <= kSmallRow) {
        // Only then it is known how long the row is, and its block can often stay.
        alignas(RowBlock) std::byte storage[kSmallRow];
        RowBlock* const merged = new (storage) RowBlock(static_cast<uint32_t>(cells), kSmallRow);
        merged->_appendMerged(old, from, merge);
        _replaceTexts(row, *merged);
        return true;
    }
    RowPtr merged = _create(cells, bytes);
    merged->_appendMerged(old, from, merge);
    if (old.m_colors) merged->m_colors = std::make_unique<RowColors>(*old.m_colors);
    row = std::move(merged);
    Trim(row);
    return true;
}

// Gives `row` the cells of `texts`, in place if it has no other owner and has the room.
void RowBlock::_replaceTexts(RowPtr& row, const RowBlock& texts) {
    const bool fits = row && row->IsUnique() && texts.m_cells <= row->m_cellRoom &&
                      texts.TextBytes() <= row->m_capacity - row->_starts()[0];
    if (!fits) {
        RowPtr block = _create(texts.m_cells, texts.TextBytes());
        if (row && row->m_colors) block->m_colors = std::make_unique<RowColors>(*row->m_colors);
        row = std::move(block);
    }
    row->m_cells = 0;
    row->_appendFrom(texts, 0, texts.m_cells);
}

}  // namespace luadui
