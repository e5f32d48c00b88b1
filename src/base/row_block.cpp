#include "base/row_block.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

#include "base/short_bytes.h"
#include "base/table_header.h"

namespace luadui {
namespace {

constexpr size_t kShortText = 64;
constexpr size_t kMaxBlock = std::numeric_limits<uint32_t>::max() - 64;

// Allocators hand out multiples of 16 and keep a word of each for themselves: what would be lost is room
// here.
size_t RoundUp(size_t bytes) { return ((bytes + sizeof(void*) + 15) & ~size_t{15}) - sizeof(void*); }

auto FindCell(auto& cells, uint32_t cell) {
    return std::lower_bound(cells.begin(), cells.end(), cell,
                            [](const auto& entry, uint32_t number) { return entry.first < number; });
}

}  // namespace

const std::string* RowColors::Cell(uint32_t cell) const noexcept {
    const auto found = FindCell(cells, cell);
    return found != cells.end() && found->first == cell ? &found->second : nullptr;
}

void RowColors::SetCell(uint32_t cell, std::string_view color) {
    const auto found = FindCell(cells, cell);
    const bool exists = found != cells.end() && found->first == cell;
    if (color.empty()) {
        if (exists) cells.erase(found);
    } else if (exists) {
        found->second = color;
    } else {
        cells.emplace(found, cell, std::string(color));
    }
}

const RowBlock& RowBlock::None() noexcept {
    alignas(16) static std::byte storage[sizeof(RowBlock) + sizeof(uint32_t)];
    static const RowBlock* const none = new (storage) RowBlock(0, sizeof(storage));
    return *none;
}

bool RowBlock::SetText(RowPtr& row, uint32_t cell, std::string_view text, const RowRoom& room) {
    if (row && row->IsUnique() && !row->_holds(text.data()) && row->_setInPlace(cell, text)) return true;
    const RowBlock& old = row ? *row : None();
    if (text.size() > kMaxText || old.TextBytes() + text.size() > kMaxText) return false;
    row = _rebuilt(old, cell, text, room);
    return true;
}

RowColors& RowBlock::EditColors(RowPtr& row) {
    if (!row || !row->IsUnique()) {
        const RowBlock& old = row ? *row : None();
        RowPtr copy = _create(old.m_cellRoom, old.TextBytes());
        copy->_appendFrom(old, 0, old.m_cells);
        if (old.m_colors) copy->m_colors = std::make_unique<RowColors>(*old.m_colors);
        row = std::move(copy);
    }
    if (!row->m_colors) row->m_colors = std::make_unique<RowColors>();
    return *row->m_colors;
}

void RowBlock::Trim(RowPtr& row) {
    if (!row || !row->IsUnique() || (row->m_capacity - row->_end()) * size_t{4} < row->m_capacity) return;
    RowPtr copy = _create(row->m_cellRoom, row->TextBytes());
    copy->m_colors = std::move(row->m_colors);
    copy->_appendFrom(*row, 0, row->m_cells);
    row = std::move(copy);
}

RowPtr RowBlock::Mapped(const RowBlock& row, const ColumnMap& map) {
    size_t cells = 0;
    size_t bytes = 0;
    for (size_t i = 0; i < map.Size(); ++i) {
        const uint32_t from = map.From(i);
        if (from >= row.m_cells) continue;
        bytes += row.Text(from).size();
        cells = i + 1;
    }
    RowPtr mapped = _create(cells, bytes + cells);
    for (size_t i = 0; i < cells; ++i) {
        const uint32_t from = map.From(i);
        mapped->_append(from < row.m_cells ? row.Text(from) : TextView());
    }
    if (!row.m_colors) return mapped;
    auto colors = std::make_unique<RowColors>();
    colors->row = row.m_colors->row;
    for (size_t i = 0; i < map.Size(); ++i) {
        const std::string* color = row.m_colors->Cell(map.From(i));
        if (color) colors->cells.emplace_back(static_cast<uint32_t>(i), *color);
    }
    mapped->m_colors = std::move(colors);
    return mapped;
}

void RowBlock::Destroy(RowBlock* row) noexcept {
    row->~RowBlock();
    ::operator delete(row);
}

RowPtr RowBlock::_create(size_t cellRoom, size_t textBytes) {
    const size_t fixed = sizeof(RowBlock) + (cellRoom + 1) * sizeof(uint32_t);
    const size_t bytes = RoundUp(fixed + textBytes);
    return RowPtr::Adopt(new (::operator new(bytes + kWord))
                             RowBlock(static_cast<uint32_t>(cellRoom), static_cast<uint32_t>(bytes)));
}

RowPtr RowBlock::_rebuilt(const RowBlock& old, uint32_t cell, std::string_view text, const RowRoom& room) {
    const uint32_t cells = std::max(old.m_cells, cell + 1);
    const size_t cellRoom = std::max<size_t>(cells, std::min<size_t>(room.cells, std::max(64u, 2 * cells)));
    const size_t replaced = cell < old.m_cells ? old.Text(cell).size() + 1 : 0;
    const size_t added = cells - old.m_cells;
    const size_t bytes = old.TextBytes() - replaced + text.size() + (replaced ? 1 : added);
    size_t wanted = bytes;
    if (old.m_cells == 0) {
        wanted = std::max(bytes, room.bytes);
    } else if (bytes > old.TextBytes()) {
        wanted = bytes + bytes / 4;
    }
    const size_t fixed = sizeof(RowBlock) + (cellRoom + 1) * sizeof(uint32_t);
    RowPtr block = _create(cellRoom, std::max(bytes, std::min(wanted, kMaxBlock - fixed)));
    block->_appendFrom(old, 0, std::min(cell, old.m_cells));
    block->_appendEmptyUpTo(cell);
    block->_append(text);
    if (cell + 1 < old.m_cells) block->_appendFrom(old, cell + 1, old.m_cells);
    if (old.m_colors) block->m_colors = std::make_unique<RowColors>(*old.m_colors);
    return block;
}

bool RowBlock::_holds(const char* text) const noexcept {
    const char* begin = reinterpret_cast<const char*>(this);
    return !std::less<>()(text, begin) && std::less<>()(text, begin + m_capacity);
}

bool RowBlock::_setInPlace(uint32_t cell, std::string_view text) noexcept {
    const size_t room = m_capacity - _end();
    if (cell >= m_cells) {
        if (cell >= m_cellRoom || text.size() + (cell - m_cells + 1) > room) return false;
        _appendEmptyUpTo(cell);
        _append(text);
        return true;
    }
    uint32_t* start = _starts() + cell;
    const size_t oldSize = start[1] - start[0] - 1;
    if (text.size() > oldSize && text.size() - oldSize > room) return false;
    if (text.size() != oldSize) {
        // Wraps when the text gets shorter; adding it to an offset wraps back.
        const auto shift = static_cast<uint32_t>(text.size() - oldSize);
        std::memmove(_bytes() + (start[1] + shift), _bytes() + start[1], _end() - start[1]);
        for (uint32_t* moved = start + 1; moved <= _starts() + m_cells; ++moved) *moved += shift;
    }
    char* to = _bytes() + start[0];
    if (!text.empty()) std::memcpy(to, text.data(), text.size());
    to[text.size()] = '\0';
    return true;
}

void RowBlock::_append(std::string_view text) noexcept {
    char* to = _bytes() + _end();
    if (text.size() <= kShortText) {
        CopyShort(to, text.data(), text.size());
    } else {
        std::memcpy(to, text.data(), text.size());
    }
    to[text.size()] = '\0';
    const auto end = static_cast<uint32_t>(_end() + text.size() + 1);
    _starts()[++m_cells] = end;
}

void RowBlock::_appendEmptyUpTo(uint32_t cells) noexcept {
    while (m_cells < cells) _append({});
}

void RowBlock::_appendFrom(const RowBlock& from, uint32_t first, uint32_t last) noexcept {
    if (first == last) return;
    const uint32_t* starts = from._starts();
    const uint32_t shift = _end() - starts[first];
    std::memcpy(_bytes() + _end(), reinterpret_cast<const char*>(&from) + starts[first],
                starts[last] - starts[first]);
    uint32_t* to = _starts() + m_cells;
    for (uint32_t i = first; i < last; ++i) *++to = starts[i + 1] + shift;
    m_cells += last - first;
}

}  // namespace luadui
