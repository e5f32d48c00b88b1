// What can be asked about windows and changed on them.
#include <algorithm>
#include <optional>

#include "platform/posix/errors.h"
#include "platform/posix/strings.h"
#include "platform/posix/window.h"

using namespace luadui::posix;

namespace {

bool IsAncestor(const WindowTable& windows, HWND ancestor, HWND window) {
    for (const Window* w = windows.Find(window); w && w->IsChildWindow(); w = windows.Find(w->parent)) {
        if (w->parent == ancestor) return true;
    }
    return false;
}

std::optional<LONG_PTR> GetAttribute(const Window& window, int index) {
    switch (index) {
        case GWLP_WNDPROC:
            return reinterpret_cast<LONG_PTR>(window.procedure.load());
        case GWLP_USERDATA:
            return window.userData.load();
        case GWLP_HINSTANCE:
            return reinterpret_cast<LONG_PTR>(window.windowClass->instance);
        case GWLP_HWNDPARENT:
            return reinterpret_cast<LONG_PTR>(window.parent);
        case GWLP_ID:
            return window.id;
        case GWL_STYLE:
            return static_cast<LONG>(window.style);
        case GWL_EXSTYLE:
            return static_cast<LONG>(window.exStyle);
        default:
            return std::nullopt;
    }
}

bool SetAttribute(Window& window, int index, LONG_PTR value) {
    switch (index) {
        case GWLP_WNDPROC:
            if (value) window.procedure = reinterpret_cast<WNDPROC>(value);
            return value != 0;
        case GWLP_USERDATA:
            window.userData = value;
            return true;
        case GWLP_ID:
            window.id = value;
            return true;
        case GWL_STYLE:
            window.style = static_cast<DWORD>(value);
            return true;
        case GWL_EXSTYLE:
            window.exStyle = static_cast<DWORD>(value);
            return true;
        default:
            return false;
    }
}

LPARAM Pair(LONG low, LONG high) { return MAKELPARAM(static_cast<DWORD>(low), static_cast<DWORD>(high)); }

// Reads something of a window under the lock; `otherwise`, with the error set, when there is none.
template <class Result, class Body>
Result Ask(HWND window, Result otherwise, Body&& body) {
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    if (found) return body(*windows.operator->(), *found);
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return otherwise;
}

HWND FindAmong(const WindowTable& windows, HWND parent, HWND after, LPCWSTR className, LPCWSTR text) {
    const auto& candidates = windows.ChildrenOf(parent);
    auto first = candidates.begin();
    if (after) {
        first = std::find(first, candidates.end(), after);
        if (first == candidates.end()) return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
        ++first;
    }
    const auto found = std::find_if(first, candidates.end(), [&](HWND candidate) {
        const Window& window = *windows.Find(candidate);
        return IsOfClass(*window.windowClass, className) && (!text || EqualNoCase(window.text, text));
    });
    return found == candidates.end() ? nullptr : *found;
}

}  // namespace

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    if (const Window* own = index == GWLP_USERDATA ? FindOwn(window) : nullptr) return own->userData.load();
    return Ask(window, LONG_PTR{0}, [&](const WindowTable&, const Window& w) {
        const auto value = GetAttribute(w, index);
        return value ? *value : Fail<LONG_PTR>(ERROR_INVALID_INDEX);
    });
}

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    WriteWindows windows;
    Window* found = windows->Find(window);
    if (!found) return Fail<LONG_PTR>(ERROR_INVALID_WINDOW_HANDLE);
    const auto previous = GetAttribute(*found, index);
    if (!previous || !SetAttribute(*found, index, value)) return Fail<LONG_PTR>(ERROR_INVALID_INDEX);
    return *previous;
}

BOOL IsWindow(HWND window) {
    if (FindOwn(window)) return TRUE;
    const ReadWindows windows;
    return windows->Find(window) != nullptr;
}

BOOL IsChild(HWND parent, HWND window) {
    const ReadWindows windows;
    return parent && IsAncestor(*windows.operator->(), parent, window);
}

HWND GetParent(HWND window) {
    return Ask(window, HWND{}, [](const WindowTable&, const Window& w) {
        const bool hasParent = (w.style & (WS_CHILD | WS_POPUP)) != 0 && w.parent != HWND_MESSAGE;
        return hasParent ? w.parent : nullptr;
    });
}

HWND SetParent(HWND window, HWND parent) {
    WriteWindows windows;
    Window* found = windows->Find(window);
    const bool exists = !parent || parent == HWND_MESSAGE || windows->Find(parent);
    if (!found || !exists) return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
    if (window == parent || IsAncestor(*windows.operator->(), window, parent)) {
        return Fail<HWND>(ERROR_INVALID_PARAMETER);
    }
    const HWND previous = found->parent;
    windows->SetParent(*found, parent);
    return previous;
}

DWORD GetWindowThreadProcessId(HWND window, LPDWORD process) {
    if (process) *process = GetCurrentProcessId();
    return Ask(window, DWORD{0}, [](const WindowTable&, const Window& w) { return w.thread->Id(); });
}

BOOL ShowWindow(HWND window, int command) {
    const DWORD visible = command == SW_HIDE ? 0 : WS_VISIBLE;
    DWORD previous;
    {
        WriteWindows windows;
        Window* found = windows->Find(window);
        if (!found) return Fail<BOOL>(ERROR_INVALID_WINDOW_HANDLE);
        previous = found->style & WS_VISIBLE;
        found->style = (found->style & ~WS_VISIBLE) | visible;
    }
    if (visible != previous) SendMessageW(window, WM_SHOWWINDOW, visible ? TRUE : FALSE, 0);
    return previous != 0;
}

BOOL IsWindowVisible(HWND window) {
    return Ask(window, BOOL{FALSE}, [](const WindowTable& windows, const Window& w) -> BOOL {
        for (const Window* at = &w; at; at = at->IsChildWindow() ? windows.Find(at->parent) : nullptr) {
            if (!(at->style & WS_VISIBLE)) return FALSE;
        }
        return TRUE;
    });
}

BOOL SetWindowPos(HWND window, HWND, int x, int y, int width, int height, UINT flags) {
    RECT before, after;
    {
        WriteWindows windows;
        Window* found = windows->Find(window);
        if (!found) return Fail<BOOL>(ERROR_INVALID_WINDOW_HANDLE);
        before = found->place;
        const LONG left = flags & SWP_NOMOVE ? before.left : x;
        const LONG top = flags & SWP_NOMOVE ? before.top : y;
        const LONG cx = flags & SWP_NOSIZE ? before.right - before.left : std::max(width, 0);
        const LONG cy = flags & SWP_NOSIZE ? before.bottom - before.top : std::max(height, 0);
        found->place = after = {left, top, left + cx, top + cy};
    }
    const SIZE size{after.right - after.left, after.bottom - after.top};
    if (before.left != after.left || before.top != after.top) {
        SendMessageW(window, WM_MOVE, 0, Pair(after.left, after.top));
    }
    if (before.right - before.left != size.cx || before.bottom - before.top != size.cy) {
        SendMessageW(window, WM_SIZE, 0, Pair(size.cx, size.cy));
    }
    if (flags & SWP_SHOWWINDOW) ShowWindow(window, SW_SHOW);
    if (flags & SWP_HIDEWINDOW) ShowWindow(window, SW_HIDE);
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL) {
    return SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

BOOL GetWindowRect(HWND window, RECT* rect) {
    if (!rect) return Fail<BOOL>(ERROR_INVALID_PARAMETER);
    return Ask(window, BOOL{FALSE}, [rect](const WindowTable&, const Window& w) {
        *rect = w.place;
        return BOOL{TRUE};
    });
}

BOOL GetClientRect(HWND window, RECT* rect) {
    if (!GetWindowRect(window, rect)) return FALSE;
    *rect = {0, 0, rect->right - rect->left, rect->bottom - rect->top};
    return TRUE;
}

int GetClassNameW(HWND window, LPWSTR text, int size) {
    return Ask(window, 0, [&](const WindowTable&, const Window& w) {
        return static_cast<int>(CopyOut(w.windowClass->name, text, static_cast<size_t>(std::max(size, 0))));
    });
}

int GetWindowTextW(HWND window, LPWSTR text, int size) {
    if (!text || size <= 0) return 0;
    text[0] = L'\0';
    return static_cast<int>(
        SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthW(HWND window) {
    return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
    return SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0;
}

HWND FindWindowExW(HWND parent, HWND after, LPCWSTR className, LPCWSTR text) {
    const ReadWindows windows;
    const WindowTable& table = *windows.operator->();
    if (parent && parent != HWND_MESSAGE && !table.Find(parent))
        return Fail<HWND>(ERROR_INVALID_WINDOW_HANDLE);
    const HWND found = FindAmong(table, parent, after, className, text);
    const bool everywhere = !parent && !after;  // then message-only windows count, too
    return found || !everywhere ? found : FindAmong(table, HWND_MESSAGE, nullptr, className, text);
}

HWND FindWindowW(LPCWSTR className, LPCWSTR text) {
    const ReadWindows windows;
    return FindAmong(*windows.operator->(), nullptr, nullptr, className, text);
}
