// The host's Lua interface: functions that pages and the library call by name and wait for.
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "host/lua_state.h"
#include "host/password_store.h"

namespace terminal {

// It has a Lua state of its own: a call may come on the UI thread or on a loading thread while the host's scripts wait
// for exactly that thread, so their state must not be needed to answer.
//
// Threads: any; one call at a time.
class LuaInterface {
  public:
    explicit LuaInterface(const Options& options) : m_options(options), m_passwords(options.data) {}

    // Calls `method` of scripts/LuaInterface/interface.lua with `params` and returns its text. Empty, with a line on
    // standard error, when the script fails.
    //
    // "get_passInfo" and "save_passInfo" are answered without Lua, whose strings nobody could wipe (password_store.h). Calls
    // of methods named "On..." tell the host something: they are kept for TakeCall().
    std::string Call(const std::string& method, const std::string& params);

    struct HostCall {
        std::string method, params;
    };
    // The oldest call that told something; nothing when there is none. The last kMaxCalls are kept.
    std::optional<HostCall> TakeCall();

  private:
    static constexpr size_t kMaxCalls = 1000;

    bool _load(std::string& error);
    std::string _callScript(const std::string& method, const std::string& params);

    const Options& m_options;
    PasswordStore m_passwords;
    std::mutex m_mutex;
    std::deque<HostCall> m_calls;
    std::unique_ptr<LuaState> m_state;  // made by the first call; its function "call" is on the stack
};

}  // namespace terminal
