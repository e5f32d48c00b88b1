#include "luadui/host_folder.h"

#include "platform/win32.h"

namespace luadui {

std::wstring HostFolder() {
    constexpr DWORD kLongestPath = 32768;
    std::wstring path(kLongestPath, L'\0');
    GetModuleFileNameW(nullptr, path.data(), kLongestPath - 1);
    PathRemoveFileSpecW(path.data());
    path.resize(path.find(L'\0'));
    return path;
}

}  // namespace luadui
