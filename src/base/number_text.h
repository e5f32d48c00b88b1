// Numbers in text, by the rule of ValueView (see base/data_value.h).
#pragma once

#include <cstdint>
#include <string_view>

namespace luadui {

// The double truncated toward zero, as 64 bits; `isUnsigned` when it is 2^63 or more. False when it is below
// -2^63, 2^64 or more, or not finite.
bool TruncateDouble(double value, int64_t& bits, bool& isUnsigned) noexcept;

bool ReadDoubleText(std::string_view text, double& value) noexcept;
// Exact for digits with or without a fraction, whatever their number; through a double for those with an
// exponent.
bool ReadIntegerText(std::string_view text, int64_t& bits, bool& isUnsigned) noexcept;

}  // namespace luadui
