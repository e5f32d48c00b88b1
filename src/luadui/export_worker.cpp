#include "luadui/export_worker.h"

#include "base/guard.h"
#include "luadui/message_thread.h"
#include "luadui/page_messages.h"

namespace luadui {
namespace {

using ExitRoutine = void (*)();
using RegisterExitFunction = void (*)(ExitRoutine routine);

// The worker that the host's exit routine ends.
std::atomic<DWORD> g_workerThread{0};

}  // namespace

CExportWorker::CExportWorker()
    : m_inbox([this](WPARAM wParam, CQueueTaskItem* task) {
          return PostThreadMessageW(m_threadId.load(), kMsgExport, wParam, reinterpret_cast<LPARAM>(task)) !=
                 0;
      }) {}

bool CExportWorker::Start(HWND owner) {
    m_owner = owner;
    DWORD threadId = 0;
    m_thread =
        StartMessageThread([](void* worker) { static_cast<CExportWorker*>(worker)->_run(); }, this, threadId);
    if (!m_thread) return false;
    m_threadId.store(threadId);
    g_workerThread.store(threadId);
    _registerExitRoutine();
    return true;
}

void CExportWorker::_registerExitRoutine() {
    const HMODULE host = GetModuleHandleW(L"mfc.dll");
    if (!host) return;
    const auto registerExit = reinterpret_cast<RegisterExitFunction>(
        reinterpret_cast<void*>(GetProcAddress(host, "register_exit_function")));
    if (registerExit) Guarded("host_callback_threw", [&] { registerExit(&CExportWorker::_onHostExit); });
}

void CExportWorker::_onHostExit() {
    if (const DWORD thread = g_workerThread.load()) PostThreadMessageW(thread, WM_QUIT, 0, 0);
}

void CExportWorker::Stop() {
    if (!m_thread) return;
    g_workerThread.store(0);
    // A queue that is full refuses the quit message: each try makes the worker's end more certain.
    while (!PostThreadMessageW(m_threadId.load(), WM_QUIT, 0, 0) &&
           WaitForSingleObject(m_thread, 10) == WAIT_TIMEOUT) {
    }
    WaitForSingleObject(m_thread, INFINITE);
    CloseHandle(std::exchange(m_thread, nullptr));
    m_threadId.store(0);
}

void CExportWorker::Post(std::unique_ptr<CQueueTaskItem> task) {
    if (m_threadId.load() == 0 || m_inbox.Post(std::move(task), 0) == CRecordInbox::Posted::kClosed) {
        CCounters::Add("export_without_worker");
    }
}

void CExportWorker::_run() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == kMsgExport) _handle(m_inbox.Take(message.lParam));
        if (m_inbox.HasWaiting()) m_inbox.Refill();  // whatever message came, it left room
    }
    m_inbox.Close();
    while (PeekMessageW(&message, nullptr, kMsgExport, kMsgExport, PM_REMOVE)) {
        m_inbox.Take(message.lParam);
        CCounters::Add("records_dropped_at_shutdown");
    }
}

void CExportWorker::_handle(std::unique_ptr<CQueueTaskItem> task) {
    static_cast<void>(task);
    CCounters::Add("export_without_writer");
}

}  // namespace luadui
