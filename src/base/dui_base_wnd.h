// CDuiBaseWnd: the window that pages derive from. It can be found by its handle and receives records as a window
// message.
#pragma once

#include "base/base_object.h"
#include "platform/duilib.h"

namespace luadui {

// Threads: all calls come on the window's thread; SendRecord may be called on any.
class TESSEL_API CDuiBaseWnd : public CWindowWnd, public CBaseObject {
  public:
    // The message that brings a record: wParam is a CUIData* that stays the sender's and is valid for the call, lParam
    // is 0. It is sent, not posted. The answer is 1 when OnNotify ran to its end.
    static constexpr UINT kRecordMessage = 3024;

    // Sends `record` to a window; true when it took it. False for a window that is gone.
    static bool SendRecord(HWND window, CUIData& record);

    // Receives a record: `data` is a CUIData*, never null. An exception ends here and is counted as
    // "page_notify_failed".
    void OnNotify(void* data) override;

  protected:
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
};

}  // namespace luadui
