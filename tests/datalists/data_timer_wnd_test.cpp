#include "datalists/data_timer_wnd.h"

#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>

#include "base/counters.h"
#include "base/ui_data.h"
#include "datalists/timer_client.h"
#include "tests/platform/probe.h"

namespace luadui {
namespace {

using platform_test::PumpFor;
using platform_test::PumpUntil;
using ::testing::ElementsAre;
using Wnd = CDataTimerWnd;

// Owns a window as a data manager does, and notes what it is asked.
class FakeClient : public TimerClient {
  public:
    bool GetData(CUIData& request, bool cacheOnly, bool flag) override {
        EXPECT_TRUE(cacheOnly);
        EXPECT_FALSE(flag);
        return _note(std::string(request.GetTypeText()));
    }
    void RunAccountCommand(const char* command) override { _note(command); }

    size_t Count(const std::string& call) const {
        return static_cast<size_t>(std::count(calls.begin(), calls.end(), call));
    }

    std::vector<std::string> calls;
    std::function<void()> onCall;
    std::unique_ptr<Wnd> window = std::make_unique<Wnd>(this);

  private:
    bool _note(std::string call) {
        calls.push_back(std::move(call));
        if (const auto action = onCall) action();
        return true;
    }
};

constexpr char kTick[] = "update_push_hq", kOrder[] = "notifyOrderToServer",
               kOnline[] = "timer_accountonline_changed";

TEST(DataTimerWnd, TicksOnceItIsThere) {
    FakeClient client;
    EXPECT_FALSE(client.window->StartTimer(Wnd::kOrderTimer, 10));
    ASSERT_TRUE(client.window->Create());
    EXPECT_TRUE(client.window->Create());
    EXPECT_TRUE(client.calls.empty());
    EXPECT_TRUE(PumpUntil([&] { return client.calls.size() == 2; }));
    EXPECT_THAT(client.calls, ElementsAre(kTick, kTick));
    Wnd silent(nullptr);
    ASSERT_TRUE(silent.Create());
    SendMessageW(silent, Wnd::kQuoteTick, 0, 0);
}

TEST(DataTimerWnd, TimersStartAndStopByMessage) {
    FakeClient client;
    ASSERT_TRUE(client.window->Create());
    const HWND window = *client.window;
    SendMessageW(window, Wnd::kStopTimer, Wnd::kQuoteTimer, 0);
    SendMessageW(window, Wnd::kStartTimer, Wnd::kOrderTimer, 10);
    SendMessageW(window, Wnd::kStartTimer, Wnd::kOnlineTimer, 10);
    ASSERT_TRUE(PumpUntil([&] { return client.Count(kOrder) >= 5; }));
    EXPECT_EQ(client.Count(kOnline), 1u);
    EXPECT_FALSE(client.window->StopTimer(Wnd::kOnlineTimer));

    SendMessageW(window, Wnd::kStopTimer, Wnd::kOrderTimer, 0);
    client.calls.clear();
    // The one-shot timer may be started again by what it runs.
    client.onCall = [&] {
        if (client.calls.size() < 3) client.window->StartTimer(Wnd::kOnlineTimer, 10);
    };
    client.window->StartTimer(Wnd::kOnlineTimer, 10);
    ASSERT_TRUE(PumpUntil([&] { return client.calls.size() == 3; }));
    PumpFor(50);
    EXPECT_THAT(client.calls, ElementsAre(kOnline, kOnline, kOnline));
}

TEST(DataTimerWnd, HostileTimersAreRefusedOrCut) {
    struct Case {
        UINT_PTR id;
        LPARAM period;
        bool starts, isCut;
    };
    const Case cases[] = {{Wnd::kOrderTimer, 0, true, true},
                          {Wnd::kOrderTimer, -1, true, true},
                          {Wnd::kOrderTimer, INT64_MAX, true, true},
                          {Wnd::kOrderTimer, 10, true, false},
                          {0, 500, false, false},
                          {2, 500, false, false},
                          {UINTPTR_MAX, -1, false, false}};
    FakeClient client;
    ASSERT_TRUE(client.window->Create());
    for (const Case& test : cases) {
        const uint64_t cut = CCounters::Get("timer_period_cut"), refused = CCounters::Get("timer_refused");
        SendMessageW(*client.window, Wnd::kStartTimer, test.id, test.period);
        EXPECT_EQ(CCounters::Get("timer_period_cut") - cut, test.isCut ? 1u : 0u) << test.period;
        EXPECT_EQ(CCounters::Get("timer_refused") - refused, test.starts ? 0u : 1u) << test.id;
        EXPECT_EQ(client.window->StopTimer(test.id), test.starts) << test.id;
    }
}

TEST(DataTimerWnd, TheClientMayEndItInAnyCall) {
    for (const UINT_PTR id : {Wnd::kQuoteTimer, Wnd::kOrderTimer, Wnd::kOnlineTimer, UINT_PTR{0}}) {
        auto client = std::make_unique<FakeClient>();
        ASSERT_TRUE(client->window->Create());
        const HWND window = *client->window;
        client->onCall = [&] { client.reset(); };
        if (id != 0) {
            ASSERT_TRUE(client->window->StartTimer(id, 10));
            EXPECT_TRUE(PumpUntil([&] { return !client; })) << id;
        } else {
            SendMessageW(window, Wnd::kQuoteTick, 0, 0);
            EXPECT_FALSE(client);
        }
        EXPECT_FALSE(IsWindow(window));
    }
}

TEST(DataTimerWnd, ExceptionsOfTheClientEndHere) {
    FakeClient client;
    ASSERT_TRUE(client.window->Create());
    client.onCall = [] { throw std::runtime_error("page"); };
    const uint64_t failed = CCounters::Get("timer_client_failed");
    for (int i = 0; i < 2; ++i) SendMessageW(*client.window, Wnd::kQuoteTick, 0, 0);
    EXPECT_EQ(CCounters::Get("timer_client_failed"), failed + 2);
}

std::vector<UINT> g_passedOn;

LRESULT CALLBACK NoteAndAnswer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    g_passedOn.push_back(message);
    return message >= WM_USER ? 77 : DefWindowProcW(window, message, wParam, lParam);
}

TEST(DataTimerWnd, EveryMessageGoesOnToThePreviousProcedure) {
    const HWND window = platform_test::MakeBareWindow();
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(NoteAndAnswer));
    FakeClient client;
    ASSERT_TRUE(client.window->Subclass(window));
    g_passedOn.clear();
    const std::vector<UINT> messages = {Wnd::kStartTimer, Wnd::kStopTimer, Wnd::kQuoteTick, WM_USER + 500};
    for (const UINT message : messages) EXPECT_EQ(SendMessageW(window, message, Wnd::kOrderTimer, 500), 77);
    EXPECT_EQ(g_passedOn, messages);
    SendMessageW(window, WM_TIMER, Wnd::kOrderTimer, 0);
    EXPECT_EQ(g_passedOn.back(), UINT{WM_TIMER});
    EXPECT_THAT(client.calls, ElementsAre(kTick, kOrder));
}

}  // namespace
}  // namespace luadui
