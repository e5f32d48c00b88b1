#include "base/record_form.h"

#include "base/record_body.h"

namespace luadui {
namespace {

DataValue EmptyOf(DataKind kind) {
    switch (kind) {
        case kDataInteger:
            return 0;
        case kDataBoolean:
            return false;
        case kDataDouble:
            return 0.0;
        default:
            return "";
    }
}

}  // namespace

RecordForm::RecordForm(const CUIData& defaults, std::initializer_list<Field> fields) : m_blank(defaults) {
    for (const Field& field : fields) m_blank.SetData(field.key, EmptyOf(field.kind));
    for (const Field& field : fields) m_places.push_back({field, RecordBody::PositionOf(m_blank, field.key)});
}

CUIData RecordForm::Read(const CUIData& from) const {
    CUIData record;
    RecordBody::Read(*this, from, record);
    return record;
}

}  // namespace luadui
