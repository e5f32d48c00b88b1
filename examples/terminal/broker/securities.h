// The securities that the simulated exchange trades.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "broker/money.h"

namespace terminal {

struct Security {
    std::string code;
    std::string name;  // code page 936
    std::string market;
    Mills last = 0;           // price of now
    Mills previousClose = 0;  // of the day before
};

// Opens with the securities of the sample accounts and a few more.
std::vector<Security> SampleSecurities();

// The currency in which a market trades.
std::string_view CurrencyOf(std::string_view market);

// Whether an order may be for so many: whole lots, or, for a sale, all that can be sold.
bool IsWholeLots(const Security& security, Shares volume, bool isSale, Shares available);

// The lowest and the highest price of today.
std::pair<Mills, Mills> LimitsOf(const Security& security);
// Whether the exchange takes orders at this price today.
bool IsWithinLimits(const Security& security, Mills price);

}  // namespace terminal
