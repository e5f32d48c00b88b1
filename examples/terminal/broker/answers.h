// The records that the broker sends: answers, errors, change notices and, on demand, nonsense.
#pragma once

#include <string>
#include <string_view>

#include "base/ui_data.h"

namespace terminal {

// The frame of the answer to `request`: addressed to its sender, with a copy of the request as it came.
luadui::CUIData MakeAnswer(const luadui::CUIData& request);
// An error answer; `message` is UTF-8.
luadui::CUIData MakeError(const luadui::CUIData& request, int code, std::string_view message);
// "The data of `type` of this account changed", to the object with the handle `to`.
luadui::CUIData MakeChangeNotice(int type, const std::string& fundToken, const std::string& to);
// An answer that arrives but is not what was agreed: known keys with wrong kinds, broken text, rows without columns.
// `variant` says which.
luadui::CUIData MakeGarbage(const luadui::CUIData& request, unsigned variant);

}  // namespace terminal
