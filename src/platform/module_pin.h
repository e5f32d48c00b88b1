// Modules that must stay mapped, because something outside calls back into them for as long as a thread lives.
#pragma once

#include "platform/win32.h"

namespace luadui {

// Keeps the module that holds `address` until the process ends. Safe to call again. False when there is no such module.
inline bool PinModuleOf(const void* address) noexcept {
    HMODULE module = nullptr;
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                              static_cast<LPCWSTR>(address), &module) != 0;
}

}  // namespace luadui
