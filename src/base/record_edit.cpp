// The writing operations of RecordBody. Each prepares its value first (so that arguments may lie in the
// record that is written), then makes the record's own block writable and large enough, then stores.
#include <algorithm>
#include <cstring>
#include <utility>

#include "base/counters.h"
#include "base/data_list.h"
#include "base/key_hash.h"
#include "base/record_body.h"
#include "base/record_form.h"

namespace luadui {
namespace {

constexpr size_t kBlockUnit = 64;
constexpr uint32_t kMinGaps = 16;

size_t RoundUp(size_t size) noexcept { return (size + kBlockUnit - 1) & ~(kBlockUnit - 1); }

}  // namespace

// A value ready to be stored. Owns the body that it refers to until then; a short text is stored from where
// it lies.
class RecordBody::Pending {
  public:
    explicit Pending(const DataValue& value) : m_kind(value.m_kind) {
        if (value.m_kind == kDataString) {
            m_text = value.m_text;
            if (m_text.size() < kLongTextFrom) return;
            m_flags = RecordEntry::kLong;
            m_body = LongText::Create(m_text);
        } else if (value.m_kind == kDataDouble) {
            m_real = value.m_double;
        } else if (value.m_kind >= kDataSet && value.m_kind <= kDataJson) {
            m_body = SharedBody::Share(value.m_handle->_body());
        } else {
            m_integer = value.m_long;
            if (value.m_unsigned) m_flags = RecordEntry::kUnsigned;
        }
    }
    // Takes over the reference to `cell`.
    Pending(DataKind kind, SharedCell* cell) noexcept : m_kind(kind), m_flags(RecordEntry::kCell) {
        m_body = cell;
    }
    ~Pending() {
        if (_holdsBody()) SharedBody::Release(m_body);
    }
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;

    bool IsShortText() const noexcept { return m_kind == kDataString && m_flags == 0; }
    // What the value takes at the end of the block.
    size_t Bytes() const noexcept { return IsShortText() && !m_text.empty() ? m_text.size() + 1 : 0; }
    bool FitsInto(const RecordEntry& entry) const noexcept {
        return Bytes() == 0 || (entry.IsShortText() && m_text.size() <= entry.text.size);
    }
    // True, and counted, when storing the value would put the object of `owner` into itself.
    bool WouldRing(const SharedHandle& owner) const {
        if (!owner.IsAttached() || !_holdsBody() || !SharedBody::Reaches(m_body, owner._cell())) return false;
        CCounters::Add("shared_ring_refused");
        return true;
    }

  private:
    friend class RecordBody;
    bool _holdsBody() const noexcept {
        return (m_flags & RecordEntry::kLong) || (m_kind >= kDataSet && m_kind <= kDataJson);
    }

    DataKind m_kind;
    uint8_t m_flags = 0;
    std::string_view m_text;
    union {
        int64_t m_integer = 0;
        double m_real;
        SharedBody* m_body;
    };
};

// The block of `owner` made writable. What it replaces is kept until the writer goes: arguments may lie in
// it.
class RecordBody::Writer {
  public:
    Writer(SharedHandle& owner, size_t block)
        : m_owner(owner), m_body(static_cast<RecordBody*>(owner._body())) {
        if (!m_body) {
            _replace(_create(block));
        } else if (!m_body->IsUnique()) {
            _replace(static_cast<RecordBody*>(m_body->Clone()));
        }
    }
    ~Writer() { SharedBody::Release(m_replaced); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    RecordBody* operator->() const noexcept { return m_body; }

    // Room for `entries` and `bytes` more; moves the block when it lacks it. False, counted, past the largest
    // block.
    bool MakeRoom(size_t entries, size_t bytes) {
        const size_t more = entries * sizeof(RecordEntry) + bytes;
        if (m_body->_usedBytes() + more <= m_body->m_capacity) return true;
        const size_t needed = m_body->_liveBytes() + more;
        if (bytes > kMaxBlock || needed > kMaxBlock) {
            CCounters::Add("record_too_large");
            return false;
        }
        _replace(m_body->_moveTo(std::min(RoundUp(needed * 2), kMaxBlock)));
        return true;
    }
    // Gets rid of the gaps once they outnumber the entries.
    void CloseGaps() {
        const uint32_t gaps = m_body->m_count - m_body->m_live;
        if (gaps <= kMinGaps || gaps <= m_body->m_live) return;
        _replace(m_body->_moveTo(std::max(RoundUp(m_body->_liveBytes() * 2), kSmallBlock)));
    }

  private:
    void _replace(RecordBody* body) noexcept {
        m_owner._setBody(body);
        if (m_replaced) {
            SharedBody::Release(m_body);  // a block of our own, which no argument can lie in
        } else {
            m_replaced = m_body;
        }
        m_body = body;
    }

    SharedHandle& m_owner;
    RecordBody* m_body;
    SharedBody* m_replaced = nullptr;
};

void RecordBody::_store(RecordEntry& entry, Pending& value) noexcept {
    SharedBody* old = entry.HoldsBody() ? entry.body : nullptr;
    if (value.IsShortText() && entry.IsShortText() && entry.text.size >= value.m_text.size() &&
        entry.text.size != 0) {
        _overwriteText(entry.text, value.m_text);
        return;
    }
    if (entry.IsShortText()) _forgetText(entry.text);
    entry.kind = static_cast<uint8_t>(value.m_kind);
    entry.flags = value.m_flags;
    if (value.IsShortText()) {
        entry.text = _pushBytes(value.m_text, 1);
    } else {
        entry.integer = std::exchange(value.m_integer, 0);  // the body, if it is one, is the entry's now
    }
    if (entry.HoldsBody() && entry.body) {
        SetFlag(kHoldsBodies);
        if (entry.body->HasFlag(kHoldsCells)) SetFlag(kHoldsCells);
    }
    SharedBody::Release(old);  // last: the text may have been read from it
}

// Whether the value is one that holds no body: a number, a short text, an empty object.
inline bool RecordBody::_isPlain(const DataValue& value) noexcept {
    if (value.m_kind == kDataString) return value.m_text.size() < kLongTextFrom;
    return value.m_kind < kDataSet || value.m_kind > kDataJson || !value.m_handle->_body();
}

inline void RecordBody::_storeBits(RecordEntry& entry, const DataValue& value) noexcept {
    entry.kind = static_cast<uint8_t>(value.m_kind);
    entry.flags = value.m_unsigned ? RecordEntry::kUnsigned : 0;
    if (value.m_kind == kDataDouble) {
        entry.real = value.m_double;
    } else {
        entry.integer = value.m_kind >= kDataSet && value.m_kind <= kDataJson ? 0 : value.m_long;
    }
}

inline void RecordBody::_storeShortText(RecordEntry& entry, std::string_view text) noexcept {
    entry.kind = kDataString;
    entry.flags = 0;
    entry.text = _pushBytes(text, 1);
}

// The ordinary case, without a detour: a short key, a plain value, no index, and room in the block. False, and nothing
// changed, when it is not that.
[[gnu::always_inline]] inline bool RecordBody::_setPlain(DataKey key, const DataValue& value) noexcept {
    if (m_index || key.view.size() > kShortKey || !_isPlain(value)) return false;
    const uint32_t hash = ShortHashOf(key);
    const uint32_t slot = _slotOf(key.view, hash);
    if (m_slots[slot] != 0) return _overwritePlain(_entries()[m_slots[slot] - 1], value);

    const bool isText = value.m_kind == kDataString;
    const size_t bytes = key.view.size() + (isText ? value.m_text.size() + 1 : 0);
    if (m_count >= kSlotted || _usedBytes() + sizeof(RecordEntry) + bytes > m_capacity) return false;
    RecordEntry& entry = _entries()[m_count];
    entry.hash = hash;
    entry.key = _pushBytes(key.view, 0);
    isText ? _storeShortText(entry, value.m_text) : _storeBits(entry, value);
    m_slots[slot] = static_cast<uint8_t>(++m_count);
    ++m_live;
    return true;
}

// The same for an entry that is there. False also when a body is to be released.
inline bool RecordBody::_overwritePlain(RecordEntry& entry, const DataValue& value) noexcept {
    if (entry.HoldsBody() && entry.body) return false;
    const BlockText old = entry.IsShortText() ? entry.text : BlockText{0, 0};
    if (value.m_kind != kDataString) {
        _storeBits(entry, value);
    } else if (old.size != 0 && value.m_text.size() <= old.size) {
        _overwriteText(entry.text, value.m_text);
        return true;
    } else if (_usedBytes() + value.m_text.size() + 1 <= m_capacity) {
        _storeShortText(entry, value.m_text);
    } else {
        return false;
    }
    _forgetText(old);
    return true;
}

bool RecordBody::_set(Writer& writer, DataKey key, Pending& value) {
    RecordEntry* entry = writer->_find(key);
    if (!entry) {
        if (key.view.size() > kMaxBlock || !writer.MakeRoom(1, key.view.size() + value.Bytes())) return false;
        writer->_reserveIndex();
        entry = &writer->_pushKeyed(key.view, HashOf(key));
    } else if (!value.FitsInto(*entry)) {
        if (!writer.MakeRoom(0, value.Bytes())) return false;
        entry = writer->_find(key);  // it may have moved
    }
    writer->_store(*entry, value);
    return true;
}

bool RecordBody::_append(SharedHandle& owner, Pending& value, size_t block) {
    if (value.WouldRing(owner)) return false;
    Writer writer(owner, block);
    if (!writer.MakeRoom(1, value.Bytes())) return false;
    writer->_store(writer->_pushEntry(), value);
    return true;
}

bool RecordBody::Set(SharedHandle& owner, DataKey key, const DataValue& value, size_t block) {
    auto* body = static_cast<RecordBody*>(owner._body());
    if (!body) return _setFirst(owner, key, value, block);
    if (body->IsUnique() && body->_setPlain(key, value)) return true;
    return _setAny(owner, key, value, block);
}

bool RecordBody::Set(SharedHandle& owner, const HashedKey& key, const DataValue& value, uint8_t& place,
                     size_t block) {
    auto* body = static_cast<RecordBody*>(owner._body());
    if (body && body->IsUnique() && _isPlain(value)) {
        auto* const entry = const_cast<RecordEntry*>(body->FindEntry(key, place));
        if (entry && body->_overwritePlain(*entry, value)) return true;
    }
    return Set(owner, key, value, block);
}

bool RecordBody::_setFirst(SharedHandle& owner, DataKey key, const DataValue& value, size_t block) {
    owner._setBody(_create(block));
    return Set(owner, key, value, block);
}

bool RecordBody::_setAny(SharedHandle& owner, DataKey key, const DataValue& value, size_t block) {
    Pending pending(value);
    if (pending.WouldRing(owner)) return false;
    Writer writer(owner, block);
    return _set(writer, key, pending);
}

uint32_t RecordBody::PositionOf(const SharedHandle& record, DataKey key) noexcept {
    const auto* body = static_cast<const RecordBody*>(record._body());
    return body->_positionOf(*body->FindEntry(key));
}

// The entry is an empty text. What finds no room in the block gets a body of its own.
inline void RecordBody::_storeText(RecordEntry& entry, std::string_view text) {
    if (text.size() < kLongTextFrom && _usedBytes() + text.size() + 1 <= m_capacity) {
        entry.text = _pushBytes(text, 1);
        return;
    }
    entry.body = LongText::Create(text);
    entry.flags = RecordEntry::kLong;
    SetFlag(kHoldsBodies);
}

void RecordBody::Read(const RecordForm& form, const SharedHandle& from, SharedHandle& out) {
    const auto* blank = static_cast<const RecordBody*>(form.m_blank._body());
    if (!blank) return;
    const auto* source = static_cast<const RecordBody*>(from._body());
    auto* body = static_cast<RecordBody*>(blank->Clone());
    out._setBody(body);
    for (const auto& [field, position] : form.m_places) {
        RecordEntry& entry = body->_entries()[position];
        if (field.kind == kDataString) {
            body->_storeText(entry, GetText(source, field.key));
        } else if (field.kind == kDataDouble) {
            entry.real = GetDouble(source, field.key);
        } else {
            entry.integer =
                field.kind == kDataInteger ? GetLong(source, field.key) : GetBool(source, field.key);
        }
    }
}

bool RecordBody::Append(SharedHandle& owner, const DataValue& value, size_t block) {
    Pending pending(value);
    return _append(owner, pending, block);
}

bool RecordBody::SetAt(SharedHandle& owner, size_t index, const DataValue& value) {
    if (index >= Size(static_cast<RecordBody*>(owner._body()))) return false;
    Pending pending(value);
    if (pending.WouldRing(owner)) return false;
    Writer writer(owner, kSmallBlock);
    if (!pending.FitsInto(writer->_entries()[index]) && !writer.MakeRoom(0, pending.Bytes())) return false;
    writer->_store(writer->_entries()[index], pending);
    return true;
}

bool RecordBody::AppendIn(SharedHandle& owner, DataKey key, const DataValue& value) {
    Pending pending(value);
    if (pending.WouldRing(owner)) return false;
    const ValueView found = Find(static_cast<RecordBody*>(owner._body()), key);
    if (found && (found.Kind() != kDataList || found.m_entry->HasFlag(RecordEntry::kCell))) {
        CCounters::Add("json_append_refused");
        return false;
    }
    Writer writer(owner, kSmallBlock);
    if (!found) {
        Pending list((DataValue(CDataList())));
        if (!_set(writer, key, list)) return false;
    }
    RecordEntry* entry = writer->_find(key);
    // The list leaves its entry while it grows, so that it is not held twice and need not be cloned.
    struct Lent {
        explicit Lent(RecordEntry& entry) : entry(entry) {
            list._setBody(std::exchange(entry.body, nullptr));
        }
        ~Lent() {
            entry.body = list._body();
            list._setBody(nullptr);
        }
        RecordEntry& entry;
        CDataList list;
    } lent(*entry);
    const bool appended = _append(lent.list, pending, kSmallBlock);
    if (lent.list._body()) writer->SetFlag(kHoldsBodies);
    if (lent.list._body() && lent.list._body()->HasFlag(kHoldsCells)) writer->SetFlag(kHoldsCells);
    return appended;
}

bool RecordBody::SetShared(SharedHandle& owner, DataKey key, DataKind kind, SharedHandle& value) {
    SharedBody* reached = value.IsAttached() ? value._cell() : value._body();
    if (&owner == &value || (owner.IsAttached() && SharedBody::Reaches(reached, owner._cell()))) {
        CCounters::Add("shared_ring_refused");
        return false;
    }
    SharedCell* cell = value._promote();
    // No longer the affair of one entry. Other threads may read a cell that is not open: nothing is written to it.
    if (cell->HasFlag(kOpenCell)) cell->ClearFlag(kOpenCell);
    cell->AddRef();
    Pending pending(kind, cell);
    Writer writer(owner, kRecordBlock);
    return _set(writer, key, pending);
}

bool RecordBody::GetShared(SharedHandle& owner, DataKey key, DataKind kind, SharedHandle& out) {
    const ValueView found = Find(static_cast<RecordBody*>(owner._body()), key);
    if (found.Kind() != kind) return false;
    if (found.m_entry->HasFlag(RecordEntry::kCell)) {
        out._attach(static_cast<SharedCell*>(found.m_entry->body));
        return true;
    }
    const uint32_t position = found.m_body->_positionOf(*found.m_entry);
    Writer writer(owner, kRecordBlock);
    RecordEntry* entry = writer->_entries() + position;
    auto* cell = new SharedCell(entry->body, kOpenCell);
    entry->body = cell;
    entry->flags |= RecordEntry::kCell;
    writer->SetFlag(kHasOpenEntries);
    writer->SetFlag(kHoldsBodies);
    writer->SetFlag(kHoldsCells);
    out._attach(cell);  // may free the record, when `out` is its owner
    return true;
}

bool RecordBody::Remove(SharedHandle& owner, DataKey key) {
    const ValueView found = Find(static_cast<RecordBody*>(owner._body()), key);
    if (!found) return false;
    const uint32_t position = found.m_body->_positionOf(*found.m_entry);
    Writer writer(owner, kRecordBlock);
    writer->_removeEntry(writer->_entries()[position]);
    writer.CloseGaps();
    return true;
}

bool RecordBody::RemoveAt(SharedHandle& owner, size_t index) {
    if (index >= Size(static_cast<RecordBody*>(owner._body()))) return false;
    Writer writer(owner, kSmallBlock);
    RecordEntry* entry = writer->_entries() + index;
    SharedBody* old = entry->HoldsBody() ? entry->body : nullptr;
    if (entry->IsShortText()) writer->_forgetText(entry->text);
    std::move(entry + 1, writer->_entries() + writer->m_count, entry);
    --writer->m_count;
    --writer->m_live;
    SharedBody::Release(old);
    return true;
}

bool RecordBody::SetType(SharedHandle& owner, std::string_view type) {
    if (type == Type(static_cast<RecordBody*>(owner._body()))) return true;
    Writer writer(owner, kRecordBlock);
    if (!writer.MakeRoom(0, type.size() + 1)) return false;
    writer->_forgetText(writer->m_type);
    writer->m_type = writer->_pushBytes(type, 1);
    return true;
}

void RecordBody::Clear(SharedHandle& owner) {
    auto* old = static_cast<RecordBody*>(owner._body());
    if (!old) return;
    RecordBody* empty = nullptr;
    if (old->m_type.size != 0) {
        empty = _create(RoundUp(std::max(sizeof(RecordBody) + old->m_type.size + 1, kRecordBlock)));
        empty->m_type = empty->_pushBytes(Type(old), 1);
    }
    owner._setBody(empty);
    SharedBody::Release(old);
}

void RecordBody::Reserve(SharedHandle& owner, size_t entries, size_t bytes) {
    constexpr size_t kMost = kMaxBlock / 2;
    if (owner._body() || entries > kMost / sizeof(RecordEntry) || bytes > kMost) return;
    // Each text has a zero byte behind it.
    owner._setBody(_create(RoundUp(sizeof(RecordBody) + entries * (sizeof(RecordEntry) + 1) + bytes)));
}

}  // namespace luadui
