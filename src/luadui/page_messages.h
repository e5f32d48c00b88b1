// The message numbers of the page manager window (2025 to 2125) and the windows around it.
#pragma once

#include "platform/win32.h"

namespace luadui {

enum PageMessage : UINT {
    kMsgCreatePage = 2025,  // lParam: PageOrder*, owned by the receiver when wParam is 1 (posted)
    kMsgResponse = 2028,    // lParam: CQueueRespData*, owned by the receiver; wParam: 1 server, 0 host script
    kMsgCreateComponentPage = 2029,  // as kMsgCreatePage
    kMsgExport = 2032,       // lParam: CQueueTaskItem*, owned by the receiver; goes on to the export worker
    kMsgSetFocus = 2101,     // sent; lParam: std::string*, the part of init string 3
    kMsgLoginInfo = 2102,    // sent; lParam: LoginInfoQuery*; result 1 when the page is there
    kMsgSwitchTab = 2103,    // sent; wParam: asleep; lParam: std::string*, the page name
    kMsgRefillQueue = 2104,  // responses wait on the overflow list
    kFirstPageMessage = 2025,
    kLastPageMessage = 2125,

    kMsgFrame = 9529,      // to the host's main window; wParam: FrameMessage*, owned by the receiver
    kMsgCompanion = 8193,  // to the companion page's window
};

}  // namespace luadui
