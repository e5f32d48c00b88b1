#include "trade/allocation.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

#include "base/text.h"

namespace luadui {
namespace {

constexpr auto kA = StockType::kShanghaiA;
constexpr auto kStar = StockType::kStar;
constexpr auto kHongKong = StockType::kStockConnect;

// "weight:most weight:most"
std::vector<AllocationShare> SharesOf(std::string_view text) {
    std::vector<AllocationShare> shares;
    for (const auto item : SplitText(text, ' ')) {
        const auto parts = SplitText(item, ':');
        shares.push_back({*Decimal::Parse(parts[0]), *ParseLong(parts[1])});
    }
    return shares;
}

struct Case {
    int64_t whole;
    AllocationOrder order;
    const char* shares;
    const char* parts;
};
constexpr Case kCases[] = {
    {1000, {kA}, "1:9999 1:9999 1:9999", "400 300 300"},
    {900, {kA}, "2:9999 3:9999 5:9999", "100 300 500"},
    {1000, {kA}, "1:9999 5:9999 3:9999", "100 600 300"},
    // What one cannot pay, the others get by their weights; what none can, nobody.
    {3000, {kA}, "1:9999 1:450 2:9999", "800 400 1800"},
    {3000, {kA}, "1:100 0:9999 -2:9999", "100 0 0"},
    {100, {kA}, "1:99 1:-5 1:100", "0 0 100"},
    {0, {kA}, "1:99", "0"},
    {-500, {kA}, "1:9999", "0"},
    {500, {kA}, "0:9999 0:9999", "0 0"},
    // Least quantities.
    {450, {kStar}, "1:9999 1:9999 1:9999", "250 200 0"},
    {199, {kStar}, "1:9999", "0"},
    // Odd lots go whole, or not at all.
    {1000, {kA, kTradeSell}, "1:250 1:1000", "200 800"},
    {1000, {kA, kTradeSell}, "1:250 1:730", "250 730"},
    {300, {kStar, kTradeSell}, "1:150 1:1000", "0 300"},
    {450, {kStar, kTradeSell}, "1:150 1:300", "150 300"},
    {50, {kA, kTradeSell}, "1:40 1:100", "40 0"},
    {1600, {kHongKong, kTradeBuy, 500}, "1:9999 2:9999", "500 1000"},
    // Weights without and with all the digits there are.
    {3'000'000'000, {kA}, "1:2000000000 1:2000000000 1:2000000000", "1000000000 1000000000 1000000000"},
    {900, {kA}, "99999999999999999999:9999 0.00000001:9999", "900 0"},
};

TEST(AllocationTest, Divides) {
    for (const Case& row : kCases) {
        std::string text;
        for (const int64_t part : AllocateQuantity(row.whole, SharesOf(row.shares), row.order))
            text += (text.empty() ? "" : " ") + std::to_string(part);
        EXPECT_EQ(text, row.parts) << row.whole << " among " << row.shares;
    }
}

// Whether the account may declare the quantity.
bool IsGood(const AllocationOrder& order, const AllocationShare& share, int64_t quantity) {
    return quantity ==
           CTrade::RoundQuantity(order.stockType, quantity, order.direction, order.unit, share.most);
}

void Check(int64_t whole, const std::vector<AllocationShare>& shares, const AllocationOrder& order) {
    const auto parts = AllocateQuantity(whole, shares, order);
    ASSERT_EQ(parts.size(), shares.size());
    Decimal sum;
    for (size_t i = 0; i < parts.size(); ++i) {
        ASSERT_GE(parts[i], 0);
        ASSERT_LE(parts[i], std::max<int64_t>(0, shares[i].most));
        ASSERT_TRUE(parts[i] == 0 || IsGood(order, shares[i], parts[i])) << parts[i];
        sum += parts[i];
    }
    const int64_t rest = (Decimal(whole) - sum).ToLong();
    ASSERT_GE(rest, 0);
    for (size_t i = 0; i < parts.size(); ++i) {
        if (shares[i].weight <= 0) continue;
        const int64_t room = std::min({rest, shares[i].most - parts[i], int64_t{1200}});
        for (int64_t more = 1; more <= room; ++more)
            ASSERT_FALSE(IsGood(order, shares[i], parts[i] + more)) << "could get " << more << " more";
        const bool isFull = shares[i].most - parts[i] < std::max<int64_t>(100, order.unit);
        for (size_t j = 0; order.stockType == kA && order.direction == kTradeBuy && j < parts.size() % 100;
             ++j)
            ASSERT_FALSE(shares[i].weight > shares[j].weight && parts[i] < parts[j] && !isFull);
    }
}

TEST(AllocationTest, AnyDivisionIsWithinBoundsAndComplete) {
    std::mt19937_64 random(4);
    const auto below = [&](int64_t bound) {
        return static_cast<int64_t>(random() % static_cast<uint64_t>(bound));
    };
    constexpr AllocationOrder kOrders[] = {{kA},
                                           {kA, kTradeSell},
                                           {kA, kTradeBuy, 300},
                                           {kStar},
                                           {kStar, kTradeSell},
                                           {kHongKong, kTradeBuy, 500},
                                           {kHongKong, kTradeSell, 400}};
    for (int round = 0; round < 3000; ++round) {
        const AllocationOrder& order = kOrders[below(std::ssize(kOrders))];
        std::vector<AllocationShare> shares(static_cast<size_t>(1 + below(12)));
        const int64_t most = below(2) ? 2000 : 100'000;
        for (auto& share : shares)
            share = {Decimal::Of(below(40) - 4, static_cast<int>(below(9))), below(most) - 20};
        Check(below(most * 3), shares, order);
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
    std::vector<AllocationShare> many(10'000);
    for (auto& share : many) share = {Decimal(1 + below(1'000'000'000'000)), below(100'000)};
    Check(400'000'000, many, {kStar});
    for (auto& share : many) share = {Decimal::Largest(), std::numeric_limits<int64_t>::max()};
    for (const auto& order : kOrders) Check(std::numeric_limits<int64_t>::max(), many, order);
}

}  // namespace
}  // namespace luadui
