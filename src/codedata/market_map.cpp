#include "codedata/market_map.h"

#include <array>
#include <iterator>

namespace luadui {
namespace {

// Ids are small numbers, so each table becomes an array by id.
constexpr size_t kMaxId = 255;

// kMaxId + 1 for what is no id: another text than the number's own.
constexpr size_t NumberOf(std::string_view id) {
    if (id.empty() || id.size() > 3 || id[0] == '0') return kMaxId + 1;
    size_t number = 0;
    for (const char c : id) {
        if (c < '0' || c > '9') return kMaxId + 1;
        number = number * 10 + static_cast<size_t>(c - '0');
    }
    return number <= kMaxId ? number : kMaxId + 1;
}

struct Market {
    std::string_view name = kUnknownMarketName;
    int type = kUnknownMarketType;
};
// The last is what is said of unknown markets. Does not compile when an id is none or occurs twice.
constexpr auto kMarkets = [] {
    std::array<Market, kMaxId + 2> markets{};
    for (const MarketName& row : kMarketNames) {
        if (markets.at(NumberOf(row.id)).name != kUnknownMarketName || NumberOf(row.id) > kMaxId)
            throw "no id, or twice";
        markets[NumberOf(row.id)].name = row.name;
    }
    for (const MarketType& row : kMarketTypes) {
        if (markets.at(NumberOf(row.id)).type != kUnknownMarketType || NumberOf(row.id) > kMaxId)
            throw "no id, or twice";
        markets[NumberOf(row.id)].type = row.type;
    }
    return markets;
}();

static_assert([] {
    for (size_t i = 1; i < std::size(kExchangeCodes); ++i)
        if (kExchangeCodes[i - 1].code >= kExchangeCodes[i].code) return false;
    return true;
}());

}  // namespace

std::string_view MarketNameOf(std::string_view id) { return kMarkets[NumberOf(id)].name; }

int MarketTypeOf(std::string_view id) { return kMarkets[NumberOf(id)].type; }

std::string_view ExchangeCodeOf(std::string_view id) {
    for (const ExchangeCode& exchange : kExchangeCodes) {
        if (IsMarketIn(exchange.markets, id)) return exchange.code;
    }
    return {};
}

bool IsMarketOfExchange(std::string_view id, std::string_view exchangeCode) {
    for (const ExchangeCode& exchange : kExchangeCodes) {
        if (exchange.code == exchangeCode) return IsMarketIn(exchange.markets, id);
    }
    return false;
}

}  // namespace luadui
