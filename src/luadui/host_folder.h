// Where the host lives.
#pragma once

#include <string>

namespace luadui {

// The folder of the host's executable, without a separator at its end.
std::wstring HostFolder();

}  // namespace luadui
