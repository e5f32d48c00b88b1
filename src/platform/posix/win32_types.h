// Win32 types and error codes. Included by platform/win32.h only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/export.h"

#define WINAPI
#define CALLBACK
#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

using BOOL = int;
using BYTE = unsigned char;
using WORD = uint16_t;
using DWORD = uint32_t;
using INT = int;
using UINT = unsigned int;
using LONG = int32_t;
using ULONG = uint32_t;
using ULONGLONG = uint64_t;
using INT_PTR = intptr_t;
using UINT_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using ULONG_PTR = uintptr_t;
using DWORD_PTR = uintptr_t;
using SIZE_T = size_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using ATOM = WORD;
using HRESULT = int32_t;

using CHAR = char;
using WCHAR = wchar_t;  // 32 bits here, 16 on Windows
using TCHAR = wchar_t;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPTSTR = LPWSTR;
using LPCTSTR = LPCWSTR;

using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using PUINT = UINT*;

// A handle of the kernel (thread, event). Its value fits 32 bits, as a window's does; a module's does not.
using HANDLE = void*;
using HWND = struct HWNDValue*;
using HINSTANCE = struct HINSTANCEValue*;
using HMODULE = HINSTANCE;
using HICON = struct HICONValue*;
using HCURSOR = HICON;
using HBRUSH = struct HBRUSHValue*;
using HMENU = struct HMENUValue*;
using FARPROC = INT_PTR (*)();

struct POINT {
    LONG x, y;
};
struct SIZE {
    LONG cx, cy;
};
struct RECT {
    LONG left, top, right, bottom;
};

constexpr WORD LOWORD(DWORD_PTR value) { return static_cast<WORD>(value & 0xFFFF); }
constexpr WORD HIWORD(DWORD_PTR value) { return static_cast<WORD>(value >> 16 & 0xFFFF); }
constexpr LONG MAKELONG(DWORD_PTR low, DWORD_PTR high) {
    return static_cast<LONG>(DWORD{LOWORD(low)} | DWORD{LOWORD(high)} << 16);
}
constexpr WPARAM MAKEWPARAM(DWORD_PTR low, DWORD_PTR high) { return static_cast<DWORD>(MAKELONG(low, high)); }
constexpr LPARAM MAKELPARAM(DWORD_PTR low, DWORD_PTR high) { return static_cast<DWORD>(MAKELONG(low, high)); }

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD MAX_PATH = 260;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr DWORD ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr DWORD ERROR_CLASS_DOES_NOT_EXIST = 1411;
inline constexpr DWORD ERROR_CLASS_HAS_WINDOWS = 1412;
inline constexpr DWORD ERROR_INVALID_INDEX = 1413;
inline constexpr DWORD ERROR_INVALID_THREAD_ID = 1444;
inline constexpr DWORD ERROR_NO_MORE_USER_HANDLES = 1158;
inline constexpr DWORD ERROR_TIMEOUT = 1460;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

TESSEL_API DWORD GetLastError();
TESSEL_API void SetLastError(DWORD error);
