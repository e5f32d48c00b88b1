#include "trade/trade.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

#include "base/counters.h"
#include "base/text.h"

namespace luadui {
namespace {

Decimal Read(std::string_view text) { return Decimal::Parse(text).value(); }

std::string RangeText(const std::optional<PriceRange>& range) {
    return range ? range->lowest.Text() + " " + range->highest.Text() : "none";
}

TEST(TradeTest, TypeFollowsCodeAndMarket) {
    for (const std::string_view row :
         {"shanghai_a 0.01 600000:17 605599:16", "star 0.01 688006:17 689009:145",
          "shanghai_b 0.001 900957:18", "shanghai_fund 0.001 508099:20 519888:20",
          "shanghai_etf 0.001 510300:17 560580:20", "star_etf 0.001 588000:20",
          "shanghai_convertible 0.001 113011:19 118031:17",
          "shanghai_bond 0.001 019547:19 115001:19 000012:19", "shanghai_repo 0.005 204001:19",
          "shenzhen_a 0.01 000001:33 003816:39", "chinext 0.01 300001:33 302132:33",
          "shenzhen_b 0.01 201872:34", "shenzhen_fund 0.001 180606:36", "shenzhen_etf 0.001 159995:36",
          "shenzhen_convertible 0.001 123114:35", "shenzhen_bond 0.001 120001:35",
          "shenzhen_repo 0.005 131810:35", "stock_connect 0 00700:76 00700:153",
          "unknown 0 000001:16 399001:32 730001:17 600000: 600000:99 600000:177 60000:17 6000000:17 "
          "60000\xA3:17 600000:17000000000000000000000 000700:76 :19"}) {
        const auto parts = SplitText(row, ' ');
        for (size_t i = 2; i < parts.size(); ++i) {
            const auto code = SplitText(parts[i], ':');
            EXPECT_EQ(RulesOf(CTrade::GetStockType(code[0], code[1])).name, parts[0]) << parts[i];
            EXPECT_EQ(CTrade::GetPriceStep(code[0], code[1]).Text(), parts[1]) << parts[i];
            EXPECT_EQ(CTrade::GetPriceDecimals(code[0], code[1]),
                      parts[1].size() == 5 || parts[0] == "stock_connect" ? 3 : 2);
        }
    }
}

TEST(TradeTest, PricesKeepToTheLimits) {
    for (const std::string_view row :
         {"0海ST", "0S海王", "0退市海王", "0S", "1ST海王", "1*ST海王", "1S*ST海王", "1XDST海", "1＊ＳＴ海"}) {
        CTrade::AddCodeData("600001", "17", Gbk(row.substr(1)));
        EXPECT_EQ(CTrade::IsRiskWarned("600001", "16"), row[0] == '1') << row;
    }
    CTrade::AddCodeData("300001", "33", "*ST");
    const struct {
        const char *code, *market, *close, *limits, *reference, *buy, *sell;
    } cases[] = {
        {"600000", "17", "10.05", "9.05 11.06", "10.40", "9.05 10.6", "10.2 11.06"},  // 10.608, 10.192
        {"600000", "17", "10.05", "9.05 11.06", "5", "9.05 9.05", "9.05 11.06"},
        {"600000", "17", "3.21", "2.89 3.53", "3.20", "2.89 3.3", "3.1 3.53"},  // ten steps
        {"600001", "17", "2.10", "2 2.21", "2.10", "2 2.2", "2 2.21"},
        {"600000", "17", "0", "none", "10", "0.01 10.2", "9.8 99999999999999999999.99999999"},
        {"300001", "33", "1.03", "0.82 1.24", "1.03", "0.82 1.05", "1.01 1.24"},
        {"900957", "18", "0.305", "0.275 0.336", "0.305", "0.275 0.315", "0.295 0.336"},
        {"510300", "20", "1.005", "0.905 1.106", "1.005", "0.905 1.106", "0.905 1.106"},
        {"588000", "20", "1.005", "0.804 1.206", "1", "0.804 1.206", "0.804 1.206"},
        {"113011", "19", "110.125", "88.1 132.15", "110", "88.1 132.15", "88.1 132.15"},
        {"204001", "19", "2.5", "none", "2.5", "none", "none"},
    };
    for (const auto& c : cases) {
        const Decimal close = Read(c.close), reference = Read(c.reference);
        const auto buy = CTrade::GetDeclarationRange(c.code, c.market, reference, close, kTradeBuy);
        const auto sell = CTrade::GetDeclarationRange(c.code, c.market, reference, close, kTradeSell);
        EXPECT_EQ(RangeText(CTrade::GetDailyLimits(c.code, c.market, close)), c.limits) << c.code;
        EXPECT_EQ(RangeText(buy), c.buy) << c.code << " at " << c.reference;
        EXPECT_EQ(RangeText(sell), c.sell) << c.code << " at " << c.reference;
    }
    for (int64_t cents = 1; cents <= 100'000; ++cents) {
        const auto limit = [cents](int direction) {
            return CTrade::CalcLimitPrice("000001", "33", Decimal::Of(cents, 2), direction);
        };
        ASSERT_EQ(limit(kTradeBuy), Decimal::Of(std::max((cents * 11 + 5) / 10, cents + 1), 2)) << cents;
        const int64_t lowest = std::min((cents * 9 + 5) / 10, cents - 1);
        ASSERT_EQ(limit(kTradeSell), Decimal::Of(std::max<int64_t>(lowest, 1), 2)) << cents;
    }
}

// Whether an exchange takes an order to sell `quantity` of `held` things.
bool MaySell(StockType type, int64_t quantity, int64_t unit, int64_t held) {
    if (type == StockType::kStockConnect) return quantity % unit == 0 || quantity == held % unit;
    if (quantity == held) return true;
    if (quantity % unit != 0) return false;
    if (type == StockType::kStar) return quantity >= 200;
    const int64_t lot = type == StockType::kShanghaiA ? 100 : 10;
    return quantity % lot == 0 || (unit == 1 && quantity % lot == held % lot);
}

TEST(TradeTest, QuantityIsTheLargestThatMayBeDeclared) {
    using enum StockType;
    for (const StockType type : {kShanghaiA, kStar, kShenzhenBond, kStockConnect}) {
        for (const int64_t unit : {1, 7, 100, 500}) {
            for (const int64_t held : {1, 8, 100, 199, 257, 1'234}) {
                int64_t sold = 0;
                for (int64_t quantity = 1; quantity < 1'400; ++quantity) {
                    if (quantity <= held && MaySell(type, quantity, unit, held)) sold = quantity;
                    ASSERT_EQ(CTrade::RoundQuantity(type, quantity, kTradeSell, unit, held), sold)
                        << RulesOf(type).name << " " << quantity << " of " << held << " by " << unit;
                }
            }
        }
    }
    const int64_t most = std::numeric_limits<int64_t>::max();
    EXPECT_EQ(CTrade::RoundQuantity(kStar, 201, kTradeBuy), 201);
    EXPECT_EQ(CTrade::RoundQuantity(kStar, 199, kTradeBuy, 1, 199), 0);
    EXPECT_EQ(CTrade::RoundQuantity(kShanghaiA, most, kTradeBuy, most - 1), 0);
    EXPECT_EQ(CTrade::RoundQuantity(kShanghaiA, most, kTradeSell, -5, most), most);
}

TEST(TradeTest, AmountNeverCostsMoreThanTheMoney) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        const int64_t cents = static_cast<int64_t>(random() % 10'000'000'000) >> random() % 30;
        const int64_t mills = 1 + (static_cast<int64_t>(random() % 2'000'000) >> random() % 20);
        const int64_t rate = static_cast<int64_t>(random() % 30'000);  // of 10'000'000
        const StockRules& rules = RulesOf(static_cast<StockType>(1 + random() % 18));
        const int64_t unit = random() % 2 ? 1 : 50;
        const int64_t amount =
            CTrade::CountAmountByMoney({rules.type, Decimal::Of(cents, 2), Decimal::Of(mills, 3), kTradeBuy,
                                        unit, Decimal::Of(rate, 7)});
        const int64_t cost = (rules.name.ends_with("repo") ? 100'000 : mills) * (10'000'000 + rate);
        ASSERT_LE(amount * cost, cents * 100'000'000);
        const int64_t more = std::max(amount + std::max(rules.increment, unit), rules.least);
        ASSERT_GT(more * cost, cents * 100'000'000) << cents << " for " << mills;
    }
    const auto amount = [](Decimal money, Decimal price, Decimal rate) {
        return CTrade::CountAmountByMoney({StockType::kStar, money, price, kTradeBuy, 1, rate});
    };
    EXPECT_EQ(amount(Read("0.204"), Read("0.001"), -1), 204);  // 203.99999999999997 in doubles
    EXPECT_EQ(amount(-5, 1, 0) + amount(1'000, 0, 0) + amount(1'000, -1, 0), 0);
    EXPECT_EQ(amount(Decimal::Largest(), Read("1e-8"), 0), std::numeric_limits<int64_t>::max());
    EXPECT_EQ(amount(Decimal::Largest(), Decimal::Largest(), Decimal::Largest()), 0);
}

TEST(TradeTest, PositionMatchesWithinItsVenue) {
    for (const std::string_view row :
         {"600000:17=600000:16 1", "688006:145=688006:17 1", "000001:33=000001:39 1", "000001:33=000001:17 0",
          "000001:=000001:33 1", "000001:33=000001: 1", "00700:153=00700:156 1", "00700:76=00700:156 0",
          "00700:76=00700:33 0", "600000:17=600001:17 0", "IF1:x=IF1:x 1", "IF1:x=IF1:y 0", ":17=:17 0"}) {
        const auto sides = SplitText(row.substr(0, row.size() - 2), '=');
        const auto its = SplitText(sides[0], ':'), asked = SplitText(sides[1], ':');
        EXPECT_EQ(CTrade::IsMatchPositionCode(its[0], its[1], asked[0], asked[1]), row.back() == '1') << row;
    }
}

TEST(TradeTest, StockConnectFollowsWhatIsRegistered) {
    const int64_t dropped = CCounters::Get("price_spread_unusable"),
                  refused = CCounters::Get("code_data_refused");
    const PriceSpread spreads[] = {{"E:0", Read("0.25"), Read("0.5"), Read("0.005")},
                                   {"E:0", Read("0.01"), Read("0.25"), Read("0.001")},
                                   {"E:0", 1, 2, Read("0.01")},
                                   {"E:1", Read("0.5"), 1, 1},
                                   {"E:0", 1, 1, 1}};
    CTrade::SetPriceSpreads(spreads);
    for (const std::string_view row :
         {"0.009 0 73", "0.01 0.001 76", "0.249 0.001 153", "0.25 0.005 156", "0.5 0 73", "0.7 0 76",
          "1.5 0.01 153", "2 0.01 156", "2.001 0 76", "-1 0 76"}) {
        const auto parts = SplitText(row, ' ');
        EXPECT_EQ(CTrade::GetPriceStep("00700", parts[2], Read(parts[0])).Text(), parts[1]) << row;
    }
    CTrade::SetPriceSpreads({});
    CTrade::AddCodeData("00700", "156", "", 100);
    EXPECT_EQ(CTrade::GetBoardLot("00700", "153"), 100);
    CTrade::AddCodeData("00700", "156", "", -1);
    EXPECT_EQ(CTrade::GetBoardLot("00700", "156"), 0);
    CTrade::AddCodeData("600000", "99", "ST");
    EXPECT_EQ(CCounters::Get("code_data_refused") - refused, 1);
    EXPECT_EQ(CCounters::Get("price_spread_unusable") - dropped, 1);
}

}  // namespace
}  // namespace luadui
