// What a function of the terminal hands back to its Lua caller.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include <lua.hpp>

#include "base/ui_data.h"

namespace terminal {

// A Lua error (out of memory, for instance) jumps over C++ frames without running their destructors. So a function
// reads its arguments first, does its work without touching Lua, puts the results here and pushes them when no C++
// object of its own is alive any more. The answer belongs to the context of the functions and is used again.
class LuaAnswer {
  public:
    void Clear() { m_values.clear(); }
    void Add(bool value) { m_values.emplace_back(value); }
    void Add(double value) { m_values.emplace_back(value); }
    void Add(std::string value) { m_values.emplace_back(std::move(value)); }
    void Add(const char* value) { m_values.emplace_back(std::string(value)); }
    void AddNil() { m_values.emplace_back(); }
    // A record becomes a table of its texts, numbers and booleans.
    void Add(const luadui::CUIData& record) { m_values.emplace_back(record); }
    // A list of records becomes an array.
    void Add(std::vector<luadui::CUIData> records) { m_values.emplace_back(std::move(records)); }
    // The one shape of failure: nil and a text.
    void Fail(const std::string& text) {
        Clear();
        AddNil();
        Add(text);
    }

    // Pushes the values and returns how many they are.
    int Push(lua_State* L) const;

  private:
    using Value = std::variant<std::monostate, bool, double, std::string, luadui::CUIData,
                               std::vector<luadui::CUIData>>;
    std::vector<Value> m_values;
};

// Runs `work(answer)`; an exception becomes a failure.
template <class Work>
int Answered(lua_State* L, LuaAnswer& answer, Work work) {
    try {
        answer.Clear();
        work(answer);
    } catch (const std::exception& exception) {
        answer.Fail(exception.what());
    }
    return answer.Push(L);
}

}  // namespace terminal
