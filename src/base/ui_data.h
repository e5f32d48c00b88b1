// CUIData: the record in which everything travels - requests, responses, data of every kind. A type string
// and entries of key and value, in the order in which the keys were first set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/data_value.h"

namespace luadui {

// Copies are values: neither side sees later changes of the other, and a copy costs one count whatever it
// holds (see base/shared_value.h for threads, assignment and what "attached" means).
//
// Objects can also be shared: SetDataShared and GetDataShared put the caller's object and the entry on the
// same content, and a change through one is seen through the other. A shared entry stays shared in copies of
// the record.
//
// Nothing throws for missing or mistyped keys. Keys and texts are bytes of code page 936 of any length. A
// record takes up to 4 GB of keys and short texts; what goes beyond is refused and counted as
// "record_too_large".
//
// Derived classes may have fields of their own; entries hold only what a CUIData holds.
class TESSEL_API CUIData : public SharedValue<RecordBody> {
  public:
    CUIData() noexcept = default;
    explicit CUIData(std::string_view type);
    CUIData(const CUIData&) = default;
    CUIData(CUIData&&) noexcept = default;
    CUIData& operator=(const CUIData&) = default;  // NOLINT(bugprone-exception-escape)
    CUIData& operator=(CUIData&&) = default;
    virtual ~CUIData();
    virtual const char* ClassName() const;

    // The type: the data kind that the record carries. Empty at first.
    void SetType(std::string_view type);
    std::string GetType() const;
    TextView GetTypeText() const noexcept;  // valid until this record changes

    // Makes room in an empty record for `entries` keys and `bytes` of keys and texts in all, so that it takes
    // one allocation. Without it there is room for an ordinary request of some 15 entries.
    void Reserve(size_t entries, size_t bytes);

    // Asks for the memory of the record, this many bytes of it, which will be read or written a little later.
    void Expect(size_t bytes) const noexcept;

    // Sets the entry to a copy of `value`; an existing key keeps its place. What would put an attached record
    // into itself changes nothing and is counted as "shared_ring_refused".
    void SetData(DataKey key, DataValue value) { _set(key, value); }
    // The same for a value of another record, list or JSON object, whatever its kind. An absent value and a
    // JSON null change nothing.
    void SetData(DataKey key, const ValueView& value);
    // The same for those who come back to the same entries of a record again and again: `place` is where the key was
    // found last, for other records any number. Fastest where it is there still.
    void SetData(const HashedKey& key, DataValue value, uint8_t& place);
    // Puts the entry and `value` on the same content. False, counted as "shared_ring_refused" and nothing
    // changed, when the record would come to hold itself.
    template <DataHandle T>
    bool SetDataShared(DataKey key, T& value) {
        return _setShared(key, DataKindOf(&value), value);
    }

    // Reads the entry: the rules are those of ValueView. False, and `out` unchanged, when the key is absent
    // or of another kind.
    template <class T>
    bool GetData(DataKey key, T& out) const {
        return _find(key).Get(out);
    }
    // Attaches `out` to the entry's content; `out` leaves what it held before. An entry set by value is
    // opened: this record first parts from its copies, and a copy made while `out` (or another) is attached
    // holds the content of that moment. False, and nothing changed, when the key is absent or of another
    // kind.
    template <DataHandle T>
    bool GetDataShared(DataKey key, T& out) {
        return _getShared(key, DataKindOf(&out), out);
    }

    // The same without the right to change this record: entries set by value are not opened and answer false.
    template <DataHandle T>
    bool GetDataShared(DataKey key, T& out) const {
        return _getAttached(key, DataKindOf(&out), out);
    }
    // True when the entry was set with SetDataShared, or its object was attached elsewhere since.
    bool IsShared(DataKey key) const noexcept;

    // The value of the entry, or the kind's empty value (0, false, "") when it is absent or of another kind.
    int64_t GetDataLong(DataKey key) const noexcept;
    int64_t GetDataLong(const HashedKey& key) const noexcept;
    double GetDataDouble(DataKey key) const noexcept;
    bool GetDataBool(DataKey key) const noexcept;
    std::string GetDataString(DataKey key) const { return std::string(GetDataText(key)); }
    // Without a copy: valid until this record changes or goes.
    TextView GetDataText(DataKey key) const noexcept;
    TextView GetDataText(const HashedKey& key) const noexcept;
    TextView GetDataText(const HashedKey& key, uint8_t& place) const noexcept;  // see SetData
    // The value as it is; absent when there is no such key.
    ValueView GetDataView(DataKey key) const noexcept { return _find(key); }
    ValueView GetDataView(const HashedKey& key) const noexcept;

    // The kind of the entry's value (DataKind); 0 when absent.
    DataKind GetDataType(DataKey key) const noexcept { return _find(key).Kind(); }
    bool Has(DataKey key) const noexcept { return static_cast<bool>(_find(key)); }
    // Removes the entry; false when there was none.
    bool Remove(DataKey key);
    // Removes all entries; the type stays.
    void Clear();
    size_t Size() const noexcept;
    bool IsEmpty() const noexcept { return Size() == 0; }

    // `for (auto [key, value] : record)`, in the order of the entries. The record must not change meanwhile:
    // iterate over a copy, which costs nothing, where the loop may change it.
    ValueIterator begin() const noexcept;
    ValueIterator end() const noexcept;

  private:
    ValueView _find(DataKey key) const noexcept;
    void _set(DataKey key, const DataValue& value);
    template <class T>
    void _setCopy(DataKey key, const ValueView& value);
    bool _setShared(DataKey key, DataKind kind, SharedHandle& value);
    bool _getShared(DataKey key, DataKind kind, SharedHandle& out);
    bool _getAttached(DataKey key, DataKind kind, SharedHandle& out) const;
};

}  // namespace luadui
