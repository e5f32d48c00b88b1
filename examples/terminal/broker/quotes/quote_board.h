// The simulated market: a quote for each listed security, which trades move.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <span>
#include <string_view>
#include <vector>

#include "broker/exchange.h"
#include "broker/quotes/quote.h"

namespace terminal {

// Prices walk at random by their steps, never beyond the day's limits; a few securities are suspended and stand still.
// What the exchange trades has the exchange's price, and its open orders stand in the levels, beside the market's own.
//
// The same calls give the same quotes. Threads: one at a time.
class QuoteBoard {
  public:
    // Opens the day with these securities; of equal code and market the first counts.
    void List(std::vector<ListedSecurity> securities, const Exchange& exchange);

    std::span<const Quote> Quotes() const { return m_quotes; }
    const Quote& At(size_t index) const { return m_quotes[index]; }
    // Those with this code, all of them or (`market` not empty) the one of that market.
    std::vector<size_t> Find(std::string_view code, std::string_view market) const;

    // A trade happens. False when the security is suspended.
    bool Move(size_t index, const Exchange& exchange);
    // Takes over the exchange's price and open orders.
    void Follow(size_t index, const Exchange& exchange);
    // The time of changes from now on, in seconds since midnight.
    void SetTime(int seconds) { m_seconds = seconds; }

  private:
    int _random(int first, int last);
    Mills _walk(const Quote& quote);
    void _fillLevels(Quote& quote, bool isUp, const Exchange& exchange);

    std::vector<Quote> m_quotes;
    std::multimap<std::string, size_t, std::less<>> m_byCode;
    std::minstd_rand m_random;
    int m_seconds = 0;
};

}  // namespace terminal
