#include "messaging/guid.h"

#include <atomic>
#include <cstdint>
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

void AddHex(uint64_t value, int digits, std::string& text) {
    for (int digit = digits - 1; digit >= 0; --digit) text += "0123456789abcdef"[value >> (4 * digit) & 15];
}

}  // namespace

std::string NewGuid() {
    GUID guid{};
    if (FAILED(CoCreateGuid(&guid))) guid = CountedGuid();
    std::string text;
    text.reserve(36);
    AddHex(guid.Data1, 8, text);
    AddHex(guid.Data2, 4, text += '-');
    AddHex(guid.Data3, 4, text += '-');
    for (int i = 0; i < 8; ++i) {
        if (i == 0 || i == 2) text += '-';
        AddHex(guid.Data4[i], 2, text);
    }
    return text;
}

}  // namespace luadui
