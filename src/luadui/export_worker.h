// The thread that writes exports, so that a slow disk does not stop the pages.
#pragma once

#include <atomic>
#include <memory>

#include "luadui/record_inbox.h"
#include "messaging/queue_data.h"
#include "platform/win32.h"

namespace luadui {

// Takes export tasks in order. Tasks of a kind that it has no writer for are dropped and counted as
// "export_without_writer".
//
// Threads: Start and Stop on the UI thread; Post from any.
class CExportWorker {
  public:
    CExportWorker();
    ~CExportWorker() { Stop(); }

    // Starts the thread; `owner` is the window that is told about finished exports. When the host's module
    // "mfc.dll" exports "register_exit_function", the worker's exit routine is registered there. False when
    // the thread could not be started.
    bool Start(HWND owner);
    // Ends the thread after the tasks in its queue; those that wait behind a full queue, and later ones, are freed
    // and counted.
    void Stop();
    // Hands a task over. It is freed and counted when the worker does not run.
    void Post(std::unique_ptr<CQueueTaskItem> task);

    DWORD ThreadId() const { return m_threadId.load(); }

  private:
    void _run();
    void _handle(std::unique_ptr<CQueueTaskItem> task);
    static void _onHostExit();
    void _registerExitRoutine();

    HWND m_owner = nullptr;
    HANDLE m_thread = nullptr;
    std::atomic<DWORD> m_threadId{0};
    CRecordInbox m_inbox;
};

}  // namespace luadui
