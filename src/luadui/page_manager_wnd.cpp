#include "luadui/page_manager_wnd.h"

#include <mutex>

#include "base/guard.h"
#include "luadui/page_messages.h"
#include "luadui/window_number.h"
#include "messaging/response_routing.h"

namespace luadui {
namespace {

constexpr UINT_PTR kRefillTimer = 1;
constexpr UINT kRefillEveryMs = 10;
constexpr DWORD kReadyPollMs = 10;
constexpr char kCompanionLibrary[] = "/vandrel.dll";

std::mutex g_creation;
std::atomic<CPageManagerWnd*> g_manager{nullptr};
std::atomic<unsigned char> g_ready{0};

struct LoginInfoQuery {
    const std::string& page;
    std::string& info;
};

template <class T>
LPARAM ToLParam(const T* value) {
    return reinterpret_cast<LPARAM>(value);
}

}  // namespace

CPageManagerWnd& CPageManagerWnd::Instance() {
    const std::lock_guard lock(g_creation);
    if (!Existing()) {
        auto* const manager = new CPageManagerWnd;
        g_manager.store(manager);  // before its thread can say that it is ready
        manager->_start();
    }
    return *Existing();
}

CPageManagerWnd* CPageManagerWnd::Existing() { return g_manager.load(); }

CPageManagerWnd::CPageManagerWnd()
    : m_inbox([this](WPARAM wParam, CQueueTaskItem* record) {
          return ::PostMessageW(m_window.load(), kMsgResponse, wParam, ToLParam(record)) != 0;
      }) {}

LPCWSTR CPageManagerWnd::GetWindowClassName() const { return L"PageManagerWnd"; }

CPageManagerWnd& CPageManagerWnd::WaitUntilReady() {
    while (g_ready.load() == 0) Sleep(kReadyPollMs);
    return *Existing();
}

bool CPageManagerWnd::WaitUntilStarted() const {
    while (g_ready.load() == 0 && !m_failed.load()) Sleep(kReadyPollMs);
    return g_ready.load() != 0;
}

void CPageManagerWnd::_setReady() { g_ready.store(1); }

void CPageManagerWnd::PostResponse(std::unique_ptr<CQueueRespData> response, WPARAM wParam) {
    const HWND window = m_window.load();
    const auto posted = window ? m_inbox.Post(std::move(response), wParam) : CRecordInbox::Posted::kClosed;
    if (posted == CRecordInbox::Posted::kClosed) CCounters::Add("response_without_ui_thread");
    if (posted == CRecordInbox::Posted::kTellConsumer &&
        !::SendNotifyMessageW(window, kMsgRefillQueue, 0, 0)) {
        CCounters::Add("refill_notice_failed");
    }
}

unsigned int CPageManagerWnd::CreatePage(const PageOrder& order, PageMessage message) {
    return static_cast<unsigned int>(::SendMessageW(m_window.load(), message, 0, ToLParam(&order)));
}

bool CPageManagerWnd::PostPageOrder(std::unique_ptr<PageOrder> order, PageMessage message) {
    const std::lock_guard lock(m_postGate);
    const HWND window = m_window.load();
    if (!window || !::PostMessageW(window, message, 1, ToLParam(order.get()))) {
        CCounters::Add("page_order_refused");
        return false;
    }
    static_cast<void>(order.release());
    return true;
}

bool CPageManagerWnd::GetLoginInfo(const std::string& page, std::string& info) {
    const LoginInfoQuery query{page, info};
    return ::SendMessageW(m_window.load(), kMsgLoginInfo, 0, ToLParam(&query)) == 1;
}

void CPageManagerWnd::SwitchTab(const std::string& page, int asleep) {
    ::SendMessageW(m_window.load(), kMsgSwitchTab, static_cast<WPARAM>(asleep), ToLParam(&page));
}

void CPageManagerWnd::SetFocusTo(const std::string& part) {
    ::SendMessageW(m_window.load(), kMsgSetFocus, 0, ToLParam(&part));
}

void CPageManagerWnd::KeepParents(HWND parent1, HWND parent2) {
    if (!parent1 && !parent2) return;
    m_parents.store(uint64_t{NumberOfWindow(parent1)} << 32 | NumberOfWindow(parent2));
}

std::pair<HWND, HWND> CPageManagerWnd::Parents() const {
    const uint64_t both = m_parents.load();
    return {WindowOfNumber(static_cast<uint32_t>(both >> 32)), WindowOfNumber(static_cast<uint32_t>(both))};
}

LRESULT CPageManagerWnd::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    Guarded("page_manager_threw", [&] { result = _dispatch(message, wParam, lParam); });
    return result;
}

LRESULT CPageManagerWnd::_dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool isOurs = message >= kFirstPageMessage && message <= kLastPageMessage;
    if (isOurs && message != kMsgRefillQueue && lParam == 0) {  // not from here: anybody may post to a window
        CCounters::Add("page_message_without_payload");
        return 0;
    }
    switch (message) {
        case kMsgResponse: {
            auto record = m_inbox.Take(lParam);
            return RouteResponse(
                std::unique_ptr<CQueueRespData>(static_cast<CQueueRespData*>(record.release())));
        }
        case kMsgCreatePage:
        case kMsgCreateComponentPage: {
            auto* const order = reinterpret_cast<PageOrder*>(lParam);
            const std::unique_ptr<PageOrder> owned(wParam == 1 ? order : nullptr);
            return _createPage(*order);
        }
        case kMsgExport:
            m_exportWorker.Post(std::unique_ptr<CQueueTaskItem>(reinterpret_cast<CQueueTaskItem*>(lParam)));
            return 0;
        case kMsgLoginInfo: {
            const auto* const query = reinterpret_cast<const LoginInfoQuery*>(lParam);
            const auto page = m_pages.Find(query->page);
            if (page) query->info = page->info;
            return page ? 1 : 0;
        }
        case kMsgSwitchTab:
            m_pages.Sleep(*reinterpret_cast<const std::string*>(lParam), static_cast<int>(wParam));
            return 0;
        case kMsgSetFocus:
            m_pages.Focus(*reinterpret_cast<const std::string*>(lParam));
            return 0;
        case kMsgRefillQueue:
        case WM_TIMER:
            _refill();
            return 0;
        case WM_DESTROY:
            _onDestroy();
            return 0;
        default:
            return CWindowWnd::HandleMessage(message, wParam, lParam);
    }
}

// Moves up the responses that wait, now and by timer until none is left. Timers come when nothing else waits, so by then
// the queue has room.
void CPageManagerWnd::_refill() {
    m_inbox.Refill();
    if (!m_inbox.HasWaiting()) {
        KillTimer(GetHWND(), kRefillTimer);
    } else if (!SetTimer(GetHWND(), kRefillTimer, kRefillEveryMs, nullptr)) {
        CCounters::Add("refill_timer_failed");
    }
}

unsigned int CPageManagerWnd::_createPage(const PageOrder& order) {
    const CPageRegistry::Created page = m_pages.Create(order);
    if (page.isNew && order.library == kCompanionLibrary) m_companion.store(page.window);
    return NumberOfWindow(page.window);
}

void CPageManagerWnd::_onDestroy() {
    m_inbox.Close();
    {
        const std::lock_guard lock(m_postGate);
        m_window.store(nullptr);
    }
    // Destroying a window throws its messages away; what they own is freed here first.
    MSG message;
    while (PeekMessageW(&message, GetHWND(), kFirstPageMessage, kLastPageMessage, PM_REMOVE))
        _freePosted(message);
    PostQuitMessage(0);
}

void CPageManagerWnd::_freePosted(const MSG& message) {
    switch (message.message) {
        case kMsgResponse:
        case kMsgExport:
            delete reinterpret_cast<CQueueTaskItem*>(message.lParam);
            CCounters::Add("records_dropped_at_shutdown");
            break;
        case kMsgCreatePage:
        case kMsgCreateComponentPage:
            if (message.wParam == 1) delete reinterpret_cast<PageOrder*>(message.lParam);
            CCounters::Add("page_order_refused");
            break;
        default:
            break;
    }
}

}  // namespace luadui
