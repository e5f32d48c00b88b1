// The module's own log: what a maker needs to find out why something did not happen.
#pragma once

#include <string_view>

namespace luadui {

// Adds a dated line to "luadui-<date>.log" in the folder "log" of the host. `text` is code page 936; secrets never
// go in.
void ModuleLog(std::string_view text);

}  // namespace luadui
