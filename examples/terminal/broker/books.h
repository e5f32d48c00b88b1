// What the broker's own books say, for comparison with what clients show.
#pragma once

#include <vector>

#include "base/ui_data.h"
#include "broker/account.h"

namespace terminal {

// Totals of an account, money as whole cents: "fund_token", "customer" (UTF-8), "credit" (whether it trades on credit), "orders", "open_orders", "order_volume",
// "dealt_volume" (of the orders), "deals", "deal_volume" and "turnover" (of the deals), "positions"; and for each currency,
// as in "CNY_available": "available", "frozen", "market_value", "assets", "day_profit".
luadui::CUIData TotalsOf(const Account& account);
// The positions: "code", "market_value", "volume", "available".
std::vector<luadui::CUIData> HoldingsOf(const Account& account);

}  // namespace terminal
