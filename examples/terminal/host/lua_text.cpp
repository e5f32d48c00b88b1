#include "host/lua_text.h"

#include "base/text.h"
#include "host/lua_answer.h"
#include "host/lua_state.h"

namespace terminal {
namespace {

using Convert = std::string (*)(std::string_view);

// The result is kept between calls, so that no text of this function is alive when Lua may raise an error.
template <Convert convert>
int ConvertText(lua_State* L) {
    size_t size = 0;
    const char* text = luaL_checklstring(L, 1, &size);
    thread_local LuaAnswer answer;
    return Answered(L, answer, [&](LuaAnswer& out) { out.Add(convert(std::string_view(text, size))); });
}

}  // namespace

void RegisterTextFunctions(LuaState& state) {
    state.Register("to_utf8", ConvertText<luadui::GbkToUtf8>, nullptr);
    state.Register("to_codepage", ConvertText<luadui::Utf8ToGbk>, nullptr);
}

}  // namespace terminal
