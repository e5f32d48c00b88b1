#include "trade/stock_type.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <optional>

#include "trade/venue.h"

namespace luadui {
namespace {

constexpr Decimal kCent = Decimal::Of(1, 2);
constexpr Decimal kMill = Decimal::Of(1, 3);
constexpr Decimal kFiveMills = Decimal::Of(5, 3);
constexpr Decimal kTwo = Decimal::Of(2, 2);  // per cent
constexpr Decimal kFive = Decimal::Of(5, 2);
constexpr Decimal kTen = Decimal::Of(10, 2);
constexpr Decimal kTwenty = Decimal::Of(20, 2);
constexpr Decimal kNone = 0;

using enum StockType;

// Trading rules of the Shanghai and Shenzhen exchanges, with those for STAR, for ChiNext, for bonds and for convertible
// bonds. What Stock Connect allows beyond this depends on the price or the single share.
constexpr StockRules kRules[] = {
    // type, decimals, name, step, daily limit, risk-warned, band, its steps, least, increment
    {kUnknown, 2, "unknown", kNone, kNone, kNone, kNone, 0, 1, 1},
    {kShanghaiA, 2, "shanghai_a", kCent, kTen, kFive, kTwo, 10, 100, 100},
    {kShanghaiB, 3, "shanghai_b", kMill, kTen, kFive, kTwo, 10, 100, 100},
    {kStar, 2, "star", kCent, kTwenty, kNone, kTwo, 0, 200, 1},
    {kShanghaiFund, 3, "shanghai_fund", kMill, kTen, kNone, kNone, 0, 100, 100},
    {kShanghaiEtf, 3, "shanghai_etf", kMill, kTen, kNone, kNone, 0, 100, 100},
    {kStarEtf, 3, "star_etf", kMill, kTwenty, kNone, kNone, 0, 100, 100},
    {kShanghaiConvertible, 3, "shanghai_convertible", kMill, kTwenty, kNone, kNone, 0, 10, 10},
    {kShanghaiBond, 3, "shanghai_bond", kMill, kNone, kNone, kNone, 0, 10, 10},
    {kShanghaiRepo, 3, "shanghai_repo", kFiveMills, kNone, kNone, kNone, 0, 10, 10},
    {kShenzhenA, 2, "shenzhen_a", kCent, kTen, kFive, kTwo, 10, 100, 100},
    {kShenzhenB, 2, "shenzhen_b", kCent, kTen, kFive, kTwo, 10, 100, 100},
    {kChiNext, 2, "chinext", kCent, kTwenty, kNone, kTwo, 0, 100, 100},
    {kShenzhenFund, 3, "shenzhen_fund", kMill, kTen, kNone, kNone, 0, 100, 100},
    {kShenzhenEtf, 3, "shenzhen_etf", kMill, kTen, kNone, kNone, 0, 100, 100},
    {kShenzhenConvertible, 3, "shenzhen_convertible", kMill, kTwenty, kNone, kNone, 0, 10, 10},
    {kShenzhenBond, 3, "shenzhen_bond", kMill, kNone, kNone, kNone, 0, 10, 10},
    {kShenzhenRepo, 3, "shenzhen_repo", kFiveMills, kNone, kNone, kNone, 0, 10, 10},
    {kStockConnect, 3, "stock_connect", kNone, kNone, kNone, kNone, 0, 1, 1},
};
static_assert([] {
    for (size_t i = 0; i < std::size(kRules); ++i) {
        if (static_cast<size_t>(kRules[i].type) != i || kRules[i].least % kRules[i].increment != 0)
            return false;
    }
    return std::size(kRules) == static_cast<size_t>(kStockConnect) + 1;
}());

struct MarketRow {
    int id;
    Venue venue;
    StockType other;  // what a code is whose beginning tells nothing
};

constexpr MarketRow kMarkets[] = {
    {16, Venue::kShanghai, kUnknown},         {17, Venue::kShanghai, kUnknown},
    {18, Venue::kShanghai, kShanghaiB},       {19, Venue::kShanghai, kShanghaiBond},
    {20, Venue::kShanghai, kShanghaiFund},    {21, Venue::kShanghai, kUnknown},
    {22, Venue::kShanghai, kUnknown},         {32, Venue::kShenzhen, kUnknown},
    {33, Venue::kShenzhen, kUnknown},         {34, Venue::kShenzhen, kShenzhenB},
    {35, Venue::kShenzhen, kShenzhenBond},    {36, Venue::kShenzhen, kShenzhenFund},
    {37, Venue::kShenzhen, kUnknown},         {39, Venue::kShenzhen, kUnknown},
    {73, Venue::kShenzhenConnect, kUnknown},  {76, Venue::kShenzhenConnect, kUnknown},
    {145, Venue::kShanghai, kStar},           {146, Venue::kShanghai, kUnknown},
    {153, Venue::kShanghaiConnect, kUnknown}, {156, Venue::kShanghaiConnect, kUnknown},
};

struct PrefixRow {
    std::string_view prefix;  // the longest that fits counts
    StockType type;
};

// Shanghai's guide to its code segments.
constexpr PrefixRow kShanghaiPrefixes[] = {
    {"60", kShanghaiA},
    {"688", kStar},
    {"689", kStar},  // depositary receipts
    {"900", kShanghaiB},
    {"50", kShanghaiFund},
    {"519", kShanghaiFund},  // open-end, quoted like a listed one
    {"51", kShanghaiEtf},
    {"52", kShanghaiEtf},
    {"53", kShanghaiEtf},
    {"55", kShanghaiEtf},
    {"56", kShanghaiEtf},
    {"588", kStarEtf},
    {"589", kStarEtf},
    {"100", kShanghaiConvertible},
    {"110", kShanghaiConvertible},
    {"111", kShanghaiConvertible},
    {"113", kShanghaiConvertible},
    {"118", kShanghaiConvertible},
    {"01", kShanghaiBond},  // of the state
    {"020", kShanghaiBond},
    {"11", kShanghaiBond},
    {"12", kShanghaiBond},
    {"13", kShanghaiBond},
    {"14", kShanghaiBond},
    {"15", kShanghaiBond},
    {"16", kShanghaiBond},
    {"17", kShanghaiBond},
    {"18", kShanghaiBond},
    {"24", kShanghaiBond},
    {"20", kShanghaiRepo},
};

// Shenzhen's rules for its code segments.
constexpr PrefixRow kShenzhenPrefixes[] = {
    {"00", kShenzhenA},
    {"20", kShenzhenB},
    {"30", kChiNext},
    {"15", kShenzhenFund},
    {"159", kShenzhenEtf},
    {"16", kShenzhenFund},
    {"18", kShenzhenFund},
    {"123", kShenzhenConvertible},
    {"125", kShenzhenConvertible},
    {"126", kShenzhenConvertible},
    {"127", kShenzhenConvertible},
    {"128", kShenzhenConvertible},
    {"10", kShenzhenBond},  // of the state and the provinces
    {"11", kShenzhenBond},
    {"12", kShenzhenBond},
    {"13", kShenzhenBond},
    {"131", kShenzhenRepo},
    {"14", kShenzhenBond},
};

using PrefixMap = std::array<StockType, 1000>;  // by a code's first three digits

constexpr size_t NumberOf(std::string_view digits) {
    size_t number = 0;
    for (const char c : digits) number = number * 10 + static_cast<size_t>(c - '0');
    return number;
}

// Does not compile when a prefix occurs twice.
template <size_t kCount>
consteval PrefixMap MapOf(const PrefixRow (&rows)[kCount]) {
    PrefixMap map{};
    for (const size_t length : {2, 3}) {
        PrefixMap seen{};
        const size_t width = length == 2 ? 10 : 1;
        for (const PrefixRow& row : rows) {
            if (row.prefix.size() != length) continue;
            const size_t first = NumberOf(row.prefix) * width;
            if (seen[first] != kUnknown) throw "a prefix occurs twice";
            for (size_t i = first; i < first + width; ++i) seen[i] = map[i] = row.type;
        }
    }
    return map;
}

constexpr PrefixMap kShanghaiMap = MapOf(kShanghaiPrefixes);
constexpr PrefixMap kShenzhenMap = MapOf(kShenzhenPrefixes);

constexpr auto kMarketById = [] {
    std::array<MarketRow, 160> markets{};
    for (const MarketRow& row : kMarkets) markets[static_cast<size_t>(row.id)] = row;
    return markets;
}();

bool IsDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

const MarketRow& MarketOf(std::string_view market) {
    if (market.empty() || market.size() > 3 || !IsDigits(market)) return kMarketById[0];
    const size_t id = NumberOf(market);
    return kMarketById[id < kMarketById.size() ? id : 0];
}

}  // namespace

Venue VenueOf(std::string_view market) { return MarketOf(market).venue; }

const StockRules& RulesOf(StockType type) {
    const auto index = static_cast<size_t>(type);
    return kRules[index < std::size(kRules) ? index : 0];
}

StockType ClassifyStock(std::string_view code, std::string_view market) {
    const MarketRow& row = MarketOf(market);
    if (!IsDigits(code)) return kUnknown;
    if (IsStockConnect(row.venue)) return code.size() == 5 ? kStockConnect : kUnknown;
    if (row.venue == Venue::kUnknown || code.size() != 6) return kUnknown;
    const PrefixMap& map = row.venue == Venue::kShanghai ? kShanghaiMap : kShenzhenMap;
    const StockType type = map[NumberOf(code.substr(0, 3))];
    return type == kUnknown ? row.other : type;
}

}  // namespace luadui
