#include <gmock/gmock.h>
#include <array>
#include <atomic>

#include "tests/platform/probe.h"

namespace luadui::platform_test {
namespace {

using ::testing::ElementsAre;
using Messages = std::vector<UINT>;

Messages OwnMessages(const Messages& seen) {
    Messages own;
    for (UINT message : seen) {
        if (message > WM_APP || message == WM_TIMER) own.push_back(message);
    }
    return own;
}

TEST(Messages, SentThenPostedThenQuitThenTimers) {
    Probe probe;
    PostQuitMessage(7);
    SetTimer(probe, 1, USER_TIMER_MINIMUM, nullptr);
    PostMessageW(probe, kFirst, 0, 0);
    PostMessageW(probe, kSecond, 0, 0);
    OnThread([&] { SendNotifyMessageW(probe, kThird, 0, 0); }).wait();
    Sleep(50);  // the timer is due

    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0)) DispatchMessageW(&message);
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_THAT(OwnMessages(probe.Seen()), ElementsAre(kThird, kFirst, kSecond));
    GetMessageW(&message, nullptr, 0, 0);
    EXPECT_EQ(message.message, UINT{WM_TIMER});
}

TEST(Messages, PostsOfEachThreadArriveOnceAndInOrder) {
    constexpr int kThreads = 4;
    constexpr WPARAM kPosts = 2000;
    std::array<WPARAM, kThreads> next{};
    bool inOrder = true;
    Probe probe([&](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> std::optional<LRESULT> {
        if (message == kFirst) inOrder = inOrder && next[static_cast<size_t>(lParam)]++ == wParam;
        return {};
    });
    std::vector<std::future<void>> posters;
    for (int thread = 0; thread < kThreads; ++thread) {
        posters.push_back(OnThread([&probe, thread] {
            for (WPARAM i = 0; i < kPosts; ++i) ASSERT_TRUE(PostMessageW(probe, kFirst, i, thread));
        }));
    }
    EXPECT_TRUE(PumpUntil([&] {
        return next == std::array<WPARAM, kThreads>{kPosts, kPosts, kPosts, kPosts};
    }));
    EXPECT_TRUE(inOrder);
}

// The answer to n is n plus the other side's answer to n - 1.
TEST(Messages, ThreadsThatSendToEachOtherServeEachOther) {
    std::atomic<HWND> other[2];
    const auto ask = [&](int side) {
        return [&, side](HWND, UINT message, WPARAM n, LPARAM) -> std::optional<LRESULT> {
            if (message != kFirst) return {};
            return n == 0 ? 0 : static_cast<LRESULT>(n) + SendMessageW(other[1 - side], kFirst, n - 1, 0);
        };
    };
    ProbeThread left(ask(0)), right(ask(1));
    other[0] = left.Window();
    other[1] = right.Window();
    auto first = std::async(std::launch::async, [&] { return SendMessageW(left.Window(), kFirst, 20, 0); });
    auto second = std::async(std::launch::async, [&] { return SendMessageW(right.Window(), kFirst, 20, 0); });
    EXPECT_EQ(first.get(), 210);
    EXPECT_EQ(second.get(), 210);
}

TEST(Messages, SendAnswersZeroWhenTheWindowOrItsThreadEnds) {
    for (const bool destroy : {true, false}) {
        std::promise<HWND> made;
        auto receiver = OnThread([&] {
            const HWND window = MakeBareWindow();
            made.set_value(window);
            // The message has arrived, but is never served.
            EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, kPatience, QS_ALLINPUT), WAIT_OBJECT_0);
            if (destroy) DestroyWindow(window);
        });
        const HWND window = made.get_future().get();
        EXPECT_EQ(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0), 0);  // it has a text
        receiver.get();
        EXPECT_FALSE(IsWindow(window));
        EXPECT_FALSE(PostMessageW(window, kFirst, 0, 0));
    }
}

TEST(Messages, ReplyLetsTheSenderGoOn) {
    std::promise<void> replied;
    ProbeThread receiver([&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == kFirst) {
            EXPECT_TRUE(InSendMessage());
            EXPECT_TRUE(ReplyMessage(5));
            EXPECT_EQ(replied.get_future().wait_for(std::chrono::milliseconds(kPatience)),
                      std::future_status::ready);
            return 6;
        }
        if (message == kSecond) {
            EXPECT_FALSE(InSendMessage());
        }
        return {};
    });
    PostMessageW(receiver.Window(), kSecond, 0, 0);
    EXPECT_EQ(SendMessageW(receiver.Window(), kFirst, 0, 0), 5);
    replied.set_value();
}

TEST(Messages, SendGivesUpAfterItsTime) {
    std::promise<void> busy, goOn;
    ProbeThread receiver([&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message == kFirst) {
            busy.set_value();
            goOn.get_future().wait();
        }
        return message == kSecond ? std::optional<LRESULT>(9) : std::nullopt;
    });
    PostMessageW(receiver.Window(), kFirst, 0, 0);
    busy.get_future().wait();
    DWORD_PTR result = 0;
    EXPECT_EQ(SendMessageTimeoutW(receiver.Window(), kSecond, 0, 0, SMTO_NORMAL, 30, &result), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_TIMEOUT});
    goOn.set_value();
    EXPECT_NE(SendMessageTimeoutW(receiver.Window(), kSecond, 0, 0, SMTO_NORMAL, kPatience, &result), 0);
    EXPECT_EQ(result, 9u);
}

TEST(Messages, ToDestroyedWindowsAreRefusedAndDropped) {
    Probe kept;
    HWND gone;
    {
        Probe probe;
        gone = probe;
        for (HWND window : {gone, HWND(kept), gone}) ASSERT_TRUE(PostMessageW(window, kFirst, 0, 0));
        SetTimer(gone, 1, USER_TIMER_MINIMUM, nullptr);
        DestroyWindow(gone);
        EXPECT_EQ(probe.Seen().back(), UINT{WM_NCDESTROY});
    }
    SetLastError(0);
    EXPECT_FALSE(PostMessageW(gone, kFirst, 0, 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
    EXPECT_EQ(SendMessageW(gone, kFirst, 0, 0), 0);
    Sleep(30);
    EXPECT_THAT(PumpAll(), ElementsAre(kFirst));
}

// Every system but Wine limits the queue.
TEST(Messages, PostsPastTheQuotaAreRefusedUntilThereIsRoom) {
    Probe probe;
    size_t accepted = 0;
    while (accepted < 12000 && PostMessageW(probe, kFirst, 0, 0)) ++accepted;
    const DWORD error = GetLastError();
    if (accepted == 12000) {
        PumpAll();
        GTEST_SKIP() << "no quota on this system";
    }
    EXPECT_EQ(accepted, 10000u);
    EXPECT_EQ(error, DWORD{ERROR_NOT_ENOUGH_QUOTA});
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_TRUE(PostMessageW(probe, kSecond, 0, 0));
    EXPECT_FALSE(PostMessageW(probe, kSecond, 0, 0));
    EXPECT_EQ(PumpAll().size(), 10000u);
}

TEST(Messages, ToThreadsNeedAQueueAndALivingThread) {
    std::promise<DWORD> id;
    std::promise<void> openQueue, opened;
    auto thread = OnThread([&] {
        id.set_value(GetCurrentThreadId());
        openQueue.get_future().wait();
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        opened.set_value();
        GetMessageW(&message, nullptr, 0, 0);
        EXPECT_EQ(message.message, kFirst);
        EXPECT_EQ(message.hwnd, nullptr);
        EXPECT_EQ(message.wParam, 3u);
        EXPECT_EQ(message.lParam, 4);
    });
    const DWORD thread_id = id.get_future().get();
    EXPECT_FALSE(PostThreadMessageW(thread_id, kFirst, 3, 4));
    openQueue.set_value();
    opened.get_future().wait();
    EXPECT_TRUE(PostThreadMessageW(thread_id, kFirst, 3, 4));
    thread.get();
    while (PostThreadMessageW(thread_id, kFirst, 0, 0)) Sleep(1);  // until the thread is really gone
}

TEST(Messages, FiltersTakeOnlyWhatTheyName) {
    Probe parent(nullptr, WS_POPUP), child(parent, WS_CHILD), other;
    const auto take = [](HWND window, UINT first, UINT last) {
        MSG message{};
        return PeekMessageW(&message, window, first, last, PM_REMOVE) ? message.message : UINT{WM_NULL};
    };
    PumpAll();
    PostMessageW(other, kFirst, 0, 0);
    PostMessageW(child, kSecond, 0, 0);
    PostThreadMessageW(GetCurrentThreadId(), kThird, 0, 0);
    MSG message;
    EXPECT_TRUE(PeekMessageW(&message, child, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(take(reinterpret_cast<HWND>(static_cast<INT_PTR>(-1)), 0, 0), kThird);
    EXPECT_EQ(take(parent, kFirst, kFirst), UINT{WM_NULL});
    EXPECT_EQ(take(parent, 0, 0), kSecond);  // its child's
    EXPECT_EQ(take(nullptr, kSecond, kThird), UINT{WM_NULL});
    EXPECT_EQ(take(nullptr, kFirst, kThird), kFirst);
    HWND destroyed;
    {
        Probe probe;
        destroyed = probe;
    }
    EXPECT_EQ(GetMessageW(&message, destroyed, 0, 0), -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
}

// Posts and sends from three threads to a window that is destroyed and made again all the time.
TEST(Messages, RaceWithTheEndOfTheirWindow) {
    std::atomic<HWND> target{nullptr};
    std::atomic<bool> stop{false};
    std::vector<std::future<void>> posters;
    for (int i = 0; i < 3; ++i) {
        posters.push_back(OnThread([&, i] {
            while (!stop) {
                const HWND window = target;
                PostMessageW(window, kFirst, 0, reinterpret_cast<LPARAM>(window));
                if (i == 0) {
                    EXPECT_NE(SendMessageW(window, kSecond, 0, 0), 2);
                }
            }
        }));
    }
    for (int round = 0; round < 300; ++round) {
        Probe probe([](HWND window, UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
            if (message == kFirst) {
                EXPECT_EQ(window, reinterpret_cast<HWND>(lParam));
            }
            return message == kSecond ? std::optional<LRESULT>(1) : std::nullopt;
        });
        target = probe;
        PumpAll(100);  // they post faster than this thread gets
    }
    stop = true;
    for (auto& poster : posters)
        PumpUntil([&] { return poster.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    PumpAll();
}

}  // namespace
}  // namespace luadui::platform_test
