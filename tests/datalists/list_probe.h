// What lists hold, as text.
#pragma once

#include <string>
#include <vector>

#include "base/counters.h"
#include "base/ui_data.h"
#include "tests/fakes/describe.h"
#include "tests/fakes/tables.h"

namespace luadui {

// The table under the key, which in lists is an account's token.
inline std::string Held(const CUIData& record, std::string_view key) {
    CDataTable table;
    return record.GetData(key, table) ? Describe(table) : "none";
}

inline std::string Tokens(const CUIData& record, const char* key = "fund_token") {
    CDataSet set;
    std::string text;
    record.GetData(key, set);
    for (const std::string& token : set) text += token + " ";
    return text;
}

inline CDataSet SetOf(const std::vector<std::string>& texts) {
    CDataSet set;
    for (const std::string& text : texts) set.Insert(text);
    return set;
}

class Counted {
  public:
    explicit Counted(const char* name) : m_name(name), m_before(CCounters::Get(name)) {}
    uint64_t operator()() const { return CCounters::Get(m_name) - m_before; }

  private:
    const char* const m_name;
    const uint64_t m_before;
};

}  // namespace luadui
