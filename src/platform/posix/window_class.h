// Registered window classes.
#pragma once

#include <memory>
#include <string>

#include "platform/posix/win32_windows.h"

namespace luadui::posix {

struct WindowClass {
    std::wstring name;
    HINSTANCE instance = nullptr;
    ATOM atom = 0;
    WNDCLASSEXW info{};  // its strings are null
};

// By name or atom; null with the error set when there is none. Windows keep their class by the pointer.
std::shared_ptr<const WindowClass> FindWindowClass(LPCWSTR nameOrAtom, HINSTANCE instance);
// A search by name or atom: null takes every class.
bool IsOfClass(const WindowClass& windowClass, LPCWSTR nameOrAtom);

}  // namespace luadui::posix
