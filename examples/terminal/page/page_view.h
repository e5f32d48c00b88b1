// What a page shows, as the sample terminal's text screen takes it: the agreement between host and page plug-ins.
#pragma once

#include "base/ui_data.h"
#include "platform/win32.h"

namespace terminal {

// Posted by a page to the window named in its first init integer (when that is 0, to its first parent) whenever it
// shows something new. lParam: CUIData*, owned by the receiver, with these keys (texts in code page 936):
//
//   "page"  the page's name             "asleep" "focused"     booleans
//   "text"  what it shows               "width" "height"       its size in pixels; 0 while unknown
//   "queries" "answers" "errors" "unreadable"                  what it sent and received so far
constexpr UINT kMsgPageView = WM_APP + 1;

// Handles fit 32 bits and are widened with their sign; these are the two directions.
inline int HandleNumber(HWND window) { return static_cast<int>(reinterpret_cast<INT_PTR>(window)); }
inline HWND HandleOfNumber(int number) { return reinterpret_cast<HWND>(static_cast<INT_PTR>(number)); }

}  // namespace terminal
