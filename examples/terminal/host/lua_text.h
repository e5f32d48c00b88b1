// The text functions of the table "terminal": the same in the host's state and in that of the Lua interface.
#pragma once

namespace terminal {

class LuaState;

//   terminal.to_utf8(text)      code page 936 to UTF-8
//   terminal.to_codepage(text)  and back
void RegisterTextFunctions(LuaState& state);

}  // namespace terminal
