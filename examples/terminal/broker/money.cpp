#include "broker/money.h"

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

}  // namespace terminal
