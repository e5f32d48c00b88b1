// The page manager: the UI thread, the invisible window through which all work reaches it, and the pages.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "luadui/export_worker.h"
#include "luadui/page_messages.h"
#include "luadui/page_registry.h"
#include "luadui/record_inbox.h"
#include "messaging/queue_data.h"
#include "platform/duilib.h"

namespace luadui {

// One in a process, created with the UI thread and never freed: host threads may hold on to it until the last
// one ends. Its life has three phases: starting, ready (its window exists), ended (the window is gone for
// good).
//
// Threads: the operations of the first group may be called from any thread; they cross to the UI thread by
// message.
class CPageManagerWnd : public CWindowWnd {
  public:
    // The page manager; its UI thread is started with the first call.
    static CPageManagerWnd& Instance();
    // The page manager if it was created, else null.
    static CPageManagerWnd* Existing();

    // 0 when the thread could not be created.
    DWORD UiThreadId() const { return m_uiThreadId.load(); }
    // The page manager once it is ready: polls a flag every 10 ms without a time limit, and starts nothing. The flag
    // stays set after the end.
    static CPageManagerWnd& WaitUntilReady();
    // Waits until this page manager, which was started, is ready. False when its thread failed instead.
    bool WaitUntilStarted() const;

    // Hands a response to the UI thread, in order; freed and counted when there is no window.
    void PostResponse(std::unique_ptr<CQueueRespData> response, WPARAM wParam);
    // Creates a page on the UI thread and answers the page result, 0 on failure.
    unsigned int CreatePage(const PageOrder& order, PageMessage message);
    // The same later; false when the order was not taken.
    bool PostPageOrder(std::unique_ptr<PageOrder> order, PageMessage message);
    // The page's init string 3; false when there is no such page.
    bool GetLoginInfo(const std::string& page, std::string& info);
    void SwitchTab(const std::string& page, int asleep);
    void SetFocusTo(const std::string& part);

    // The parent windows for pages that scripts create: those of the last native creation that named any.
    std::pair<HWND, HWND> Parents() const;
    void KeepParents(HWND parent1, HWND parent2);
    // The window of the page from the companion library; null while there is none.
    HWND CompanionWindow() const { return m_companion.load(); }

    LPCWSTR GetWindowClassName() const override;

  protected:
    LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    CPageManagerWnd();
    ~CPageManagerWnd() = default;

    void _start();
    static void _setReady();
    void _runUiThread();
    bool _createWindow();
    void _endPages();

    LRESULT _dispatch(UINT message, WPARAM wParam, LPARAM lParam);
    unsigned int _createPage(const PageOrder& order);
    void _freePosted(const MSG& message);
    void _onDestroy();
    void _refill();

    std::atomic<DWORD> m_uiThreadId{0};
    std::atomic<HWND> m_window{nullptr};  // null before the window exists and after its end
    std::atomic<HWND> m_companion{nullptr};
    std::atomic<uint64_t> m_parents{0};  // both as numbers, so that they always belong together
    std::atomic<bool> m_failed{false};   // the UI thread ended before it was ready
    std::mutex m_postGate;  // held while a page order is posted, so that none follows the window's end
    CRecordInbox m_inbox;
    CExportWorker m_exportWorker;
    CPageRegistry m_pages;  // UI thread only
};

}  // namespace luadui
