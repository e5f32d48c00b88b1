// What the terminal knows of markets: their short names, their type numbers and the exchanges' codes.
#pragma once

#include <cstddef>
#include <string_view>

namespace luadui {

struct MarketName {
    std::string_view id, name;
};
struct MarketType {
    std::string_view id;
    int type;
};
// A code under which counters and servers know an exchange, and the market ids between blanks that it stands
// for.
struct ExchangeCode {
    std::string_view code, markets;
};

inline constexpr std::string_view kUnknownMarketName = "NULL";
inline constexpr int kUnknownMarketType = 900;

// A name does not identify one market: "SH" and "SZA" stand for two each.
inline constexpr MarketName kMarketNames[] = {
    {"16", "SH"},    {"17", "SHA"},   {"18", "SHB"}, {"19", "SHN"},  {"20", "SHF"},  {"21", "SH"},
    {"22", "SHT"},   {"32", "SZ"},    {"33", "SZA"}, {"34", "SZB"},  {"35", "SZN"},  {"36", "SZF"},
    {"37", "SZT"},   {"39", "SZA"},   {"129", "IF"}, {"65", "SHIF"}, {"66", "DLIF"}, {"67", "ZIF"},
    {"232", "SHOP"}, {"233", "SIOP"}, {"24", "HI"},  {"48", "HIS"},  {"145", "STA"}, {"146", "STB"},
};

inline constexpr MarketType kMarketTypes[] = {
    {"16", 2}, {"17", 2}, {"18", 5}, {"19", 2}, {"20", 2}, {"21", 92}, {"22", 92}, {"145", 6},
    {"32", 1}, {"33", 1}, {"34", 4}, {"35", 1}, {"36", 1}, {"37", 91}, {"39", 1},  {"146", 7},
};

inline constexpr std::string_view kShenzhenMarkets = " 32 33 34 35 36 37 39 ";
inline constexpr std::string_view kShanghaiMarkets = " 16 17 18 19 20 21 22 ";
inline constexpr std::string_view kStarMarkets = " 145 146 ";

// In ascending order of the codes as text.
inline constexpr ExchangeCode kExchangeCodes[] = {
    {"1", kShenzhenMarkets},  {"2", kShanghaiMarkets},  {"37", kShenzhenMarkets}, {"4", kShenzhenMarkets},
    {"5", kShanghaiMarkets},  {"6", kStarMarkets},      {"7", kStarMarkets},      {"71", kShanghaiMarkets},
    {"81", kShenzhenMarkets}, {"82", kShanghaiMarkets}, {"91", kShenzhenMarkets}, {"92", kShanghaiMarkets},
};

// Whether `markets`, ids between blanks, has one.
constexpr bool IsMarketIn(std::string_view markets, std::string_view id) {
    for (size_t end; (end = markets.find(' ', 1)) != markets.npos; markets.remove_prefix(end))
        if (markets.substr(1, end - 1) == id) return true;
    return false;
}

// Lookups in these tables, by market id as text ("17"; "017" is unknown). Threads: any; no allocation.

// kUnknownMarketName when there is none.
std::string_view MarketNameOf(std::string_view id);
// kUnknownMarketType when there is none.
int MarketTypeOf(std::string_view id);
// The first code of the exchange that has the market; empty when none has.
std::string_view ExchangeCodeOf(std::string_view id);
// Whether the exchange with this code has the market ("37" is the code of an exchange as well as a market).
bool IsMarketOfExchange(std::string_view id, std::string_view exchangeCode);

}  // namespace luadui
