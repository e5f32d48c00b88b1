// Posting, sending, getting and dispatching messages; timers.
#include "platform/posix/errors.h"
#include "platform/posix/window.h"

using namespace luadui::posix;

namespace {

// Where a message goes: at once to the procedure of a window of ours, or through the queue of its thread.
struct Route {
    WNDPROC procedure = nullptr;
    std::shared_ptr<SentMessage> sent;
};

constexpr bool IsMessageNumber(UINT message) { return message < kDestroyRequest; }

// `waits`: the calling thread waits for the answer.
Route Dispatch(HWND window, UINT message, WPARAM wParam, LPARAM lParam, bool waits) {
    if (!IsMessageNumber(message)) return Fail<Route>(ERROR_INVALID_PARAMETER);
    if (const Window* own = FindOwn(window)) return {own->procedure.load(), nullptr};
    Thread& self = Thread::Current();
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    if (!found) return Fail<Route>(ERROR_INVALID_WINDOW_HANDLE);
    auto sent = std::make_shared<SentMessage>(window, message, wParam, lParam,
                                              waits ? self.shared_from_this() : nullptr);
    if (!found->thread->Queue().Send(sent)) return Fail<Route>(ERROR_INVALID_WINDOW_HANDLE);
    return {nullptr, std::move(sent)};
}

// Until the answer is there; false when the time is over first.
bool WaitForAnswer(const SentMessage& sent, Deadline deadline, bool serve) {
    Thread& self = Thread::Current();
    for (;;) {
        if (serve) self.Queue().ServeSent();
        if (sent.IsAnswered()) return true;
        if (deadline != kNever && Clock::now() >= deadline) return false;
        self.GetParker().Park(deadline);
    }
}

BOOL ToResult(DWORD error) {
    if (error == ERROR_SUCCESS) return TRUE;
    return Fail<BOOL>(error);
}

}  // namespace

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!window) return PostThreadMessageW(GetCurrentThreadId(), message, wParam, lParam);
    if (!IsMessageNumber(message)) return Fail<BOOL>(ERROR_INVALID_PARAMETER);
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    if (!found) return Fail<BOOL>(ERROR_INVALID_WINDOW_HANDLE);
    return OrNoMemory([&] { return ToResult(found->thread->Queue().Post(window, message, wParam, lParam)); });
}

BOOL PostThreadMessageW(DWORD id, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!IsMessageNumber(message)) return Fail<BOOL>(ERROR_INVALID_PARAMETER);
    Thread& self = Thread::Current();
    if (id == self.Id()) self.OpenQueue();
    const auto thread = Thread::Find(id);
    if (!thread) return Fail<BOOL>(ERROR_INVALID_THREAD_ID);
    return OrNoMemory([&] { return ToResult(thread->Queue().Post(nullptr, message, wParam, lParam)); });
}

void PostQuitMessage(int code) { Thread::Current().OpenQueue().Quit(code); }

LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, INFINITE, &result);
    return static_cast<LRESULT>(result);
}

LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT flags,
                            UINT milliseconds, DWORD_PTR* result) {
    const Route route = OrNoMemory([&] { return Dispatch(window, message, wParam, lParam, true); });
    LRESULT answer = 0;
    if (route.procedure) {
        answer = route.procedure(window, message, wParam, lParam);
    } else if (!route.sent) {
        return 0;
    } else if (WaitForAnswer(*route.sent, DeadlineAfter(milliseconds), !(flags & SMTO_BLOCK))) {
        answer = route.sent->Result();
    } else {
        return Fail<LRESULT>(ERROR_TIMEOUT);
    }
    if (result) *result = static_cast<DWORD_PTR>(answer);
    return TRUE;
}

BOOL SendNotifyMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const Route route = OrNoMemory([&] { return Dispatch(window, message, wParam, lParam, false); });
    if (route.procedure) route.procedure(window, message, wParam, lParam);
    return route.procedure || route.sent;
}

BOOL InSendMessage() { return Thread::Current().Queue().Serving() != nullptr; }

BOOL ReplyMessage(LRESULT result) {
    SentMessage* const serving = Thread::Current().Queue().Serving();
    if (!serving || serving->IsAnswered()) return FALSE;
    serving->Answer(result);
    return TRUE;
}

BOOL GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    const MessageFilter filter{window, first, last};
    Thread& self = Thread::Current();
    MessageQueue& queue = self.OpenQueue();
    for (;;) {
        if (!message || !filter.IsValid()) {
            SetLastError(ERROR_INVALID_WINDOW_HANDLE);
            return -1;
        }
        if (const auto got = queue.Get(filter, true)) {
            *message = *got;
            return got->message != WM_QUIT;
        }
        self.GetParker().Park(queue.NextTimer(filter));
    }
}

BOOL PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove) {
    const MessageFilter filter{window, first, last};
    MessageQueue& queue = Thread::Current().OpenQueue();
    if (!message || !filter.IsValid()) return Fail<BOOL>(ERROR_INVALID_WINDOW_HANDLE);
    const auto got = queue.Get(filter, (remove & PM_REMOVE) != 0);
    if (got) *message = *got;
    return got.has_value();
}

BOOL TranslateMessage(const MSG*) { return FALSE; }  // there are no keys

LRESULT DispatchMessageW(const MSG* message) {
    if (!message) return 0;
    Thread& self = Thread::Current();
    if (message->message == WM_TIMER && message->lParam) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        if (self.Queue().Timers().Has(message->hwnd, message->wParam, procedure)) {
            procedure(message->hwnd, WM_TIMER, message->wParam, GetTickCount());
        }
        return 0;
    }
    if (!message->hwnd) return 0;
    const Window* own = FindOwn(message->hwnd);
    if (!own) return Fail<LRESULT>(ERROR_INVALID_WINDOW_HANDLE);
    return own->procedure.load()(message->hwnd, message->message, message->wParam, message->lParam);
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    Thread& self = Thread::Current();
    if (window && GetWindowThreadProcessId(window, nullptr) != self.Id()) {
        return Fail<UINT_PTR>(IsWindow(window) ? ERROR_ACCESS_DENIED : ERROR_INVALID_WINDOW_HANDLE);
    }
    return OrNoMemory([&] {
        const UINT_PTR set = self.OpenQueue().Timers().Set(window, id, milliseconds, procedure);
        return window ? UINT_PTR{1} : set;  // a window's timer may have the number 0
    });
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    if (Thread::Current().Queue().Timers().Kill(window, id)) return TRUE;
    return Fail<BOOL>(ERROR_INVALID_PARAMETER);
}
