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
            EXPECT_TRUE(step == 0 || step == 1 || step == 2);
            EXPECT_EQ(CTrade::GetBoardLot("00700", "76") % 100, 0);
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
