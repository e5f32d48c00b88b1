// What a process holds of the system.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "platform/win32.h"
#ifdef _WIN32
#include <psapi.h>
#endif

namespace luadui {

struct ProcessUsage {
    int64_t threads = 0;  // on Windows these are among the handles
    int64_t handles = 0;
    int64_t residentBytes = 0;

    static ProcessUsage Now() {
        ProcessUsage usage;
#ifdef _WIN32
        DWORD handles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handles);
        PROCESS_MEMORY_COUNTERS memory{};
        K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
        usage.handles = handles;
        usage.residentBytes = static_cast<int64_t>(memory.WorkingSetSize);
#else
        usage.threads = EntriesOf("/proc/self/task");
        usage.handles = EntriesOf("/proc/self/fd");
        int64_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages >> pages;
        usage.residentBytes = pages * 4096;
#endif
        return usage;
    }

    static int64_t EntriesOf(const char* folder) {
        const std::filesystem::directory_iterator entries(folder);
        return std::distance(begin(entries), end(entries));
    }
};

// True when the module's code is in this process.
inline bool IsModuleMapped() {
#ifdef _WIN32
    return GetModuleHandleW(L"luadui.dll") != nullptr;
#else
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.ends_with("/luadui.so")) return true;
    }
    return false;
#endif
}

}  // namespace luadui
