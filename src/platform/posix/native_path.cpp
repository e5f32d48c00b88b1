#include "platform/posix/native_path.h"

#include <sys/stat.h>
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "platform/code_page.h"
#include "platform/posix/win32_system.h"

namespace luadui::posix {

namespace {

constexpr wchar_t kEscape = 0xDC00;  // a byte that is no UTF-8 is this plus its value

bool IsEscaped(wchar_t c) { return c >= kEscape + 0x80 && c <= kEscape + 0xFF; }
bool IsSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

// Bytes of the UTF-8 sequence that a first byte promises; 1 for what starts none.
size_t PromisedLength(unsigned char first) {
    return first < 0xC2 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 1;
}

}  // namespace

std::string ToNativePath(std::wstring_view path) {
    std::string native;
    while (!path.empty()) {
        const auto plain =
            static_cast<size_t>(std::find_if(path.begin(), path.end(), IsEscaped) - path.begin());
        native += code_page::WideToUtf8(path.substr(0, plain));
        path.remove_prefix(plain);
        if (path.empty()) break;
        native += static_cast<char>(path.front() - kEscape);
        path.remove_prefix(1);
    }
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::wstring FromNativePath(std::string_view path) {
    std::wstring wide;
    while (!path.empty()) {
        const size_t length = PromisedLength(static_cast<unsigned char>(path.front()));
        size_t replaced = 0;
        const std::wstring decoded = code_page::Utf8ToWide(path.substr(0, length), &replaced);
        if (replaced == 0) {
            wide += decoded;
            path.remove_prefix(std::min(length, path.size()));
        } else {
            wide += static_cast<wchar_t>(kEscape + static_cast<unsigned char>(path.front()));
            path.remove_prefix(1);
        }
    }
    return wide;
}

const std::string& HostPath() {
    static const auto& path = *new std::string([] {
        std::error_code error;
        return std::filesystem::read_symlink("/proc/self/exe", error).string();
    }());
    return path;
}

const std::string& HostFolder() {
    static const auto& folder = *new std::string(HostPath().substr(0, HostPath().rfind('/') + 1));
    return folder;
}

}  // namespace luadui::posix

using namespace luadui::posix;

BOOL PathRemoveFileSpecW(LPWSTR path) {
    if (!path) return FALSE;
    wchar_t* cut = path;
    for (wchar_t* at = path; *at; ++at) {
        if (IsSeparator(*at)) cut = at;
    }
    if (cut == path && IsSeparator(*path)) ++cut;  // the root stays
    if (!*cut) return FALSE;
    *cut = L'\0';
    return TRUE;
}

BOOL PathFileExistsW(LPCWSTR path) {
    struct stat info;
    return path && stat(ToNativePath(path).c_str(), &info) == 0;
}
