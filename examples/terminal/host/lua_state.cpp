#include "host/lua_state.h"

#include <stdexcept>

#include "host/lua_text.h"
#include "settings/data_path.h"

namespace terminal {
namespace {

int AddTraceback(lua_State* L) {
    lua_getglobal(L, "debug");
    lua_getfield(L, -1, "traceback");
    lua_pushvalue(L, 1);
    lua_pushinteger(L, 2);
    lua_call(L, 2, 1);
    return 1;
}

// The modules that the terminal brings are found first, then what the system has (SQLite and JSON for Lua).
void Prepend(lua_State* L, const char* field, const std::string& path) {
    lua_getglobal(L, "package");
    lua_getfield(L, -1, field);
    lua_pushfstring(L, "%s;%s", path.c_str(), lua_tostring(L, -1));
    lua_setfield(L, -3, field);
    lua_pop(L, 2);
}

}  // namespace

LuaState::LuaState(const Options& options) : m_state(luaL_newstate()) {
    if (!m_state) throw std::runtime_error("no memory for Lua");
    luaL_openlibs(m_state);
    _setPaths(options);
    lua_newtable(m_state);
    lua_setglobal(m_state, "terminal");
    RegisterTextFunctions(*this);
}

LuaState::~LuaState() { lua_close(m_state); }

void LuaState::_setPaths(const Options& options) {
    const std::string home = PathToUtf8(options.home);
#if defined(_WIN32)
    Prepend(m_state, "cpath", home + "\\?.dll");
#else
    Prepend(m_state, "cpath", home + "/?.so");
#endif
    Prepend(m_state, "path", home + "/scripts/?.lua");
}

void LuaState::Register(const char* name, lua_CFunction function, void* context) {
    lua_getglobal(m_state, "terminal");
    lua_pushlightuserdata(m_state, context);
    lua_pushcclosure(m_state, function, 1);
    lua_setfield(m_state, -2, name);
    lua_pop(m_state, 1);
}

bool LuaState::RunFile(const std::string& path, std::string& error) {
    if (luaL_loadfile(m_state, path.c_str()) == 0) return Call(0, 1, error);
    error = lua_tostring(m_state, -1);
    lua_pop(m_state, 1);
    return false;
}

bool LuaState::Call(int arguments, int results, std::string& error) {
    const int handler = lua_gettop(m_state) - arguments;
    lua_pushcfunction(m_state, AddTraceback);
    lua_insert(m_state, handler);
    const int status = lua_pcall(m_state, arguments, results, handler);
    lua_remove(m_state, handler);
    if (status == 0) return true;
    const char* text = lua_tostring(m_state, -1);
    error = text ? text : "an error without a text";
    lua_pop(m_state, 1);
    return false;
}

}  // namespace terminal
