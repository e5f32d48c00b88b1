#include "base/row_merge.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "base/row_block.h"
#include "base/short_bytes.h"
#include "base/table_body.h"

namespace luadui {
namespace {

constexpr uint32_t kShortText = 16;

}  // namespace

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
    m_hasDoubles = std::ranges::any_of(m_before, [](uint32_t cell) { return cell != kNowhere; });
    for (uint32_t cell = 0; m_isSame && cell < m_from.size(); ++cell) m_isSame = m_from[cell] == cell;
}

// Reads the cells of a row one by one as (text, size), without a call for each; all are there, some perhaps empty.
class RowBlock::CellReader {
  public:
    explicit CellReader(const RowBlock& row) noexcept
        : m_base(reinterpret_cast<const char*>(&row)),
          m_starts(row._starts()),
          m_cells(row.m_cells),
          m_safe(row.m_capacity < kWord ? 0 : row.m_capacity - kWord) {}

    struct Cell {
        const char* text;  // with a zero byte behind it
        uint32_t size;
        bool isSafe;  // kWord bytes may be read
    };
    Cell operator[](uint32_t cell) const noexcept {
        if (cell >= m_cells) return {"", 0, false};
        const uint32_t start = m_starts[cell];
        return {m_base + start, m_starts[cell + 1] - start - 1, start <= m_safe};
    }

    static constexpr uint32_t kWord = 16;

  private:
    const char* const m_base;
    const uint32_t* const m_starts;
    const uint32_t m_cells;
    const uint32_t m_safe;
};

// Which cells of the update say something.
class RowBlock::UpdateReader {
  public:
    UpdateReader(const RowBlock& update, const RowMerge& merge) noexcept
        : m_cells(update), m_merge(merge), m_nothing(merge.m_nothing) {}

    using Cell = CellReader::Cell;
    bool Says(const Cell& cell) const noexcept {
        if (m_nothing.size() == 1) [[likely]]  // as good as random: without a branch
            return (cell.size != 0) & !((cell.size == 1) & (*cell.text == m_nothing[0]));
        return cell.size != 0 && std::string_view(cell.text, cell.size) != m_nothing;
    }
    // The one that goes to `cell` of the target.
    Cell For(uint32_t cell) const noexcept {
        if (m_merge.m_isSame) return m_cells[cell];
        uint32_t from = m_merge.m_from[cell];
        while (m_merge.m_hasDoubles && from != RowMerge::kNowhere && !Says(m_cells[from]))
            from = m_merge.m_before[from];
        return m_cells[from];
    }

  private:
    const CellReader m_cells;
    const RowMerge& m_merge;
    const std::string_view m_nothing;
};

// Whether all that a row of `old` holds goes when this row's cells come, one by one, into its place.
bool RowBlock::_replaces(const RowBlock& old, const RowMerge& merge) const noexcept {
    if (!merge.m_isSame || m_colors || old.m_colors || m_cells < old.m_cells) return false;
    const UpdateReader cells(*this, merge);
    const CellReader oldCells(old);
    for (uint32_t cell = 0; cell < m_cells; ++cell) {
        const auto said = cells.For(cell);
        if (!cells.Says(said) && (said.size != 0 || oldCells[cell].size != 0)) return false;
    }
    return true;
}

// There is room for both rows and a word.
void RowBlock::_appendMerged(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept {
    const UpdateReader updates(update, merge);
    const CellReader oldCells(old);
    const auto cells = static_cast<uint32_t>(merge.m_from.size());
    uint32_t* starts = _starts();
    uint32_t end = starts[0];
    for (uint32_t cell = 0; cell < cells; ++cell) {
        const auto said = updates.For(cell), was = oldCells[cell];
        const bool isNew = updates.Says(said);
        const char* const text = isNew ? said.text : was.text;
        const uint32_t size = isNew ? said.size : was.size;
        char* const to = _bytes() + end;
        if ((isNew ? said.isSafe : was.isSafe) && size < CellReader::kWord) [[likely]] {
            std::memcpy(to, text, CellReader::kWord);
        } else {
            std::memcpy(to, text, size + size_t{1});
        }
        starts[cell + 1] = end += size + 1;
    }
    m_cells = cells;
}

void RowBlock::_listChanges(const RowBlock& old, const RowBlock& update, const RowMerge& merge,
                            std::vector<int>& changes) {
    const UpdateReader updates(update, merge);
    const CellReader oldCells(old);
    const auto cells = static_cast<uint32_t>(merge.m_from.size());
    for (uint32_t cell = 0; cell < cells; ++cell) {
        const auto said = updates.For(cell), was = oldCells[cell];
        if (!updates.Says(said)) continue;
        const bool isEqual = said.size == was.size &&
                             (said.size <= kShortText ? EqualShort(said.text, was.text, said.size)
                                                      : std::memcmp(said.text, was.text, said.size) == 0);
        if (!isEqual) changes.push_back(static_cast<int>(cell));
    }
}

bool RowBlock::Merge(RowPtr& row, const RowPtr& update, const RowMerge& merge, std::vector<int>* changes) {
    constexpr size_t kSmallRow = 4096;
    const RowBlock& old = row ? *row : None();
    const RowBlock& from = update ? *update : None();
    const size_t cells = merge.m_from.size();
    const size_t bytes = old.TextBytes() + from.TextBytes() + cells + CellReader::kWord;
    if (bytes > kMaxText) return false;
    if (changes) _listChanges(old, from, merge, *changes);
    if (from._replaces(old, merge)) {
        row = update;
        return true;
    }
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
