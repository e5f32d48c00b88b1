#include "base/json_object.h"

#include "base/counters.h"
#include "base/record_body.h"

namespace luadui {
namespace {

bool IsJsonKind(DataKind kind) {
    if (kind != kDataRecord && kind != kDataTable && kind != kDataSet) return true;
    CCounters::Add("json_kind_refused");
    return false;
}

}  // namespace

bool CJsonObject::Set(DataKey name, DataValue value) {
    return IsJsonKind(value.Kind()) && RecordBody::Set(*this, name, value, RecordBody::kSmallBlock);
}

bool CJsonObject::Append(DataKey name, DataValue value) {
    return IsJsonKind(value.Kind()) && RecordBody::AppendIn(*this, name, value);
}

bool CJsonObject::Remove(DataKey name) { return RecordBody::Remove(*this, name); }

void CJsonObject::Clear() { RecordBody::Clear(*this); }

ValueView CJsonObject::Find(DataKey name) const noexcept { return RecordBody::Find(_read(), name); }

CJsonObject CJsonObject::GetSub(DataKey name) const {
    CJsonObject sub;
    Get(name, sub);
    return sub;
}

CDataList CJsonObject::GetArray(DataKey name) const {
    CDataList array;
    Get(name, array);
    return array;
}

size_t CJsonObject::Size() const noexcept { return RecordBody::Size(_read()); }

ValueIterator CJsonObject::begin() const noexcept { return RecordBody::Begin(_read()); }

ValueIterator CJsonObject::end() const noexcept { return RecordBody::End(_read()); }

}  // namespace luadui
