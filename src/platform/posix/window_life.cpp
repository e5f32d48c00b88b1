// How windows begin and end.
#include <algorithm>
#include <utility>

#include "platform/posix/errors.h"
#include "platform/posix/strings.h"
#include "platform/posix/window.h"

using namespace luadui::posix;

namespace {

LRESULT Tell(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    const Window* found = FindOwn(window);
    return found ? found->procedure.load()(window, message, wParam, lParam) : 0;
}

struct Relations {
    bool isChildWindow;
    std::vector<HWND> ownChildren;      // of this thread: child windows and owned ones
    std::vector<HWND> foreignChildren;  // of other threads
};

Relations RelationsOf(HWND window) {
    const ReadWindows windows;
    Relations relations{};
    const Window* found = windows->Find(window);
    if (!found) return relations;
    relations.isChildWindow = found->IsChildWindow();
    for (HWND child : found->children) {
        const Window* related = windows->Find(child);
        (related->IsMine() ? relations.ownChildren : relations.foreignChildren).push_back(child);
    }
    return relations;
}

bool IsChildWindow(HWND window) { return RelationsOf(window).isChildWindow; }

// The window's WM_DESTROY, then its children's: while it runs, all of them still exist.
void TellDestroy(HWND window) {
    Tell(window, WM_DESTROY);
    for (HWND child : RelationsOf(window).ownChildren) TellDestroy(child);
}

// Ends the children, then the window. Nothing can be posted to it any more when its messages are dropped.
void Finish(HWND window) {
    const Relations relations = RelationsOf(window);
    for (HWND child : relations.ownChildren) Finish(child);
    for (HWND child : relations.foreignChildren) RequestDestroy(child);
    Tell(window, WM_NCDESTROY);
    const std::unique_ptr<Window> gone = WriteWindows()->Remove(window);
    if (!gone) return;
    gone->thread->OwnWindows().erase(window);
    gone->thread->Queue().Forget(window);
}

void Destroy(HWND window) {
    for (HWND owned : RelationsOf(window).ownChildren) {
        if (!IsChildWindow(owned)) DestroyWindow(owned);
    }
    TellDestroy(window);
    Finish(window);
}

// Takes the handle out of circulation, without the window's having been anything.
HWND Abandon(HWND window, bool created) {
    if (created) {
        DestroyWindow(window);
    } else {
        Finish(window);
    }
    return nullptr;
}

HWND Add(const CREATESTRUCTW& create, std::shared_ptr<const WindowClass> windowClass) {
    auto window = std::make_unique<Window>();
    window->procedure = windowClass->info.lpfnWndProc;
    window->windowClass = std::move(windowClass);
    window->thread = Thread::Current().shared_from_this();
    window->parent = create.hwndParent;
    window->style = static_cast<DWORD>(create.style) & ~WS_VISIBLE;
    window->exStyle = create.dwExStyle;
    window->id = reinterpret_cast<LONG_PTR>(create.hMenu);
    window->place = {create.x, create.y, create.x + create.cx, create.y + create.cy};
    Window* const added = window.get();
    const HWND handle = WriteWindows()->Add(std::move(window));
    if (!handle) return Fail<HWND>(ERROR_NO_MORE_USER_HANDLES);
    Thread::Current().OwnWindows().emplace(handle, added);
    return handle;
}

LPARAM Pair(LONG low, LONG high) { return MAKELPARAM(static_cast<DWORD>(low), static_cast<DWORD>(high)); }

// The messages of creation; null when the window refused or did not survive them.
HWND Begin(HWND window, CREATESTRUCTW& create) {
    const auto param = reinterpret_cast<LPARAM>(&create);
    if (!Tell(window, WM_NCCREATE, 0, param)) return Abandon(window, false);
    if (Tell(window, WM_CREATE, 0, param) == -1) return Abandon(window, true);
    Tell(window, WM_SIZE, 0, Pair(create.cx, create.cy));
    Tell(window, WM_MOVE, 0, Pair(create.x, create.y));
    if (static_cast<DWORD>(create.style) & WS_VISIBLE) ShowWindow(window, SW_SHOW);
    return IsWindow(window) ? window : nullptr;
}

bool IsValidParent(HWND parent, DWORD style) {
    if ((style & WS_CHILD) && !parent) return Fail<bool>(ERROR_INVALID_PARAMETER);
    if (!parent || parent == HWND_MESSAGE || IsWindow(parent)) return true;
    return Fail<bool>(ERROR_INVALID_WINDOW_HANDLE);
}

LONG OrZero(int value) { return value == CW_USEDEFAULT ? 0 : value; }

void SetText(HWND window, LPCWSTR text) {
    std::wstring copy = text ? text : L"";
    WriteWindows windows;
    if (Window* found = windows->Find(window)) found->text.swap(copy);
}

size_t CopyText(HWND window, LPWSTR out, size_t size) {
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    return CopyOut(found ? std::wstring_view(found->text) : std::wstring_view(), out, size);
}

size_t TextLength(HWND window) {
    const ReadWindows windows;
    const Window* found = windows->Find(window);
    return found ? found->text.size() : 0;
}

}  // namespace

HWND CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR text, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU id, HINSTANCE instance, LPVOID param) {
    auto windowClass = FindWindowClass(className, instance);
    if (!windowClass || !IsValidParent(parent, style)) return nullptr;
    Thread::Current().OpenQueue();
    CREATESTRUCTW create{
        param,     windowClass->instance,    id,   parent,    OrZero(height), OrZero(width), OrZero(y),
        OrZero(x), static_cast<LONG>(style), text, className, exStyle};
    const HWND window = OrNoMemory([&] { return Add(create, std::move(windowClass)); });
    return window ? Begin(window, create) : nullptr;
}

BOOL DestroyWindow(HWND window) {
    {
        WriteWindows windows;
        Window* found = windows->Find(window);
        if (!found) return Fail<BOOL>(ERROR_INVALID_WINDOW_HANDLE);
        if (!found->IsMine()) return Fail<BOOL>(ERROR_ACCESS_DENIED);
        if (std::exchange(found->isBeingDestroyed, true)) return TRUE;
    }
    Destroy(window);
    return TRUE;
}

LRESULT CALLBACK DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE:
            SetText(window, reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpszName);
            return TRUE;
        case WM_SETTEXT:
            SetText(window, reinterpret_cast<LPCWSTR>(lParam));
            return TRUE;
        case WM_GETTEXT:
            return static_cast<LRESULT>(CopyText(window, reinterpret_cast<LPWSTR>(lParam), wParam));
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(TextLength(window));
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        default:
            return 0;
    }
}

LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return procedure ? procedure(window, message, wParam, lParam) : 0;
}
