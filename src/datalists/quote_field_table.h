// The fields of quotes: the numbers by which the quote server names them, and the names under which records have them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace luadui {

// How the text of a cell gets into the record.
enum class QuoteKind : uint8_t {
    kCode,    // of the security; as it stands
    kMarket,  // the number in decimal
    kText,    // as it stands
    kNumber,  // as it stands, if it is a number
    kCount,   // the same for what is not below zero and fits 64 bits
    kVolume,  // a count without decimals
    kAmount,  // a count, cut to a whole number
    kPrice,   // with the decimals of the security's prices
    kChange,  // with two decimals; follows from prices where it is missing
    kStatus,  // of trading: no field of its own, see kHaltRules
};

struct QuoteField {
    std::string_view id;
    std::string_view name;
    QuoteKind kind;
};

inline constexpr QuoteField kQuoteFields[] = {
    {"4", "Zqdm", QuoteKind::kCode},
    {"3", "Market", QuoteKind::kMarket},
    {"55", "Zqmc", QuoteKind::kText},
    {"10", "PriceZxjg", QuoteKind::kPrice},
    {"6", "PriceZrsp", QuoteKind::kPrice},
    {"7", "KaiPan", QuoteKind::kPrice},
    {"8", "ZuiGao", QuoteKind::kNumber},
    {"9", "ZuiDi", QuoteKind::kNumber},
    {"69", "PriceZtjg", QuoteKind::kPrice},
    {"70", "PriceDtjg", QuoteKind::kPrice},
    {"30", "PriceSell1", QuoteKind::kPrice},
    {"32", "PriceSell2", QuoteKind::kPrice},
    {"34", "PriceSell3", QuoteKind::kPrice},
    {"152", "PriceSell4", QuoteKind::kPrice},
    {"156", "PriceSell5", QuoteKind::kPrice},
    {"104", "PriceSell6", QuoteKind::kPrice},
    {"108", "PriceSell7", QuoteKind::kPrice},
    {"112", "PriceSell8", QuoteKind::kPrice},
    {"116", "PriceSell9", QuoteKind::kPrice},
    {"120", "PriceSell10", QuoteKind::kPrice},
    {"24", "PriceBuy1", QuoteKind::kPrice},
    {"26", "PriceBuy2", QuoteKind::kPrice},
    {"28", "PriceBuy3", QuoteKind::kPrice},
    {"150", "PriceBuy4", QuoteKind::kPrice},
    {"154", "PriceBuy5", QuoteKind::kPrice},
    {"102", "PriceBuy6", QuoteKind::kPrice},
    {"106", "PriceBuy7", QuoteKind::kPrice},
    {"110", "PriceBuy8", QuoteKind::kPrice},
    {"114", "PriceBuy9", QuoteKind::kPrice},
    {"118", "PriceBuy10", QuoteKind::kPrice},
    {"31", "AmountSell1", QuoteKind::kAmount},
    {"33", "AmountSell2", QuoteKind::kAmount},
    {"35", "AmountSell3", QuoteKind::kAmount},
    {"153", "AmountSell4", QuoteKind::kAmount},
    {"157", "AmountSell5", QuoteKind::kAmount},
    {"105", "AmountSell6", QuoteKind::kAmount},
    {"109", "AmountSell7", QuoteKind::kAmount},
    {"113", "AmountSell8", QuoteKind::kAmount},
    {"117", "AmountSell9", QuoteKind::kAmount},
    {"121", "AmountSell10", QuoteKind::kAmount},
    {"25", "AmountBuy1", QuoteKind::kAmount},
    {"27", "AmountBuy2", QuoteKind::kAmount},
    {"29", "AmountBuy3", QuoteKind::kAmount},
    {"151", "AmountBuy4", QuoteKind::kAmount},
    {"155", "AmountBuy5", QuoteKind::kAmount},
    {"103", "AmountBuy6", QuoteKind::kAmount},
    {"107", "AmountBuy7", QuoteKind::kAmount},
    {"111", "AmountBuy8", QuoteKind::kAmount},
    {"115", "AmountBuy9", QuoteKind::kAmount},
    {"119", "AmountBuy10", QuoteKind::kAmount},
    {"13", "TotalAmount", QuoteKind::kVolume},
    {"19", "TotalMoney", QuoteKind::kCount},
    {"19", "Cjje", QuoteKind::kCount},
    {"1", "DateTime", QuoteKind::kText},
    {"49", "XianShou", QuoteKind::kCount},
    {"14", "WaiPan", QuoteKind::kCount},
    {"80", "Yjlx", QuoteKind::kNumber},
    {"93", "Dsgs", QuoteKind::kText},
    {"199112", "Zdfd", QuoteKind::kChange},
    {"127", "", QuoteKind::kStatus},
};

// What follows from the fields, besides kChange; the doubles among them come from kQuoteRatios.
inline constexpr std::string_view kDerivedQuoteNames[] = {
    "NeiPan", "TPFlag", "GzFlag",        "ZhenFu",         "Junjia",
    "YiJia",  "Yjl",    "PriceBuyLimit", "PriceSellLimit", "is_push",
};

// The columns of the table of pushes, in an order that whoever reads it relies on.
inline constexpr std::array<std::string_view, 64> kPushColumns = {
    "1",   "3",   "4",   "5",   "6",   "7",   "8",   "9",   "10",  "13",   "14",     "19",  "20",
    "24",  "25",  "26",  "27",  "28",  "29",  "30",  "31",  "33",  "32",   "34",     "35",  "36",
    "49",  "55",  "69",  "70",  "80",  "102", "103", "104", "105", "106",  "107",    "108", "109",
    "110", "111", "112", "113", "114", "115", "116", "117", "118", "119",  "121",    "127", "120",
    "150", "151", "152", "153", "154", "155", "156", "157", "193", "1510", "199112", "93",
};

// Which beginnings of the status say that a security is suspended, by a bit of its market's number; the first bit that
// is set counts.
struct HaltRule {
    int marketBit;
    std::array<std::string_view, 4> beginnings;  // empty ones do not count
};
inline constexpr HaltRule kHaltRules[] = {
    {0x10, {"P0"}},
    {0x20, {"T1", "H0", "C1", "E1"}},
};
inline constexpr std::string_view kGzStatus = "C";  // the whole status; "GzFlag" says the same

// The numbers that ratios are made of; 0 for what is not known.
struct QuoteNumbers {
    double last, previousClose, high, low, turnover, volume, premiumBase, volumeAtAsk;
};

struct QuoteRatio {
    std::string_view name;
    double (*of)(const QuoteNumbers& numbers);
};
constexpr bool IsQuoteDivisor(double number) { return number < 0 || number > 0.000001; }
inline constexpr QuoteRatio kQuoteRatios[] = {
    {"ZhenFu",
     [](const QuoteNumbers& n) {
         return IsQuoteDivisor(n.previousClose) ? (n.high - n.low) / n.previousClose : 0;
     }},
    {"Junjia", [](const QuoteNumbers& n) { return n.volume >= 1 ? n.turnover / n.volume : n.previousClose; }},
    {"YiJia", [](const QuoteNumbers& n) { return n.last - n.premiumBase; }},
    {"Yjl",
     [](const QuoteNumbers& n) {
         return IsQuoteDivisor(n.premiumBase) ? (n.last - n.premiumBase) / n.premiumBase * 100 : 0;
     }},
};

}  // namespace luadui
