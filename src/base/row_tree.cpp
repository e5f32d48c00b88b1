#include "base/row_tree.h"

#include <algorithm>
#include <new>

namespace luadui {
namespace {

constexpr uint32_t kFanout = 16;  // children of an inner node
constexpr uint32_t kFew =
    4;  // a node of so few rows or children is merged into a neighbour with room for them

// What hangs below one entry of a node.
struct Part {
    NodePtr node;
    MapPtr map;
    uint32_t size = 0;
};

// Moves everything from `at` one to the right.
template <class T>
void OpenGap(T* items, uint32_t count, uint32_t at) {
    std::move_backward(items + at, items + count, items + count + 1);
}

// Moves everything behind `at` one to the left.
template <class T>
void CloseGap(T* items, uint32_t count, uint32_t at) {
    std::move(items + at + 1, items + count, items + at);
    items[count - 1] = T();
}

// Copying or freeing a node counts all its children, which lie anywhere in memory: ask for all of them before
// the first.
template <class T>
void PrefetchAll(const RefPtr<T>* items, uint32_t count) noexcept {
    for (uint32_t i = 0; i < count; ++i) __builtin_prefetch(items[i].get(), 1);
}

template <class T>
void CopyCounted(const RefPtr<T>* from, uint32_t count, RefPtr<T>* to) noexcept {
    PrefetchAll(from, count);
    std::copy(from, from + count, to);
}

}  // namespace

RowLeaf::RowLeaf(const RowLeaf& other) noexcept : RowNode(other) { CopyCounted(other.rows, count, rows); }

void RowLeaf::Insert(uint32_t at, RowPtr row) noexcept {
    OpenGap(rows, count++, at);
    rows[at] = std::move(row);
}

void RowLeaf::Remove(uint32_t at) noexcept { CloseGap(rows, count--, at); }

namespace {

struct Inner final : RowNode {
    explicit Inner(uint8_t nodeLevel) noexcept : RowNode(nodeLevel) {
        std::fill_n(ends, kFanout, UINT32_MAX);
    }
    Inner(const Inner& other) noexcept : RowNode(other) {
        std::copy_n(other.ends, kFanout, ends);
        std::copy_n(other.maps, count, maps);
        CopyCounted(other.children, count, children);
    }

    uint32_t Start(uint32_t child) const noexcept { return child ? ends[child - 1] : 0; }
    uint32_t SizeOf(uint32_t child) const noexcept { return ends[child] - Start(child); }
    uint32_t Size() const noexcept { return ends[count - 1]; }
    // The child with that row. Compares with all ends at once: faster than a search that has to guess.
    uint32_t Find(uint32_t row) const noexcept {
        uint32_t child = 0;
        for (uint32_t i = 0; i < kFanout; ++i) child += ends[i] <= row;
        return child;
    }
    // The child and all behind it move by `rows` (which may be negative).
    void Shift(uint32_t child, uint32_t rows) noexcept {
        for (uint32_t i = child; i < count; ++i) ends[i] += rows;
    }
    void Insert(uint32_t at, Part part) noexcept {
        OpenGap(ends, count, at);
        OpenGap(children, count, at);
        OpenGap(maps, count, at);
        ++count;
        ends[at] = Start(at);
        children[at] = std::move(part.node);
        maps[at] = std::move(part.map);
        Shift(at, part.size);
    }
    // `end` is the entry of `ends` that goes: that of the child, or that of its left neighbour if the child's
    // rows are now the neighbour's.
    void Remove(uint32_t child, uint32_t end) noexcept {
        CloseGap(children, count, child);
        CloseGap(maps, count, child);
        CloseGap(ends, count, end);
        ends[--count] = UINT32_MAX;
    }

    uint32_t
        ends[kFanout];  // number of rows up to and with each child; UINT32_MAX for those that are not there
    NodePtr children[kFanout];
    MapPtr maps[kFanout];
};

const RowLeaf& AsLeaf(const RowNode& node) noexcept { return static_cast<const RowLeaf&>(node); }
const Inner& AsInner(const RowNode& node) noexcept { return static_cast<const Inner&>(node); }
RowLeaf& AsLeaf(RowNode& node) noexcept { return static_cast<RowLeaf&>(node); }
Inner& AsInner(RowNode& node) noexcept { return static_cast<Inner&>(node); }

RowPtr ThroughMap(const RowPtr& row, const MapPtr& map) {
    return row && map ? RowBlock::Mapped(*row, *map) : row;
}

// A copy of the node in which `map` is applied one step further down. The map may be null.
NodePtr Copy(const RowNode& node, const MapPtr& map) {
    if (node.level == 0) {
        NodePtr copy = NodePtr::Adopt(new RowLeaf(AsLeaf(node)));
        if (!map) return copy;
        for (uint32_t i = 0; i < copy->count; ++i)
            AsLeaf(*copy).rows[i] = ThroughMap(AsLeaf(node).rows[i], map);
        return copy;
    }
    NodePtr copy = NodePtr::Adopt(new Inner(AsInner(node)));
    if (!map) return copy;
    for (uint32_t i = 0; i < copy->count; ++i)
        AsInner(*copy).maps[i] = ColumnMap::Chain(map, AsInner(node).maps[i]);
    return copy;
}

// Makes the node one that may be written, given that its parent may be.
RowNode& Own(NodePtr& node, MapPtr& map) {
    if (map || !node->IsUnique()) {
        node = Copy(*node, map);
        map = nullptr;
    }
    return *node;
}

bool CanAbsorb(const RowNode& into, const RowNode& from) {
    return from.count <= kFew && into.count + from.count <= (into.level == 0 ? RowLeaf::kMaxRows : kFanout);
}

// Moves the children of `part` into `node`, which is of the same level and may be written.
void Absorb(RowNode& node, const Part& part, bool front) {
    const uint32_t added = part.node->count;
    const uint32_t at = front ? 0 : node.count;
    if (node.level == 0) {
        RowPtr rows[kFew];
        for (uint32_t i = 0; i < added; ++i) rows[i] = ThroughMap(AsLeaf(*part.node).rows[i], part.map);
        for (uint32_t i = 0; i < added; ++i) AsLeaf(node).Insert(at + i, std::move(rows[i]));
        return;
    }
    const Inner& from = AsInner(*part.node);
    MapPtr maps[kFew];
    for (uint32_t i = 0; i < added; ++i) maps[i] = ColumnMap::Chain(part.map, from.maps[i]);
    for (uint32_t i = 0; i < added; ++i) {
        AsInner(node).Insert(at + i, {from.children[i], std::move(maps[i]), from.SizeOf(i)});
    }
}

// Hangs `part` below `node` at one edge, at the level where it belongs. What finds no room is the answer: a
// sibling for `node` on that side. When memory runs out, nothing was added.
Part Graft(NodePtr& node, MapPtr& map, Part part, bool front) {
    if (node->level == part.node->level) {
        // Inner nodes are hung in whole, which costs one count.
        if (node->level != 0 || !CanAbsorb(*node, *part.node)) return part;
        Absorb(Own(node, map), part, front);
        return {};
    }
    Inner& inner = AsInner(Own(node, map));
    const uint32_t edge = front ? 0 : inner.count - 1u;
    const uint32_t size = part.size;
    Part rest = Graft(inner.children[edge], inner.maps[edge], std::move(part), front);
    if (!rest.node) {
        inner.Shift(edge, size);
        return {};
    }
    if (inner.count < kFanout) {
        inner.Insert(front ? 0 : inner.count, std::move(rest));
        return {};
    }
    NodePtr sibling = NodePtr::Adopt(new Inner(inner.level));
    AsInner(*sibling).Insert(0, std::move(rest));
    return {std::move(sibling), nullptr, size};
}

// Gives the children of a nearly empty child to a neighbour. Only tidies: without memory the child stays as
// it is.
void MergeChild(Inner& inner, uint32_t child) noexcept try {
    const uint32_t neighbour = child ? child - 1 : child + 1;
    if (neighbour >= inner.count || !CanAbsorb(*inner.children[neighbour], *inner.children[child])) return;
    const Part part{inner.children[child], inner.maps[child], inner.SizeOf(child)};
    Absorb(Own(inner.children[neighbour], inner.maps[neighbour]), part, neighbour > child);
    inner.Remove(child, std::min(child, neighbour));
} catch (const std::bad_alloc&) {
}

// Takes out a row. The path to it may be written already.
void EraseBelow(RowNode& node, uint32_t row) noexcept {
    if (node.level == 0) return AsLeaf(node).Remove(row);
    Inner& inner = AsInner(node);
    const uint32_t child = inner.Find(row);
    EraseBelow(*inner.children[child], row - inner.Start(child));
    inner.Shift(child, static_cast<uint32_t>(-1));
    if (inner.children[child]->count == 0) {
        inner.Remove(child, child);
    } else if (inner.children[child]->count <= kFew) {
        MergeChild(inner, child);
    }
}

}  // namespace

void RowNode::Destroy(RowNode* node) noexcept {
    if (node->level == 0) {
        PrefetchAll(AsLeaf(*node).rows, node->count);
        delete &AsLeaf(*node);
    } else {
        PrefetchAll(AsInner(*node).children, node->count);
        delete &AsInner(*node);
    }
}

const RowBlock& RowTree::Locate(uint32_t row, uint32_t& cell) const noexcept {
    const RowNode* node = m_root.get();
    if (m_map) cell = m_map->From(cell);
    while (node->level != 0) {
        const Inner& inner = AsInner(*node);
        const uint32_t child = inner.Find(row);
        if (inner.maps[child]) cell = inner.maps[child]->From(cell);
        row -= inner.Start(child);
        node = inner.children[child].get();
    }
    return AsLeaf(*node).Row(row);
}

const RowLeaf* RowTree::DirectLeaf(uint32_t row, uint32_t& first) const noexcept {
    const RowNode* node = m_root.get();
    if (m_map) return nullptr;
    first = 0;
    while (node->level != 0) {
        const Inner& inner = AsInner(*node);
        const uint32_t child = inner.Find(row - first);
        if (inner.maps[child]) return nullptr;
        first += inner.Start(child);
        node = inner.children[child].get();
    }
    return &AsLeaf(*node);
}

RowLeaf* RowTree::EditLeaf(uint32_t row, uint32_t& first) {
    NodePtr* node = &m_root;
    MapPtr* map = &m_map;
    first = 0;
    while (Own(*node, *map).level != 0) {
        Inner& inner = AsInner(**node);
        const uint32_t child = inner.Find(row - first);
        first += inner.Start(child);
        node = &inner.children[child];
        map = &inner.maps[child];
    }
    return &AsLeaf(**node);
}

RowLeaf* RowTree::Append() {
    uint32_t first = 0;
    if (m_size != 0) {
        RowLeaf* leaf = EditLeaf(m_size - 1, first);
        if (leaf->count < RowLeaf::kMaxRows) {
            ++leaf->count;
            for (RowNode* node = m_root.get(); node->level != 0;) {
                Inner& inner = AsInner(*node);
                ++inner.ends[inner.count - 1];
                node = inner.children[inner.count - 1].get();
            }
            ++m_size;
            return leaf;
        }
    }
    RowTree row;
    row.m_root = NodePtr::Adopt(new RowLeaf());
    row.m_root->count = 1;
    row.m_size = 1;
    Join(row, nullptr);
    row = RowTree();  // the leaf has one owner again
    return EditLeaf(m_size - 1, first);
}

void RowTree::Erase(uint32_t row) {
    uint32_t first = 0;
    EditLeaf(row, first);
    EraseBelow(*m_root, row);
    if (--m_size == 0) *this = RowTree();
    while (m_root && m_root->level != 0 && m_root->count == 1) {
        const NodePtr root = m_root;
        m_map = ColumnMap::Chain(m_map, AsInner(*root).maps[0]);
        m_root = AsInner(*root).children[0];
    }
}

void RowTree::Join(const RowTree& part, const MapPtr& map) {
    if (part.m_size == 0) return;
    if (m_size != 0 && part.m_root->level <= m_root->level) return _graft(part, map, false);
    RowTree joined = part;
    joined.Remap(map);
    if (m_size != 0) joined._graft(*this, nullptr, true);
    *this = std::move(joined);
}

// `part` is not higher than this tree.
void RowTree::_graft(const RowTree& part, const MapPtr& map, bool front) {
    Part rest = Graft(m_root, m_map, {part.m_root, ColumnMap::Chain(map, part.m_map), part.m_size}, front);
    if (rest.node) {
        NodePtr root = NodePtr::Adopt(new Inner(static_cast<uint8_t>(m_root->level + 1)));
        AsInner(*root).Insert(0, {std::move(m_root), std::move(m_map), m_size});
        AsInner(*root).Insert(front ? 0 : 1, std::move(rest));
        m_root = std::move(root);
    }
    m_size += part.m_size;
}

void RowTree::Remap(const MapPtr& map) {
    if (m_size != 0) m_map = ColumnMap::Chain(map, m_map);
}

}  // namespace luadui
