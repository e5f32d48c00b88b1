// Trade rules beside the plainest way to apply them: a list of prefixes that is walked, and doubles.
#include "trade/trade.h"

#include <cmath>
#include <string_view>

#include "base/text.h"
#include "bench/report.h"

namespace luadui::bench {
namespace {

struct Security {
    std::string_view code, market;
};

constexpr Security kSecurities[] = {{"600000", "17"}, {"688006", "145"}, {"510300", "20"}, {"113011", "19"},
                                    {"000001", "33"}, {"300002", "33"},  {"159995", "36"}, {"00700", "76"}};

// Asks for another one with each call.
template <class Body>
auto InTurn(Body body) {
    return [body, next = size_t{0}]() mutable { Keep(body(kSecurities[next++ % std::size(kSecurities)])); };
}

StockType TypeByWalk(const Security& security) {
    using enum StockType;
    struct Prefix {
        std::string_view market, prefix;
        StockType type;
    };
    static constexpr Prefix kPrefixes[] = {{"17", "600", kShanghaiA},
                                           {"17", "601", kShanghaiA},
                                           {"17", "603", kShanghaiA},
                                           {"17", "605", kShanghaiA},
                                           {"145", "688", kStar},
                                           {"145", "689", kStar},
                                           {"18", "900", kShanghaiB},
                                           {"20", "501", kShanghaiFund},
                                           {"20", "510", kShanghaiEtf},
                                           {"20", "512", kShanghaiEtf},
                                           {"20", "588", kStarEtf},
                                           {"19", "110", kShanghaiConvertible},
                                           {"19", "113", kShanghaiConvertible},
                                           {"19", "204", kShanghaiRepo},
                                           {"33", "000", kShenzhenA},
                                           {"33", "002", kShenzhenA},
                                           {"33", "300", kChiNext},
                                           {"33", "301", kChiNext},
                                           {"34", "200", kShenzhenB},
                                           {"36", "159", kShenzhenEtf},
                                           {"35", "123", kShenzhenConvertible},
                                           {"76", "", kStockConnect}};
    for (const Prefix& row : kPrefixes) {
        if (row.market == security.market && security.code.starts_with(row.prefix)) return row.type;
    }
    return kUnknown;
}

LUADUI_REPORT(StockTypes) {
    const Timing type = Compare(
        InTurn([](const Security& security) { return CTrade::GetStockType(security.code, security.market); }),
        InTurn(TypeByWalk));
    AtMost("stock_type_ns", type.ours * 1e9, 100);
    AtLeast("stock_type_vs_walk", type.Speedup(), 1);
}

LUADUI_REPORT(Amounts) {
    volatile double money = 1'234'567.89, price = 10.05, rate = 0.00025;
    const auto inDoubles = [&] { Keep(std::floor(money / (price * (1 + rate)) / 100) * 100); };
    const TRADE_INFO info{
        StockType::kShanghaiA, Decimal::Of(123'456'789, 2), Decimal::Of(1'005, 2), kTradeBuy, 1,
        Decimal::Of(25, 5)};
    const Timing amount = Compare([&] { Keep(CTrade::CountAmountByMoney(info)); }, inDoubles);
    AtMost("amount_by_money_ns", amount.ours * 1e9, 200);
    AtMost("amount_by_money_vs_doubles", amount.CostRatio(), 50);

    // Money and prices come as text.
    const std::string_view moneyText = "1234567.89", priceText = "10.05";
    const auto exact = [&] {
        TRADE_INFO read = info;
        read.money = Decimal::Parse(moneyText).value_or(0);
        read.price = Decimal::Parse(priceText).value_or(0);
        Keep(CTrade::CountAmountByMoney(read));
    };
    const auto doubles = [&] {
        money = ParseDouble(moneyText).value_or(0);
        price = ParseDouble(priceText).value_or(0);
        inDoubles();
    };
    AtMost("amount_by_text_vs_doubles", Compare(exact, doubles).CostRatio(), 5);
}

}  // namespace
}  // namespace luadui::bench
