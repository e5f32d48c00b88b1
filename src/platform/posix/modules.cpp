// Modules are the dynamic linker's; a module handle is what dlopen() answers.
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>
#include <algorithm>
#include <vector>

#include "platform/posix/errors.h"
#include "platform/posix/native_path.h"
#include "platform/posix/strings.h"
#include "platform/posix/win32_system.h"

using namespace luadui::posix;

namespace {

void* ToLinker(HMODULE module) { return module; }
HMODULE FromLinker(void* module) { return static_cast<HMODULE>(module); }

// The linker keeps a thread's last error until it is asked for it a second time; nobody here asks.
void ForgetError() {
    dlerror();
    dlerror();
}

void* OrForgetError(void* answer) {
    if (!answer) ForgetError();
    return answer;
}

void* HostModule() {
    static void* const host = dlopen(nullptr, RTLD_LAZY);
    return host;
}

bool EndsWithDll(std::string_view name) {
    constexpr std::string_view kDll = ".dll";
    return name.size() >= kDll.size() &&
           std::equal(kDll.begin(), kDll.end(), name.end() - kDll.size(),
                      [](char expected, char c) { return (c | ('a' - 'A')) == expected || c == expected; });
}

// The file names that a module's name stands for.
std::vector<std::string> FileNames(const std::string& name) {
    if (EndsWithDll(name)) {
        const std::string stem = name.substr(0, name.size() - 4);
        return {"lib" + stem + ".so", stem + ".so"};
    }
    if (name.find('.') == std::string::npos) return {"lib" + name + ".so", name + ".so"};
    return {name};
}

struct Candidate {
    std::string path;
    bool isSearched;  // by the linker in its own folders; else it is this file or nothing
};

std::vector<Candidate> Candidates(LPCWSTR name) {
    const std::string path = ToNativePath(name);
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string start = (path.starts_with('/') ? "" : HostFolder()) + folder;
    std::vector<Candidate> candidates;
    const auto names = FileNames(path.substr(folder.size()));
    for (const std::string& file : names) candidates.push_back({start + file, false});
    if (!folder.empty()) return candidates;
    for (const std::string& file : names) candidates.push_back({file, true});
    return candidates;
}

// The first candidate that opens; else null, and whether a file was there but could not be loaded.
void* OpenFirst(LPCWSTR name, int flags, bool& broken) {
    for (const auto& [path, isSearched] : Candidates(name)) {
        const bool exists = isSearched || access(path.c_str(), F_OK) == 0;
        if (!exists) continue;
        if (void* module = OrForgetError(dlopen(path.c_str(), flags))) return module;
        broken = broken || !isSearched;
        if (!isSearched && !(flags & RTLD_NOLOAD))
            return nullptr;  // that file is meant, no other of the same name
    }
    return nullptr;
}

HMODULE Open(LPCWSTR name, int flags) {
    if (!name || !*name) return Fail<HMODULE>(ERROR_INVALID_PARAMETER);
    bool broken = false;
    if (void* module = OpenFirst(name, flags, broken)) return FromLinker(module);
    const bool cannotLoad = broken && !(flags & RTLD_NOLOAD);
    return Fail<HMODULE>(cannotLoad ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND);
}

// The linker's record of a module; null when the handle is none.
const link_map* RecordOf(HMODULE module) {
    link_map* record = nullptr;
    if (!module) return nullptr;
    if (dlinfo(ToLinker(module), RTLD_DI_LINKMAP, &record) != 0) ForgetError();
    return record;
}

// The host executable has no path in the linker's records.
std::string PathOf(HMODULE module) {
    if (!module || module == FromLinker(HostModule())) return HostPath();
    const link_map* record = RecordOf(module);
    return record && record->l_name ? record->l_name : "";
}

// The linker's record of the module that holds an address; null when there is none.
const link_map* RecordAt(const void* address) {
    Dl_info info;
    link_map* record = nullptr;
    return dladdr1(address, &info, reinterpret_cast<void**>(&record), RTLD_DL_LINKMAP) ? record : nullptr;
}

// Opens the module that holds an address, adding a reference.
HMODULE OpenAt(const void* address, int flags) {
    const link_map* const record = RecordAt(address);
    if (!record) return Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
    const bool isHost = !*record->l_name;
    void* module = OrForgetError(dlopen(isHost ? nullptr : record->l_name, flags));
    return module ? FromLinker(module) : Fail<HMODULE>(ERROR_MOD_NOT_FOUND);
}

}  // namespace

HMODULE LoadLibraryW(LPCWSTR name) {
    return OrNoMemory([&] { return Open(name, RTLD_NOW | RTLD_LOCAL); });
}

HMODULE LoadLibraryExW(LPCWSTR name, HANDLE, DWORD flags) {
    if (flags & ~LOAD_WITH_ALTERED_SEARCH_PATH) return Fail<HMODULE>(ERROR_NOT_SUPPORTED);
    return LoadLibraryW(name);
}

BOOL FreeLibrary(HMODULE module) {
    if (!RecordOf(module)) return Fail<BOOL>(ERROR_INVALID_HANDLE);
    return dlclose(ToLinker(module)) == 0;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    void* const linker = module ? ToLinker(module) : HostModule();
    void* const address = name ? OrForgetError(dlsym(linker, name)) : nullptr;
    // The linker also looks into what the module depends on, the C library with its "sleep" included.
    const bool isOwn = address && RecordAt(address) == RecordOf(FromLinker(linker));
    return isOwn ? reinterpret_cast<FARPROC>(address) : Fail<FARPROC>(ERROR_PROC_NOT_FOUND);
}

HMODULE GetModuleHandleW(LPCWSTR name) {
    if (!name) return FromLinker(HostModule());
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
    return module;
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module) {
    if (!module) return Fail<BOOL>(ERROR_INVALID_PARAMETER);
    const bool pin = (flags & GET_MODULE_HANDLE_EX_FLAG_PIN) != 0;
    const int open = RTLD_LAZY | RTLD_NOLOAD | (pin ? RTLD_NODELETE : 0);
    if (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) {
        *module = OpenAt(name, open);
    } else {
        *module = name ? OrNoMemory([&] { return Open(name, open); }) : FromLinker(dlopen(nullptr, open));
    }
    if (*module && (pin || (flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT)))
        dlclose(ToLinker(*module));
    return *module != nullptr;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size) {
    return OrNoMemory([&]() -> DWORD {
        const std::wstring full = FromNativePath(PathOf(module));
        if (full.empty()) return Fail<DWORD>(ERROR_MOD_NOT_FOUND);
        const auto copied = static_cast<DWORD>(CopyOut(full, path, size));
        if (copied == full.size()) return copied;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    });
}

DWORD GetFileVersionInfoSizeW(LPCWSTR, LPDWORD handle) {
    if (handle) *handle = 0;
    return Fail<DWORD>(ERROR_RESOURCE_TYPE_NOT_FOUND);
}

BOOL GetFileVersionInfoW(LPCWSTR, DWORD, DWORD, LPVOID) { return Fail<BOOL>(ERROR_RESOURCE_TYPE_NOT_FOUND); }

BOOL VerQueryValueW(LPCVOID, LPCWSTR, LPVOID* value, PUINT length) {
    if (value) *value = nullptr;
    if (length) *length = 0;
    return Fail<BOOL>(ERROR_RESOURCE_TYPE_NOT_FOUND);
}
