// The module's entry for Lua.
#include <utility>

#include "luadui/lua_api.h"
#include "luadui/lua_functions.h"
#include "luadui/luadui.h"

namespace luadui {
namespace {

template <size_t kIndex>
int Entry(lua_State* L) {
    return RunLuaFunction(L, kLuaFunctions[kIndex]);
}

template <size_t... kIndexes>
void Register(lua_State* L, std::index_sequence<kIndexes...>) {
    const luaL_Reg functions[] = {{kLuaFunctions[kIndexes].name, Entry<kIndexes>}..., {nullptr, nullptr}};
    luaL_register(L, "luadui", functions);
}

}  // namespace
}  // namespace luadui

int luaopen_luadui(lua_State* L) {
    luadui::Register(L, std::make_index_sequence<luadui::kLuaFunctionCount>());
    return 0;
}
