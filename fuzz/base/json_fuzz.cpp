// Any bytes as JSON text: what is accepted is written and read back to the same.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/json_object.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    luadui::CJsonObject object, again;
    std::string error;
    if (!object.Parse(text, &error)) {
        if (!object.IsEmpty() || error.empty()) std::abort();
        return 0;
    }
    const std::string written = object.ToText();
    if (!again.Parse(written, &error) || again.ToText() != written) std::abort();
    return 0;
}
