// Dividing a quantity among accounts, beside the plainest way: proportions in doubles, cut to lots, without limits.
#include "trade/allocation.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "bench/report.h"

namespace luadui::bench {
namespace {

constexpr int64_t kLot = 100;

// Every third account cannot pay for its share.
std::vector<AllocationShare> MakeAccounts(size_t count) {
    std::mt19937_64 random(1);
    std::vector<AllocationShare> accounts(count);
    for (size_t i = 0; i < count; ++i) {
        const auto cents = static_cast<int64_t>(random() % 1'000'000'000);
        accounts[i] = {Decimal::Of(cents, 2),
                       i % 3 == 0 ? kLot * static_cast<int64_t>(random() % 10) : 1'000'000};
    }
    return accounts;
}

std::vector<int64_t> InProportion(int64_t whole, const std::vector<double>& weights) {
    double sum = 0;
    for (const double weight : weights) sum += weight;
    std::vector<int64_t> parts;
    parts.reserve(weights.size());
    for (const double weight : weights) {
        const double share = static_cast<double>(whole) * weight / sum;
        parts.push_back(static_cast<int64_t>(std::floor(share / static_cast<double>(kLot))) * kLot);
        whole -= parts.back();
        sum -= weight;
    }
    return parts;
}

Timing TimeFor(size_t count) {
    const auto accounts = MakeAccounts(count);
    const auto whole = static_cast<int64_t>(count) * 5'000;
    std::vector<double> weights;
    for (const AllocationShare& account : accounts) weights.push_back(account.weight.ToDouble());
    const AllocationOrder order{StockType::kShanghaiA};
    return Compare([&] { Keep(AllocateQuantity(whole, accounts, order).data()); },
                   [&] { Keep(InProportion(whole, weights).data()); });
}

LUADUI_REPORT(Allocation) {
    const Timing few = TimeFor(200), many = TimeFor(10'000);
    AtMost("allocate_200_us", few.ours * 1e6, 100);
    AtMost("allocate_200_vs_proportions", few.CostRatio(), 12);
    AtMost("allocate_10000_ms", many.ours * 1e3, 10);
    AtMost("allocate_growth_200_to_10000", many.ours / few.ours, 250);
}

}  // namespace
}  // namespace luadui::bench
