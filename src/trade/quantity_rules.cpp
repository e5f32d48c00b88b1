// How many shares or bonds an order may be for.
#include <algorithm>
#include <numeric>

#include "trade/trade.h"

namespace luadui {
namespace {

// In repo the price is a rate of interest; a bond stands for that much money.
constexpr Decimal kRepoFace = 100;

struct Lots {
    int64_t least;
    int64_t increment;
    int64_t unit;           // that of the page
    bool isOddLotSeparate;  // an order for an odd lot may hold nothing else
};

Lots LotsOf(StockType type, int64_t unit) {
    unit = std::max<int64_t>(unit, 1);
    // There the unit is the share's board lot.
    if (type == StockType::kStockConnect) return {unit, unit, 1, true};
    const StockRules& rules = RulesOf(type);
    return {rules.least, rules.increment, unit, false};
}

int64_t RoundToLots(const Lots& lots, int64_t quantity) {
    int64_t both = 0;  // a multiple of it is one of the increment and of the unit
    const int64_t factor = lots.unit / std::gcd(lots.unit, lots.increment);
    if (__builtin_mul_overflow(lots.increment, factor, &both)) return 0;
    const int64_t rounded = quantity / both * both;
    return rounded < lots.least ? 0 : rounded;
}

// The largest quantity with the odd part of what is held, which goes at once; 0 when there is none up to `quantity`.
int64_t RoundToOddLot(const Lots& lots, int64_t quantity, int64_t held) {
    if (quantity == held && !lots.isOddLotSeparate) return held;
    const bool isByOne = lots.increment == 1;  // all of too little is the only odd lot
    const int64_t odd = isByOne ? held : held % lots.increment;
    if (lots.unit > 1 || odd > quantity) return 0;
    if (lots.isOddLotSeparate || isByOne) return odd;
    return odd + (quantity - odd) / lots.increment * lots.increment;
}

bool IsRepo(StockType type) { return type == StockType::kShanghaiRepo || type == StockType::kShenzhenRepo; }

}  // namespace

int64_t CTrade::RoundQuantity(StockType type, int64_t quantity, int direction, int64_t unit, int64_t held) {
    if (quantity <= 0) return 0;
    const Lots lots = LotsOf(type, unit);
    if (direction != kTradeSell || held <= 0) return RoundToLots(lots, quantity);
    quantity = std::min(quantity, held);
    return std::max(RoundToLots(lots, quantity), RoundToOddLot(lots, quantity, held));
}

Decimal CTrade::CalcTurnover(StockType type, Decimal price, int64_t quantity) {
    return (IsRepo(type) ? kRepoFace : price) * quantity;
}

int64_t CTrade::CountAmountByMoney(const TRADE_INFO& info) {
    if (info.money <= Decimal(0) || info.price <= Decimal(0)) return 0;
    const Decimal price = CalcTurnover(info.stockType, info.price, 1);
    const Decimal withCommission = 1 + std::max(info.commissionRate, Decimal(0));
    return RoundQuantity(info.stockType, info.money.WholeTimesProduct(price, withCommission), info.direction,
                         info.unit);
}

}  // namespace luadui
