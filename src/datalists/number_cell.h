// Numbers in the cells of trading tables.
#pragma once

#include <string_view>

#include "base/counters.h"
#include "trade/decimal.h"

namespace luadui {

// The number that a server wrote; zero for what is none, counted under `unreadable`, the name of the kind and the
// column (a literal such as "fund_total_assets_unreadable").
inline Decimal ReadNumber(std::string_view text, const char* unreadable) {
    if (const auto number = Decimal::Parse(text)) return *number;
    CCounters::Add(unreadable);
    return {};
}

}  // namespace luadui
