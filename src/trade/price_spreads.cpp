#include "trade/price_spreads.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

#include "base/counters.h"
#include "trade/trade.h"

namespace luadui {
namespace {

// All markets of Stock Connect are ways to one exchange.
constexpr std::string_view kShares = "E:0";

struct Bands {
    std::shared_mutex mutex;
    std::vector<PriceSpread> shares;  // by their beginnings
};

Bands& Registered() {
    static auto* const bands = new Bands;
    return *bands;
}

bool IsUsable(const PriceSpread& spread) { return spread.begin < spread.end && spread.step > Decimal(0); }

}  // namespace

void CTrade::SetPriceSpreads(std::span<const PriceSpread> spreads) {
    std::vector<PriceSpread> shares;
    for (const PriceSpread& spread : spreads) {
        if (!IsUsable(spread)) {
            CCounters::Add("price_spread_unusable");
        } else if (spread.key == kShares) {
            shares.push_back(spread);
        }
    }
    std::stable_sort(shares.begin(), shares.end(),
                     [](const PriceSpread& a, const PriceSpread& b) { return a.begin < b.begin; });
    Bands& bands = Registered();
    const std::unique_lock lock(bands.mutex);
    bands.shares.swap(shares);
}

Decimal StockConnectStep(Decimal price) {
    Bands& bands = Registered();
    const std::shared_lock lock(bands.mutex);
    auto band =
        std::upper_bound(bands.shares.begin(), bands.shares.end(), price,
                         [](Decimal wanted, const PriceSpread& spread) { return wanted < spread.begin; });
    const bool isLast = band == bands.shares.end();
    if (band == bands.shares.begin()) return {};
    --band;
    return price < band->end || (isLast && price == band->end) ? band->step : Decimal();
}

}  // namespace luadui
