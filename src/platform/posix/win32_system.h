// Modules, paths, file versions, COM. Included by platform/win32.h only.
#pragma once

#include "platform/posix/win32_types.h"

// Loads a module. "name.dll" stands for "libname.so", then "name.so"; both kinds of slash separate folders. A
// path without a leading separator is looked for below the host executable's folder; a bare name also where
// the system keeps its libraries. Null when there is none (ERROR_MOD_NOT_FOUND) or it cannot be loaded
// (ERROR_BAD_EXE_FORMAT).
TESSEL_API HMODULE LoadLibraryW(LPCWSTR name);
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;  // no difference here
TESSEL_API HMODULE LoadLibraryExW(LPCWSTR name, HANDLE, DWORD flags);
TESSEL_API BOOL FreeLibrary(HMODULE module);
// Only what the module itself shows, not what it depends on.
TESSEL_API FARPROC GetProcAddress(HMODULE module, LPCSTR name);

// A loaded module by the names that LoadLibraryW takes, not referenced; null for the host executable.
TESSEL_API HMODULE GetModuleHandleW(LPCWSTR name);
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_PIN = 1;  // stays loaded until the process ends
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT = 2;
inline constexpr DWORD GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS = 4;  // `name` is an address inside the module
TESSEL_API BOOL GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module);

// Full path of a module (null: of the host executable), with this system's separators. Returns its length, or
// `size` when it was cut (ERROR_INSUFFICIENT_BUFFER); always terminated.
TESSEL_API DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);

TESSEL_API BOOL PathRemoveFileSpecW(LPWSTR path);
TESSEL_API BOOL PathFileExistsW(LPCWSTR path);

// Files carry no version information here: the first always answers 0 (ERROR_RESOURCE_TYPE_NOT_FOUND).
TESSEL_API DWORD GetFileVersionInfoSizeW(LPCWSTR file, LPDWORD handle);
TESSEL_API BOOL GetFileVersionInfoW(LPCWSTR file, DWORD handle, DWORD size, LPVOID data);
TESSEL_API BOOL VerQueryValueW(LPCVOID block, LPCWSTR name, LPVOID* value, PUINT length);

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
constexpr bool SUCCEEDED(HRESULT result) { return result >= 0; }
constexpr bool FAILED(HRESULT result) { return result < 0; }

// Counts per thread; S_FALSE when the thread had done so already.
TESSEL_API HRESULT CoInitialize(LPVOID reserved);
TESSEL_API void CoUninitialize();

struct GUID {
    DWORD Data1;
    WORD Data2, Data3;
    BYTE Data4[8];
};
TESSEL_API HRESULT CoCreateGuid(GUID* guid);

TESSEL_API void OutputDebugStringW(LPCWSTR text);  // to standard error
