#include "datamgr/json_table.h"

#include <algorithm>
#include <string>

#include "base/counters.h"
#include "base/json_object.h"
#include "base/text.h"

namespace luadui {
namespace {

constexpr int kMaxColumns = 256;

// JSON writes objects only: an array is written as the single member of one, and taken out again.
std::string ArrayText(const CDataList& array) {
    constexpr std::string_view kBefore = R"({"":)", kAfter = "}";
    CJsonObject holder;
    holder.Set("", array);
    const std::string text = holder.ToText();
    return text.substr(kBefore.size(), text.size() - kBefore.size() - kAfter.size());
}

std::string IntegerText(const ValueView& value) {
    const int64_t number = value.AsLong();
    const bool isAboveLong = number < 0 && value.AsDouble() > 0;
    return isAboveLong ? std::to_string(static_cast<uint64_t>(number)) : LongText(number);
}

std::string CellText(const ValueView& value) {
    CJsonObject object;
    CDataList array;
    switch (value.Kind()) {
        case kDataString:
            return value.AsText();
        case kDataInteger:
            return IntegerText(value);
        case kDataDouble:
            return DoubleText(value.AsDouble());
        case kDataBoolean:
            return value.AsBool() ? "true" : "false";
        case kDataJson:
            return value.Get(object) ? object.ToText() : std::string();
        case kDataList:
            return value.Get(array) ? ArrayText(array) : std::string();
        default:
            return {};
    }
}

// -1 when no further column fits.
int ColumnOf(CDataTable& table, std::string_view name) {
    const int column = table.FindColumn(name);
    if (column >= 0) return column;
    if (table.GetColumnNumber() < kMaxColumns) return table.AddColumn(name);
    CCounters::Add("json_column_dropped");
    return -1;
}

void AppendObject(const CJsonObject& object, CDataTable& table) {
    const int row = table.AppendRow();
    for (const auto [name, value] : object) {
        const int column = ColumnOf(table, name);
        if (column >= 0) table.SetItemText(row, column, CellText(value));
    }
}

}  // namespace

bool TableFromArray(const CDataList& array, CDataTable& table) {
    const bool isRows = std::all_of(array.begin(), array.end(),
                                    [](const auto& element) { return element.value.Kind() == kDataJson; });
    if (!isRows || array.IsEmpty()) return false;
    CDataTable rows;
    for (const auto [key, value] : array) {
        CJsonObject object;
        if (value.Get(object)) AppendObject(object, rows);
    }
    table = rows;
    return true;
}

}  // namespace luadui
