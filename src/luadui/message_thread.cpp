#include "luadui/message_thread.h"

#include "base/guard.h"

namespace luadui {
namespace {

struct Start {
    void (*routine)(void* argument);
    void* argument;
    HANDLE queueIsThere;
};

DWORD WINAPI Run(LPVOID parameter) {
    const Start start = *static_cast<const Start*>(parameter);
    MSG message;
    PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);  // makes the queue
    SetEvent(start.queueIsThere);
    Guarded("thread_routine_threw", [&] { start.routine(start.argument); });
    return 0;
}

}  // namespace

HANDLE StartMessageThread(void (*routine)(void* argument), void* argument, DWORD& threadId) {
    threadId = 0;
    Start start{routine, argument, CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    if (!start.queueIsThere) return nullptr;
    const HANDLE thread = CreateThread(nullptr, 0, Run, &start, 0, &threadId);
    if (thread) WaitForSingleObject(start.queueIsThere, INFINITE);
    CloseHandle(start.queueIsThere);
    return thread;
}

}  // namespace luadui
