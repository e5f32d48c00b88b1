// Registrations while others ask. The thread sanitizer looks on.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "trade/trade.h"

namespace luadui {
namespace {

TEST(TradeThreadTest, AnswersAreOfOneRegistration) {
    constexpr int kTimes = 2'000;
    std::atomic<int> asked = 0;
    std::thread asking([&asked] {
        while (asked++ < kTimes) {
            const Decimal step = CTrade::GetPriceStep("00700", "76", 5);
            EXPECT_TRUE(step == Decimal(0) || step == Decimal(1) || step == Decimal(2));
            const int64_t lot = CTrade::GetBoardLot("00700", "76");
            EXPECT_TRUE(lot == 0 || lot == 100 || lot == 500);
        }
    });
    for (int i = 0; i < kTimes || asked < kTimes; ++i) {
        const PriceSpread spread{"E:0", 1, 10, 1 + i % 2};
        CTrade::SetPriceSpreads({&spread, 1});
        CTrade::AddCodeData(std::to_string(10'000 + i % kTimes), "76", "", 100);
        CTrade::AddCodeData("00700", "76", "", i % 2 ? 100 : 500);
    }
    asking.join();
    CTrade::SetPriceSpreads({});
}

}  // namespace
}  // namespace luadui
