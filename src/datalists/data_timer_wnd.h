// CDataTimerWnd: the hidden window whose timers drive a data manager.
#pragma once

#include "platform/duilib.h"

namespace luadui {

class TimerClient;

// Answers three messages, which like all others then go on to the window's previous procedure:
//
//   kStartTimer   wParam = timer id, lParam = period in ms
//   kStopTimer    wParam = timer id
//   kQuoteTick    the client's GetData with a record "update_push_hq", true and false
//
// and three timers: kQuoteTimer sends kQuoteTick to the window, kOrderTimer runs the account command
// "notifyOrderToServer" until it is stopped, kOnlineTimer runs "timer_accountonline_changed" once. Other ids
// are refused and count as "timer_refused"; a period outside [kMinPeriod, kMaxPeriod] is taken as the nearer
// limit and counts as "timer_period_cut".
//
// The client may destroy this object inside any call that it gets. An exception of the client ends here and
// counts as "timer_client_failed".
//
// Threads: all calls on one thread, which runs a message loop; messages may be sent and posted from any.
class CDataTimerWnd final : public CWindowWnd {
  public:
    static constexpr UINT kStartTimer = 0x464, kStopTimer = 0x465, kQuoteTick = 0x466;
    static constexpr UINT_PTR kQuoteTimer = 1, kOrderTimer = 0x467, kOnlineTimer = 0x468;
    static constexpr UINT kQuotePeriod = 500, kOrderPeriod = 2000, kOnlinePeriod = 300;  // ms
    static constexpr UINT kMinPeriod = 10, kMaxPeriod = 24 * 3600 * 1000;                // ms

    // `client` is not owned; null means that timers run for nobody.
    explicit CDataTimerWnd(TimerClient* client) : m_client(client) {}
    // Destroys the window, and with it its timers.
    ~CDataTimerWnd() override;

    // Makes the window and starts kQuoteTimer. True when both are there, also when they already were; a
    // failure counts as "timer_window_failed".
    bool Create();
    // Starts a timer, or starts it anew. False without a window and for what is refused.
    bool StartTimer(UINT_PTR id, LPARAM milliseconds);
    // False when it did not run.
    bool StopTimer(UINT_PTR id);

  protected:
    LPCWSTR GetWindowClassName() const override { return L"CTimerWnd"; }
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void _onMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void _onTimer(UINT_PTR id);
    void _onQuoteTick();

    TimerClient* const m_client;
};

}  // namespace luadui
