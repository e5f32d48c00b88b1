// The broker's quote server: answers questions for quotes and pushes the changes of those that somebody subscribed to.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/ui_data.h"
#include "broker/quotes/quote_board.h"

namespace terminal {

// Requests: 1051 quotes, 1058 those of bonds, 1055 a single one; 1602 subscribes. "Params" "codeID" (else "stock_code",
//           else "code") are the securities, separated by commas, each "600000:17" or only "600000"; "DataItems" are the
//           fields of the answer, in their order. A question with "isSub" = "true" subscribes, too; "unsub" = "true" ends
//           one subscription of each of its securities. 1602 and "unsub" are not answered.
// Pushes:   topic "hq", that of bonds "hq_zq": rows of what changed, in columns of all fields that the server knows.
//
// Threads: one at a time.
class QuoteFeed {
  public:
    static constexpr int kMostRows = 100'000;  // a second

    // Opens with what the exchange trades.
    explicit QuoteFeed(const Exchange& exchange);
    // Replaces the securities; subscriptions end.
    void List(std::vector<ListedSecurity> securities);

    static bool IsAsked(const luadui::CUIData& request);
    // Takes the request. False when it is not to be answered.
    bool Take(const luadui::CUIData& request, luadui::CUIData& answer);

    // So many rows are to be pushed in a second; 0: none but those of Follow.
    void SetRate(int rows) { m_rate = rows; }
    int Rate() const { return m_rate; }
    // Lets the market move for so long; the pushes that this causes. Rows of what nobody subscribed to are not counted.
    std::vector<luadui::CUIData> Step(std::chrono::microseconds duration);
    // The exchange's price or orders of a security changed; the push, if somebody subscribed.
    std::vector<luadui::CUIData> Follow(std::string_view code);

    std::span<const Quote> Quotes() const { return m_board.Quotes(); }
    uint64_t RowCount() const { return m_rows; }

  private:
    class Pushes;

    std::vector<size_t> _securitiesOf(const luadui::CUIData& params) const;
    void _subscribe(const std::vector<size_t>& securities, bool isOn);

    const Exchange& m_exchange;
    QuoteBoard m_board;
    std::vector<int> m_subscribers;  // how many, by security
    std::vector<size_t> m_wanted;    // those with subscribers
    std::minstd_rand m_random;
    int m_rate = 0;
    double m_due = 0;  // rows, of the steps before
    double m_seconds = 9.5 * 3600;
    uint64_t m_rows = 0;
};

}  // namespace terminal
