// Window classes, windows, messages and timers. Included by platform/win32.h only.
#pragma once

#include "platform/posix/win32_types.h"

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra, cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
};
struct WNDCLASSEXW {
    UINT cbSize, style;
    WNDPROC lpfnWndProc;
    int cbClsExtra, cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
    HICON hIconSm;
};
struct CREATESTRUCTW {
    LPVOID lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy, cx, y, x;
    LONG style;
    LPCWSTR lpszName, lpszClass;
    DWORD dwExStyle;
};
using LPCREATESTRUCTW = CREATESTRUCTW*;
using LPCREATESTRUCT = LPCREATESTRUCTW;
using CREATESTRUCT = CREATESTRUCTW;
using WNDCLASS = WNDCLASSW;
using WNDCLASSEX = WNDCLASSEXW;

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;  // GetTickCount() when it was posted
    POINT pt;    // always 0, 0
};
using LPMSG = MSG*;

struct COPYDATASTRUCT {
    ULONG_PTR dwData;
    DWORD cbData;
    PVOID lpData;
};
using PCOPYDATASTRUCT = COPYDATASTRUCT*;

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_COPYDATA = 0x004A;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

inline constexpr DWORD WS_OVERLAPPED = 0x00000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW = 0x00CF0000;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x00000080;
inline constexpr DWORD WS_EX_NOACTIVATE = 0x08000000;
inline constexpr UINT CS_VREDRAW = 0x0001;
inline constexpr UINT CS_HREDRAW = 0x0002;
inline constexpr UINT CS_DBLCLKS = 0x0008;
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);  // 0 here

inline constexpr int GWLP_WNDPROC = -4;
inline constexpr int GWLP_HINSTANCE = -6;
inline constexpr int GWLP_HWNDPARENT = -8;
inline constexpr int GWLP_ID = -12;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;
inline constexpr int GWLP_USERDATA = -21;

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOWNOACTIVATE = 4;
inline constexpr int SW_SHOW = 5;
inline constexpr int SW_SHOWNA = 8;
inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;

inline constexpr UINT PM_NOREMOVE = 0;
inline constexpr UINT PM_REMOVE = 1;
inline constexpr UINT PM_NOYIELD = 2;
inline constexpr UINT SMTO_NORMAL = 0;       // serves messages sent to the caller while it waits
inline constexpr UINT SMTO_BLOCK = 1;        // does not
inline constexpr UINT SMTO_ABORTIFHUNG = 2;  // no thread counts as hung here
inline constexpr UINT USER_TIMER_MINIMUM = 0x0A;
inline constexpr UINT USER_TIMER_MAXIMUM = 0x7FFFFFFF;

// Values that are no addresses, as Windows writes them.
#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<INT_PTR>(-3)))
#define HWND_TOP (reinterpret_cast<HWND>(static_cast<INT_PTR>(0)))
#define HWND_BROADCAST (reinterpret_cast<HWND>(static_cast<INT_PTR>(0xFFFF)))  // refused here
#define MAKEINTATOM(atom) (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(atom))))
#define MAKEINTRESOURCEW(id) (reinterpret_cast<LPWSTR>(static_cast<ULONG_PTR>(static_cast<WORD>(id))))
#define IDC_ARROW MAKEINTRESOURCEW(32512)

// --- classes: a name (case is ignored) or its atom, per module instance (null: the host executable)
TESSEL_API ATOM RegisterClassW(const WNDCLASSW* info);
TESSEL_API ATOM RegisterClassExW(const WNDCLASSEXW* info);
TESSEL_API BOOL UnregisterClassW(LPCWSTR name, HINSTANCE instance);
TESSEL_API BOOL GetClassInfoExW(HINSTANCE instance, LPCWSTR name, WNDCLASSEXW* info);
TESSEL_API int GetClassNameW(HWND window, LPWSTR text, int size);
TESSEL_API HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name);  // a value that is not null, nothing more

// --- windows: nothing is painted; what is kept is owner, parent, text, place and visibility
// `parent` may be HWND_MESSAGE, and belong to another thread (no WM_PARENTNOTIFY is sent here): when that
// parent is destroyed, the window is too, by its own thread, once that serves sent messages.
TESSEL_API HWND CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, int x, int y,
                                int width, int height, HWND parent, HMENU id, HINSTANCE instance,
                                LPVOID param);
TESSEL_API BOOL DestroyWindow(HWND window);
TESSEL_API LRESULT CALLBACK DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
TESSEL_API LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                                   LPARAM lParam);
TESSEL_API LONG_PTR GetWindowLongPtrW(HWND window, int index);
TESSEL_API LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
TESSEL_API BOOL IsWindow(HWND window);
TESSEL_API BOOL IsChild(HWND parent, HWND window);
TESSEL_API HWND GetParent(HWND window);
TESSEL_API HWND SetParent(HWND window, HWND parent);
TESSEL_API DWORD GetWindowThreadProcessId(HWND window, LPDWORD process);
TESSEL_API BOOL ShowWindow(HWND window, int command);
TESSEL_API BOOL IsWindowVisible(HWND window);
TESSEL_API BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);
TESSEL_API BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);
TESSEL_API BOOL GetClientRect(HWND window, RECT* rect);  // windows have no frame here
TESSEL_API BOOL GetWindowRect(HWND window, RECT* rect);
TESSEL_API int GetWindowTextW(HWND window, LPWSTR text, int size);
TESSEL_API int GetWindowTextLengthW(HWND window);
TESSEL_API BOOL SetWindowTextW(HWND window, LPCWSTR text);
TESSEL_API HWND FindWindowW(LPCWSTR className, LPCWSTR text);
TESSEL_API HWND FindWindowExW(HWND parent, HWND after, LPCWSTR className, LPCWSTR text);

// --- messages
TESSEL_API BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Refused (ERROR_INVALID_THREAD_ID) until that thread has a queue: PeekMessageW makes one.
TESSEL_API BOOL PostThreadMessageW(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam);
TESSEL_API void PostQuitMessage(int code);
TESSEL_API LRESULT SendMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// 0 with ERROR_TIMEOUT when no answer came in time; the message may still be served later.
TESSEL_API LRESULT SendMessageTimeoutW(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT flags,
                                       UINT milliseconds, DWORD_PTR* result);
TESSEL_API BOOL SendNotifyMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
TESSEL_API BOOL InSendMessage();
TESSEL_API BOOL ReplyMessage(LRESULT result);
// `window` null: all messages; (HWND)-1: those of no window; else that window's and its children's.
TESSEL_API BOOL GetMessageW(LPMSG message, HWND window, UINT first, UINT last);
TESSEL_API BOOL PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT remove);
TESSEL_API BOOL TranslateMessage(const MSG* message);
TESSEL_API LRESULT DispatchMessageW(const MSG* message);

// --- timers: only for the calling thread's windows, or for the thread (window null: `id` names one to
// replace)
TESSEL_API UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
TESSEL_API BOOL KillTimer(HWND window, UINT_PTR id);
