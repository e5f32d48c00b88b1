// Small helpers for wide strings at the Win32 border.
#pragma once

#include <algorithm>
#include <string_view>

#include "platform/posix/win32_types.h"

namespace luadui::posix {

constexpr wchar_t UpperAscii(wchar_t c) { return c >= L'a' && c <= L'z' ? c - L'a' + L'A' : c; }

inline bool EqualNoCase(std::wstring_view left, std::wstring_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](wchar_t a, wchar_t b) { return UpperAscii(a) == UpperAscii(b); });
}

// Copies what fits and terminates it. Returns the length copied; 0 when there is no room at all.
inline size_t CopyOut(std::wstring_view text, LPWSTR out, size_t size) {
    if (!out || size == 0) return 0;
    const size_t length = std::min(text.size(), size - 1);
    std::copy_n(text.begin(), length, out);
    out[length] = L'\0';
    return length;
}

}  // namespace luadui::posix
