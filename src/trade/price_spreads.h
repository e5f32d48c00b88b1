// The steps of Stock Connect prices, which depend on the price.
#pragma once

#include "trade/decimal.h"

namespace luadui {

// By the bands that were registered last (see CTrade::SetPriceSpreads) for shares. A band holds its beginning, not its
// end; the end of the last band belongs to it, too. Zero when no band holds the price. Threads: any.
Decimal StockConnectStep(Decimal price);

}  // namespace luadui
