#include "host/lua_interface.h"

#include <cstdio>

#include "base/counters.h"
#include "settings/data_path.h"

namespace terminal {

bool LuaInterface::_load(std::string& error) {
    if (m_state) return true;
    auto state = std::make_unique<LuaState>(m_options);
    lua_getglobal(state->Get(), "terminal");
    lua_pushstring(state->Get(), PathToUtf8(m_options.data).c_str());
    lua_setfield(state->Get(), -2, "data_folder");
    lua_pop(state->Get(), 1);
    if (!state->RunFile(PathToUtf8(m_options.home / "scripts" / "LuaInterface" / "interface.lua"), error))
        return false;
    m_state = std::move(state);
    return true;
}

std::string LuaInterface::Call(const std::string& method, const std::string& params) {
    if (method == "get_passInfo") return m_passwords.Get(params);
    if (method == "save_passInfo") {
        m_passwords.Save(params);
        return {};
    }
    std::lock_guard lock(m_mutex);
    if (method.starts_with("On")) {
        m_calls.push_back({method, params});
        if (m_calls.size() > kMaxCalls) m_calls.pop_front();
    }
    return _callScript(method, params);
}

std::optional<LuaInterface::HostCall> LuaInterface::TakeCall() {
    std::lock_guard lock(m_mutex);
    if (m_calls.empty()) return std::nullopt;
    HostCall call = std::move(m_calls.front());
    m_calls.pop_front();
    return call;
}

std::string LuaInterface::_callScript(const std::string& method, const std::string& params) {
    std::string error;
    std::string result;
    bool called = _load(error);
    if (called) {
        lua_State* L = m_state->Get();
        lua_pushvalue(L, 1);
        lua_pushlstring(L, method.data(), method.size());
        lua_pushlstring(L, params.data(), params.size());
        called = m_state->Call(2, 1, error);
        if (called) {
            size_t size = 0;
            const char* text = lua_tolstring(L, -1, &size);
            if (text) result.assign(text, size);
            lua_pop(L, 1);
        }
    }
    if (!called) {
        luadui::CCounters::Add("lua_interface_failed");
        std::fprintf(stderr, "Lua interface: %s\n", error.c_str());
    }
    return result;
}

}  // namespace terminal
