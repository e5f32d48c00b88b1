// The rows of a table: a tree whose parts are shared by all tables that have them.
#pragma once

#include <cstdint>

#include "base/row_block.h"
#include "base/table_header.h"

namespace luadui {

// A node of the tree: a leaf (level 0) or one with children of the level below.
class RowNode : public RefCounted {
  public:
    explicit RowNode(uint8_t nodeLevel) noexcept : level(nodeLevel) {}
    RowNode(const RowNode& other) noexcept : RefCounted(), level(other.level), count(other.count) {}
    RowNode& operator=(const RowNode&) = delete;
    static void Destroy(RowNode* node) noexcept;

    const uint8_t level;
    uint8_t count = 0;  // of rows or children
};

using NodePtr = RefPtr<RowNode>;

struct RowLeaf final : RowNode {
    static constexpr uint32_t kMaxRows = 16;

    RowLeaf() noexcept : RowNode(0) {}
    RowLeaf(const RowLeaf& other) noexcept;
    const RowBlock& Row(uint32_t index) const noexcept {
        return rows[index] ? *rows[index] : RowBlock::None();
    }
    void Insert(uint32_t at, RowPtr row) noexcept;
    void Remove(uint32_t at) noexcept;

    RowPtr rows[kMaxRows];
};

// Nodes of up to 16 children; leaves hold the rows. A node is written only while the whole path to it has one
// owner; otherwise the path is copied first, which leaves every other table as it was.
//
// Joining hangs the root of one tree into the other, so nodes may be filled to any degree. A child may carry
// a column map for everything below it: rows that came from a table of other columns are read through the
// maps on their path and rewritten, one leaf at a time, when a row of the leaf is written.
class RowTree {
  public:
    static constexpr uint32_t kMaxRows = INT32_MAX;

    uint32_t Size() const noexcept { return m_size; }

    // The row, and in `cell` the place of that column in it (UINT32_MAX when it has none). Never null.
    const RowBlock& Locate(uint32_t row, uint32_t& cell) const noexcept;
    // The leaf of the row and the number of its first row; null when the row is read through maps.
    const RowLeaf* DirectLeaf(uint32_t row, uint32_t& first) const noexcept;
    // The leaf of the row, for writing, and the number of its first row.
    RowLeaf* EditLeaf(uint32_t row, uint32_t& first);

    // Appends an empty row; there must be room for it. Answers its leaf, for writing.
    RowLeaf* Append();
    void Erase(uint32_t row);
    // Appends the rows of `part`, which are read through `map`; there must be room for them.
    void Join(const RowTree& part, const MapPtr& map);
    // All rows are read through `map` from now on.
    void Remap(const MapPtr& map);

  private:
    void _graft(const RowTree& part, const MapPtr& map, bool front);

    NodePtr m_root;  // null when there are no rows
    MapPtr m_map;    // applies to all rows
    uint32_t m_size = 0;
};

}  // namespace luadui
