// The duilib calls of this library: CDuiString, CWindowWnd, CPaintManagerUI.
//
// Built on platform/win32.h, the same on every system. With the build option LUADUI_DUILIB_INCLUDE the
// headers of an installed toolkit take their place, under the same names.
//
// A method whose name is also a macro of <windows.h> (PostMessage, SendMessage) is renamed by it here as in
// its callers.
#pragma once

#include "platform/export.h"
#include "platform/win32.h"

#ifdef LUADUI_INSTALLED_DUILIB

#include <UIlib.h>

namespace luadui {
using DuiLib::CDuiString;
using DuiLib::CPaintManagerUI;
using DuiLib::CWindowWnd;
}  // namespace luadui

#else

#include "platform/duilib_string.h"

namespace luadui {

// An object that is a window. Derive from it, answer messages in HandleMessage, and make the window with
// Create.
//
// Threads:   the window's thread; PostMessage and SendMessage from any.
// Ownership: the object must outlive its window. OnFinalMessage tells that the window is gone, and may delete
// the
//            object. Deleting the object leaves the window alone: destroy that first.
// Failure:   an exception that leaves HandleMessage or OnFinalMessage ends there; the message answers 0.
class TESSEL_API CWindowWnd {
  public:
    CWindowWnd() = default;
    virtual ~CWindowWnd() = default;
    CWindowWnd(const CWindowWnd&) = delete;
    CWindowWnd& operator=(const CWindowWnd&) = delete;

    HWND GetHWND() const { return m_hWnd; }
    operator HWND() const { return m_hWnd; }

    // Registers the window class when needed and makes the window; null on failure. Messages that come during
    // creation reach HandleMessage, WM_NCCREATE included.
    HWND Create(HWND parent, LPCWSTR name, DWORD style, DWORD exStyle, int x = CW_USEDEFAULT,
                int y = CW_USEDEFAULT, int width = CW_USEDEFAULT, int height = CW_USEDEFAULT,
                HMENU id = nullptr);
    HWND Create(HWND parent, LPCWSTR name, DWORD style, DWORD exStyle, const RECT& place, HMENU id = nullptr);

    // Takes over the messages of a window that exists; Unsubclass gives them back.
    HWND Subclass(HWND window);
    void Unsubclass();

    void ShowWindow(bool show = true, bool takeFocus = false);
    void Close(UINT result = 0);  // posts WM_CLOSE; `result` is its wParam

    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    LRESULT PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);  // not 0: posted

  protected:
    virtual LPCWSTR GetWindowClassName() const = 0;
    virtual LPCWSTR GetSuperClassName() const {
        return nullptr;
    }  // class whose procedure handles what we do not
    virtual UINT GetClassStyle() const { return 0; }

    // Every message of the window comes here; what is not handled goes on to this one.
    virtual LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    // The window is gone: GetHWND() is null, `window` is its last handle.
    virtual void OnFinalMessage(HWND window);

    bool RegisterWindowClass();
    bool RegisterSuperclass();

    static LRESULT CALLBACK __WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_hWnd = nullptr;
    WNDPROC m_OldWndProc = ::DefWindowProcW;
    bool m_bSubclassed = false;

  private:
    LRESULT _finish(HWND window, WPARAM wParam, LPARAM lParam);
};

// What the pages of a process have in common, and the loop of the thread they live on.
class TESSEL_API CPaintManagerUI {
  public:
    static HINSTANCE GetInstance();  // null until set
    static void SetInstance(HINSTANCE instance);
    static CDuiString
    GetInstancePath();  // folder of the instance with a separator at its end; empty while there is none
    static CDuiString GetResourcePath();        // the instance's folder until set
    static void SetResourcePath(LPCWSTR path);  // adds the separator at the end
    static HWND GetPageManager();
    static void SetPageManager(HWND window);

    // Gets and dispatches messages until WM_QUIT comes.
    static void MessageLoop();
    static bool TranslateMessage(LPMSG message);  // true: handled, do not dispatch
    // Forgets the instance, the resource path and the page manager.
    static void Term();
};

}  // namespace luadui

#endif
