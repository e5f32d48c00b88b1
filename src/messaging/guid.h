// Fresh identifiers of requests.
#pragma once

#include <string>

namespace luadui {

// A new GUID as lower-case text: 8-4-4-4-12 hexadecimal digits.
std::string NewGuid();

}  // namespace luadui
