#include <gmock/gmock.h>

#include "tests/platform/probe.h"

namespace luadui::platform_test {
namespace {

using ::testing::ElementsAre;

TEST(Timers, TicksThatNobodyFetchedBecomeOne) {
    Probe probe;
    EXPECT_NE(SetTimer(probe, 3, USER_TIMER_MINIMUM, nullptr), 0u);
    Sleep(100);
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, probe, 0, 0, PM_NOREMOVE));
    ASSERT_TRUE(PeekMessageW(&message, probe, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, UINT{WM_TIMER});
    EXPECT_EQ(message.wParam, 3u);
    EXPECT_FALSE(PeekMessageW(&message, probe, 0, 0, PM_REMOVE));
    // and go on in their beat
    ASSERT_GT(GetMessageW(&message, probe, WM_TIMER, WM_TIMER), 0);
    EXPECT_EQ(message.wParam, 3u);
}

TEST(Timers, CanBeKilledInTheirHandler) {
    Probe probe([](HWND window, UINT message, WPARAM id, LPARAM) -> std::optional<LRESULT> {
        if (message == WM_TIMER) {
            EXPECT_TRUE(KillTimer(window, id));
        }
        return {};
    });
    SetTimer(probe, 1, USER_TIMER_MINIMUM, nullptr);
    SetTimer(probe, 2, USER_TIMER_MINIMUM, nullptr);
    PumpFor(100);
    EXPECT_EQ(probe.Seen().size(), 4u);  // two of its making, one of each timer
    EXPECT_FALSE(KillTimer(probe, 1));
}

TEST(Timers, SetAgainStartAnew) {
    Probe probe;
    SetTimer(probe, 1, USER_TIMER_MINIMUM, nullptr);
    SetTimer(probe, 1, 100000, nullptr);
    PumpFor(60);
    EXPECT_THAT(probe.Seen(), ElementsAre(WM_NCCREATE, WM_CREATE));
    EXPECT_TRUE(KillTimer(probe, 1));
    EXPECT_FALSE(KillTimer(probe, 1));
}

int g_calls = 0;
HWND g_calledFor = nullptr;

void CALLBACK CountAndKill(HWND window, UINT message, UINT_PTR id, DWORD) {
    EXPECT_EQ(message, UINT{WM_TIMER});
    ++g_calls;
    g_calledFor = window;
    KillTimer(window, id);
}

TEST(Timers, CallTheirProcedure) {
    Probe probe;
    for (HWND window : {HWND(probe), HWND(nullptr)}) {
        g_calls = 0;
        const UINT_PTR id = SetTimer(window, 9, USER_TIMER_MINIMUM, CountAndKill);
        EXPECT_NE(id, 0u);
        ASSERT_TRUE(PumpUntil([] { return g_calls > 0; }));
        EXPECT_EQ(g_calledFor, window);
        PumpFor(40);
        EXPECT_EQ(g_calls, 1);
    }
    EXPECT_THAT(probe.Seen(), ElementsAre(WM_NCCREATE, WM_CREATE));
}

TEST(Timers, OfTheThreadAreNumberedByTheSystem) {
    const UINT_PTR first = SetTimer(nullptr, 5, 100000, nullptr),
                   second = SetTimer(nullptr, 5, 100000, nullptr);
    EXPECT_NE(first, second);
    EXPECT_EQ(SetTimer(nullptr, first, USER_TIMER_MINIMUM, nullptr), first);
    MSG message;
    ASSERT_GT(GetMessageW(&message, nullptr, WM_TIMER, WM_TIMER), 0);
    EXPECT_EQ(message.wParam, first);
    EXPECT_EQ(message.hwnd, nullptr);
    EXPECT_TRUE(KillTimer(nullptr, first));
    EXPECT_TRUE(KillTimer(nullptr, second));
}

TEST(Timers, NeedALivingWindow) {
    HWND gone;
    {
        Probe probe;
        gone = probe;
    }
    EXPECT_EQ(SetTimer(gone, 1, 10, nullptr), 0u);
}

TEST(Timers, KeepTheirRate) {
    Probe probe;
    SetTimer(probe, 1, 20, nullptr);
    PumpFor(400);
    const auto ticks = probe.Seen().size() - 2;
    EXPECT_GE(ticks, 10u);
    EXPECT_LE(ticks, 21u);
}

}  // namespace
}  // namespace luadui::platform_test
