// What kind of security a code is, and the rules of trading that go with it.
#pragma once

#include <cstdint>
#include <string_view>

#include "trade/decimal.h"

namespace luadui {

enum class StockType : uint8_t {
    kUnknown,
    kShanghaiA,
    kShanghaiB,
    kStar,
    kShanghaiFund,  // closed and listed open-end funds
    kShanghaiEtf,
    kStarEtf,
    kShanghaiConvertible,
    kShanghaiBond,
    kShanghaiRepo,
    kShenzhenA,
    kShenzhenB,
    kChiNext,
    kShenzhenFund,
    kShenzhenEtf,
    kShenzhenConvertible,
    kShenzhenBond,
    kShenzhenRepo,
    kStockConnect,
};

// The rules of one type; the numbers are those of the exchanges' trading rules.
struct StockRules {
    StockType type;
    int priceDecimals;        // with which prices are shown
    std::string_view name;    // for logs and tests
    Decimal priceStep;        // zero: by price (Stock Connect), or not known
    Decimal dailyLimit;       // part of the previous close that a price may move; zero: no limit
    Decimal warnedLimit;      // the same for risk-warned shares; zero: they are as the others
    Decimal declarationBand;  // part of the reference price that an order may go beyond it; zero: no band
    int bandSteps;            // how many steps it may go beyond in any case
    int64_t least;            // the least that a buy order may be for; a multiple of the increment
    int64_t increment;        // by which it may grow beyond that
};

// Codes and market ids as pages and tables have them ("600000", "17"). Threads: any.
const StockRules& RulesOf(StockType type);
// By what the code begins with; where that tells nothing, by the market. kUnknown for indices, warrants, rights
// and subscriptions, for codes of another form than those of the market, and for other markets.
StockType ClassifyStock(std::string_view code, std::string_view market);

}  // namespace luadui
