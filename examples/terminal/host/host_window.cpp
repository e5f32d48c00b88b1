#include "host/host_window.h"

#include <algorithm>
#include <memory>

#include "base/guard.h"
#include "luadui/frame_message.h"
#include "page/page_view.h"

namespace terminal {
namespace {

using luadui::CUIData;

constexpr wchar_t kClassName[] = L"SampleTerminalWnd";
constexpr UINT kMsgFrame = 9529;
constexpr size_t kMaxFrames = 1000;
constexpr int kMaxServed = 1000;
constexpr int kWidth = 1200;  // pixels: the area that pages below the window get
constexpr int kHeight = 800;

}  // namespace

bool HostWindow::Create() {
    WNDCLASSW info = {};
    info.lpfnWndProc = &_procedure;
    info.hInstance = GetModuleHandleW(nullptr);
    info.lpszClassName = kClassName;
    RegisterClassW(&info);  // a second window finds the class there
    m_window = CreateWindowExW(0, kClassName, L"Terminal", 0, 0, 0, kWidth, kHeight, HWND_MESSAGE, nullptr,
                               info.hInstance, nullptr);
    if (m_window) SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    return m_window != nullptr;
}

void HostWindow::Destroy() {
    if (!m_window) return;
    while (Pump(0)) {
    }
    DestroyWindow(m_window);
    m_window = nullptr;
}

bool HostWindow::Pump(DWORD milliseconds) {
    MSG message;
    bool served = false;
    // The queue is looked at first: on Windows the wait only sees what arrives after the last look.
    for (int round = 0; round < 2 && !served; ++round) {
        if (round == 1) {
            if (milliseconds == 0) break;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, milliseconds, QS_ALLINPUT);
        }
        // At most so many at a time: whoever pumps also has a limit to watch.
        for (int i = 0; i < kMaxServed && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
            served = true;
        }
    }
    return served;
}

bool HostWindow::PumpUntilEnd(HANDLE thread, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        Pump(0);
        const ULONGLONG now = GetTickCount64();
        const auto left = static_cast<DWORD>(now < end ? end - now : 0);
        if (MsgWaitForMultipleObjects(1, &thread, FALSE, left, QS_ALLINPUT) == WAIT_OBJECT_0) return true;
        if (left == 0) return false;
    }
}

const CUIData* HostWindow::View(const std::string& page) const {
    const auto found = m_views.find(page);
    return found == m_views.end() ? nullptr : &found->second;
}

bool HostWindow::TakeFrame(CUIData& frame) {
    if (m_frames.empty()) return false;
    frame = m_frames.front();
    m_frames.pop_front();
    return true;
}

LRESULT CALLBACK HostWindow::_procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<HostWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self && (message == kMsgFrame || message == kMsgPageView)) {
        luadui::Guarded("host_window_threw",
                        [&] { message == kMsgFrame ? self->_onFrame(wParam) : self->_onView(lParam); });
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void HostWindow::_onFrame(WPARAM wParam) {
    const std::unique_ptr<luadui::FrameMessage> message(reinterpret_cast<luadui::FrameMessage*>(wParam));
    CUIData frame("frame");
    frame.SetData("code", message->code);
    frame.SetData("target", message->target);
    frame.SetData("method", message->method);
    frame.SetData("body", message->body.ToText());
    if (m_frames.size() >= kMaxFrames) {
        m_frames.pop_front();
        luadui::CCounters::Add("host_frame_dropped");
    }
    m_frames.push_back(frame);
}

void HostWindow::_onView(LPARAM lParam) {
    const std::unique_ptr<CUIData> view(reinterpret_cast<CUIData*>(lParam));
    m_views[view->GetDataString("page")] = *view;
}

}  // namespace terminal
