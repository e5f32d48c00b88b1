#include "platform/duilib.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <string>

namespace luadui {

namespace {

// What the process's pages share; never destroyed, since threads may still run while the process ends.
struct Shared {
    std::atomic<HINSTANCE> instance{nullptr};
    std::atomic<HWND> pageManager{nullptr};
    std::mutex mutex;  // guards the path
    std::wstring resourcePath;
};

Shared& SharedState() {
    static auto& shared = *new Shared;
    return shared;
}

constexpr wchar_t kSeparators[] = L"/\\";

std::wstring FolderOf(HINSTANCE instance) {
    std::wstring path(MAX_PATH, L'\0');
    DWORD length;
    while ((length = GetModuleFileNameW(instance, path.data(), static_cast<DWORD>(path.size()))) ==
           path.size()) {
        path.resize(path.size() * 2);
    }
    path.resize(length);
    return path.substr(0, path.find_last_of(kSeparators) + 1);  // nothing found: nothing left
}

// Text for whoever debugs: an exception is a mistake of the class whose method it left.
void Report(const char* what) {
    std::wstring text = L"An exception left a window's message handler: ";
    for (const char* c = what; *c; ++c) text += static_cast<wchar_t>(static_cast<unsigned char>(*c));
    OutputDebugStringW((text + L"\n").c_str());
}

// Runs code of a derived class; nothing that it throws may reach the system.
template <class Body>
auto Contained(Body&& body) noexcept -> decltype(body()) {
    try {
        return body();
    } catch (const std::exception& error) {
        Report(error.what());
    } catch (...) {
        Report("unknown");
    }
    return decltype(body())();
}

WNDCLASSEXW MakeClass(LPCWSTR name, UINT style, WNDPROC procedure) {
    WNDCLASSEXW info{};
    info.cbSize = sizeof(info);
    info.style = style;
    info.lpfnWndProc = procedure;
    info.hInstance = CPaintManagerUI::GetInstance();
    info.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    info.lpszClassName = name;
    return info;
}

bool Register(const WNDCLASSEXW& info) {
    return RegisterClassExW(&info) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

}  // namespace

// --- CWindowWnd

bool CWindowWnd::RegisterWindowClass() {
    return Register(MakeClass(GetWindowClassName(), GetClassStyle(), __WndProc));
}

bool CWindowWnd::RegisterSuperclass() {
    WNDCLASSEXW info{};
    info.cbSize = sizeof(info);
    const HINSTANCE instance = CPaintManagerUI::GetInstance();
    if (!GetClassInfoExW(nullptr, GetSuperClassName(), &info) &&
        !GetClassInfoExW(instance, GetSuperClassName(), &info)) {
        return false;
    }
    m_OldWndProc = info.lpfnWndProc;
    info.lpfnWndProc = __WndProc;
    info.hInstance = instance;
    info.lpszClassName = GetWindowClassName();
    return Register(info);
}

HWND CWindowWnd::Create(HWND parent, LPCWSTR name, DWORD style, DWORD exStyle, int x, int y, int width,
                        int height, HMENU id) {
    if (!(GetSuperClassName() ? RegisterSuperclass() : RegisterWindowClass())) return nullptr;
    // m_hWnd is set by the first message, and cleared again when the window does not survive its creation.
    return CreateWindowExW(exStyle, GetWindowClassName(), name, style, x, y, width, height, parent, id,
                           CPaintManagerUI::GetInstance(), this);
}

HWND CWindowWnd::Create(HWND parent, LPCWSTR name, DWORD style, DWORD exStyle, const RECT& place, HMENU id) {
    return Create(parent, name, style, exStyle, place.left, place.top, place.right - place.left,
                  place.bottom - place.top, id);
}

HWND CWindowWnd::Subclass(HWND window) {
    if (m_hWnd || !IsWindow(window)) return nullptr;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_OldWndProc = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(__WndProc)));
    m_hWnd = window;
    m_bSubclassed = true;
    return m_hWnd;
}

void CWindowWnd::Unsubclass() {
    if (!m_bSubclassed) return;
    SetWindowLongPtrW(m_hWnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_OldWndProc));
    SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, 0);
    m_OldWndProc = ::DefWindowProcW;
    m_bSubclassed = false;
    m_hWnd = nullptr;
}

void CWindowWnd::ShowWindow(bool show, bool takeFocus) {
    ::ShowWindow(m_hWnd, !show ? SW_HIDE : takeFocus ? SW_SHOWNORMAL : SW_SHOWNOACTIVATE);
}

void CWindowWnd::Close(UINT result) {
    if (IsWindow(m_hWnd)) ::PostMessageW(m_hWnd, WM_CLOSE, result, 0);
}

LRESULT CWindowWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return ::SendMessageW(m_hWnd, message, wParam, lParam);
}

LRESULT CWindowWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return m_hWnd ? ::PostMessageW(m_hWnd, message, wParam, lParam) : FALSE;
}

LRESULT CWindowWnd::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return ::CallWindowProcW(m_OldWndProc, m_hWnd, message, wParam, lParam);
}

void CWindowWnd::OnFinalMessage(HWND) {}

LRESULT CWindowWnd::_finish(HWND window, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = ::CallWindowProcW(m_OldWndProc, window, WM_NCDESTROY, wParam, lParam);
    if (m_bSubclassed) Unsubclass();
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    m_hWnd = nullptr;
    Contained([&] { OnFinalMessage(window); });  // may delete this
    return result;
}

LRESULT CALLBACK CWindowWnd::__WndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* const object =
            static_cast<CWindowWnd*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        object->m_hWnd = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
        return Contained([&] { return object->HandleMessage(message, wParam, lParam); });
    }
    auto* const object = reinterpret_cast<CWindowWnd*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!object) return ::DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) return object->_finish(window, wParam, lParam);
    return Contained([&] { return object->HandleMessage(message, wParam, lParam); });
}

// --- CPaintManagerUI

HINSTANCE CPaintManagerUI::GetInstance() { return SharedState().instance; }
void CPaintManagerUI::SetInstance(HINSTANCE instance) { SharedState().instance = instance; }
HWND CPaintManagerUI::GetPageManager() { return SharedState().pageManager; }
void CPaintManagerUI::SetPageManager(HWND window) { SharedState().pageManager = window; }

CDuiString CPaintManagerUI::GetInstancePath() {
    const HINSTANCE instance = GetInstance();
    return instance ? CDuiString(FolderOf(instance).c_str()) : CDuiString();
}

CDuiString CPaintManagerUI::GetResourcePath() {
    {
        const std::lock_guard lock(SharedState().mutex);
        const std::wstring& path = SharedState().resourcePath;
        if (!path.empty()) return CDuiString(path.c_str());
    }
    return GetInstancePath();
}

void CPaintManagerUI::SetResourcePath(LPCWSTR path) {
    std::wstring folder = path ? path : L"";
    if (!folder.empty() && folder.find_last_of(kSeparators) != folder.size() - 1) folder += L'/';
    const std::lock_guard lock(SharedState().mutex);
    SharedState().resourcePath.swap(folder);
}

void CPaintManagerUI::MessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (TranslateMessage(&message)) continue;
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

bool CPaintManagerUI::TranslateMessage(LPMSG) { return false; }  // no control of ours wants keys

void CPaintManagerUI::Term() {
    SetInstance(nullptr);
    SetResourcePath(nullptr);
    SetPageManager(nullptr);
}

}  // namespace luadui
