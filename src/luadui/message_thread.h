// Threads that others post messages to.
#pragma once

#include "platform/win32.h"

namespace luadui {

// Starts a thread that runs `routine(argument)` and returns once the thread has a message queue, so that nothing
// posted to it from now on is refused for lack of one. The thread's handle, the caller's to close, and its id; null
// and 0 when it could not be started. An exception out of the routine ends the thread and is counted. Not to be called
// while the system loads a module (from DllMain): new threads wait for that to end.
HANDLE StartMessageThread(void (*routine)(void* argument), void* argument, DWORD& threadId);

}  // namespace luadui
