// What a page library exports. A page library is a shared library below the host's folder; the page manager
// loads it when its first page is created and keeps it loaded. All four functions are called on the UI
// thread; texts are code page 936 and valid only during the call. An exception that leaves one of them is
// caught and counted; the call then counts as failed.
//
// Only create_page is required. A library defines them with LUADUI_PAGE_EXPORT in front and includes this
// header, so that their types are checked.
#pragma once

#include "platform/export.h"
#include "platform/win32.h"

namespace luadui {

struct PageInit {
    int a;  // the two integers of the page's creation, passed on as they are
    int b;
    const char* name;     // the page name, unique among the living pages
    const char* info;     // init string 3: the login information
    const char* library;  // init string 4: the library's name as it was asked for
    int flag;             // the init flag, 0 or 1 from Lua
    HWND parent1;         // the windows under which the page is to create its own; may be null
    HWND parent2;
};

}  // namespace luadui

// Creates the page and its window. Returns the window's handle as a number (the page result), 0 on failure.
// The page belongs to the library; destroying its window ends it.
LUADUI_PAGE_EXPORT unsigned int create_page(const luadui::PageInit* init);

// Puts a page to sleep (asleep != 0: it is not on screen) or wakes it. The name in the library is "sleep";
// the C library has a function of that name, hence the other one here.
LUADUI_PAGE_EXPORT void page_sleep(int asleep, const char* name) __asm__("sleep");

// Tells the page the size of the area under its parent, in pixels.
LUADUI_PAGE_EXPORT void resizepage(const char* name, int width, int height);

// Gives the focus to the page that was created with this init string 3. `reason` is 0.
LUADUI_PAGE_EXPORT void handlepage_focus(int reason, const char* info);
