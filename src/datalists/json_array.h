// JSON arrays as single texts, which is how tables carry lists in a cell.
#pragma once

#include <string>
#include <string_view>

#include "base/data_list.h"
#include "base/json_object.h"

namespace luadui {

// False, and `out` unchanged, when `text` (code page 936) is not one JSON array.
inline bool ParseJsonArray(std::string_view text, CDataList& out) {
    constexpr std::string_view kBefore = R"({"":[)", kAfter = "]}";
    std::string object;
    object.reserve(kBefore.size() + text.size() + kAfter.size());
    object.append(kBefore).append(text).append(kAfter);
    CJsonObject parsed;
    CDataList outer;
    return parsed.Parse(object) && parsed.Get("", outer) && outer.Size() == 1 && outer.Get(0, out);
}

}  // namespace luadui
