// What lists hold, as text.
#pragma once

#include <string>
#include <vector>

#include "base/counters.h"
#include "base/ui_data.h"
#include "tests/fakes/tables.h"

namespace luadui {

// Column names in the first line, then the rows, as "a,b;1,2".
inline std::string Dump(const CDataTable& table) {
    std::string text;
    for (int col = 0; col < table.GetColumnNumber(); ++col)
        text += (col ? "," : "") + std::string(table.GetColumnProperty(col, "name"));
    for (int row = 0; row < table.GetRowNumber(); ++row) {
        text += ";";
        for (int col = 0; col < table.GetColumnNumber(); ++col)
            text += (col ? "," : "") + std::string(table.GetItemText(row, col));
    }
    return text;
}

inline std::string TableText(const CUIData& record, std::string_view key) {
    CDataTable table;
    return record.GetData(key, table) ? Dump(table) : "none";
}

inline std::string Held(const CUIData& list, std::string_view token) { return TableText(list, token); }

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
