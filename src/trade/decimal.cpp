#include "trade/decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "base/text.h"

namespace luadui {
namespace {

__extension__ using Wide = __int128;
__extension__ using UWide = unsigned __int128;

constexpr int64_t kOne = 100'000'000;
constexpr int kWholeDigits = 20;

constexpr auto kPowersOfTen = [] {
    std::array<Wide, 39> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();
constexpr Wide PowerOfTen(int64_t exponent) { return kPowersOfTen[static_cast<size_t>(exponent)]; }

constexpr Wide kLargest = PowerOfTen(kWholeDigits + Decimal::kDecimals) - 1;
// A number can be multiplied by kOne without overflow; so where a product overflows, it is too large.
static_assert(kLargest < PowerOfTen(38) / kOne);

constexpr Wide Bounded(Wide units) { return std::clamp(units, -kLargest, kLargest); }

constexpr UWide Magnitude(Wide units) {
    return units < 0 ? UWide{0} - static_cast<UWide>(units) : static_cast<UWide>(units);
}

int64_t BoundedLong(Wide number) {
    return static_cast<int64_t>(
        std::clamp<Wide>(number, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()));
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// What stands before the exponent, and the exponent, so bounded that no text is long enough to make up for it.
struct Scientific {
    std::string_view digits;
    int64_t exponent = 0;
};

std::optional<Scientific> SplitExponent(std::string_view text) {
    constexpr int64_t kBound = int64_t{1} << 60;
    const size_t mark = text.find_first_of("eE");
    Scientific number{text.substr(0, mark)};
    if (mark == std::string_view::npos) return number;
    std::string_view power = text.substr(mark + 1);
    if (power.starts_with('+')) {
        power.remove_prefix(1);
        if (power.starts_with('-')) return std::nullopt;
    }
    const char* const end = power.data() + power.size();
    const auto [stop, error] = std::from_chars(power.data(), end, number.exponent);
    if (error == std::errc::invalid_argument || stop != end) return std::nullopt;
    if (error == std::errc::result_out_of_range) number.exponent = power.starts_with('-') ? -kBound : kBound;
    number.exponent = std::clamp(number.exponent, -kBound, kBound);
    return number;
}

// The digits as 1/kOne, cut after the last of the decimals.
std::optional<Wide> ReadDigits(const Scientific& number) {
    const size_t point = std::min(number.digits.find('.'), number.digits.size());
    // The power of ten that the next digit counts.
    int64_t place = static_cast<int64_t>(point) + number.exponent - 1;
    Wide units = 0;
    bool any = false;
    for (size_t i = 0; i < number.digits.size(); ++i) {
        if (i == point) continue;
        const char c = number.digits[i];
        if (!IsDigit(c)) return std::nullopt;
        any = true;
        if (c != '0') {
            if (place >= kWholeDigits) return std::nullopt;
            if (place >= -Decimal::kDecimals) {
                units += (c - '0') * PowerOfTen(place + Decimal::kDecimals);
            }
        }
        --place;
    }
    return any ? std::optional(units) : std::nullopt;
}

// Writes `number` so that it ends before `end`; returns where it begins.
char* WriteDigits(UWide number, char* end) {
    while (number > std::numeric_limits<uint64_t>::max()) {
        *--end = static_cast<char>('0' + static_cast<int>(number % 10));
        number /= 10;
    }
    auto rest = static_cast<uint64_t>(number);
    do {
        *--end = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest > 0);
    return end;
}

}  // namespace

Decimal Decimal::Largest() {
    Decimal number;
    number.m_units = kLargest;
    return number;
}

std::optional<Decimal> Decimal::FromDouble(double number) {
    if (!std::isfinite(number)) return std::nullopt;
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return Parse({text.data(), static_cast<size_t>(end - text.data())});
}

std::optional<Decimal> Decimal::Parse(std::string_view text) {
    text = TrimText(text);
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    const auto parts = SplitExponent(text);
    if (!parts) return std::nullopt;
    const auto units = ReadDigits(*parts);
    if (!units) return std::nullopt;
    Decimal number;
    number.m_units = isNegative ? -*units : *units;
    return number;
}

Decimal Decimal::ToStep(Decimal step, Rounding rounding) const {
    if (step.m_units <= 0) return *this;
    Units count = m_units / step.m_units;
    const UWide rest = Magnitude(m_units % step.m_units);
    const bool isAway = rounding == Rounding::kUp       ? rest > 0
                        : rounding == Rounding::kHalfUp ? rest * 2 >= static_cast<UWide>(step.m_units)
                                                        : false;
    if (isAway) count += m_units < 0 ? -1 : 1;
    Decimal result;
    result.m_units = Bounded(count * step.m_units);
    return result;
}

int64_t Decimal::WholeTimes(Decimal other) const {
    return other.m_units == 0 ? 0 : BoundedLong(m_units / other.m_units);
}

int64_t Decimal::WholeTimesProduct(Decimal a, Decimal b) const {
    Units product = 0;
    // A product that large goes into no number.
    if (__builtin_mul_overflow(a.m_units, b.m_units, &product) || product == 0) return 0;
    return BoundedLong(m_units * kOne / product);
}

std::string Decimal::Text(int decimals) const {
    decimals = std::clamp(decimals, 0, kDecimals);
    const auto unit = static_cast<UWide>(PowerOfTen(kDecimals - decimals));
    const UWide rounded = (Magnitude(m_units) + unit / 2) / unit;
    // Digits first, then the point is let in; a number below one gets its zeros.
    std::array<char, 48> digits;
    char* const end = digits.data() + digits.size();
    char* begin = WriteDigits(rounded, end);
    while (end - begin <= decimals) *--begin = '0';
    std::string text;
    if (m_units < 0 && rounded > 0) text = '-';
    text.append(begin, end - decimals);
    if (decimals > 0) text.append(1, '.').append(end - decimals, end);
    return text;
}

std::string Decimal::Text() const {
    std::string text = Text(kDecimals);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

double Decimal::ToDouble() const {
    constexpr int64_t kExact = int64_t{1} << 53;
    if (-kExact <= m_units && m_units <= kExact) return static_cast<double>(m_units) / kOne;
    const std::string text = Text();
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

int64_t Decimal::ToLong() const { return BoundedLong(m_units / kOne); }

Decimal operator+(Decimal a, Decimal b) {
    a.m_units = Bounded(a.m_units + b.m_units);
    return a;
}

Decimal operator-(Decimal a, Decimal b) {
    a.m_units = Bounded(a.m_units - b.m_units);
    return a;
}

Decimal operator*(Decimal a, Decimal b) {
    Decimal product;
    if (__builtin_mul_overflow(a.m_units, b.m_units, &product.m_units)) {
        product.m_units = (a.m_units < 0) == (b.m_units < 0) ? kLargest : -kLargest;
    } else {
        product.m_units = Bounded(product.m_units / kOne);
    }
    return product;
}

Decimal operator/(Decimal a, Decimal b) {
    Decimal quotient;
    if (b.m_units != 0) quotient.m_units = Bounded(a.m_units * kOne / b.m_units);
    return quotient;
}

}  // namespace luadui
