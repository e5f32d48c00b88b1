#include "messaging/guid.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/counters.h"
#include "platform/win32.h"

namespace luadui {
namespace {

// When the system has none: unique in this process, and hardly ever met in another one.
GUID CountedGuid() {
    static std::atomic<unsigned long> count{0};
    CCounters::Add("guid_without_system");
    GUID guid{};
    guid.Data1 = count.fetch_add(1) + 1;
    const uint64_t process = (uint64_t{GetCurrentProcessId()} << 32) ^ GetTickCount64();
    std::memcpy(guid.Data4, &process, sizeof guid.Data4);
    return guid;
}

}  // namespace

std::string NewGuid() {
    GUID guid{};
    if (FAILED(CoCreateGuid(&guid))) guid = CountedGuid();
    char text[37];
    const unsigned char* d = guid.Data4;
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4],
                  d[5], d[6], d[7]);
    return text;
}

}  // namespace luadui
