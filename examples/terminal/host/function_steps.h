// What the functions of the table "terminal" have in common: each reads its arguments, then calls Run.
#pragma once

#include <span>
#include <string>

#include "host/host_functions.h"
#include "host/terminal.h"

namespace terminal {

constexpr int kMaxWait = 60'000;

// The functions that act on the broker.
std::span<const luaL_Reg> BrokerFunctions();
// Those that are about accounts.
std::span<const luaL_Reg> AccountFunctions();
// Those about securities and quotes.
std::span<const luaL_Reg> QuoteFunctions();

inline HostFunctions& Context(lua_State* L) {
    return *static_cast<HostFunctions*>(lua_touserdata(L, lua_upvalueindex(1)));
}

// The last of the three steps of a function: read the arguments, then Run(L, work). `work` gets the terminal and the
// answer, and no longer touches Lua.
template <class Work>
int Run(lua_State* L, Work work) {
    HostFunctions& context = Context(L);
    return Answered(L, context.Answer(), [&](LuaAnswer& answer) { work(context.GetTerminal(), answer); });
}

inline void AddOutcome(LuaAnswer& answer, bool done, const std::string& error) {
    if (done) return answer.Add(true);
    answer.Fail(error);
}

}  // namespace terminal
