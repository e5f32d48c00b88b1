#include "base/ui_data.h"

#include "base/record_body.h"

namespace luadui {

CUIData::CUIData(std::string_view type) { SetType(type); }

CUIData::~CUIData() = default;

const char* CUIData::ClassName() const { return "CUIData"; }

void CUIData::SetType(std::string_view type) { RecordBody::SetType(*this, type); }

std::string CUIData::GetType() const { return std::string(std::string_view(RecordBody::Type(_read()))); }

TextView CUIData::GetTypeText() const noexcept { return RecordBody::Type(_read()); }

void CUIData::Reserve(size_t entries, size_t bytes) { RecordBody::Reserve(*this, entries, bytes); }

// Entries of the kind that is asked for, the ordinary case, are read without a detour.

int64_t CUIData::GetDataLong(DataKey key) const noexcept {
    const RecordBody* body = _read();
    const RecordEntry* entry = body ? body->FindEntry(key.view) : nullptr;
    if (!entry) return 0;
    return entry->kind == kDataInteger ? entry->integer : RecordBody::View(body, entry).AsLong();
}

bool CUIData::GetDataBool(DataKey key) const noexcept {
    const RecordBody* body = _read();
    const RecordEntry* entry = body ? body->FindEntry(key.view) : nullptr;
    if (!entry) return false;
    return entry->kind == kDataBoolean ? entry->integer != 0 : RecordBody::View(body, entry).AsBool();
}

double CUIData::GetDataDouble(DataKey key) const noexcept {
    const RecordBody* body = _read();
    const RecordEntry* entry = body ? body->FindEntry(key.view) : nullptr;
    if (!entry) return 0;
    return entry->kind == kDataDouble ? entry->real : RecordBody::View(body, entry).AsDouble();
}

TextView CUIData::GetDataText(DataKey key) const noexcept {
    const RecordBody* body = _read();
    const RecordEntry* entry = body ? body->FindEntry(key.view) : nullptr;
    return entry && entry->kind == kDataString ? body->Text(*entry) : TextView();
}

bool CUIData::IsShared(DataKey key) const noexcept { return _find(key.view).IsShared(); }

bool CUIData::Remove(DataKey key) { return RecordBody::Remove(*this, key.view); }

void CUIData::Clear() { RecordBody::Clear(*this); }

size_t CUIData::Size() const noexcept { return RecordBody::Size(_read()); }

ValueIterator CUIData::begin() const noexcept { return RecordBody::Begin(_read()); }

ValueIterator CUIData::end() const noexcept { return RecordBody::End(_read()); }

ValueView CUIData::_find(std::string_view key) const noexcept { return RecordBody::Find(_read(), key); }

void CUIData::_set(std::string_view key, const DataValue& value) {
    RecordBody::Set(*this, key, value, RecordBody::kRecordBlock);
}

bool CUIData::_setShared(std::string_view key, DataKind kind, SharedHandle& value) {
    return RecordBody::SetShared(*this, key, kind, value);
}

bool CUIData::_getShared(std::string_view key, DataKind kind, SharedHandle& out) {
    return RecordBody::GetShared(*this, key, kind, out);
}

bool CUIData::_getAttached(std::string_view key, DataKind kind, SharedHandle& out) const {
    return RecordBody::GetAttached(_find(key), kind, out);
}

}  // namespace luadui
