// Handles as records carry them ("From", "To"): decimal text.
#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

#include "base/base_object.h"

namespace luadui {

// The handle that `text` holds; kNoHandle unless all of it is a decimal number from 1 to 2^31-1.
inline int32_t HandleFromText(std::string_view text) {
    int32_t handle = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, handle);
    return error == std::errc() && stop == end && handle > 0 ? handle : CBaseObject::kNoHandle;
}

}  // namespace luadui
