#include "base/record_body.h"

#include <atomic>
#include <bit>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>

#include "base/block_pool.h"
#include "base/key_hash.h"

namespace luadui {
namespace {

void* Allocate(size_t size) {
    void* memory = std::malloc(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

KeySeed DrawSeed() noexcept {
    constexpr uint64_t kOdd = 0x9e3779b97f4a7c15;
    const auto now = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    KeySeed seed{now, MixWords(now, kOdd)};
    try {
        std::random_device random;
        for (uint64_t* word : {&seed.left, &seed.right}) *word ^= uint64_t{random()} << 32 | random();
    } catch (...) {  // no source of randomness: the clock has to do
    }
    seed.left |= 1;  // 0 means not drawn yet
    return seed;
}

}  // namespace

constinit std::atomic<uint64_t> KeySecret::s_left{0};
constinit std::atomic<uint64_t> KeySecret::s_right{0};

KeySeed KeySecret::_draw() noexcept {
    static const KeySeed drawn = [] {
        const KeySeed seed = DrawSeed();
        s_right.store(seed.right, std::memory_order_relaxed);
        s_left.store(seed.left, std::memory_order_release);  // last: it says that both are there
        return seed;
    }();
    return drawn;
}

HashedKey::HashedKey(std::string_view text) noexcept : view(text), hash(HashKey(text)) {}

LongText* LongText::Create(std::string_view text) {
    auto* body = new (Allocate(sizeof(LongText) + text.size() + 1)) LongText(text.size());
    char* bytes = const_cast<char*>(body->_bytes());
    std::memcpy(bytes, text.data(), text.size());
    bytes[text.size()] = '\0';
    return body;
}

void LongText::Destroy(ReleaseQueue&) noexcept {
    this->~LongText();
    std::free(this);
}

// Positions of entries by hash; 0 is a free slot, else the position plus 1. Slots of removed entries stay
// until the index is made anew.
struct RecordBody::Index {
    uint32_t mask;
    uint32_t used;
    uint32_t* Slots() noexcept { return reinterpret_cast<uint32_t*>(this + 1); }
    static size_t Bytes(uint32_t slots) noexcept { return sizeof(Index) + sizeof(uint32_t) * slots; }
};

RecordBody* RecordBody::_create(size_t capacity, uint32_t flags) {
    KeySecret::Get();  // before the first key is looked for
    void* const block = capacity == block_pool::kBlockSize ? block_pool::Take() : Allocate(capacity);
    return new (block) RecordBody(static_cast<uint32_t>(capacity), flags);
}

void RecordBody::Destroy(ReleaseQueue& queue) noexcept {
    const RecordEntry* entries = Entries();
    for (uint32_t i = HasFlag(kHoldsBodies) ? m_first : m_count; i < m_count; ++i) {
        if (entries[i].IsLive() && entries[i].HoldsBody()) queue.Drop(entries[i].body);
    }
    std::free(m_index);
    const bool isPooled = m_capacity == block_pool::kBlockSize;
    this->~RecordBody();
    isPooled ? block_pool::Give(this) : std::free(this);
}

void RecordBody::VisitChildren(void (*visit)(void*, SharedBody*), void* context) const {
    const RecordEntry* entries = Entries();
    for (uint32_t i = m_first; i < m_count; ++i) {
        if (entries[i].IsLive() && entries[i].IsObject()) visit(context, entries[i].body);
    }
}

// Finding.

bool RecordBody::_isAt(const RecordEntry& entry, std::string_view key, uint32_t hash) const noexcept {
    return entry.hash == hash && entry.key.size == key.size() &&
           std::memcmp(_at(entry.key), key.data(), key.size()) == 0;
}

const RecordEntry* RecordBody::_findAny(std::string_view key, uint32_t hash) const noexcept {
    const auto probe = [&](const auto* slots, uint32_t mask) -> const RecordEntry* {
        for (uint32_t slot = hash & mask; slots[slot] != 0; slot = (slot + 1) & mask) {
            const RecordEntry& entry = Entries()[slots[slot] - 1];
            if (_isAt(entry, key, hash)) return &entry;
        }
        return nullptr;
    };
    return m_index ? probe(m_index->Slots(), m_index->mask) : probe(m_slots, kSlots - 1);
}

const RecordEntry* RecordBody::_findAnew(const HashedKey& key, uint8_t& place) const noexcept {
    const RecordEntry* const entry = FindEntry(key);
    if (entry)
        place = static_cast<uint8_t>(_positionOf(*entry));  // cut, it finds another entry: no worse than none
    return entry;
}

ValueView RecordBody::At(const RecordBody* body, size_t index) noexcept {
    return body && index < body->m_count ? ValueView(body, body->Entries() + index) : ValueView();
}

uint32_t RecordBody::NextLive(uint32_t index) const noexcept {
    while (index < m_count && !Entries()[index].IsLive()) ++index;
    return index;
}

void RecordBody::CopyTo(const RecordEntry& entry, SharedHandle& out) {
    SharedBody* body = entry.body;
    if (entry.HasFlag(RecordEntry::kCell)) body = static_cast<SharedCell*>(body)->Content();
    out._detachTo(SharedBody::Share(body));
}

bool RecordBody::GetAttached(const ValueView& value, DataKind kind, SharedHandle& out) noexcept {
    if (value.Kind() != kind || !value.IsShared()) return false;
    out._attach(static_cast<SharedCell*>(value.m_entry->body));
    return true;
}

// The index.

void RecordBody::_indexEntry(uint32_t position) noexcept {
    uint32_t* slots = m_index->Slots();
    uint32_t slot = Entries()[position].hash & m_index->mask;
    while (slots[slot] != 0) slot = (slot + 1) & m_index->mask;
    slots[slot] = position + 1;
    ++m_index->used;
}

void RecordBody::_makeIndex(uint32_t entries) {
    const uint32_t slots = std::bit_ceil(entries) * 4;
    auto* index = new (Allocate(Index::Bytes(slots))) Index{slots - 1, 0};
    std::memset(index->Slots(), 0, sizeof(uint32_t) * slots);
    std::free(m_index);
    m_index = index;
    for (uint32_t i = m_first; i < m_count; ++i) {
        if (Entries()[i].IsLive()) _indexEntry(i);
    }
}

void RecordBody::_growIndex() {
    if (!m_index || (m_index->used + 1) * 2 > m_index->mask) _makeIndex(m_live + 1);
}

// Storing.

void RecordBody::_overwriteText(BlockText& text, std::string_view bytes) noexcept {
    char* place = _blockEnd() - text.end;
    CopyShort(place, bytes.data(), bytes.size());
    place[bytes.size()] = '\0';
    m_garbage += text.size - static_cast<uint32_t>(bytes.size());
    text.size = static_cast<uint32_t>(bytes.size());
    if (text.size == 0) m_garbage += 1;  // nothing refers to the zero byte of an empty text
}

void RecordBody::_removeEntry(RecordEntry& entry) noexcept {
    SharedBody* old = entry.HoldsBody() ? entry.body : nullptr;
    if (entry.IsShortText()) _forgetText(entry.text);
    m_garbage += entry.key.size;
    entry.key.size = RecordEntry::kNoKey;
    entry.kind = RecordEntry::kRemoved;
    entry.flags = 0;
    --m_live;
    m_first = NextLive(m_first);
    SharedBody::Release(old);
}

// Moving and copying.

size_t RecordBody::_liveBytes() const noexcept {
    return sizeof(RecordBody) + m_live * sizeof(RecordEntry) + m_back - m_garbage;
}

// Takes over everything that `from` holds; both without gaps or both the same.
void RecordBody::_copyDense(const RecordBody& from) noexcept {
    m_count = from.m_count;
    m_live = from.m_live;
    m_first = from.m_first;
    m_back = from.m_back;
    m_garbage = from.m_garbage;
    m_type = from.m_type;
    std::memcpy(m_slots, from.m_slots, sizeof m_slots);
    std::memcpy(_entries(), from.Entries(), from.m_count * sizeof(RecordEntry));
    std::memcpy(_blockEnd() - m_back, from._blockEnd() - m_back, m_back);
}

void RecordBody::_copyCompact(const RecordBody& from) noexcept {
    m_type = _pushBytes(from._text(from.m_type), 1);
    for (uint32_t i = from.m_first; i < from.m_count; ++i) {
        const RecordEntry& old = from.Entries()[i];
        if (!old.IsLive()) continue;
        RecordEntry& entry = _pushKeyed(from.Key(old), old.hash);
        entry.kind = old.kind;
        entry.flags = old.flags;
        if (old.IsShortText()) {
            entry.text = _pushBytes(from._text(old.text), 1);
        } else {
            entry.integer = old.integer;
        }
    }
}

// A block of `capacity` bytes (enough for what is live) with everything that this one held; this one is left
// with nothing to release but stays readable until it is freed.
RecordBody* RecordBody::_moveTo(size_t capacity) {
    RecordBody* moved = _create(capacity, _flags());
    if (!_hasGaps()) {
        moved->_copyDense(*this);
        moved->m_index = std::exchange(m_index, nullptr);
    } else {
        moved->_copyCompact(*this);
        if (moved->m_count > kSlotted && m_index) {
            try {
                moved->_makeIndex(moved->m_live);
            } catch (...) {
                moved->m_count = 0;  // the entries still belong to this block
                SharedBody::Release(moved);
                throw;
            }
        }
    }
    m_count = 0;
    return moved;
}

RecordBody* RecordBody::_cloneBlock() const {
    RecordBody* clone = _create(m_capacity, _flags());
    if (m_index) {
        const size_t bytes = Index::Bytes(m_index->mask + 1);
        clone->m_index = static_cast<Index*>(std::malloc(bytes));
        if (!clone->m_index) {
            SharedBody::Release(clone);
            throw std::bad_alloc();
        }
        std::memcpy(static_cast<void*>(clone->m_index), m_index, bytes);
    }
    clone->_copyDense(*this);
    return clone;
}

SharedBody* RecordBody::Clone() const {
    RecordBody* clone = _cloneBlock();
    for (uint32_t i = HasFlag(kHoldsBodies) ? m_first : m_count; i < m_count; ++i) {
        const RecordEntry& entry = Entries()[i];
        if (entry.IsLive() && entry.HoldsBody() && entry.body) entry.body->AddRef();
    }
    return clone;
}

// Entries opened in place.

// A body with open entries, and the open entry of another one under which it was found. They form a tree,
// since such a body has one owner.
struct RecordBody::OpenNode {
    RecordBody* body;
    size_t parent;
    uint32_t entry;
};

// Turns the open entries that nobody is attached to any more back into plain ones.
void RecordBody::_settle() noexcept {
    bool open = false;
    for (uint32_t i = m_first; i < m_count; ++i) {
        RecordEntry& entry = _entries()[i];
        if (!entry.IsLive() || !entry.IsOpen()) continue;
        auto* cell = static_cast<SharedCell*>(entry.body);
        SharedBody* content = cell->Content();
        if (!cell->IsUnique() || (content && content->HasFlag(kHasOpenEntries))) {
            open = true;
            continue;
        }
        cell->SetContent(nullptr);
        entry.body = content;
        entry.flags &= static_cast<uint8_t>(~RecordEntry::kCell);
        SharedBody::Release(cell);
    }
    if (!open) ClearFlag(kHasOpenEntries);
}

// Works on lists of nodes and never recurses: entries can be opened one inside the other without limit.
SharedBody* RecordBody::Snapshot() {
    std::vector<OpenNode> nodes{{this, 0, 0}};
    for (size_t node = 0; node < nodes.size(); ++node) {
        const RecordBody* body = nodes[node].body;
        for (uint32_t i = body->m_first; i < body->m_count; ++i) {
            const RecordEntry& entry = body->Entries()[i];
            if (!entry.IsLive() || !entry.IsOpen()) continue;
            SharedBody* content = static_cast<SharedCell*>(entry.body)->Content();
            if (content && content->HasFlag(kHasOpenEntries)) {
                nodes.push_back({static_cast<RecordBody*>(content), node, i});
            }
        }
    }
    for (size_t node = nodes.size(); node-- > 0;) nodes[node].body->_settle();
    if (HasFlag(kHasOpenEntries)) return _cloneOpen(nodes);
    AddRef();
    return this;
}

// A clone of the first node in which every open entry is a plain one with the content of this moment.
RecordBody* RecordBody::_cloneOpen(const std::vector<OpenNode>& nodes) {
    std::vector<RecordBody*> clones(nodes.size(), nullptr);
    try {
        for (size_t node = 0; node < nodes.size(); ++node) {
            const RecordBody* body = nodes[node].body;
            if (!body->HasFlag(kHasOpenEntries)) continue;  // settled: its parent's clone shares it
            RecordBody* clone = clones[node] = body->_cloneBlock();
            clone->ClearFlag(kHasOpenEntries);
            for (uint32_t i = clone->m_first; i < clone->m_count; ++i) {
                RecordEntry& entry = clone->_entries()[i];
                if (!entry.IsLive() || !entry.HoldsBody() || !entry.body) continue;
                if (entry.IsOpen()) {
                    entry.body = static_cast<SharedCell*>(entry.body)->Content();
                    entry.flags &= static_cast<uint8_t>(~RecordEntry::kCell);
                    if (entry.body && entry.body->HasFlag(kHasOpenEntries))
                        entry.body = nullptr;  // its clone follows
                }
                if (entry.body) entry.body->AddRef();
            }
            if (node != 0) clones[nodes[node].parent]->_entries()[nodes[node].entry].body = clone;
        }
    } catch (...) {
        SharedBody::Release(clones[0]);  // holds the others
        throw;
    }
    return clones[0];
}

}  // namespace luadui
