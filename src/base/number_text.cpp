#include "base/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

#include "base/text.h"

namespace luadui {
namespace {

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Without the blanks around it and without a plus sign, which std::from_chars does not take.
std::string_view StripNumber(std::string_view text) noexcept {
    constexpr std::string_view kBlanks = " \t";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
    if (text.front() != '+') return text;
    text.remove_prefix(1);
    return !text.empty() && text.front() == '-' ? std::string_view() : text;
}

// A point and digits, or nothing.
bool IsFraction(std::string_view text) noexcept {
    if (text.empty()) return true;
    return text.front() == '.' && text.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

// Whether a number that no double holds is too small for one, not too large: by the place of its first digit other
// than zero and its exponent.
bool IsTooSmall(std::string_view text) noexcept {
    const size_t mark = std::min(text.find_first_of("eE"), text.size());
    const std::string_view digits = text.substr(0, mark);
    const size_t point = std::min(digits.find('.'), digits.size());
    const size_t first = digits.find_first_of("123456789");
    long exponent = 0;
    std::string_view power = text.substr(std::min(mark + 1, text.size()));
    if (power.starts_with('+')) power.remove_prefix(1);
    const auto [end, error] = std::from_chars(power.data(), power.data() + power.size(), exponent);
    if (error == std::errc::result_out_of_range) return power.starts_with('-');
    return static_cast<double>(point) - static_cast<double>(first) + static_cast<double>(exponent) < 0;
}

bool ReadStripped(std::string_view text, double& value) noexcept {
    const size_t first = text.starts_with('-') ? 1 : 0;
    // Not the words for what is not finite.
    if (text.size() <= first || !(IsDigit(text[first]) || text[first] == '.')) return false;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size()) return false;
    if (error == std::errc::result_out_of_range && IsTooSmall(text)) {
        value = first == 0 ? 0.0 : -0.0;
        return true;
    }
    if (error != std::errc() || !std::isfinite(number)) return false;
    value = number;
    return true;
}

template <class Number>
const char* ReadDigits(std::string_view text, Number& value, std::errc& error) noexcept {
    const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
    error = code;
    return end;
}

}  // namespace

bool TruncateDouble(double value, int64_t& bits, bool& isUnsigned) noexcept {
    constexpr double kTwo63 = 9223372036854775808.0;
    if (!(value >= -kTwo63 && value < 2 * kTwo63)) return false;
    isUnsigned = value >= kTwo63;
    bits = isUnsigned ? static_cast<int64_t>(static_cast<uint64_t>(value)) : static_cast<int64_t>(value);
    return true;
}

bool ReadDoubleText(std::string_view text, double& value) noexcept {
    return ReadStripped(StripNumber(text), value);
}

bool ReadIntegerText(std::string_view text, int64_t& bits, bool& isUnsigned) noexcept {
    text = StripNumber(text);
    if (text.empty()) return false;
    int64_t number = 0;
    std::errc error{};
    const char* end = ReadDigits(text, number, error);
    const auto rest = [&] { return text.substr(static_cast<size_t>(end - text.data())); };
    if (error == std::errc() && IsFraction(rest())) {
        bits = number;
        isUnsigned = false;
        return true;
    }
    if (error == std::errc::result_out_of_range && IsFraction(rest())) {
        uint64_t large = 0;
        ReadDigits(text, large, error);
        if (error != std::errc()) return false;
        bits = static_cast<int64_t>(large);
        isUnsigned = true;
        return true;
    }
    double real = 0;
    return ReadStripped(text, real) && TruncateDouble(real, bits, isUnsigned);
}

std::optional<double> ParseDouble(std::string_view text) noexcept {
    double value = 0;
    return ReadDoubleText(text, value) ? std::optional(value) : std::nullopt;
}

std::optional<int64_t> ParseLong(std::string_view text) noexcept {
    int64_t bits = 0;
    bool isUnsigned = false;
    return ReadIntegerText(text, bits, isUnsigned) && !isUnsigned ? std::optional(bits) : std::nullopt;
}

std::string DoubleText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

std::string LongText(int64_t value) { return std::to_string(value); }

}  // namespace luadui
