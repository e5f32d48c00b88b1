// Any bytes as text in a record, read as numbers: the readings agree with each other and with the C library.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/text.h"
#include "base/ui_data.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    luadui::CUIData record;
    record.SetData(text, text);
    double real = 0;
    uint64_t integer = 0;
    int32_t narrow = 0;
    const bool isReal = record.GetData(text, real);
    const bool isInteger = record.GetData(text, integer);
    if (isInteger && !isReal) std::abort();
    if (record.GetData(text, narrow) &&
        (!isInteger || static_cast<uint32_t>(narrow) != static_cast<uint32_t>(integer))) {
        std::abort();
    }
    if (isReal && (!std::isfinite(real) || std::strtod(text.c_str(), nullptr) != real)) std::abort();
    // The integer is cut off exactly, the double rounded: they may lie on two sides of a whole number.
    if (isInteger && std::abs(real) < 9007199254740992.0 &&
        std::abs(static_cast<double>(static_cast<int64_t>(integer)) - real) > 1) {
        std::abort();
    }
    if (record.GetDataString(text) != text) std::abort();
    return 0;
}
