// How the record of a quote follows from a row of the quote server.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "datalists/quote_field_table.h"

namespace luadui {

// Servers write it for what they do not know.
inline bool SaysNothing(std::string_view cell) { return cell.empty() || cell == "-"; }

// Which columns of a table are fields of quotes. For all tables of the same columns.
class QuoteColumns {
  public:
    explicit QuoteColumns(const CDataTable& table);
    bool Fits(const CDataTable& table) const { return m_header.HasSameColumns(table); }

    // -1 for those that the table lacks.
    int Code() const { return m_code; }
    int Market() const { return m_market; }

  private:
    friend class QuoteFiller;
    CDataTable m_header;
    int m_code = -1, m_market = -1, m_change = -1, m_status = -1;
    std::vector<std::pair<uint8_t, int>> m_others;  // of kQuoteFields, in this order, and their columns
};

// A security, and what is remembered from filling its record so that the next time costs less.
class QuoteSecurity {
  public:
    static constexpr size_t kKeys = std::size(kQuoteFields) + std::size(kDerivedQuoteNames);

    QuoteSecurity(std::string_view code, int market);

  private:
    friend class QuoteFiller;
    std::array<uint8_t, kKeys> m_places{};  // of keys in the record
    int m_decimals;
    int m_market;
    // For which previous close and state of the code list the limits in the record are.
    double m_limitsOf = std::numeric_limits<double>::quiet_NaN();
    uint64_t m_codesAt = 0;
};

// Puts what the row says into `record`, which is that of `security` (with this `key`, "code:market"), and what follows
// from the fields that the record then has. Unreadable numbers count as "quote_number_unreadable". `isPush` becomes
// "is_push".
void FillQuote(const TableRow& row, const QuoteColumns& columns, std::string_view key, bool isPush,
               QuoteSecurity& security, CUIData& record);

}  // namespace luadui
