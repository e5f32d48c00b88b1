#include "page/record_text.h"

#include "base/data_list.h"
#include "base/data_set.h"
#include "base/text.h"

namespace terminal {
namespace {

void AppendName(std::string& list, std::string_view name) {
    list.append(list.empty() ? "" : ",").append(name);
}

}  // namespace

std::string TextOf(const luadui::ValueView& value) {
    luadui::CDataSet set;
    luadui::CDataList list;
    std::string text;
    if (value.Get(list))
        for (const auto [key, item] : list) set.Insert(item.AsText());
    if (value.Get(set) || !list.IsEmpty()) {
        for (const std::string& name : set) AppendName(text, name);
        return text;
    }
    if (value.Kind() == luadui::kDataInteger) return std::to_string(value.AsLong());
    if (value.Kind() == luadui::kDataDouble) return luadui::DoubleText(value.AsDouble());
    if (value.Kind() == luadui::kDataBoolean) return value.AsBool() ? "yes" : "no";
    return value.AsText();
}

std::vector<std::string> NamesOf(std::string_view list) {
    std::vector<std::string> names;
    for (const std::string_view name : luadui::SplitText(list, ','))
        if (!name.empty()) names.emplace_back(name);
    return names;
}

}  // namespace terminal
