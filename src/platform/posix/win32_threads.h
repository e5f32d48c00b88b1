// Threads, events, waiting and time. Included by platform/win32.h only.
#pragma once

#include "platform/posix/win32_types.h"

using LPTHREAD_START_ROUTINE = DWORD(WINAPI*)(LPVOID);

struct SECURITY_ATTRIBUTES;  // always null
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD SYNCHRONIZE = 0x00100000;
inline constexpr DWORD THREAD_QUERY_INFORMATION = 0x0040;
inline constexpr DWORD THREAD_QUERY_LIMITED_INFORMATION = 0x0800;
inline constexpr DWORD QS_ALLINPUT = 0x04FF;

// Starts a thread. Its handle is signalled when nothing of it runs any more but the system's own clean-up;
// close it with CloseHandle (the thread goes on). `stack` in bytes, 0 = default; `flags` must be 0 (no
// suspended start).
TESSEL_API HANDLE CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stack, LPTHREAD_START_ROUTINE routine,
                               LPVOID argument, DWORD flags, LPDWORD id);
// A handle to any living thread that has used this layer; null (ERROR_INVALID_PARAMETER) when there is none.
TESSEL_API HANDLE OpenThread(DWORD access, BOOL inherit, DWORD id);
TESSEL_API BOOL GetExitCodeThread(HANDLE thread, LPDWORD code);
TESSEL_API DWORD GetCurrentThreadId();  // never used again during the run
TESSEL_API DWORD GetCurrentProcessId();

// A place for one pointer of each thread. The callback gets the thread's pointer, unless that is null, when the thread
// ends, after its thread_local objects did. FLS_OUT_OF_INDEXES when there are too many.
using PFLS_CALLBACK_FUNCTION = void(WINAPI*)(LPVOID);
inline constexpr DWORD FLS_OUT_OF_INDEXES = 0xFFFFFFFF;
TESSEL_API DWORD FlsAlloc(PFLS_CALLBACK_FUNCTION callback);
TESSEL_API LPVOID FlsGetValue(DWORD index);
TESSEL_API BOOL FlsSetValue(DWORD index, LPVOID value);  // false for what is no index

// An event; named events are not supported.
TESSEL_API HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name);
TESSEL_API BOOL SetEvent(HANDLE event);
TESSEL_API BOOL ResetEvent(HANDLE event);

// False (ERROR_INVALID_HANDLE) for a handle that is not open. Safe while other threads wait on the object.
TESSEL_API BOOL CloseHandle(HANDLE handle);

// Waits in milliseconds (INFINITE: without end). Messages sent to the thread are not served meanwhile; a
// thread with windows waits with MsgWaitForMultipleObjects.
TESSEL_API DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
TESSEL_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds);
// As above, but also returns, with WAIT_OBJECT_0 + count, as soon as anything waits in the thread's queue (on
// Windows only for what arrived since the queue was last looked at). `all` must be FALSE, `wakeMask`
// QS_ALLINPUT.
TESSEL_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds,
                                           DWORD wakeMask);

TESSEL_API void Sleep(DWORD milliseconds);
TESSEL_API DWORD GetTickCount();
TESSEL_API ULONGLONG GetTickCount64();

struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};
TESSEL_API void GetLocalTime(SYSTEMTIME* time);
