// Prices by the level of a quote at which an order is to be placed.
#include <algorithm>
#include <string>

#include "base/text.h"
#include "datamgr/kind_table.h"
#include "datamgr/local_sources.h"
#include "datamgr/trade_factories.h"
#include "datamgr/ui_stock_data_manager.h"
#include "trade/trade.h"

namespace luadui {
namespace {

constexpr char kNoneChosen[] = "NULL";
constexpr int64_t kMostSteps = 10'000;  // from the level; a price further away is a slip of the hand

struct Level {
    std::string_view code;
    std::string_view name;  // UTF-8
    std::string_view field;
};
constexpr Level kLevels[] = {
    {"0", "最新价", "PriceZxjg"},  {"ZT", "涨停价", "PriceZtjg"},  {"DT", "跌停价", "PriceDtjg"},
    {"B1", "买一", "PriceBuy1"},   {"B2", "买二", "PriceBuy2"},    {"B3", "买三", "PriceBuy3"},
    {"B4", "买四", "PriceBuy4"},   {"B5", "买五", "PriceBuy5"},    {"B6", "买六", "PriceBuy6"},
    {"B7", "买七", "PriceBuy7"},   {"B8", "买八", "PriceBuy8"},    {"B9", "买九", "PriceBuy9"},
    {"B10", "买十", "PriceBuy10"}, {"S1", "卖一", "PriceSell1"},   {"S2", "卖二", "PriceSell2"},
    {"S3", "卖三", "PriceSell3"},  {"S4", "卖四", "PriceSell4"},   {"S5", "卖五", "PriceSell5"},
    {"S6", "卖六", "PriceSell6"},  {"S7", "卖七", "PriceSell7"},   {"S8", "卖八", "PriceSell8"},
    {"S9", "卖九", "PriceSell9"},  {"S10", "卖十", "PriceSell10"},
};

const Level* FindLevel(std::string_view level) {
    const Level* const row = KindIndex<kLevels, &Level::code>::Find(level);
    return row ? row : KindIndex<kLevels, &Level::name>::Find(level);
}

struct Security {
    std::string code, market;

    Decimal StepAt(Decimal price) const { return CTrade::GetPriceStep(code, market, price); }
};

// What is on the price list next to `price`, `steps` times; prices have larger steps where they are higher.
Decimal Walk(const Security& security, Decimal price, int64_t steps) {
    constexpr Decimal kBelow =
        Decimal::Of(1, Decimal::kDecimals);  // the step downwards is that of what is below
    for (; steps > 0; --steps) price += security.StepAt(price);
    for (; steps < 0; ++steps) {
        const Decimal step = security.StepAt(price - kBelow);
        if (price <= step) break;
        price -= step;
    }
    return price;
}

// Those that the quote has, else those that follow from its previous close.
PriceRange LimitsOf(const CUIData& quote, const Security& security) {
    PriceRange limits{{}, Decimal::Largest()};
    const Decimal previous = PriceOf(quote.GetDataView("PriceZrsp")).value_or(Decimal());
    if (const auto daily = CTrade::GetDailyLimits(security.code, security.market, previous)) limits = *daily;
    const Decimal lowest = PriceOf(quote.GetDataView("PriceDtjg")).value_or(Decimal());
    const Decimal highest = PriceOf(quote.GetDataView("PriceZtjg")).value_or(Decimal());
    if (lowest > 0) limits.lowest = lowest;
    if (highest > 0) limits.highest = highest;
    return limits;
}

// The one that the request brings; failing that the one that is held here, if it is not an old one.
CUIData QuoteFor(const CUIData& request, const Security& security, const Level& level) {
    CUIData quote;
    if (request.GetData("quote", quote)) return quote;
    const std::string_view own[] = {level.field, "PriceZxjg", "PriceZrsp"};
    if (std::ranges::any_of(own, [&](std::string_view field) { return request.Has(field); })) return request;
    const QuoteFeed& feed = CUIStockDataManager::get_mutable_instance().CommonData().Quotes();
    return feed.FindCurrent(security.code, security.market, quote) ? quote : request;
}

std::string PriceText(const Security& security, Decimal price, const PriceRange& limits) {
    using enum Decimal::Rounding;
    const Decimal step = security.StepAt(price);
    const Decimal lowest = std::max(limits.lowest.ToStep(step, kUp), step);
    const Decimal highest = limits.highest.ToStep(step, kDown);
    price = price.ToStep(step, kHalfUp);
    if (lowest <= highest) price = std::clamp(price, lowest, highest);
    return step == 0 ? price.Text() : price.Text(CTrade::GetPriceDecimals(security.code, security.market));
}

}  // namespace

Refusal ComputePriceLevel(CUIDataManager&, CUIData& request) {
    request.Remove("price");
    const std::string chosen = GbkToUtf8(NameOf(request, "price_level"));
    if (chosen == kNoneChosen) {
        request.SetData("price", "");
        return {};
    }
    const Level* const level = FindLevel(chosen);
    if (!level) return chosen.empty() ? "缺少价格档位" : "价格档位无效";
    const Security security{NameOf(request, "stock_code"), NameOf(request, "stock_marketid")};
    if (security.code.empty()) return "缺少证券代码";
    const CUIData quote = QuoteFor(request, security, *level);
    const auto price = PriceOf(quote.GetDataView(level->field));
    if (!price) return "行情价格无效";
    if (*price == 0) return "该档位没有价格";
    int64_t steps = 0;
    if (!NameOf(request, "price_offset").empty()) {
        const auto offset = NumberOf(request, "price_offset");
        if (!offset || *offset > kMostSteps || *offset < -kMostSteps) return "价格偏移无效";
        steps = offset->ToLong();
    }
    if (steps != 0 && security.StepAt(*price) == 0) return "缺少最小变动价位";
    request.SetData("price", PriceText(security, Walk(security, *price, steps), LimitsOf(quote, security)));
    return {};
}

}  // namespace luadui
