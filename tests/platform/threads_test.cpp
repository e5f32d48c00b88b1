#include <gmock/gmock.h>
#include <algorithm>
#include <array>
#include <atomic>
#include <ctime>

#include "tests/platform/probe.h"

namespace luadui::platform_test {
namespace {

DWORD WINAPI ReturnArgument(LPVOID argument) {
    return static_cast<DWORD>(reinterpret_cast<uintptr_t>(argument));
}

DWORD WINAPI WaitForEvent(LPVOID event) { return WaitForSingleObject(event, kPatience); }

TEST(Threads, EndWithTheirCode) {
    DWORD id = 0, code = 0;
    const HANDLE thread =
        CreateThread(nullptr, 0, ReturnArgument, reinterpret_cast<LPVOID>(uintptr_t{42}), 0, &id);
    ASSERT_NE(thread, nullptr);
    EXPECT_NE(id, 0u);
    EXPECT_NE(id, GetCurrentThreadId());
    EXPECT_EQ(WaitForSingleObject(thread, kPatience), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, 42u);
    EXPECT_TRUE(CloseHandle(thread));
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(OpenThread(SYNCHRONIZE, FALSE, id), nullptr);
}

TEST(Threads, CanBeOpenedByTheirNumber) {
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD id = 0, code = 0;
    const HANDLE thread = CreateThread(nullptr, 64 * 1024, WaitForEvent, event, 0, &id);
    const HANDLE same = OpenThread(SYNCHRONIZE | THREAD_QUERY_INFORMATION, FALSE, id);
    ASSERT_NE(same, nullptr);
    CloseHandle(thread);  // does not end it
    EXPECT_EQ(WaitForSingleObject(same, 20), WAIT_TIMEOUT);
    EXPECT_TRUE(GetExitCodeThread(same, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    SetEvent(event);
    EXPECT_EQ(WaitForSingleObject(same, kPatience), WAIT_OBJECT_0);
    EXPECT_TRUE(GetExitCodeThread(same, &code));
    EXPECT_EQ(code, WAIT_OBJECT_0);
    CloseHandle(same);
    CloseHandle(event);
}

TEST(Threads, AreSignalledAfterTheirWindowsHaveGone) {
    struct Shared {
        std::atomic<HWND> window{nullptr};
    } shared;
    const auto routine = [](LPVOID argument) -> DWORD {
        static_cast<Shared*>(argument)->window = MakeBareWindow();
        return 0;
    };
    for (int i = 0; i < 100; ++i) {
        const HANDLE thread = CreateThread(nullptr, 0, routine, &shared, 0, nullptr);
        ASSERT_EQ(WaitForSingleObject(thread, kPatience), WAIT_OBJECT_0);
        EXPECT_FALSE(IsWindow(shared.window));
        CloseHandle(thread);
    }
}

TEST(Events, LetOneOrAllThrough) {
    const HANDLE automatic = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    const HANDLE manual = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);

    const std::array<HANDLE, 2> both{automatic, manual};
    EXPECT_EQ(WaitForMultipleObjects(2, both.data(), FALSE, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(2, both.data(), TRUE, 10), WAIT_TIMEOUT);
    SetEvent(automatic);
    EXPECT_EQ(WaitForMultipleObjects(2, both.data(), TRUE, 0), WAIT_OBJECT_0);
    ResetEvent(manual);
    EXPECT_EQ(WaitForMultipleObjects(2, both.data(), FALSE, 0), WAIT_TIMEOUT);
    for (HANDLE event : both) CloseHandle(event);
    EXPECT_FALSE(SetEvent(automatic));
}

// Each signal of an automatic event frees exactly one of the waiting threads.
TEST(Events, FreeOneWaiterPerSignal) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::array<HANDLE, 8> threads;
    for (HANDLE& thread : threads) thread = CreateThread(nullptr, 0, WaitForEvent, event, 0, nullptr);
    const auto ended = [&] {
        return std::count_if(threads.begin(), threads.end(),
                             [](HANDLE thread) { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; });
    };
    for (ptrdiff_t signals = 1; signals <= 8; ++signals) {
        SetEvent(event);
        EXPECT_TRUE(PumpUntil([&] { return ended() >= signals; }));
        EXPECT_EQ(ended(), signals);
    }
    for (HANDLE thread : threads) CloseHandle(thread);
    CloseHandle(event);
}

TEST(Waiting, EndsWithAMessageToo) {
    Probe probe;
    PumpAll();
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto wait = [&](DWORD time) {
        return MsgWaitForMultipleObjects(1, &event, FALSE, time, QS_ALLINPUT);
    };
    EXPECT_EQ(wait(10), WAIT_TIMEOUT);
    auto poster = OnThread([&] {
        Sleep(20);
        PostMessageW(probe, kFirst, 0, 0);
    });
    EXPECT_EQ(wait(kPatience), WAIT_OBJECT_0 + 1);
    poster.get();
    PumpAll();
    SetTimer(probe, 1, USER_TIMER_MINIMUM, nullptr);
    EXPECT_EQ(wait(kPatience), WAIT_OBJECT_0 + 1);
    KillTimer(probe, 1);
    PumpAll();
    auto setter = OnThread([&] {
        Sleep(20);
        SetEvent(event);
    });
    EXPECT_EQ(wait(kPatience), WAIT_OBJECT_0);
    CloseHandle(event);
}

TEST(Time, PassesAndMatchesTheClock) {
    const DWORD ticks = GetTickCount();
    const ULONGLONG longTicks = GetTickCount64();
    Sleep(30);
    EXPECT_GE(GetTickCount() - ticks, 10u);  // Windows counts in steps of up to 16
    EXPECT_LT(GetTickCount64() - longTicks, 5000u);

    const std::time_t before = std::time(nullptr);
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::tm local = *std::localtime(&before);
    EXPECT_EQ(now.wYear, local.tm_year + 1900);
    EXPECT_EQ(now.wDayOfWeek, local.tm_wday);
    const int seconds = (now.wHour * 60 + now.wMinute) * 60 + now.wSecond;
    const int expected = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
    EXPECT_NEAR(seconds, expected, 2);
    EXPECT_LT(now.wMilliseconds, 1000);
}

}  // namespace
}  // namespace luadui::platform_test
