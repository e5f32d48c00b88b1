#include "broker/money.h"

#include <charconv>

namespace terminal {
namespace {

std::string Decimal(int64_t value, int64_t one, size_t places) {
    const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    const std::string fraction = std::to_string(magnitude % static_cast<uint64_t>(one));
    std::string text(value < 0 ? "-" : "");
    text.append(std::to_string(magnitude / static_cast<uint64_t>(one))).append(".");
    return text.append(places - fraction.size(), '0').append(fraction);
}

}  // namespace

std::string CentsText(Cents value) { return Decimal(value, 100, 2); }
std::string MillsText(Mills price) { return Decimal(price, 1000, 3); }

std::optional<Mills> ParsePrice(std::string_view text) {
    constexpr size_t kPlaces = 3;
    const size_t point = text.find('.');
    std::string digits(text.substr(0, point));
    const std::string_view fraction = point == text.npos ? std::string_view() : text.substr(point + 1);
    if (digits.empty() || fraction.size() > kPlaces || (point != text.npos && fraction.empty()))
        return std::nullopt;
    digits.append(fraction).append(kPlaces - fraction.size(), '0');
    Mills price = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, price);
    if (error != std::errc() || stop != end || digits[0] == '-' || price > kMaxPrice) return std::nullopt;
    return price;
}

}  // namespace terminal
