// Money and prices as whole numbers, so that sums are exact, and as the text that tables carry.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace terminal {

using Cents = int64_t;  // 1/100 of the currency
using Mills = int64_t;  // prices: 1/1000 of the currency
using Shares = int64_t;

constexpr Mills kMaxPrice = 100'000'000;
constexpr Shares kMaxVolume = 100'000'000;  // of an order

// Rounds half away from zero.
constexpr Cents ValueOf(Shares volume, Mills price) {
    const int64_t mills = volume * price;
    return (mills + (mills < 0 ? -5 : 5)) / 10;
}

std::string CentsText(Cents value);  // "-1234.50"
std::string MillsText(Mills price);  // "12.345"
// "12.345", "12.3" or "12", up to kMaxPrice; nothing for anything else.
std::optional<Mills> ParsePrice(std::string_view text);

}  // namespace terminal
