// What records, lists and JSON objects hold, as seen from outside: the kinds, the argument types of their
// writing operations and the view of one value that their reading operations answer.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/shared_value.h"
#include "base/text_view.h"

namespace luadui {

class CUIData;
class CDataTable;
class CDataSet;
class CDataList;
class CJsonObject;
class RecordBody;
struct RecordEntry;

enum DataKind : int {
    kDataAbsent = 0,
    kDataInteger = 1,  // 64 bits inside
    kDataString = 2,   // bytes of code page 936; zero bytes are kept
    kDataSet = 3,
    kDataRecord = 4,
    kDataTable = 5,
    kDataList = 6,
    kDataJson = 7,
    kDataDouble = 8,
    kDataBoolean = 9,
    kDataNull = 10,  // the JSON null
};

// The kind of a value class; also of the classes derived from it.
constexpr DataKind DataKindOf(const CDataSet*) { return kDataSet; }
constexpr DataKind DataKindOf(const CUIData*) { return kDataRecord; }
constexpr DataKind DataKindOf(const CDataTable*) { return kDataTable; }
constexpr DataKind DataKindOf(const CDataList*) { return kDataList; }
constexpr DataKind DataKindOf(const CJsonObject*) { return kDataJson; }

template <class T>
concept DataHandle = std::derived_from<T, SharedHandle> && requires(const T* handle) {
    DataKindOf(handle);
};

template <class T>
concept DataNumber = (std::integral<T> && !std::same_as<T, bool>) || std::is_enum_v<T>;

// A key or member name: any text; a null pointer is the empty key. Valid for the call only.
struct DataKey {
    constexpr DataKey(const char* text)
        : view(text ? std::string_view(text) : std::string_view()) {}  // NOLINT
    constexpr DataKey(std::string_view text) : view(text) {}           // NOLINT
    DataKey(const std::string& text) : view(text) {}                   // NOLINT

    std::string_view view;
};

// A key that is used again and again: its hash is computed once. For constants of the process: `text` must stay where
// it is, as a literal does.
class TESSEL_API HashedKey {
  public:
    explicit HashedKey(std::string_view text) noexcept;
    operator DataKey() const noexcept { return view; }  // NOLINT(google-explicit-constructor)

    const std::string_view view;
    const uint32_t hash;
};

// A value to be stored, of any kind: the argument of SetData, Append and Set. Owns nothing; valid for the
// call only.
class DataValue {
  public:
    template <std::same_as<bool> T>  // a template, so that no pointer turns into a boolean
    constexpr DataValue(T value)
        : m_kind(kDataBoolean), m_long(value ? 1 : 0) {}  // NOLINT(google-explicit-constructor)
    template <DataNumber T>
    constexpr DataValue(T value)  // NOLINT(google-explicit-constructor)
        : m_kind(kDataInteger), m_unsigned(_isAboveLong(value)), m_long(static_cast<int64_t>(value)) {}
    template <std::floating_point T>
    constexpr DataValue(T value) : m_kind(kDataDouble), m_double(static_cast<double>(value)) {}  // NOLINT
    // Text; null is the empty text.
    constexpr DataValue(const char* text) : DataValue(DataKey(text).view) {}           // NOLINT
    DataValue(const std::string& text) : DataValue(std::string_view(text)) {}          // NOLINT
    constexpr DataValue(std::string_view text) : m_kind(kDataString), m_text(text) {}  // NOLINT
    template <DataHandle T>
    DataValue(const T& value)
        : m_kind(DataKindOf(&value)), m_handle(&value) {}  // NOLINT(google-explicit-constructor)
    // The JSON null.
    static constexpr DataValue Null() { return DataValue(kDataNull, 0); }

    constexpr DataKind Kind() const { return m_kind; }

  private:
    friend class RecordBody;
    constexpr DataValue(DataKind kind, int) : m_kind(kind), m_long(0) {}
    template <class T>
    static constexpr bool _isAboveLong(T value) {
        if constexpr (std::is_unsigned_v<T> && sizeof(T) == sizeof(int64_t)) {
            return value > static_cast<T>(std::numeric_limits<int64_t>::max());
        }
        return false;
    }

    DataKind m_kind;
    bool m_unsigned = false;  // an integer above the range of int64_t, kept as the same 64 bits
    union {
        int64_t m_long;
        double m_double;
        std::string_view m_text;
        const SharedHandle* m_handle;
    };
};

// One value of a record, list or JSON object, for reading. Valid until what it was read from changes or goes.
//
// Number    An integer, a double, a boolean (as 0 or 1), or text that wholly is a number: an optional sign,
// digits
//           with an optional point (at least one digit), an optional exponent; blanks and tabs around it are
//           allowed, nothing else is. A point is a point in every locale. What is not finite is not a number.
// Integer   A number between -2^63 and 2^64-1; a fraction is truncated toward zero. An out variable of n bits
// takes
//           what fits n bits as a signed or as an unsigned number (one is read as the other); otherwise it
//           fails.
// Boolean   A boolean, or an integer (true when not 0).
// Text      Text only; numbers never read as text.
//
// Threads: those of the object read from. Nothing throws for a wrong kind.
class TESSEL_API ValueView {
  public:
    ValueView() noexcept = default;  // absent

    DataKind Kind() const noexcept;
    explicit operator bool() const noexcept { return m_entry != nullptr; }  // present

    // Each reads into `out` and answers true; false and `out` unchanged when the value does not read as that
    // kind.
    template <DataNumber T>
    bool Get(T& out) const noexcept;
    bool Get(bool& out) const noexcept;
    bool Get(double& out) const noexcept;
    bool Get(float& out) const noexcept;
    bool Get(std::string& out) const;
    // Without a copy: valid as long as this view.
    bool Get(std::string_view& out) const noexcept;
    // `out` becomes an independent value, detached from whatever it was attached to.
    template <DataHandle T>
    bool Get(T& out) const {
        return _getHandle(DataKindOf(&out), out);
    }

    // The same, answering the empty value when it does not read as that kind.
    int64_t AsLong() const noexcept;
    double AsDouble() const noexcept;
    bool AsBool() const noexcept;
    TextView AsText() const noexcept;
    // True for an entry of a record that is attached to an object which others hold too.
    bool IsShared() const noexcept;

  private:
    friend class RecordBody;
    ValueView(const RecordBody* body, const RecordEntry* entry) noexcept : m_body(body), m_entry(entry) {}
    // The integer as 64 bits; `isUnsigned` when above the range of int64_t.
    bool _getInteger(int64_t& bits, bool& isUnsigned) const noexcept;
    bool _getHandle(DataKind kind, SharedHandle& out) const;

    const RecordBody* m_body = nullptr;
    const RecordEntry* m_entry = nullptr;
};

template <DataNumber T>
bool ValueView::Get(T& out) const noexcept {
    int64_t bits = 0;
    bool isUnsigned = false;
    if (!_getInteger(bits, isUnsigned)) return false;
    if constexpr (sizeof(T) < sizeof(int64_t)) {
        constexpr int kWidth = sizeof(T) * 8;
        if (isUnsigned || bits < -(int64_t{1} << (kWidth - 1)) || bits >= (int64_t{1} << kWidth))
            return false;
    }
    out = static_cast<T>(bits);
    return true;
}

// Steps over the entries of a record, list or JSON object in order.
class TESSEL_API ValueIterator {
  public:
    struct Entry {
        std::string_view key;  // empty in lists
        ValueView value;
    };
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;

    ValueIterator() noexcept = default;
    Entry operator*() const noexcept;
    ValueIterator& operator++() noexcept;
    ValueIterator operator++(int) noexcept {
        ValueIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const ValueIterator& other) const noexcept { return m_index == other.m_index; }

  private:
    friend class RecordBody;
    ValueIterator(const RecordBody* body, uint32_t index) noexcept : m_body(body), m_index(index) {}

    const RecordBody* m_body = nullptr;
    uint32_t m_index = 0;
};

}  // namespace luadui
