// Numbers as text with a fixed count of decimals.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/export.h"

namespace luadui {

// Where such a text is written. Large, for the largest double has 309 digits before the point.
class FixedBuffer {
  public:
    static constexpr int kMostDecimals = 12;

  private:
    friend class FixedWriter;
    char m_text[336];
};

// What a correctly rounding printf("%.*f") writes for the number: the double is rounded as it is, not as its shortest
// text ("1.005" is less than that and becomes "1.00"), from the middle to the even digit. The same on all systems,
// whatever their C library does. `decimals` lie between 0 and FixedBuffer::kMostDecimals, else the nearer of these
// counts. The text is in `buffer`, or is `text` itself where that has the form already.
//
// Empty when `text` is no number by the rule of ValueView (see base/data_value.h) or `number` is not finite.
TESSEL_API std::string_view FixedText(std::string_view text, int decimals, FixedBuffer& buffer) noexcept;
TESSEL_API std::string_view FixedText(double number, int decimals, FixedBuffer& buffer) noexcept;

}  // namespace luadui
