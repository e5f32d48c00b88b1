// Window handles as the 32-bit numbers in which scripts and page results carry them.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace luadui {

// Handles have 32 significant bits and are widened with their sign.
inline HWND WindowOfNumber(uint32_t number) {
    return reinterpret_cast<HWND>(static_cast<intptr_t>(static_cast<int32_t>(number)));
}

inline uint32_t NumberOfWindow(HWND window) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(window));
}

}  // namespace luadui
