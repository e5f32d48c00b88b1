// The host's Lua interface: functions that pages and the library call by name and wait for.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "host/lua_state.h"

namespace terminal {

// It has a Lua state of its own: a call may come on the UI thread or on a loading thread while the host's scripts wait
// for exactly that thread, so their state must not be needed to answer.
//
// Threads: any; one call at a time.
class LuaInterface {
  public:
    explicit LuaInterface(const Options& options) : m_options(options) {}

    // Calls `method` of scripts/LuaInterface/interface.lua with `params` and returns its text. Empty, with a line on
    // standard error, when the script fails.
    std::string Call(const std::string& method, const std::string& params);

  private:
    bool _load(std::string& error);

    const Options& m_options;
    std::mutex m_mutex;
    std::unique_ptr<LuaState> m_state;  // made by the first call; its function "call" is on the stack
};

}  // namespace terminal
