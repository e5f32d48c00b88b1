// A Lua state with the module in it, whose memory can run out on demand.
#pragma once

#include <lua.hpp>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace luadui {

class LuaScripts {
  public:
    // `open` is luaopen_luadui.
    explicit LuaScripts(int (*open)(lua_State*)) : m_state(lua_newstate(_allocate, this)) {
        luaL_openlibs(m_state);
        lua_cpcall(m_state, open, nullptr);
        lua_settop(m_state, 0);
    }
    ~LuaScripts() { Close(); }
    LuaScripts(const LuaScripts&) = delete;
    LuaScripts& operator=(const LuaScripts&) = delete;

    void Close() {
        if (m_state) lua_close(m_state);
        m_state = nullptr;
    }
    lua_State* State() const { return m_state; }

    // Runs a chunk. Its results are separated by blanks: texts as they are, numbers, true, false, nil; "none" when
    // there are none; "error: " and the message when it failed.
    std::string Run(const std::string& chunk) {
        return luaL_loadbuffer(m_state, chunk.data(), chunk.size(), "script") != 0 ? _finish(1) : Call();
    }
    // Calls the function on top of the stack, as Run does.
    std::string Call() { return _finish(lua_pcall(m_state, 0, LUA_MULTRET, 0)); }

    // From now on `count` allocations succeed and all later ones fail.
    void FailAfter(int count) { m_left = count; }
    int LiveBlocks() const { return m_blocks; }

  private:
    static void* _allocate(void* self, void* block, size_t, size_t size) {
        auto& scripts = *static_cast<LuaScripts*>(self);
        if (size == 0) {
            scripts.m_blocks -= block ? 1 : 0;
            std::free(block);
            return nullptr;
        }
        if (scripts.m_left == 0) return nullptr;
        if (scripts.m_left != INT_MAX) --scripts.m_left;
        scripts.m_blocks += block ? 0 : 1;
        return std::realloc(block, size);
    }

    std::string _finish(int status) {
        std::string text = status ? "error:" : lua_gettop(m_state) == 0 ? "none" : "";
        for (int i = 1; i <= lua_gettop(m_state); ++i) {
            if (i > 1 || status) text += ' ';
            text += _describe(i);
        }
        lua_settop(m_state, 0);
        return text;
    }
    std::string _describe(int index) const {
        if (lua_isboolean(m_state, index)) return lua_toboolean(m_state, index) ? "true" : "false";
        if (!lua_isstring(m_state, index)) return lua_typename(m_state, lua_type(m_state, index));
        if (lua_isnumber(m_state, index))
            return std::to_string(static_cast<long long>(lua_tonumber(m_state, index)));
        size_t size = 0;
        const char* const text = lua_tolstring(m_state, index, &size);
        return {text, size};
    }

    int m_left = INT_MAX;
    int m_blocks = 0;
    lua_State* m_state;
};

}  // namespace luadui
