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
    const struct {
        std::string_view type, step;
        int decimals;
        std::string_view codes;
    } cases[] = {
        {"shanghai_a", "0.01", 2, "600000:17 605599:16"},
        {"star", "0.01", 2, "688006:17 689009:145"},
        {"shanghai_b", "0.001", 3, "900957:18"},
        {"shanghai_fund", "0.001", 3, "508099:20 519888:20"},
        {"shanghai_etf", "0.001", 3, "510300:17 560580:20"},
        {"star_etf", "0.001", 3, "588000:20"},
        {"shanghai_convertible", "0.001", 3, "113011:19 118031:17"},
        {"shanghai_bond", "0.001", 3, "019547:19 115001:19 000012:19"},
        {"shanghai_repo", "0.005", 3, "204001:19"},
        {"shenzhen_a", "0.01", 2, "000001:33 003816:39"},
        {"chinext", "0.01", 2, "300001:33 302132:33"},
        {"shenzhen_b", "0.01", 2, "201872:34"},
        {"shenzhen_fund", "0.001", 3, "180606:36"},
        {"shenzhen_etf", "0.001", 3, "159995:36"},
        {"shenzhen_convertible", "0.001", 3, "123114:35"},
        {"shenzhen_bond", "0.001", 3, "120001:35"},
        {"shenzhen_repo", "0.005", 3, "131810:35"},
        {"stock_connect", "0", 3, "00700:76 00700:153"},
        {"unknown", "0", 2,
         "000001:16 399001:32 730001:17 600000: 600000:99 600000:177 60000:17 6000000:17 60000\xA3:17 "
         "600000:17000000000000000000000 000700:76 :19"},
    };
    for (const auto& c : cases) {
        for (const std::string_view row : SplitText(c.codes, ' ')) {
            const auto parts = SplitText(row, ':');
            EXPECT_EQ(RulesOf(CTrade::GetStockType(parts[0], parts[1])).name, c.type) << row;
            EXPECT_EQ(CTrade::GetPriceStep(parts[0], parts[1]).Text(), c.step) << row;
            EXPECT_EQ(CTrade::GetPriceDecimals(parts[0], parts[1]), c.decimals) << row;
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
        {"600000", "17", "10.05", "9.05 11.06", "11.00", "9.05 11.06", "10.78 11.06"},
        {"600000", "17", "10.05", "9.05 11.06", "5", "9.05 9.05", "9.05 11.06"},
        {"600000", "17", "3.21", "2.89 3.53", "3.20", "2.89 3.3", "3.1 3.53"},  // ten steps
        {"600001", "17", "2.10", "2 2.21", "2.10", "2 2.2", "2 2.21"},
        {"600000", "17", "0", "none", "10", "0.01 10.2", "9.8 99999999999999999999.99999999"},
        {"688006", "17", "10.03", "8.02 12.04", "-1", "8.02 12.04", "8.02 12.04"},
        {"300001", "33", "1.03", "0.82 1.24", "1.03", "0.82 1.05", "1.01 1.24"},
        {"900957", "18", "0.305", "0.275 0.336", "0.305", "0.275 0.315", "0.295 0.336"},
        {"510300", "20", "1.005", "0.905 1.106", "1.005", "0.905 1.106", "0.905 1.106"},
        {"588000", "20", "1.005", "0.804 1.206", "1", "0.804 1.206", "0.804 1.206"},
        {"113011", "19", "110.125", "88.1 132.15", "110", "88.1 132.15", "88.1 132.15"},
        {"204001", "19", "2.5", "none", "2.5", "none", "none"},
        {"00700", "76", "500", "none", "500", "none", "none"},
    };
    for (const auto& c : cases) {
        const Decimal close = Read(c.close), reference = Read(c.reference);
        const auto range = [&](int direction) {
            return RangeText(CTrade::GetDeclarationRange(c.code, c.market, reference, close, direction));
        };
        EXPECT_EQ(RangeText(CTrade::GetDailyLimits(c.code, c.market, close)), c.limits) << c.code;
        EXPECT_EQ(range(kTradeBuy), c.buy) << c.code << " at " << c.reference;
        EXPECT_EQ(range(kTradeSell), c.sell) << c.code << " at " << c.reference;
    }
    for (int64_t cents = 1; cents <= 100'000; ++cents) {
        const auto limit = [cents](int direction) {
            return CTrade::CalcLimitPrice("000001", "33", Decimal::Of(cents, 2), direction);
        };
        ASSERT_EQ(limit(kTradeBuy), Decimal::Of(std::max((cents * 11 + 5) / 10, cents + 1), 2)) << cents;
        const int64_t lowest = std::min((cents * 9 + 5) / 10, cents - 1);
        ASSERT_EQ(limit(kTradeSell), Decimal::Of(std::max<int64_t>(lowest, 1), 2)) << cents;
    }
    EXPECT_TRUE(CTrade::GetDailyLimits("600000", "17", Decimal::Largest()));
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
    EXPECT_EQ(CTrade::RoundQuantity(kShanghaiA, -100, kTradeSell, 1, 100), 0);
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
    for (const Decimal bad : {Decimal(0), Decimal(-5)}) {
        EXPECT_EQ(amount(bad, 1, 0), 0);
        EXPECT_EQ(amount(1'000, bad, 0), 0);
    }
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
                                   {"E:0", 1, 1, 1},
                                   {"E:0", 1, 2, 0}};
    CTrade::SetPriceSpreads(spreads);
    for (const std::string_view row :
         {"0.009 0 73", "0.01 0.001 76", "0.249 0.001 153", "0.25 0.005 156", "0.5 0 73", "0.7 0 76",
          "1.5 0.01 153", "2 0.01 156", "2.001 0 76", "-1 0 76"}) {
        const auto parts = SplitText(row, ' ');
        EXPECT_EQ(CTrade::GetPriceStep("00700", parts[2], Read(parts[0])).Text(), parts[1]) << row;
    }
    CTrade::SetPriceSpreads({});
    EXPECT_EQ(CTrade::GetPriceStep("00700", "76", 1), Decimal(0));
    CTrade::AddCodeData("00700", "156", "", 100);
    EXPECT_EQ(CTrade::GetBoardLot("00700", "153"), 100);
    CTrade::AddCodeData("00700", "156", "", -1);
    EXPECT_EQ(CTrade::GetBoardLot("00700", "156"), 0);
    CTrade::AddCodeData("1234567", "17", "ST");
    CTrade::AddCodeData("600000", "99", "ST");
    EXPECT_EQ(CCounters::Get("code_data_refused") - refused, 2);
    EXPECT_EQ(CCounters::Get("price_spread_unusable") - dropped, 2);
}

}  // namespace
}  // namespace luadui
