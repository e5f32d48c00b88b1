// The least that a page library is: a window, and none of the library's classes.
#include "luadui/page_plugin.h"

unsigned int create_page(const luadui::PageInit*) {
    const HWND window =
        CreateWindowExW(0, L"PlainPage", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    if (window) return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(window));
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.lpszClassName = L"PlainPage";
    return RegisterClassW(&windowClass) ? create_page(nullptr) : 0;
}
