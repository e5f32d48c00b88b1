// What records say, as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/ui_data.h"

namespace terminal {

// A value as text: sets and lists separated by commas, booleans "yes" and "no"; empty for records and tables.
std::string TextOf(const luadui::ValueView& value);
// The names in a list separated by commas, without the empty ones.
std::vector<std::string> NamesOf(std::string_view list);

}  // namespace terminal
