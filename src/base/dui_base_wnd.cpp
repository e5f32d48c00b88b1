#include "base/dui_base_wnd.h"

#include "base/guard.h"
#include "base/ui_data.h"

namespace luadui {

bool CDuiBaseWnd::SendRecord(HWND window, CUIData& record) {
    return ::SendMessageW(window, kRecordMessage, reinterpret_cast<WPARAM>(&record), 0) == 1;
}

void CDuiBaseWnd::OnNotify(void*) {}

LRESULT CDuiBaseWnd::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kRecordMessage) return CWindowWnd::HandleMessage(message, wParam, lParam);
    if (wParam == 0) return 0;
    return Guarded("page_notify_failed", [&] { OnNotify(reinterpret_cast<void*>(wParam)); }) ? 1 : 0;
}

}  // namespace luadui
