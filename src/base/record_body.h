// The storage of records, lists and JSON objects: one block of memory for entries, keys and short texts.
//
//   | header | entry 0 | entry 1 | ...  ->      free      <-  ... | key 1 | text 0 | key 0 |
//
// Entries grow from the front, bytes from the back, and offsets count from the end of the block, so that a
// block grows by two copies. Long texts are counted bodies of their own: copying a record does not copy them.
// Keys live here and nowhere else: those that come from outside cannot make anything grow but the record that
// holds them.
//
// A key is found by its hash, by open addressing: in slots of a byte each in the header while there are few entries,
// beyond that in an index of its own. The hash is seeded per process: chosen keys cannot be made to collide.
//
// Removed entries stay as gaps until there are more gaps than entries, and so do bytes no longer used:
// removing is O(1) on average, also from the front. Lists have no gaps: their entries are found by position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/block_pool.h"
#include "base/data_value.h"
#include "base/key_hash.h"
#include "base/shared_value.h"

namespace luadui {

inline uint32_t HashOf(DataKey key) noexcept { return HashKey(key.view); }
inline uint32_t HashOf(const HashedKey& key) noexcept { return key.hash; }
// For keys of at most kShortKey bytes, by those who hold a record.
inline uint32_t ShortHashOf(DataKey key) noexcept { return HashShortKey(key.view, KeySecret::Known()); }
inline uint32_t ShortHashOf(const HashedKey& key) noexcept { return key.hash; }

class RecordForm;

// A text too long for the block; immutable.
class LongText final : public SharedBody {
  public:
    static LongText* Create(std::string_view text);
    std::string_view View() const noexcept { return {_bytes(), m_size}; }
    SharedBody* Clone() const override { return Create(View()); }

  protected:
    void Destroy(ReleaseQueue& queue) noexcept override;

  private:
    explicit LongText(size_t size) noexcept : m_size(size) {}
    const char* _bytes() const noexcept { return reinterpret_cast<const char*>(this + 1); }

    size_t m_size;
};

// Bytes in the block, `end` before its end. Texts are followed by a zero byte, keys are not.
struct BlockText {
    uint32_t end;
    uint32_t size;
};

struct RecordEntry {
    static constexpr uint8_t kRemoved = 255;        // as kind
    static constexpr uint32_t kNoKey = UINT32_MAX;  // as size of the key: no key is found there
    enum Flag : uint8_t {
        kLong = 1,      // the text is a LongText
        kCell = 2,      // the object is attached: `body` is a SharedCell
        kUnsigned = 4,  // the integer is above the range of int64_t
    };

    uint32_t hash;
    BlockText key;
    uint8_t kind;  // DataKind
    uint8_t flags;
    uint16_t unused;
    union {
        int64_t integer;
        double real;
        BlockText text;
        SharedBody* body;  // of kinds that are objects (null is the empty one), and of long texts
    };

    bool IsLive() const noexcept { return kind != kRemoved; }
    bool HasFlag(Flag flag) const noexcept { return (flags & flag) != 0; }
    bool IsObject() const noexcept { return kind >= kDataSet && kind <= kDataJson; }
    // Whether `body` holds a reference.
    bool HoldsBody() const noexcept { return IsObject() || HasFlag(kLong); }
    bool IsShortText() const noexcept { return kind == kDataString && !HasFlag(kLong); }
    bool IsOpen() const noexcept { return HasFlag(kCell) && body->HasFlag(SharedBody::kOpenCell); }
};
static_assert(sizeof(RecordEntry) == 24);

class RecordBody final : public SharedBody {
  public:
    // The first block of a record holds an ordinary request, and is within what allocators serve fast; those
    // of lists and JSON objects are small because there are many.
    static constexpr size_t kRecordBlock = block_pool::kBlockSize;
    static constexpr size_t kSmallBlock = 384;
    static constexpr size_t kMaxBlock = UINT32_MAX & ~size_t{63};
    static constexpr size_t kLongTextFrom = 257;
    static constexpr uint32_t kSlots = 64;
    static constexpr uint32_t kSlotted = 32;  // entries that the slots serve

    // Writing. Each works on the content of `owner`: made when there is none, cloned when others hold it too,
    // moved to a larger block when it is full. `block` is the size of a first block. Keys, texts and handles
    // passed in may lie in the record itself. False when refused (counted).
    static bool Set(SharedHandle& owner, DataKey key, const DataValue& value, size_t block);
    // Looks at `place` first, and leaves there where the key is.
    static bool Set(SharedHandle& owner, const HashedKey& key, const DataValue& value, uint8_t& place,
                    size_t block);
    // See RecordForm. `out` is empty.
    static void Read(const RecordForm& form, const SharedHandle& from, SharedHandle& out);
    static uint32_t PositionOf(const SharedHandle& record, DataKey key) noexcept;
    static bool SetAt(SharedHandle& owner, size_t index, const DataValue& value);
    static bool Append(SharedHandle& owner, const DataValue& value, size_t block);
    // Appends to the list under `key`, which is made when absent; false when something else is there.
    static bool AppendIn(SharedHandle& owner, DataKey key, const DataValue& value);
    static bool SetShared(SharedHandle& owner, DataKey key, DataKind kind, SharedHandle& value);
    static bool Remove(SharedHandle& owner, DataKey key);
    static bool RemoveAt(SharedHandle& owner, size_t index);
    static bool SetType(SharedHandle& owner, std::string_view type);
    // Removes the entries, not the type.
    static void Clear(SharedHandle& owner);
    static void Reserve(SharedHandle& owner, size_t entries, size_t bytes);
    static bool GetShared(SharedHandle& owner, DataKey key, DataKind kind, SharedHandle& out);

    // Reading; null bodies are empty.
    template <class AnyKey>
    static ValueView Find(const RecordBody* body, const AnyKey& key) noexcept;
    template <class AnyKey>  // DataKey or HashedKey
    const RecordEntry* FindEntry(const AnyKey& key) const noexcept;
    // The same with a guess where it is, which becomes the place where it was found.
    const RecordEntry* FindEntry(const HashedKey& key, uint8_t& place) const noexcept {
        if (place < m_count && _isAt(Entries()[place], key)) [[likely]]
            return Entries() + place;
        return _findAnew(key, place);
    }
    // What the view of the entry answers, without a call where it is of the kind asked for.
    template <class AnyKey>
    static int64_t GetLong(const RecordBody* body, const AnyKey& key) noexcept;
    template <class AnyKey>
    static double GetDouble(const RecordBody* body, const AnyKey& key) noexcept;
    template <class AnyKey>
    static bool GetBool(const RecordBody* body, const AnyKey& key) noexcept;
    template <class AnyKey>
    static TextView GetText(const RecordBody* body, const AnyKey& key) noexcept;
    static ValueView At(const RecordBody* body, size_t index) noexcept;
    static bool GetAttached(const ValueView& value, DataKind kind, SharedHandle& out) noexcept;
    static void CopyTo(const RecordEntry& entry, SharedHandle& out);
    static size_t Size(const RecordBody* body) noexcept { return body ? body->m_live : 0; }
    static TextView Type(const RecordBody* body) noexcept {
        return body ? body->_text(body->m_type) : TextView();
    }
    static ValueIterator Begin(const RecordBody* body) noexcept { return {body, body ? body->m_first : 0}; }
    static ValueIterator End(const RecordBody* body) noexcept { return {body, body ? body->m_count : 0}; }

    static ValueView View(const RecordBody* body, const RecordEntry* entry) noexcept { return {body, entry}; }
    static ValueIterator::Entry EntryAt(const RecordBody* body, uint32_t index) noexcept {
        return {body->Key(body->Entries()[index]), ValueView(body, body->Entries() + index)};
    }

    const RecordEntry* Entries() const noexcept { return reinterpret_cast<const RecordEntry*>(this + 1); }
    uint32_t NextLive(uint32_t index) const noexcept;
    // Of entries of kind text.
    TextView Text(const RecordEntry& entry) const noexcept {
        if (!entry.HasFlag(RecordEntry::kLong)) return _text(entry.text);
        const std::string_view text = static_cast<const LongText*>(entry.body)->View();
        return TextView(text.data(), text.size());
    }
    std::string_view Key(const RecordEntry& entry) const noexcept { return {_at(entry.key), entry.key.size}; }

    SharedBody* Clone() const override;
    SharedBody* Snapshot() override;
    void VisitChildren(void (*visit)(void* context, SharedBody* child), void* context) const override;

  protected:
    void Destroy(ReleaseQueue& queue) noexcept override;

  private:
    struct Index;     // finds entries by hash
    class Pending;    // a value on its way in
    class Writer;     // the writable block of a handle
    struct OpenNode;  // for snapshots

    explicit RecordBody(uint32_t capacity, uint32_t flags) noexcept
        : SharedBody(flags), m_capacity(capacity) {}
    static RecordBody* _create(size_t capacity, uint32_t flags = 0);

    RecordEntry* _entries() noexcept { return reinterpret_cast<RecordEntry*>(this + 1); }
    const char* _blockEnd() const noexcept { return reinterpret_cast<const char*>(this) + m_capacity; }
    char* _blockEnd() noexcept { return reinterpret_cast<char*>(this) + m_capacity; }
    const char* _at(BlockText text) const noexcept { return _blockEnd() - text.end; }
    TextView _text(BlockText text) const noexcept {
        return text.size ? TextView(_at(text), text.size) : TextView();
    }
    size_t _usedBytes() const noexcept { return sizeof(RecordBody) + m_count * sizeof(RecordEntry) + m_back; }
    // Also that of the entry in a clone.
    uint32_t _positionOf(const RecordEntry& entry) const noexcept {
        return static_cast<uint32_t>(&entry - Entries());
    }
    bool _hasGaps() const noexcept { return m_garbage != 0 || m_live != m_count; }

    // Finding.
    bool _isAtShort(const RecordEntry& entry, std::string_view key, uint32_t hash) const noexcept;
    bool _isAt(const RecordEntry& entry, std::string_view key, uint32_t hash) const noexcept;
    bool _isAt(const RecordEntry& entry, const HashedKey& key) const noexcept {
        return key.view.size() <= kShortKey ? _isAtShort(entry, key.view, key.hash)
                                            : _isAt(entry, key.view, key.hash);
    }
    const RecordEntry* _findAny(std::string_view key, uint32_t hash) const noexcept;
    const RecordEntry* _findAnew(const HashedKey& key, uint8_t& place) const noexcept;
    uint32_t _slotOf(std::string_view key, uint32_t hash) const noexcept;
    RecordEntry* _find(DataKey key) noexcept { return const_cast<RecordEntry*>(FindEntry(key)); }
    void _indexEntry(uint32_t position) noexcept;
    void _slotEntry(uint32_t position) noexcept;
    void _makeIndex(uint32_t entries);
    // To be called before a keyed entry is pushed: makes or enlarges the index when one is due.
    void _reserveIndex() {
        if (m_count >= kSlotted) _growIndex();
    }
    void _growIndex();

    // Storing; room must have been made.
    BlockText _pushBytes(std::string_view bytes, size_t terminator) noexcept;
    RecordEntry& _pushEntry() noexcept;
    RecordEntry& _pushKeyed(std::string_view key, uint32_t hash) noexcept;
    void _overwriteText(BlockText& text, std::string_view bytes) noexcept;
    void _store(RecordEntry& entry, Pending& value) noexcept;
    void _storeText(RecordEntry& entry, std::string_view text);
    void _forgetText(BlockText text) noexcept { m_garbage += text.size ? text.size + 1 : 0; }
    void _removeEntry(RecordEntry& entry) noexcept;

    // Moving and copying.
    size_t _liveBytes() const noexcept;
    RecordBody* _moveTo(size_t capacity);
    void _copyDense(const RecordBody& from) noexcept;
    void _copyCompact(const RecordBody& from) noexcept;
    RecordBody* _cloneBlock() const;
    void _settle() noexcept;
    static RecordBody* _cloneOpen(const std::vector<OpenNode>& nodes);

    // Editing on behalf of the public operations.
    static bool _isPlain(const DataValue& value) noexcept;
    bool _setPlain(DataKey key, const DataValue& value) noexcept;
    static void _storeBits(RecordEntry& entry, const DataValue& value) noexcept;
    void _storeShortText(RecordEntry& entry, std::string_view text) noexcept;
    bool _overwritePlain(RecordEntry& entry, const DataValue& value) noexcept;
    [[gnu::noinline]] static bool _setFirst(SharedHandle& owner, DataKey key, const DataValue& value,
                                            size_t block);
    [[gnu::noinline]] static bool _setAny(SharedHandle& owner, DataKey key, const DataValue& value,
                                          size_t block);
    static bool _set(Writer& writer, DataKey key, Pending& value);
    static bool _append(SharedHandle& owner, Pending& value, size_t block);

    uint32_t m_capacity;     // bytes of the block, this header included
    uint32_t m_count = 0;    // entries, gaps included
    uint32_t m_live = 0;     // entries without the gaps
    uint32_t m_first = 0;    // no live entry before this one
    uint32_t m_back = 0;     // bytes used at the end of the block
    uint32_t m_garbage = 0;  // those among them that nothing refers to
    BlockText m_type{0, 0};
    Index* m_index = nullptr;      // owned; null while there are few entries
    uint8_t m_slots[kSlots] = {};  // positions of entries plus 1, by hash; 0 is free. Unused with an index
};
static_assert(sizeof(RecordBody) % alignof(RecordEntry) == 0);

inline bool RecordBody::_isAtShort(const RecordEntry& entry, std::string_view key,
                                   uint32_t hash) const noexcept {
    return entry.hash == hash && entry.key.size == key.size() &&
           EqualShort(_at(entry.key), key.data(), key.size());
}

// For keys of at most kShortKey bytes in records without index: the slot of the key, or the free one for it.
inline uint32_t RecordBody::_slotOf(std::string_view key, uint32_t hash) const noexcept {
    const RecordEntry* entries = Entries();
    uint32_t slot = hash % kSlots;
    while (m_slots[slot] != 0 && !_isAtShort(entries[m_slots[slot] - 1], key, hash))
        slot = (slot + 1) % kSlots;
    return slot;
}

template <class AnyKey>
inline const RecordEntry* RecordBody::FindEntry(const AnyKey& key) const noexcept {
    if (m_index || key.view.size() > kShortKey) [[unlikely]]
        return _findAny(key.view, HashOf(key));
    const uint32_t hash = ShortHashOf(key);
    for (uint32_t slot = hash % kSlots; m_slots[slot] != 0; slot = (slot + 1) % kSlots) {
        const RecordEntry* entry = Entries() + (m_slots[slot] - 1);
        if (_isAtShort(*entry, key.view, hash)) return entry;
    }
    return nullptr;
}

template <class AnyKey>
inline int64_t RecordBody::GetLong(const RecordBody* body, const AnyKey& key) noexcept {
    const RecordEntry* entry = body ? body->FindEntry(key) : nullptr;
    if (!entry) return 0;
    return entry->kind == kDataInteger ? entry->integer : View(body, entry).AsLong();
}

template <class AnyKey>
inline double RecordBody::GetDouble(const RecordBody* body, const AnyKey& key) noexcept {
    const RecordEntry* entry = body ? body->FindEntry(key) : nullptr;
    if (!entry) return 0;
    return entry->kind == kDataDouble ? entry->real : View(body, entry).AsDouble();
}

template <class AnyKey>
inline bool RecordBody::GetBool(const RecordBody* body, const AnyKey& key) noexcept {
    const RecordEntry* entry = body ? body->FindEntry(key) : nullptr;
    if (!entry) return false;
    return entry->kind == kDataBoolean ? entry->integer != 0 : View(body, entry).AsBool();
}

template <class AnyKey>
inline TextView RecordBody::GetText(const RecordBody* body, const AnyKey& key) noexcept {
    const RecordEntry* entry = body ? body->FindEntry(key) : nullptr;
    return entry && entry->kind == kDataString ? body->Text(*entry) : TextView();
}

inline BlockText RecordBody::_pushBytes(std::string_view bytes, size_t terminator) noexcept {
    if (bytes.empty()) return {0, 0};
    m_back += static_cast<uint32_t>(bytes.size() + terminator);
    char* place = _blockEnd() - m_back;
    if (terminator) place[bytes.size()] = '\0';
    if (bytes.size() < kLongTextFrom) {
        CopyShort(place, bytes.data(), bytes.size());
    } else {
        std::memcpy(place, bytes.data(), bytes.size());
    }
    return {m_back, static_cast<uint32_t>(bytes.size())};
}

inline RecordEntry& RecordBody::_pushEntry() noexcept {
    RecordEntry& entry = _entries()[m_count++];
    ++m_live;
    entry = RecordEntry{0, {0, 0}, kDataNull, 0, 0, {0}};
    return entry;
}

inline RecordEntry& RecordBody::_pushKeyed(std::string_view key, uint32_t hash) noexcept {
    RecordEntry& entry = _pushEntry();
    entry.hash = hash;
    entry.key = _pushBytes(key, 0);
    if (m_index) [[unlikely]] {
        _indexEntry(m_count - 1);
    } else if (m_count <= kSlotted) {
        _slotEntry(m_count - 1);
    }
    return entry;
}

inline void RecordBody::_slotEntry(uint32_t position) noexcept {
    uint32_t slot = Entries()[position].hash % kSlots;
    while (m_slots[slot] != 0) slot = (slot + 1) % kSlots;
    m_slots[slot] = static_cast<uint8_t>(position + 1);
}

template <class AnyKey>
inline ValueView RecordBody::Find(const RecordBody* body, const AnyKey& key) noexcept {
    const RecordEntry* entry = body ? body->FindEntry(key) : nullptr;
    return entry ? ValueView(body, entry) : ValueView();
}

}  // namespace luadui
