#include "host/lua_answer.h"

namespace terminal {
namespace {

using luadui::CUIData;

void PushText(lua_State* L, std::string_view text) { lua_pushlstring(L, text.data(), text.size()); }

void PushRecord(lua_State* L, const CUIData& record) {
    lua_newtable(L);
    for (auto entry = record.begin(); entry != record.end(); ++entry) {
        const auto [key, value] = *entry;
        PushText(L, key);
        switch (value.Kind()) {
            case luadui::kDataString:
                PushText(L, value.AsText());
                break;
            case luadui::kDataBoolean:
                lua_pushboolean(L, value.AsBool());
                break;
            case luadui::kDataInteger:
            case luadui::kDataDouble:
                lua_pushnumber(L, value.AsDouble());
                break;
            default:
                lua_pushnil(L);
        }
        lua_rawset(L, -3);
    }
}

struct Pusher {
    lua_State* L;
    void operator()(std::monostate) const { lua_pushnil(L); }
    void operator()(bool value) const { lua_pushboolean(L, value); }
    void operator()(double value) const { lua_pushnumber(L, value); }
    void operator()(const std::string& value) const { PushText(L, value); }
    void operator()(const CUIData& value) const { PushRecord(L, value); }
    void operator()(const std::vector<CUIData>& values) const {
        lua_newtable(L);
        int index = 0;
        for (const CUIData& value : values) {
            PushRecord(L, value);
            lua_rawseti(L, -2, ++index);
        }
    }
};

}  // namespace

int LuaAnswer::Push(lua_State* L) const {
    luaL_checkstack(L, static_cast<int>(m_values.size()) + 8, "too many results");
    for (const Value& value : m_values) std::visit(Pusher{L}, value);
    return static_cast<int>(m_values.size());
}

}  // namespace terminal
