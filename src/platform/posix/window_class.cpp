#include "platform/posix/window_class.h"

#include <algorithm>
#include <cwchar>
#include <mutex>
#include <vector>

#include "platform/posix/errors.h"
#include "platform/posix/strings.h"
#include "platform/posix/win32_system.h"

namespace luadui::posix {

namespace {

struct ClassTable {
    std::mutex mutex;
    std::vector<std::shared_ptr<const WindowClass>> classes;
    uint32_t lastAtom = 0xC000;  // where the system's atoms begin
};

ClassTable& Classes() {
    static auto& table = *new ClassTable;
    return table;
}

bool IsAtom(LPCWSTR name) { return reinterpret_cast<uintptr_t>(name) <= 0xFFFF; }

HINSTANCE OrHost(HINSTANCE instance) { return instance ? instance : GetModuleHandleW(nullptr); }

auto Locate(ClassTable& table, LPCWSTR nameOrAtom, HINSTANCE instance) {
    return std::find_if(table.classes.begin(), table.classes.end(), [&](const auto& known) {
        return known->instance == instance && nameOrAtom && IsOfClass(*known, nameOrAtom);
    });
}

ATOM Register(const WNDCLASSEXW& info) {
    if (!info.lpfnWndProc || IsAtom(info.lpszClassName) || !*info.lpszClassName) {
        return Fail<ATOM>(ERROR_INVALID_PARAMETER);
    }
    auto added = std::make_shared<WindowClass>();
    added->name = info.lpszClassName;
    added->instance = OrHost(info.hInstance);
    added->info = info;
    added->info.cbSize = sizeof(WNDCLASSEXW);
    added->info.hInstance = added->instance;
    added->info.lpszClassName = added->info.lpszMenuName = nullptr;

    ClassTable& table = Classes();
    const std::lock_guard lock(table.mutex);
    if (Locate(table, info.lpszClassName, added->instance) != table.classes.end()) {
        return Fail<ATOM>(ERROR_CLASS_ALREADY_EXISTS);
    }
    if (table.lastAtom == 0xFFFF) return Fail<ATOM>(ERROR_NOT_ENOUGH_MEMORY);
    added->atom = static_cast<ATOM>(++table.lastAtom);
    table.classes.push_back(added);
    return added->atom;
}

}  // namespace

bool IsOfClass(const WindowClass& windowClass, LPCWSTR nameOrAtom) {
    if (!nameOrAtom) return true;
    if (IsAtom(nameOrAtom))
        return windowClass.atom == static_cast<ATOM>(reinterpret_cast<uintptr_t>(nameOrAtom));
    return EqualNoCase(windowClass.name, nameOrAtom);
}

std::shared_ptr<const WindowClass> FindWindowClass(LPCWSTR nameOrAtom, HINSTANCE instance) {
    ClassTable& table = Classes();
    const std::lock_guard lock(table.mutex);
    const auto found = Locate(table, nameOrAtom, OrHost(instance));
    if (found != table.classes.end()) return *found;
    SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
    return nullptr;
}

}  // namespace luadui::posix

using namespace luadui::posix;

ATOM RegisterClassExW(const WNDCLASSEXW* info) {
    if (!info || info->cbSize != sizeof(WNDCLASSEXW)) return Fail<ATOM>(ERROR_INVALID_PARAMETER);
    return OrNoMemory([&] { return Register(*info); });
}

ATOM RegisterClassW(const WNDCLASSW* info) {
    if (!info) return Fail<ATOM>(ERROR_INVALID_PARAMETER);
    const WNDCLASSEXW extended{sizeof(WNDCLASSEXW), info->style,        info->lpfnWndProc,   info->cbClsExtra,
                               info->cbWndExtra,    info->hInstance,    info->hIcon,         info->hCursor,
                               info->hbrBackground, info->lpszMenuName, info->lpszClassName, nullptr};
    return OrNoMemory([&] { return Register(extended); });
}

BOOL UnregisterClassW(LPCWSTR name, HINSTANCE instance) {
    ClassTable& table = Classes();
    const std::lock_guard lock(table.mutex);
    const auto found = Locate(table, name, OrHost(instance));
    if (found == table.classes.end()) return Fail<BOOL>(ERROR_CLASS_DOES_NOT_EXIST);
    if (found->use_count() > 1) return Fail<BOOL>(ERROR_CLASS_HAS_WINDOWS);
    table.classes.erase(found);
    return TRUE;
}

BOOL GetClassInfoExW(HINSTANCE instance, LPCWSTR name, WNDCLASSEXW* info) {
    const auto found = FindWindowClass(name, instance);
    if (!found) return Fail<BOOL>(ERROR_CLASS_DOES_NOT_EXIST);
    if (!info) return Fail<BOOL>(ERROR_INVALID_PARAMETER);
    *info = found->info;
    info->lpszClassName = name;
    return TRUE;
}

HCURSOR LoadCursorW(HINSTANCE, LPCWSTR name) { return reinterpret_cast<HCURSOR>(const_cast<LPWSTR>(name)); }
