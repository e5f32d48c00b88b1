// The host's main window: invisible, on the host thread, it receives frame messages and the views of the pages.
#pragma once

#include <deque>
#include <map>
#include <string>

#include "base/ui_data.h"
#include "platform/win32.h"

namespace terminal {

// Threads: the one that called Create, which has to pump.
class HostWindow {
  public:
    HostWindow() = default;
    ~HostWindow() { Destroy(); }
    HostWindow(const HostWindow&) = delete;
    HostWindow& operator=(const HostWindow&) = delete;

    bool Create();
    // Frees what still waits for the window.
    void Destroy();
    HWND Handle() const { return m_window; }

    // Serves what waits (up to some hundred messages); when nothing does, waits up to `milliseconds` for it. True when something was served.
    bool Pump(DWORD milliseconds);
    // The same until `thread` ends; false when it still runs after `milliseconds`.
    bool PumpUntilEnd(HANDLE thread, DWORD milliseconds);

    // The last view of that page (see page/page_view.h); null when it showed nothing yet. Valid until the next pump.
    const luadui::CUIData* View(const std::string& page) const;
    // The oldest frame message not yet taken ("code", "target", "method", "body"); false when there is none.
    bool TakeFrame(luadui::CUIData& frame);
    // The oldest report of a record that a page received, not yet taken (see page/page_view.h); false when there is none.
    bool TakeRecord(luadui::CUIData& record);

  private:
    static LRESULT CALLBACK _procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void _onFrame(WPARAM frame);
    void _onView(LPARAM view);
    void _onRecord(LPARAM record);

    HWND m_window = nullptr;
    std::map<std::string, luadui::CUIData> m_views;
    std::deque<luadui::CUIData> m_frames;
    std::deque<luadui::CUIData> m_records;
};

}  // namespace terminal
