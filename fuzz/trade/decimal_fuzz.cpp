// Any bytes as two numbers: what one operation makes, others take apart again.
#include <cstdint>
#include <cstdlib>

#include "base/text.h"
#include "fuzz/input.h"
#include "trade/decimal.h"

using luadui::Decimal;

namespace {

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckOne(std::string_view text, Decimal number) {
    Check(luadui::ParseDouble(luadui::TrimText(text)).has_value());
    Check(Decimal::Parse(number.Text()) == number);
    Check(luadui::ParseDouble(number.Text()) == number.ToDouble());
    Check(-(-number) == number);
    if (number >= Decimal::Largest() - 1 || number <= 1 - Decimal::Largest())
        return;  // it has no room to be rounded
    Check(Decimal::Parse(number.Text(2)) == number.ToStep(Decimal::Of(1, 2), Decimal::Rounding::kHalfUp));
}

void CheckTwo(Decimal a, Decimal b) {
    const Decimal sum = a + b, product = a * b, largest = Decimal::Largest();
    const bool isBounded = sum == largest || sum == -largest;
    Check(isBounded || sum - b == a);
    Check(product == b * a && -product == a * -b);
    const int64_t times = b > Decimal(0) && a >= Decimal(0) ? a.WholeTimes(b) : 0;
    if (times > 0 && times < INT64_MAX) Check(b * times <= a && a - b * times < b);
    const Decimal down = a.ToStep(b, Decimal::Rounding::kDown), up = a.ToStep(b, Decimal::Rounding::kUp);
    Check(b <= Decimal(0) || a < Decimal(0) || (down <= a && a <= up));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    luadui::Input input(data, size);
    const std::string_view first = input.Text('\0'), second = input.Text('\0');
    const auto a = Decimal::Parse(first), b = Decimal::Parse(second);
    if (a) CheckOne(first, *a);
    if (a && b) CheckTwo(*a, *b);
    return 0;
}
