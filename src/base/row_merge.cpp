#include "base/row_merge.h"

#include <algorithm>
#include <array>
#include <bit>
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

// `bytes` of them, up to 16; so many may be read of both.
bool EqualWord(const char* left, const char* right, uint32_t bytes) noexcept {
    const uint64_t low = ReadWord<uint64_t>(left) ^ ReadWord<uint64_t>(right);
    const uint64_t high = ReadWord<uint64_t>(left + 8) ^ ReadWord<uint64_t>(right + 8);
    constexpr size_t kMasked = 8;
    constexpr auto kMasks = [] {
        std::array<uint64_t, kMasked + 1> masks{};
        for (size_t i = 1; i < masks.size(); ++i)
            masks[i] = i < 8 ? (uint64_t{1} << 8 * i) - 1 : ~uint64_t{0};
        return masks;
    }();
    return ((low & kMasks[bytes < 8 ? bytes : 8]) | (high & kMasks[bytes < 8 ? 0 : bytes - 8])) == 0;
}
static_assert(std::endian::native == std::endian::little);

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
        : m_base(reinterpret_cast<const char*>(&row)), m_starts(row._starts()), m_cells(row.m_cells) {}

    struct Cell {
        const char* text;  // with a zero byte behind it
        uint32_t size;
    };
    Cell operator[](uint32_t cell) const noexcept {
        if (cell >= m_cells) return {"", 0};
        const uint32_t start = m_starts[cell];
        return {m_base + start, m_starts[cell + 1] - start - 1};
    }

  private:
    const char* const m_base;
    const uint32_t* const m_starts;
    const uint32_t m_cells;
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

// Two rows whose cells need no test whether they are there. Which of both a cell comes from is as good as random, so
// it is an index and not a branch, and cells are read a word at a time, whatever their length.
class RowBlock::CellPair {
  public:
    // False when the rows or columns are not of this kind.
    static bool Fits(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept {
        return old.m_cells >= merge.m_from.size() && update.m_cells != 0 && !merge.m_hasDoubles &&
               merge.m_nothing.size() == 1;
    }
    CellPair(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept
        : m_bases{reinterpret_cast<const char*>(&old), reinterpret_cast<const char*>(&update)},
          m_starts{old._starts(), update._starts()},
          m_from(merge.m_from.data()),
          m_updateCells(update.m_cells),
          m_nothing(merge.m_nothing[0]) {}

    struct Cell {
        const char* text;  // with a zero byte behind it
        uint32_t bytes;    // that one, too
    };
    Cell Old(uint32_t cell) const noexcept { return _cell(0, cell); }
    // Where the update says nothing, this is some cell of it.
    Cell Update(uint32_t cell) const noexcept { return _cell(1, _placeOf(cell)); }
    bool Says(uint32_t cell, const Cell& update) const noexcept {
        return (m_from[cell] < m_updateCells) & (update.bytes > 1) &
               !((update.bytes == 2) & (*update.text == m_nothing));
    }
    Cell Merged(uint32_t cell) const noexcept {
        const uint32_t place = _placeOf(cell);
        const uint32_t isNew = Says(cell, _cell(1, place));
        return _cell(isNew, cell ^ ((cell ^ place) & (0 - isNew)));
    }

  private:
    Cell _cell(size_t row, uint32_t place) const noexcept {
        const uint32_t* const start = m_starts[row] + place;
        return {m_bases[row] + start[0], start[1] - start[0]};
    }
    uint32_t _placeOf(uint32_t cell) const noexcept {
        return m_from[cell] < m_updateCells ? m_from[cell] : 0;
    }

    const std::array<const char*, 2> m_bases;
    const std::array<const uint32_t*, 2> m_starts;
    const uint32_t* const m_from;
    const uint32_t m_updateCells;
    const char m_nothing;
};

// Whether all that a row of `old` holds goes when this row's cells come, one by one, into its place.
bool RowBlock::_replaces(const RowBlock& old, const RowMerge& merge) const noexcept {
    if (!merge.m_isSame || m_colors || old.m_colors || m_cells < old.m_cells) return false;
    const UpdateReader cells(*this, merge);
    const CellReader oldCells(old);
    const uint32_t* const starts = _starts();
    const size_t nothing = merge.m_nothing.size();
    for (uint32_t cell = 0; cell < m_cells; ++cell) {
        if (starts[cell + 1] - starts[cell] - 1 > nothing) [[likely]]
            continue;
        const auto said = cells.For(cell);
        if (!cells.Says(said) && (said.size != 0 || oldCells[cell].size != 0)) return false;
    }
    return true;
}

// There is room for both rows and a word.
void RowBlock::_appendMerged(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept {
    const auto cells = static_cast<uint32_t>(merge.m_from.size());
    uint32_t* const starts = _starts();
    uint32_t end = starts[0];
    m_cells = cells;
    const auto append = [&](uint32_t cell, const char* text, uint32_t bytes) {
        char* const to = _bytes() + end;
        if (bytes <= kWord) [[likely]] {
            std::memcpy(to, text, kWord);
        } else {
            std::memcpy(to, text, bytes);
        }
        starts[cell + 1] = end += bytes;
    };
    if (CellPair::Fits(old, update, merge)) {
        const CellPair pair(old, update, merge);
        for (uint32_t cell = 0; cell < cells; ++cell) {
            const auto merged = pair.Merged(cell);
            append(cell, merged.text, merged.bytes);
        }
        return;
    }
    const UpdateReader updates(update, merge);
    const CellReader oldCells(old);
    for (uint32_t cell = 0; cell < cells; ++cell) {
        const auto said = updates.For(cell);
        const auto merged = updates.Says(said) ? said : oldCells[cell];
        if (merged.size != 0) {
            append(cell, merged.text, merged.size + 1);
        } else {
            _bytes()[end] = '\0';
            starts[cell + 1] = ++end;
        }
    }
}

void RowBlock::_listChanges(const RowBlock& old, const RowBlock& update, const RowMerge& merge,
                            std::vector<int>& changes) {
    const auto cells = static_cast<uint32_t>(merge.m_from.size());
    size_t count = changes.size();
    changes.resize(count + cells);
    if (CellPair::Fits(old, update, merge)) {
        const CellPair pair(old, update, merge);
        for (uint32_t cell = 0; cell < cells; ++cell) {
            const auto was = pair.Old(cell), is = pair.Update(cell);
            const bool isEqual = is.bytes <= kWord
                                     ? was.bytes == is.bytes && EqualWord(was.text, is.text, is.bytes)
                                     : was.bytes == is.bytes && std::memcmp(was.text, is.text, is.bytes) == 0;
            changes[count] = static_cast<int>(cell);
            count += pair.Says(cell, is) & !isEqual;
        }
    } else {
        const UpdateReader updates(update, merge);
        const CellReader oldCells(old);
        for (uint32_t cell = 0; cell < cells; ++cell) {
            const auto said = updates.For(cell), was = oldCells[cell];
            const bool isEqual = said.size == was.size && std::memcmp(said.text, was.text, said.size) == 0;
            changes[count] = static_cast<int>(cell);
            count += updates.Says(said) && !isEqual;
        }
    }
    changes.resize(count);
}

bool RowBlock::Merge(RowPtr& row, const RowPtr& update, const RowMerge& merge, std::vector<int>* changes) {
    constexpr size_t kSmallRow = 4096;
    const RowBlock& old = row ? *row : None();
    const RowBlock& from = update ? *update : None();
    const size_t cells = merge.m_from.size();
    const size_t bytes = old.TextBytes() + from.TextBytes() + cells + kWord;
    if (bytes > kMaxText) return false;
    if (changes) {
        const size_t before = changes->size();
        _listChanges(old, from, merge, *changes);
        if (changes->size() == before && row) return true;
    }
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
