// CJsonObject: an ordered JSON object. Texts inside, names too, are code page 936, as everywhere in records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/data_list.h"
#include "base/data_value.h"

namespace luadui {

// Members are kept and written in the order in which they were first set. Values are what JSON has: null,
// boolean, integer (exact from -2^63 to 2^64-1), double, text, object (CJsonObject), array (CDataList).
// Copies share their storage until one is written; for threads and attachment see base/shared_value.h.
class TESSEL_API CJsonObject : public SharedValue<RecordBody> {
  public:
    static constexpr int kMaxNesting = 256;  // this object is level 1

    // Reads `text` (code page 936), replacing the content. False and left empty when it is not one whole JSON object,
    // nests deeper than kMaxNesting or ends inside a two-byte character; `error`, if given, then says why and where,
    // without repeating any of the text. Of members of the same name the last counts, in its place. Comments and a
    // comma before a closing bracket are passed over. Bad text never throws.
    bool Parse(std::string_view text, std::string* error = nullptr);
    // JSON text in code page 936 on one line without blanks. A double reads back as the same double; what is not
    // finite, no JSON kind or nested deeper than kMaxNesting is written as null and counted as "json_value_dropped".
    std::string ToText() const;

    // Sets a member; an existing one keeps its place. False and counted as "json_kind_refused" for records,
    // tables and sets; false and counted as "shared_ring_refused" when the object would come to hold itself.
    bool Set(DataKey name, DataValue value);
    bool SetNull(DataKey name) { return Set(name, DataValue::Null()); }
    // Adds to the array `name`, which is made when absent. False when the member is something else, or as in
    // Set.
    bool Append(DataKey name, DataValue value);
    bool Remove(DataKey name);
    void Clear();

    bool Has(DataKey name) const noexcept { return static_cast<bool>(Find(name)); }
    // kDataAbsent, kDataNull, kDataBoolean, kDataInteger, kDataDouble, kDataString, kDataJson or kDataList.
    DataKind Kind(DataKey name) const noexcept { return Find(name).Kind(); }
    // The member, for reading; absent when there is none. Sub-objects and arrays read as copies that cost one
    // count.
    ValueView Find(DataKey name) const noexcept;
    template <class T>
    bool Get(DataKey name, T& out) const {
        return Find(name).Get(out);
    }
    int64_t GetLong(DataKey name) const noexcept { return Find(name).AsLong(); }
    double GetDouble(DataKey name) const noexcept { return Find(name).AsDouble(); }
    bool GetBool(DataKey name) const noexcept { return Find(name).AsBool(); }
    TextView GetText(DataKey name) const noexcept { return Find(name).AsText(); }  // until the object changes
    std::string GetString(DataKey name) const { return std::string(GetText(name)); }
    // The sub-object or array; empty when absent or something else.
    CJsonObject GetSub(DataKey name) const;
    CDataList GetArray(DataKey name) const;

    size_t Size() const noexcept;
    bool IsEmpty() const noexcept { return Size() == 0; }
    // `for (auto [name, value] : object)`, in order. The object must not change meanwhile.
    ValueIterator begin() const noexcept;
    ValueIterator end() const noexcept;
};

}  // namespace luadui
