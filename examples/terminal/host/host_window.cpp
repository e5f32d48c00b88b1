#include "host/host_window.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "base/guard.h"
#include "luadui/frame_message.h"
#include "page/page_view.h"

namespace terminal {
namespace {

using luadui::CUIData;

constexpr wchar_t kClassName[] = L"SampleTerminalWnd";
constexpr UINT kMsgFrame = 9529;
constexpr size_t kMaxKept = 10'000;  // of what nobody takes
constexpr int kMaxServed = 1000;
constexpr int kWidth = 1200;  // pixels: the area that pages below the window get
constexpr int kHeight = 800;

using Records = std::deque<CUIData>;

void Keep(Records& records, CUIData record) {
    if (records.size() >= kMaxKept) {
        records.pop_front();
        luadui::CCounters::Add("host_message_dropped");
    }
    records.push_back(std::move(record));
}

bool Take(Records& records, CUIData& oldest) {
    if (records.empty()) return false;
    oldest = records.front();
    records.pop_front();
    return true;
}

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

bool HostWindow::TakeFrame(CUIData& frame) { return Take(m_frames, frame); }

bool HostWindow::TakeRecord(CUIData& record) { return Take(m_records, record); }

LRESULT CALLBACK HostWindow::_procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<HostWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    const auto handle = [&](auto handler) {
        luadui::Guarded("host_window_threw", handler);
        return 0;
    };
    if (self && message == kMsgFrame) return handle([&] { self->_onFrame(wParam); });
    if (self && message == kMsgPageView) return handle([&] { self->_onView(lParam); });
    if (self && message == kMsgPageRecord) return handle([&] { self->_onRecord(lParam); });
    return DefWindowProcW(window, message, wParam, lParam);
}

void HostWindow::_onFrame(WPARAM wParam) {
    const std::unique_ptr<luadui::FrameMessage> message(reinterpret_cast<luadui::FrameMessage*>(wParam));
    CUIData frame("frame");
    frame.SetData("code", message->code);
    frame.SetData("target", message->target);
    frame.SetData("method", message->method);
    frame.SetData("body", message->body.ToText());
    Keep(m_frames, std::move(frame));
}

void HostWindow::_onView(LPARAM lParam) {
    const std::unique_ptr<CUIData> view(reinterpret_cast<CUIData*>(lParam));
    m_views[view->GetDataString("page")] = *view;
}

void HostWindow::_onRecord(LPARAM lParam) {
    const std::unique_ptr<CUIData> record(reinterpret_cast<CUIData*>(lParam));
    Keep(m_records, *record);
}

}  // namespace terminal
