#include "luadui/lua_call.h"

#include <cmath>

#include "base/guard.h"
#include "luadui/lua_api.h"

namespace luadui {
namespace {

// Truncated toward zero and taken as 32 bits, so that handles above 2^31 keep their bits.
int32_t ToInt32(lua_Number number) {
    constexpr double kLimit = 9.2e18;
    if (!(std::fabs(number) < kLimit)) {
        CCounters::Add("lua_number_refused");
        return 0;
    }
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(static_cast<int64_t>(number))));
}

LuaArguments::Argument ReadArgument(lua_State* L, int position, char kind) {
    LuaArguments::Argument argument;
    if (kind == 's' && lua_isstring(L, position)) {
        if (lua_type(L, position) == LUA_TNUMBER) {
            lua_pushvalue(L,
                          position);  // becomes text instead of the caller's number, and keeps the text alive
            position = -1;
        }
        argument.text = lua_tolstring(L, position, &argument.size);
    } else if (kind == 'n' && lua_isnumber(L, position)) {
        argument.number = ToInt32(lua_tonumber(L, position));
    } else if (kind == 'b' && lua_isboolean(L, position)) {
        argument.flag = lua_toboolean(L, position) != 0;
    }
    return argument;
}

LuaArguments ReadArguments(lua_State* L, const char* signature) {
    LuaArguments arguments;
    const int given = lua_gettop(L);
    for (int position = 1; signature[position - 1] != '\0' && position <= given; ++position) {
        arguments.values[position - 1] = ReadArgument(L, position, signature[position - 1]);
    }
    return arguments;
}

}  // namespace

void LuaResults::_add(Result result) {
    if (m_count < kMax) m_results[m_count++] = std::move(result);
}

int PushLuaResults(lua_State* L) {
    const auto* const results = static_cast<const LuaResults*>(lua_touserdata(L, 1));
    for (int i = 0; i < results->m_count; ++i) {
        const auto& result = results->m_results[i];
        switch (result.kind) {
            case LuaResults::Kind::kNil:
                lua_pushnil(L);
                break;
            case LuaResults::Kind::kNumber:
                lua_pushnumber(L, result.number);
                break;
            case LuaResults::Kind::kFlag:
                lua_pushboolean(L, result.flag ? 1 : 0);
                break;
            case LuaResults::Kind::kText:
                lua_pushlstring(L, result.text.data(), result.text.size());
                break;
        }
    }
    return results->m_count;
}

int RunLuaFunction(lua_State* L, const LuaFunction& function) {
    const int given = lua_gettop(L);
    if (!lua_checkstack(L, LUA_MINSTACK)) {
        CCounters::Add("lua_stack_refused");
        return 0;
    }
    const LuaArguments arguments = ReadArguments(L, function.signature);
    lua_pushcfunction(L, PushLuaResults);  // while nothing is owned: it may raise an error for lack of memory
    int count = 0;
    int status = 0;
    bool answersLastArgument = false;
    {
        LuaResults results;
        Guarded("lua_function_threw", [&] { function.run(arguments, results); });
        answersLastArgument = results.m_answersLastArgument;
        count = results.m_count;
        lua_pushlightuserdata(L, &results);
        status = lua_pcall(L, 1, count, 0);
    }
    if (status != 0) return lua_error(L);
    if (!answersLastArgument) return count;
    if (given == 0) {
        lua_pushnil(L);
    } else {
        lua_pushvalue(L, given);
    }
    return 1;
}

}  // namespace luadui
