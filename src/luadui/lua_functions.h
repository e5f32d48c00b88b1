// The sixteen functions that scripts call.
#pragma once

#include <cstddef>

#include "luadui/lua_call.h"

namespace luadui {

inline constexpr size_t kLuaFunctionCount = 16;
extern const LuaFunction kLuaFunctions[kLuaFunctionCount];

}  // namespace luadui
