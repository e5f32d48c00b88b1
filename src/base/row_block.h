// One table row: its cells packed into one block.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ref_ptr.h"
#include "base/text_view.h"
#include "platform/export.h"

namespace luadui {

class ColumnMap;
class RowBlock;
class RowMerge;
using RowPtr = RefPtr<RowBlock>;  // null is a row without cells and colours

// The colours of a row and its cells; only rows that have any own one.
struct RowColors {
    std::string row;
    std::vector<std::pair<uint32_t, std::string>> cells;  // by cell number, ascending; no empty text

    // Null when the cell has none.
    const std::string* Cell(uint32_t cell) const noexcept;
    void SetCell(uint32_t cell, std::string_view color);
};

// What the block is to have room for beyond the present need, so that a row that is filled cell by cell is
// not moved each time.
struct RowRoom {
    uint32_t cells = 0;
    size_t bytes = 0;
};

// Layout: this header, the start of every cell (and of the end) as an offset from the block, then the texts,
// each with a zero byte behind it, then kWord bytes, so that a text can be read a word at a time. Cells past Cells() are
// empty. A block is written only while it has one owner.
class RowBlock : public RefCounted {
  public:
    uint32_t Cells() const noexcept { return m_cells; }
    // `cell` must be less than Cells().
    TextView Text(uint32_t cell) const noexcept {
        const uint32_t* start = _starts() + cell;
        return TextView(reinterpret_cast<const char*>(this) + start[0], start[1] - start[0] - 1);
    }
    // Bytes of all texts with their zero bytes.
    size_t TextBytes() const noexcept { return _end() - _starts()[0]; }
    const RowColors* Colors() const noexcept { return m_colors.get(); }

    // The row without cells, for readers that want no null.
    TESSEL_API static const RowBlock& None() noexcept;
    // Stores the text, in place if `row` has no other owner and has the room. False, and nothing changed,
    // when the row would have more text than its offsets reach.
    static bool SetText(RowPtr& row, uint32_t cell, std::string_view text, const RowRoom& room);
    // The colours for writing.
    static RowColors& EditColors(RowPtr& row);
    // Gives back room of a row that is complete, if it is much.
    static void Trim(RowPtr& row);
    // The same row in other columns: cell i holds what was in cell map[i].
    static RowPtr Mapped(const RowBlock& row, const ColumnMap& map);
    // Updates `row`, see CDataTable::MergeRow; either may be null. False, and nothing changed, when the row would have
    // more text than its offsets reach.
    static bool Merge(RowPtr& row, const RowPtr& update, const RowMerge& merge, std::vector<int>* changes);

    static void Destroy(RowBlock* row) noexcept;

  private:
    static constexpr uint32_t kWord = 16;
    // Half of what the offsets reach: the other half is enough for the offsets themselves and the zero bytes.
    static constexpr size_t kMaxText = size_t{1} << 31;

    explicit RowBlock(uint32_t cellRoom, uint32_t capacity) noexcept
        : m_cellRoom(cellRoom), m_capacity(capacity) {
        _starts()[0] = static_cast<uint32_t>(sizeof(RowBlock) + (size_t{cellRoom} + 1) * sizeof(uint32_t));
    }
    static RowPtr _create(size_t cellRoom, size_t textBytes);
    static RowPtr _rebuilt(const RowBlock& old, uint32_t cell, std::string_view text, const RowRoom& room);

    const uint32_t* _starts() const noexcept { return reinterpret_cast<const uint32_t*>(this + 1); }
    uint32_t* _starts() noexcept { return reinterpret_cast<uint32_t*>(this + 1); }
    char* _bytes() noexcept { return reinterpret_cast<char*>(this); }
    uint32_t _end() const noexcept { return _starts()[m_cells]; }
    bool _holds(const char* text) const noexcept;
    // Whether that was possible in place.
    bool _setInPlace(uint32_t cell, std::string_view text) noexcept;
    // These append cells, for which there must be room.
    void _append(std::string_view text) noexcept;
    void _appendEmptyUpTo(uint32_t cells) noexcept;
    void _appendFrom(const RowBlock& from, uint32_t first, uint32_t last) noexcept;
    // For merging, see base/row_merge.h.
    class CellReader;
    class CellPair;
    class UpdateReader;
    bool _replaces(const RowBlock& old, const RowMerge& merge) const noexcept;
    void _appendMerged(const RowBlock& old, const RowBlock& update, const RowMerge& merge) noexcept;
    static void _listChanges(const RowBlock& old, const RowBlock& update, const RowMerge& merge,
                             std::vector<int>& changes);
    static void _replaceTexts(RowPtr& row, const RowBlock& texts);

    uint32_t m_cells = 0;
    uint32_t m_cellRoom;
    uint32_t m_capacity;  // bytes of the block, without the word behind the texts
    std::unique_ptr<RowColors> m_colors;
};

}  // namespace luadui
