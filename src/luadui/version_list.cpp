#include "luadui/version_list.h"

#include <cstdio>
#include <vector>

#include "base/text.h"
#include "luadui/host_folder.h"
#include "platform/win32.h"

namespace luadui {
namespace {

constexpr char kSeparator = ';';
// The values that make an entry.
constexpr const wchar_t* kKeys[] = {L"OriginalFilename", L"FileDate", L"ProductVersion"};

struct Translation {
    WORD language;
    WORD codePage;
};

std::wstring ReadValue(const std::vector<unsigned char>& resource, Translation translation,
                       const wchar_t* key) {
    wchar_t block[128];
    std::swprintf(block, std::size(block), L"\\StringFileInfo\\%04x%04x\\%ls", translation.language,
                  translation.codePage, key);
    void* text = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(resource.data(), block, &text, &length) || length == 0) return {};
    const std::wstring_view value(static_cast<const wchar_t*>(text), length);
    return std::wstring(value.substr(0, value.find(L'\0')));
}

std::string Entry(const std::wstring& path) {
    std::wstring values[std::size(kKeys)];
    DWORD unused = 0;
    std::vector<unsigned char> resource(GetFileVersionInfoSizeW(path.c_str(), &unused));
    void* found = nullptr;
    UINT size = 0;
    if (!resource.empty() &&
        GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) &&
        VerQueryValueW(resource.data(), L"\\VarFileInfo\\Translation", &found, &size) &&
        size >= sizeof(Translation)) {
        for (size_t i = 0; i < std::size(kKeys); ++i) {
            values[i] = ReadValue(resource, *static_cast<const Translation*>(found), kKeys[i]);
        }
    }
    return WideToGbk(values[0]) + "|" + WideToGbk(values[1]) + "|" + WideToGbk(values[2]);
}

}  // namespace

std::string VersionList(const std::string& names) {
    const std::wstring directory = HostFolder();
    std::string list;
    for (const std::string_view name : SplitText(names, kSeparator)) {
        const bool isSeparated = name.starts_with('\\') || name.starts_with('/');
        if (!list.empty()) list += kSeparator;
        list += Entry(directory + (isSeparated ? L"" : L"\\") + GbkToWide(name));
    }
    return list;
}

}  // namespace luadui
