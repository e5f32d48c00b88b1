// The Win32 calls of this library, on every system. The one header that may include <windows.h>.
//
// On Windows it is the system's own. Elsewhere posix/ declares the subset that we call, under the same names
// and with the same behaviour, so that code above reads as plain Win32 code; nothing beyond that subset is
// promised.
//
// Threads    Every thread has one message queue, made at its first call that needs one. Windows and their timers
//            belong to the thread that made them: only it gets their messages, only it may destroy them.
//            Posting, sending and asking about windows is allowed from any thread.
// Order      Sent messages run before posted ones, posted ones in the order of posting, then WM_QUIT, timers last.
// Sending    A thread that waits for the answer to a message it sent serves the messages that are sent to it. The
//            send answers 0 when the window is destroyed or its thread ends meanwhile.
// Queue      Past 10,000 waiting messages a post is refused (ERROR_NOT_ENOUGH_QUOTA). Messages that still wait when
//            their window is destroyed are dropped with whatever they point to: whoever posts heap objects drains
//            the queue first.
// Handles    Fit 32 bits and are not used again during the run of the program (elsewhere than on Windows).
// Thread end Destroys the thread's windows (their procedures are not called any more) and timers.
// Exceptions Must not leave a window procedure, a timer procedure or a thread routine: no system promises what
//            happens then.
// Failure    As on Windows: null or FALSE, and GetLastError() tells the reason.
//
// Where the other systems differ from Windows, the declaration says so.
#pragma once

#ifdef _WIN32

#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
//
#include <objbase.h>
#include <shlwapi.h>

#else

#include "platform/posix/win32_types.h"
//
#include "platform/posix/win32_system.h"
#include "platform/posix/win32_threads.h"
#include "platform/posix/win32_windows.h"

#endif
