// Where a market's securities are traded.
#pragma once

#include <string_view>

namespace luadui {

// The two ways into Hong Kong are apart: what was bought through one cannot be sold through the other.
enum class Venue { kUnknown, kShanghai, kShenzhen, kShanghaiConnect, kShenzhenConnect };

constexpr bool IsStockConnect(Venue venue) {
    return venue == Venue::kShanghaiConnect || venue == Venue::kShenzhenConnect;
}

// `market`: the market id as text ("17"). Threads: any.
Venue VenueOf(std::string_view market);

}  // namespace luadui
