#include "base/data_list.h"

#include "base/record_body.h"

namespace luadui {

void CDataList::Append(DataValue value) { RecordBody::Append(*this, value, RecordBody::kSmallBlock); }

bool CDataList::Set(size_t index, DataValue value) { return RecordBody::SetAt(*this, index, value); }

bool CDataList::Remove(size_t index) { return RecordBody::RemoveAt(*this, index); }

void CDataList::Clear() { RecordBody::Clear(*this); }

size_t CDataList::Size() const noexcept { return RecordBody::Size(_read()); }

ValueView CDataList::At(size_t index) const noexcept { return RecordBody::At(_read(), index); }

ValueIterator CDataList::begin() const noexcept { return RecordBody::Begin(_read()); }

ValueIterator CDataList::end() const noexcept { return RecordBody::End(_read()); }

}  // namespace luadui
