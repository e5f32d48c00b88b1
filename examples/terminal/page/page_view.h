// What pages tell the host's window: the agreement between host and page plug-ins.
#pragma once

#include <memory>

#include "base/ui_data.h"
#include "platform/win32.h"

namespace terminal {

// Posted by a page to the window named in its first init integer (when that is 0, to its first parent) whenever it
// shows something new. lParam: CUIData*, owned by the receiver, with these keys (texts in code page 936):
//
//   "page"  the page's name             "asleep" "focused"     booleans
//   "text"  what it shows               "width" "height"       its size in pixels; 0 while unknown
//   "window" its handle
//   "queries" "answers" "errors" "unreadable"                  what it sent and received so far
//   "tables"                                                   a record of the tables that a data page shows, each under
//                                                              "kind account", or "kind" when it is of all accounts
constexpr UINT kMsgPageView = WM_APP + 1;

// Posted by a page that gets its data by name, for each record that it received; lParam as above:
//
//   "page"      the page's name         "kind"      the data kind
//   "accounts"  separated by commas     "why"       why it came: see page/data_page.h
//   "rows"      of its tables, or -1    "code" "message"    what the server says became of it; 0 is success
constexpr UINT kMsgPageRecord = WM_APP + 3;

// False when the window's queue is full or the window gone.
inline bool PostToHost(HWND window, UINT message, const luadui::CUIData& record) {
    auto posted = std::make_unique<luadui::CUIData>(record);
    if (!::PostMessageW(window, message, 0, reinterpret_cast<LPARAM>(posted.get()))) return false;
    posted.release();
    return true;
}

// Handles fit 32 bits and are widened with their sign; these are the two directions.
inline int HandleNumber(HWND window) { return static_cast<int>(reinterpret_cast<INT_PTR>(window)); }
inline HWND HandleOfNumber(int number) { return reinterpret_cast<HWND>(static_cast<INT_PTR>(number)); }

}  // namespace terminal
