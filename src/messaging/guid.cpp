#include "messaging/guid.h"

#include <cstdio>

#include "platform/win32.h"

namespace luadui {

std::string NewGuid() {
    GUID guid{};
    CoCreateGuid(&guid);
    char text[37];
    const unsigned char* d = guid.Data4;
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, d[0], d[1], d[2], d[3], d[4],
                  d[5], d[6], d[7]);
    return text;
}

}  // namespace luadui
