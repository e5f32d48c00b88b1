// Steps of prices, daily limits and declaration bands.
#include <algorithm>

#include "trade/price_spreads.h"
#include "trade/trade.h"

namespace luadui {
namespace {

using enum Decimal::Rounding;

// Half up to the step as the exchanges do; but a limit lies a step from the close, and no price below the first step.
PriceRange LimitsAround(Decimal close, Decimal part, Decimal step) {
    const Decimal move = close * part;
    PriceRange limits{(close - move).ToStep(step, kHalfUp), (close + move).ToStep(step, kHalfUp)};
    if (limits.highest - close < step) limits.highest = (close + step).ToStep(step, kDown);
    if (close - limits.lowest < step) limits.lowest = (close - step).ToStep(step, kUp);
    limits.lowest = std::max(limits.lowest, step);
    return limits;
}

}  // namespace

Decimal CTrade::GetPriceStep(std::string_view code, std::string_view market, Decimal price) {
    const StockType type = ClassifyStock(code, market);
    return type == StockType::kStockConnect ? StockConnectStep(price) : RulesOf(type).priceStep;
}

int CTrade::GetPriceDecimals(std::string_view code, std::string_view market) {
    return RulesOf(ClassifyStock(code, market)).priceDecimals;
}

std::optional<PriceRange> CTrade::GetDailyLimits(std::string_view code, std::string_view market,
                                                 Decimal previousClose) {
    const StockRules& rules = RulesOf(ClassifyStock(code, market));
    if (rules.dailyLimit == Decimal(0) || previousClose <= Decimal(0)) return std::nullopt;
    const bool isWarned = rules.warnedLimit > Decimal(0) && IsRiskWarned(code, market);
    return LimitsAround(previousClose, isWarned ? rules.warnedLimit : rules.dailyLimit, rules.priceStep);
}

Decimal CTrade::CalcLimitPrice(std::string_view code, std::string_view market, Decimal previousClose,
                               int direction) {
    const auto limits = GetDailyLimits(code, market, previousClose);
    if (!limits) return {};
    return direction == kTradeBuy ? limits->highest : direction == kTradeSell ? limits->lowest : Decimal();
}

std::optional<PriceRange> CTrade::GetDeclarationRange(std::string_view code, std::string_view market,
                                                      Decimal referencePrice, Decimal previousClose,
                                                      int direction) {
    const StockRules& rules = RulesOf(ClassifyStock(code, market));
    const auto limits = GetDailyLimits(code, market, previousClose);
    if (rules.declarationBand == Decimal(0) || referencePrice <= Decimal(0)) return limits;
    const Decimal step = rules.priceStep;
    PriceRange range = limits.value_or(PriceRange{step, Decimal::Largest()});
    const Decimal width = std::max(referencePrice * rules.declarationBand, step * rules.bandSteps);
    // Toward the reference price: such a price is valid whichever way the exchange rounds.
    if (direction == kTradeBuy) {
        const Decimal end = (referencePrice + width).ToStep(step, kDown);
        range.highest = std::clamp(end, range.lowest, range.highest);
    } else if (direction == kTradeSell) {
        const Decimal end = (referencePrice - width).ToStep(step, kUp);
        range.lowest = std::clamp(end, range.lowest, range.highest);
    }
    return range;
}

}  // namespace luadui
