// A Lua 5.1 state of the terminal: standard libraries, search paths beside the program, the global table "terminal".
#pragma once

#include <string>

#include <lua.hpp>

#include "host/options.h"

namespace terminal {

// Threads: one at a time. Its functions run Lua under protection; an error comes back as text with a traceback.
class LuaState {
  public:
    // Throws std::runtime_error when there is no memory for it.
    explicit LuaState(const Options& options);
    ~LuaState();
    LuaState(const LuaState&) = delete;
    LuaState& operator=(const LuaState&) = delete;

    lua_State* Get() const { return m_state; }
    // Adds a function with one upvalue, `context`, to the table "terminal".
    void Register(const char* name, lua_CFunction function, void* context);
    // Loads a script and leaves what it returns, one value, on the stack.
    bool RunFile(const std::string& path, std::string& error);
    // As lua_pcall. On failure nothing is left on the stack.
    bool Call(int arguments, int results, std::string& error);

  private:
    void _setPaths(const Options& options);

    lua_State* const m_state;
};

}  // namespace terminal
