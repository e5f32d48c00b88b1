#include "datalists/data_timer_wnd.h"

#include <algorithm>

#include "base/guard.h"
#include "base/ui_data.h"
#include "datalists/timer_client.h"

namespace luadui {
namespace {

bool IsKnown(UINT_PTR id) {
    return id == CDataTimerWnd::kQuoteTimer || id == CDataTimerWnd::kOrderTimer ||
           id == CDataTimerWnd::kOnlineTimer;
}

}  // namespace

CDataTimerWnd::~CDataTimerWnd() {
    if (m_hWnd) ::DestroyWindow(m_hWnd);
}

bool CDataTimerWnd::Create() {
    if (m_hWnd) return true;
    if (CWindowWnd::Create(HWND_MESSAGE, L"", 0, 0) && StartTimer(kQuoteTimer, kQuotePeriod)) return true;
    CCounters::Add("timer_window_failed");
    if (m_hWnd) ::DestroyWindow(m_hWnd);
    return false;
}

bool CDataTimerWnd::StartTimer(UINT_PTR id, LPARAM milliseconds) {
    if (!m_hWnd) return false;
    if (!IsKnown(id)) {
        CCounters::Add("timer_refused");
        return false;
    }
    const LPARAM period = std::clamp<LPARAM>(milliseconds, kMinPeriod, kMaxPeriod);
    if (period != milliseconds) CCounters::Add("timer_period_cut");
    return ::SetTimer(m_hWnd, id, static_cast<UINT>(period), nullptr) != 0;
}

bool CDataTimerWnd::StopTimer(UINT_PTR id) { return m_hWnd && ::KillTimer(m_hWnd, id); }

LRESULT CDataTimerWnd::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    // The client may end this object: what is still needed afterwards is taken before.
    const HWND window = m_hWnd;
    const WNDPROC previous = m_OldWndProc;
    Guarded("timer_client_failed", [&] { _onMessage(message, wParam, lParam); });
    return ::CallWindowProcW(previous, window, message, wParam, lParam);
}

// Nothing may follow these calls: see HandleMessage.

void CDataTimerWnd::_onMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case kStartTimer:
            StartTimer(wParam, lParam);
            break;
        case kStopTimer:
            StopTimer(wParam);
            break;
        case kQuoteTick:
            _onQuoteTick();
            break;
        case WM_TIMER:
            _onTimer(wParam);
            break;
        default:
            break;
    }
}

void CDataTimerWnd::_onTimer(UINT_PTR id) {
    if (id == kQuoteTimer) {
        ::SendMessageW(m_hWnd, kQuoteTick, 0, 0);
    } else if (id == kOrderTimer) {
        if (m_client) m_client->RunAccountCommand("notifyOrderToServer");
    } else if (id == kOnlineTimer) {
        StopTimer(id);  // before the call, which may start it again
        if (m_client) m_client->RunAccountCommand("timer_accountonline_changed");
    }
}

void CDataTimerWnd::_onQuoteTick() {
    if (!m_client) return;
    CUIData request("update_push_hq");
    m_client->GetData(request, true, false);
}

}  // namespace luadui
