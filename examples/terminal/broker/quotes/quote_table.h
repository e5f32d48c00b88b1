// Quotes as a table of the quote server: a column for each field, named by its number.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/data_table.h"
#include "broker/quotes/quote.h"

namespace terminal {

struct QuoteField;

class QuoteTable {
  public:
    // All fields that the server knows.
    QuoteTable();
    // Those named, in their order; of a field that the server does not know it says "-".
    explicit QuoteTable(const std::vector<std::string>& fields);

    // A row with all that there is to say.
    void Append(const Quote& quote);
    // A row with what is not as in `before`, and the security; the other cells are "-" or empty, as the bits of `variant`
    // have it.
    void AppendChange(const Quote& before, const Quote& quote, uint64_t variant);

    const luadui::CDataTable& Get() const { return m_table; }

  private:
    void _addColumn(const std::string& name, const QuoteField* field);

    luadui::CDataTable m_table;
    std::vector<const QuoteField*> m_fields;  // of the columns; null: not known
};

}  // namespace terminal
