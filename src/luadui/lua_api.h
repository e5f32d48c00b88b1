// The one place that includes Lua's headers. The library may be the C flavour, whose errors jump, or the C++
// flavour, whose errors are exceptions; both export the functions with C linkage.
#pragma once

extern "C" {
#include <lauxlib.h>
#include <lua.h>
}
