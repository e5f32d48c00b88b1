// Small calls to the system: errors, time, COM, debug text.
#include <pthread.h>
#include <sched.h>
#include <sys/random.h>
#include <unistd.h>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "platform/code_page.h"
#include "platform/posix/parker.h"
#include "platform/posix/win32_system.h"
#include "platform/posix/win32_threads.h"

namespace {

constinit thread_local DWORD t_lastError = ERROR_SUCCESS;
constinit thread_local int t_comUses = 0;

}  // namespace

DWORD GetLastError() { return t_lastError; }
void SetLastError(DWORD error) { t_lastError = error; }

ULONGLONG GetTickCount64() {
    const auto now = luadui::posix::Clock::now().time_since_epoch();
    return static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

DWORD GetTickCount() { return static_cast<DWORD>(GetTickCount64()); }

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    if (milliseconds == INFINITE) {
        for (;;) pause();
    }
    timespec rest{static_cast<time_t>(milliseconds / 1000),
                  static_cast<long>(milliseconds % 1000) * 1'000'000};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &rest, &rest) == EINTR) {
    }
}

void GetLocalTime(SYSTEMTIME* time) {
    if (!time) return;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const auto word = [](long value) { return static_cast<WORD>(value); };
    *time = {word(local.tm_year + 1900), word(local.tm_mon + 1),       word(local.tm_wday),
             word(local.tm_mday),        word(local.tm_hour),          word(local.tm_min),
             word(local.tm_sec),         word(now.tv_nsec / 1'000'000)};
}

DWORD FlsAlloc(PFLS_CALLBACK_FUNCTION callback) {
    pthread_key_t key = 0;
    return pthread_key_create(&key, callback) == 0 ? key : FLS_OUT_OF_INDEXES;
}

LPVOID FlsGetValue(DWORD index) { return pthread_getspecific(index); }

BOOL FlsSetValue(DWORD index, LPVOID value) { return pthread_setspecific(index, value) == 0; }

HRESULT CoInitialize(LPVOID reserved) {
    if (reserved) return E_INVALIDARG;
    return t_comUses++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    if (t_comUses > 0) --t_comUses;
}

HRESULT CoCreateGuid(GUID* guid) {
    if (!guid) return E_INVALIDARG;
    if (getrandom(guid, sizeof(*guid), 0) != static_cast<ssize_t>(sizeof(*guid))) return E_FAIL;
    guid->Data3 = static_cast<WORD>((guid->Data3 & 0x0FFF) | 0x4000);    // random (version 4)
    guid->Data4[0] = static_cast<BYTE>((guid->Data4[0] & 0x3F) | 0x80);  // of the common variant
    return S_OK;
}

void OutputDebugStringW(LPCWSTR text) {
    if (text) std::fputs(luadui::code_page::WideToUtf8(text).c_str(), stderr);
}
