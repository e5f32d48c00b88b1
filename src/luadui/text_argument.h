// Text arguments of exported functions.
#pragma once

#include <string>

namespace luadui {

// The text; empty for null.
inline std::string TextOf(const char* text) { return text ? text : ""; }

}  // namespace luadui
