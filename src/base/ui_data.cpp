#include "base/ui_data.h"

#include "base/data_list.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "base/record_body.h"

namespace luadui {

CUIData::CUIData(std::string_view type) { SetType(type); }

CUIData::~CUIData() = default;

const char* CUIData::ClassName() const { return "CUIData"; }

void CUIData::SetType(std::string_view type) { RecordBody::SetType(*this, type); }

std::string CUIData::GetType() const { return std::string(std::string_view(RecordBody::Type(_read()))); }

TextView CUIData::GetTypeText() const noexcept { return RecordBody::Type(_read()); }

void CUIData::Reserve(size_t entries, size_t bytes) { RecordBody::Reserve(*this, entries, bytes); }

int64_t CUIData::GetDataLong(DataKey key) const noexcept { return RecordBody::GetLong(_read(), key); }

int64_t CUIData::GetDataLong(const HashedKey& key) const noexcept {
    return RecordBody::GetLong(_read(), key);
}

bool CUIData::GetDataBool(DataKey key) const noexcept { return RecordBody::GetBool(_read(), key); }

double CUIData::GetDataDouble(DataKey key) const noexcept { return RecordBody::GetDouble(_read(), key); }

TextView CUIData::GetDataText(DataKey key) const noexcept { return RecordBody::GetText(_read(), key); }

TextView CUIData::GetDataText(const HashedKey& key) const noexcept {
    return RecordBody::GetText(_read(), key);
}

TextView CUIData::GetDataText(const HashedKey& key, uint8_t& place) const noexcept {
    const RecordBody* const body = _read();
    const RecordEntry* const entry = body ? body->FindEntry(key, place) : nullptr;
    return entry && entry->kind == kDataString ? body->Text(*entry) : TextView();
}

ValueView CUIData::GetDataView(const HashedKey& key) const noexcept { return RecordBody::Find(_read(), key); }

bool CUIData::IsShared(DataKey key) const noexcept { return _find(key).IsShared(); }

template <class T>
void CUIData::_setCopy(DataKey key, const ValueView& value) {
    T copy;
    if (value.Get(copy)) _set(key, copy);
}

void CUIData::SetData(DataKey key, const ValueView& value) {
    switch (value.Kind()) {
        case kDataInteger: {
            uint64_t bits = 0;
            const bool isUnsigned = value.Get(bits) && value.AsDouble() > 0 && bits >> 63;
            return isUnsigned ? _set(key, bits) : _set(key, value.AsLong());
        }
        case kDataBoolean:
            return _set(key, value.AsBool());
        case kDataDouble:
            return _set(key, value.AsDouble());
        case kDataString:
            return _set(key, value.AsText());
        case kDataSet:
            return _setCopy<CDataSet>(key, value);
        case kDataRecord:
            return _setCopy<CUIData>(key, value);
        case kDataTable:
            return _setCopy<CDataTable>(key, value);
        case kDataList:
            return _setCopy<CDataList>(key, value);
        case kDataJson:
            return _setCopy<CJsonObject>(key, value);
        case kDataAbsent:
        case kDataNull:
            return;
    }
}

void CUIData::SetData(const HashedKey& key, DataValue value, uint8_t& place) {
    RecordBody::Set(*this, key, value, place, RecordBody::kRecordBlock);
}

bool CUIData::Remove(DataKey key) { return RecordBody::Remove(*this, key); }

void CUIData::Clear() { RecordBody::Clear(*this); }

size_t CUIData::Size() const noexcept { return RecordBody::Size(_read()); }

ValueIterator CUIData::begin() const noexcept { return RecordBody::Begin(_read()); }

ValueIterator CUIData::end() const noexcept { return RecordBody::End(_read()); }

ValueView CUIData::_find(DataKey key) const noexcept { return RecordBody::Find(_read(), key); }

void CUIData::_set(DataKey key, const DataValue& value) {
    RecordBody::Set(*this, key, value, RecordBody::kRecordBlock);
}

void CUIData::Expect(size_t bytes) const noexcept {
    constexpr size_t kLine = 64;
    const auto* const block = reinterpret_cast<const char*>(_body());
    for (size_t at = 0; block && at < bytes; at += kLine) __builtin_prefetch(block + at);
}

bool CUIData::_setShared(DataKey key, DataKind kind, SharedHandle& value) {
    return RecordBody::SetShared(*this, key, kind, value);
}

bool CUIData::_getShared(DataKey key, DataKind kind, SharedHandle& out) {
    return RecordBody::GetShared(*this, key, kind, out);
}

bool CUIData::_getAttached(DataKey key, DataKind kind, SharedHandle& out) const {
    return RecordBody::GetAttached(_find(key), kind, out);
}

}  // namespace luadui
