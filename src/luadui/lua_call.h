// One call of a Lua function in three steps that never mix Lua errors with C++ objects: read the arguments
// (Lua may raise an error, nothing is owned yet), run (C++ only, guarded), push the results (under
// lua_pcall).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct lua_State;

namespace luadui {

// The arguments of one call, read by the function's signature. Owns nothing: texts belong to Lua and stay
// valid during the call, since the arguments stay on the stack.
struct LuaArguments {
    static constexpr int kMax = 8;
    struct Argument {
        const char* text = "";
        size_t size = 0;
        int32_t number = 0;
        bool flag = false;
    };
    Argument values[kMax];

    std::string Text(int position) const { return {values[position - 1].text, values[position - 1].size}; }
    int32_t Number(int position) const { return values[position - 1].number; }
    bool Flag(int position) const { return values[position - 1].flag; }
};

// The results of one call.
class LuaResults {
  public:
    void AddNil() { _add({Kind::kNil, 0, false, {}}); }
    void AddNumber(double number) { _add({Kind::kNumber, number, false, {}}); }
    void AddFlag(bool flag) { _add({Kind::kFlag, 0, flag, {}}); }
    // Text in code page 936.
    void AddText(std::string text) { _add({Kind::kText, 0, false, std::move(text)}); }
    void Clear() { m_count = 0; }
    // The call answers its own last argument, nil when it had none.
    void AnswerLastArgument() { m_answersLastArgument = true; }

  private:
    friend int RunLuaFunction(lua_State* L, const struct LuaFunction& function);
    friend int PushLuaResults(lua_State* L);
    enum class Kind { kNil, kNumber, kFlag, kText };
    struct Result {
        Kind kind = Kind::kNil;
        double number = 0;
        bool flag = false;
        std::string text;
    };
    void _add(Result result);

    static constexpr int kMax = 2;
    Result m_results[kMax];
    int m_count = 0;
    bool m_answersLastArgument = false;
};

// A row of the module's function table. The signature has a letter per argument: s text, n number, b boolean,
// '-' not read. An argument that is missing or of another type reads as "", 0 or false.
struct LuaFunction {
    const char* name;
    const char* signature;
    void (*run)(const LuaArguments& arguments, LuaResults& results);
};

// Runs a function of the table for Lua. A C++ exception is counted and answers no results; the only Lua
// errors are Lua's own, for lack of memory.
int RunLuaFunction(lua_State* L, const LuaFunction& function);

}  // namespace luadui
