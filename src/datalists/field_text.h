// Fields that one server sends as text and another as a number.
#pragma once

#include <initializer_list>
#include <string>

#include "base/json_object.h"
#include "base/text.h"
#include "base/ui_data.h"

namespace luadui {

// The text, or the number as text; empty for everything else.
inline std::string FieldText(const ValueView& value) {
    if (value.Kind() == kDataInteger) return LongText(value.AsLong());
    if (value.Kind() == kDataDouble) return DoubleText(value.AsDouble());
    return value.AsText();
}

inline ValueView FieldOf(const CUIData& record, DataKey name) { return record.GetDataView(name); }
inline ValueView FieldOf(const CJsonObject& json, DataKey name) { return json.Find(name); }

// The first of the fields that has a text or a number, as text.
template <class Fields>
std::string FirstText(const Fields& fields, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        std::string text = FieldText(FieldOf(fields, name));
        if (!text.empty()) return text;
    }
    return {};
}

}  // namespace luadui
