// What kind of security a code is, and the rules of trading that go with it.
#pragma once

#include <string_view>

#include "trade/decimal.h"

namespace luadui {

enum class StockType {
    kUnknown,
    kShanghaiA,
    kShanghaiB,
    kStar,
    kShanghaiFund,  // closed and listed open-end funds
    kShanghaiEtf,
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
    std::string_view name;  // for logs and tests
    Decimal priceStep;      // zero: by price (Stock Connect)
    int priceDecimals;      // with which prices are shown
    Decimal dailyLimit;     // part of the previous close that a price may move; zero: no limit
    Decimal
        declarationBand;   // part of the reference price that a declared price may exceed it; zero: no band
    int64_t lot;           // shares or bonds a buy order counts in
    int64_t least;         // the least that a buy order may be for
    int64_t buyIncrement;  // by which it may grow beyond that
};

// Codes and market ids as pages and tables have them ("600000", "17"). Threads: any.
const StockRules& RulesOf(StockType type);
StockType ClassifyStock(std::string_view code, std::string_view market);

}  // namespace luadui
