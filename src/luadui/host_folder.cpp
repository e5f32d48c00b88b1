#include "luadui/host_folder.h"

#include "platform/code_page.h"
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

std::filesystem::path HostFolderPath() {
    const std::string folder = code_page::WideToUtf8(HostFolder());  // a wide path would depend on the locale
    return std::filesystem::path(std::u8string(folder.begin(), folder.end()));
}

}  // namespace luadui
