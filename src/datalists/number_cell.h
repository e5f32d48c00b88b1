// Numbers in the cells of trading tables.
#pragma once

#include <optional>
#include <string_view>

#include "base/counters.h"
#include "trade/decimal.h"

namespace luadui {

// The number that a server wrote; what is none is counted under `unreadable`, the name of the kind and the column (a
// literal such as "fund_total_assets_unreadable").
inline std::optional<Decimal> FindNumber(std::string_view text, const char* unreadable) {
    const auto number = Decimal::Parse(text);
    if (!number) CCounters::Add(unreadable);
    return number;
}
// The same with zero for what is none.
inline Decimal ReadNumber(std::string_view text, const char* unreadable) {
    return FindNumber(text, unreadable).value_or(Decimal());
}

}  // namespace luadui
