// Records as text: what tests compare.
#pragma once

#include <string>
#include <string_view>

#include "base/data_list.h"
#include "base/data_set.h"
#include "base/data_table.h"
#include "base/json_object.h"
#include "base/text.h"
#include "base/ui_data.h"

namespace luadui {

std::string Describe(const CUIData& record);

// [column,column|cell,cell|cell,cell]
inline std::string Describe(const CDataTable& table) {
    std::string text = "[";
    for (int row = -1; row < table.GetRowNumber(); ++row) {
        if (row >= 0) text += '|';
        for (int col = 0; col < table.GetColumnNumber(); ++col) {
            if (col > 0) text += ',';
            text += row < 0 ? table.GetColumnProperty(col, "name") : table.GetItemText(row, col);
        }
    }
    return text + ']';
}

// Sets in <>, lists in (), records in {}, JSON as it is written.
inline std::string Describe(const ValueView& value) {
    std::string text;
    if (CUIData record; value.Get(record)) return '{' + Describe(record) + '}';
    if (CDataTable table; value.Get(table)) return Describe(table);
    if (CJsonObject json; value.Get(json)) return json.ToText();
    if (CDataSet set; value.Get(set)) {
        for (const std::string& item : set) text += (text.empty() ? "" : ",") + item;
        return '<' + text + '>';
    }
    if (CDataList list; value.Get(list)) {
        for (const auto [key, item] : list) text += (text.empty() ? "" : ",") + Describe(item);
        return '(' + text + ')';
    }
    switch (value.Kind()) {
        case kDataString:
            return value.AsText();
        case kDataBoolean:
            return value.AsBool() ? "true" : "false";
        case kDataDouble:
            return DoubleText(value.AsDouble());
        default:
            return std::to_string(value.AsLong());
    }
}

// The record's entries as key=value on one line.
inline std::string Describe(const CUIData& record) {
    std::string text;
    for (const auto [key, value] : record) {
        if (!text.empty()) text += ' ';
        text += std::string(key) + '=' + Describe(value);
    }
    return text;
}

}  // namespace luadui
