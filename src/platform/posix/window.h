// Windows as this layer knows them, and the table that leads from a handle to its window.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/posix/thread.h"
#include "platform/posix/window_class.h"

namespace luadui::posix {

// A message outside the range that callers can use: the window's own thread destroys it.
inline constexpr UINT kDestroyRequest = 0x80000001;

struct Window {
    HWND handle = nullptr;
    std::shared_ptr<const WindowClass> windowClass;
    std::shared_ptr<Thread> thread;
    std::atomic<WNDPROC> procedure{nullptr};
    std::atomic<LONG_PTR> userData{0};

    // Guarded by the table's lock.
    HWND parent = nullptr;  // null, HWND_MESSAGE, the parent of a child window, the owner of any other
    std::vector<HWND> children;
    DWORD style = 0, exStyle = 0;
    LONG_PTR id = 0;
    RECT place{};
    std::wstring text;
    bool isBeingDestroyed = false;

    bool IsChildWindow() const { return (style & WS_CHILD) != 0; }
    bool IsMine() const { return thread.get() == &Thread::Current(); }
};

// The windows of the process. Access is through one of the two locks below; no window procedure is called while one is
// held. Under it a queue's lock may be taken, so a post either comes before the end of its window or is refused.
class WindowTable {
  public:
    static WindowTable& Instance();

    Window* Find(HWND window) const;  // null when there is none
    // Takes the window over under a handle that was never used before, which it returns; null when all were.
    HWND Add(std::unique_ptr<Window> window);
    // Takes the window out, leaving its children without parent.
    std::unique_ptr<Window> Remove(HWND window);
    void SetParent(Window& window, HWND parent);
    const std::vector<HWND>& ChildrenOf(HWND parent) const;  // of null: windows without parent

  private:
    friend class ReadWindows;
    friend class WriteWindows;
    std::vector<HWND>& _siblings(HWND parent);

    std::shared_mutex m_mutex;
    std::unordered_map<HWND, std::unique_ptr<Window>> m_windows;
    std::vector<HWND> m_topLevel, m_messageOnly;
    uint32_t m_last = 0x10000;
};

class ReadWindows {
  public:
    const WindowTable* operator->() const { return &m_table; }

  private:
    WindowTable& m_table = WindowTable::Instance();
    std::shared_lock<std::shared_mutex> m_lock{m_table.m_mutex};
};

class WriteWindows {
  public:
    WindowTable* operator->() { return &m_table; }

  private:
    WindowTable& m_table = WindowTable::Instance();
    std::unique_lock<std::shared_mutex> m_lock{m_table.m_mutex};
};

// A window of the calling thread, or null. Of what the lock guards, nothing may be used.
Window* FindOwn(HWND window);
// At the end of a thread: its windows go, without a call to their procedures.
void RemoveWindowsOf(Thread& thread);
// Asks the window's own thread to destroy it.
void RequestDestroy(HWND window);

}  // namespace luadui::posix
