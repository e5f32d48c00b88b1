// How the record of a quote follows from a row of the quote server.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "base/data_table.h"
#include "base/ui_data.h"
#include "datalists/quote_field_table.h"

namespace luadui {

// Servers write it for what they do not know.
inline bool SaysNothing(std::string_view cell) { return cell.empty() || cell == "-"; }

// A security, and what is remembered from filling its record so that the next time costs less.
class QuoteSecurity {
  public:
    static constexpr size_t kKeys = std::size(kQuoteFields) + std::size(kDerivedQuoteNames);

    QuoteSecurity(std::string_view code, int market);

  private:
    friend class QuoteFiller;
    int m_decimals;
    int m_market;
    bool m_isFilled = false;                // at least once; then the record holds all that follows
    bool m_isPush = false;                  // as the record says
    QuoteNumbers m_numbers{};               // those of the record
    std::array<uint8_t, kKeys> m_places{};  // of keys in the record
    // For which previous close and state of the code list the limits in the record are.
    double m_limitsOf = std::numeric_limits<double>::quiet_NaN();
    uint64_t m_codesAt = 0;
};

// What is new of a security.
struct QuoteNews {
    TableRow row;                     // all that is known of it, in kPushColumns
    const std::vector<int>& changes;  // the columns in which it changed
    std::string_view change;          // in percent, as the server says with these changes; may be nothing
    bool isPush;                      // becomes "is_push"
};

// Puts what changed into `record`, which is that of `security` (with this `key`, "code:market"), and what follows from
// the fields that the record then has. Unreadable numbers count as "quote_number_unreadable".
void FillQuote(const QuoteNews& news, std::string_view key, QuoteSecurity& security, CUIData& record);

}  // namespace luadui
