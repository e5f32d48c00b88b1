// Windows and threads for the tests of the platform layer.
#pragma once

#include <gtest/gtest.h>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <thread>
#include <vector>

#include "platform/win32.h"

namespace luadui::platform_test {

inline constexpr UINT kFirst = WM_APP + 1, kSecond = WM_APP + 2, kThird = WM_APP + 3;
inline constexpr DWORD kPatience = 10000;  // ms after which a wait counts as hung

// A window that notes the messages it gets: those of its life, timers and our own. The handler, if any, answers first.
class Probe {
  public:
    using Handler = std::function<std::optional<LRESULT>(HWND, UINT, WPARAM, LPARAM)>;

    explicit Probe(HWND parent = HWND_MESSAGE, DWORD style = 0, Handler handler = {})
        : m_handler(std::move(handler)) {
        WNDCLASSW info{};
        info.lpfnWndProc = Procedure;
        info.hInstance = GetModuleHandleW(nullptr);
        info.lpszClassName = L"Probe";
        RegisterClassW(&info);
        m_window = CreateWindowExW(0, L"Probe", L"probe", style, 0, 0, 40, 30, parent, nullptr,
                                   info.hInstance, this);
    }
    explicit Probe(Handler handler) : Probe(HWND_MESSAGE, 0, std::move(handler)) {}
    ~Probe() {
        if (!IsWindow(m_window)) return;
        SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        DestroyWindow(m_window);
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    operator HWND() const { return m_window; }
    std::vector<UINT>& Seen() { return m_seen; }

  private:
    static bool IsNoted(UINT message) {
        return message > WM_APP || message == WM_NCCREATE || message == WM_CREATE || message == WM_DESTROY ||
               message == WM_NCDESTROY || message == WM_TIMER;
    }

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCCREATE) {
            SetWindowLongPtrW(
                window, GWLP_USERDATA,
                reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
        }
        auto* const probe = reinterpret_cast<Probe*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (!probe) return DefWindowProcW(window, message, wParam, lParam);
        if (IsNoted(message)) probe->m_seen.push_back(message);
        const auto answer =
            probe->m_handler ? probe->m_handler(window, message, wParam, lParam) : std::nullopt;
        return answer ? *answer : DefWindowProcW(window, message, wParam, lParam);
    }

    const Handler m_handler;
    std::vector<UINT> m_seen;
    HWND m_window = nullptr;
};

// A message-only window that nothing looks after.
inline HWND MakeBareWindow() {
    Probe registersTheClass;
    return CreateWindowExW(0, L"Probe", L"bare", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
}

// Dispatches everything that waits, or that much of it; returns what it dispatched.
inline std::vector<UINT> PumpAll(size_t most = SIZE_MAX) {
    std::vector<UINT> pumped;
    for (MSG message; pumped.size() < most && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
        pumped.push_back(message.message);
        DispatchMessageW(&message);
    }
    return pumped;
}

// Dispatches for this long.
inline void PumpFor(DWORD milliseconds) {
    for (const ULONGLONG end = GetTickCount64() + milliseconds; GetTickCount64() < end;) {
        PumpAll();
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

inline bool PumpUntil(const std::function<bool()>& done) {
    for (const ULONGLONG end = GetTickCount64() + kPatience; GetTickCount64() < end;) {
        PumpAll();
        if (done()) return true;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
    return false;
}

// A thread with a probe and a message loop, which ends with the object.
class ProbeThread {
  public:
    explicit ProbeThread(Probe::Handler handler = {}, HWND parent = HWND_MESSAGE) {
        std::promise<void> ready;
        m_thread = std::thread([this, &ready, handler = std::move(handler), parent] {
            Probe probe(parent, parent == HWND_MESSAGE ? 0 : WS_CHILD, handler);
            m_window = probe;
            m_id = GetCurrentThreadId();
            ready.set_value();
            for (MSG message; GetMessageW(&message, nullptr, 0, 0) > 0;) DispatchMessageW(&message);
            m_seen = probe.Seen();
        });
        ready.get_future().wait();
    }
    ~ProbeThread() { End(); }

    // Ends the loop and returns what the window saw.
    const std::vector<UINT>& End() {
        if (m_thread.joinable()) {
            PostThreadMessageW(m_id, WM_QUIT, 0, 0);
            m_thread.join();
        }
        return m_seen;
    }
    HWND Window() const { return m_window; }
    DWORD Id() const { return m_id; }

  private:
    std::thread m_thread;
    HWND m_window = nullptr;
    DWORD m_id = 0;
    std::vector<UINT> m_seen;
};

// A thread on which `body` runs; the destructor waits for it.
inline std::future<void> OnThread(std::function<void()> body) {
    return std::async(std::launch::async, std::move(body));
}

}  // namespace luadui::platform_test
