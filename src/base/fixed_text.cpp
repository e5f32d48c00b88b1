#include "base/fixed_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "base/number_text.h"
#include "base/short_bytes.h"

namespace luadui {
namespace {

constexpr int kMostPower = 15;
constexpr auto kPowers = [] {
    std::array<uint64_t, kMostPower + 1> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();
static_assert(FixedBuffer::kMostDecimals <= kMostPower);

// Up to so many digits the double nearest to a decimal number lies so close to it that these digits are what printf
// writes for it.
constexpr size_t kExactDigits = kMostPower;

constexpr std::string_view kZeros = "000000000000";
static_assert(kZeros.size() == FixedBuffer::kMostDecimals);

size_t CountDigits(std::string_view text) noexcept {
    size_t count = 0;
    while (count < text.size() && static_cast<unsigned char>(text[count] - '0') < 10) ++count;
    return count;
}

// Digits with or without a point and digits: what nearly all numbers are.
struct PlainNumber {
    bool isNegative = false;
    std::string_view whole;
    std::string_view fraction;

    bool Read(std::string_view text) noexcept {
        isNegative = text.starts_with('-');
        text.remove_prefix(isNegative ? 1 : 0);
        whole = text.substr(0, CountDigits(text));
        text.remove_prefix(whole.size());
        if (text.starts_with('.')) {
            fraction = text.substr(1, CountDigits(text.substr(1)));
            text.remove_prefix(fraction.size() + 1);
        }
        return text.empty() && !whole.empty();
    }
    bool IsShort(size_t decimals) const noexcept {
        return whole.size() + std::max(fraction.size(), decimals) <= kExactDigits;
    }
    // Of a short one: both operands are exact in doubles, so their quotient is what the text reads as.
    double Value() const noexcept {
        uint64_t digits = 0;
        for (const char c : whole) digits = digits * 10 + static_cast<uint64_t>(c - '0');
        for (const char c : fraction) digits = digits * 10 + static_cast<uint64_t>(c - '0');
        const double value = static_cast<double>(digits) / static_cast<double>(kPowers[fraction.size()]);
        return isNegative ? -value : value;
    }
};

// All but the last digit may be one.
std::string_view WithoutZeros(std::string_view digits) noexcept {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

}  // namespace

class FixedWriter {
  public:
    FixedWriter(FixedBuffer& buffer, int decimals) noexcept
        : m_text(buffer.m_text),
          m_end(m_text),
          m_decimals(static_cast<size_t>(std::clamp(decimals, 0, FixedBuffer::kMostDecimals))) {}

    std::string_view WriteText(std::string_view text) noexcept {
        PlainNumber plain;
        if (plain.Read(text) && plain.IsShort(m_decimals)) return _writePlain(text, plain);
        double number = 0;
        return ReadDoubleText(text, number) ? WriteDouble(number) : std::string_view();
    }

    std::string_view WriteDouble(double number) noexcept {
        if (!std::isfinite(number)) return {};
        uint64_t units = 0;
        if (!_countUnits(number, units)) {
            const auto [end, error] = std::to_chars(m_text, m_text + sizeof(FixedBuffer), number,
                                                    std::chars_format::fixed, static_cast<int>(m_decimals));
            return error == std::errc() ? std::string_view(m_text, end) : std::string_view();
        }
        if (std::signbit(number)) _put('-');
        const uint64_t whole = units / kPowers[m_decimals];
        m_end = std::to_chars(m_end, m_end + 20, whole).ptr;
        if (m_decimals == 0) return _written();
        _put('.');
        uint64_t rest = units - whole * kPowers[m_decimals];
        for (char* digit = m_end + m_decimals; digit != m_end; rest /= 10)
            *--digit = static_cast<char>('0' + rest % 10);
        m_end += m_decimals;
        return _written();
    }

  private:
    void _put(char c) noexcept { *m_end++ = c; }
    std::string_view _written() const noexcept { return {m_text, m_end}; }

    // Works on the digits as they stand: those of a short number lie on the same side of the middle between two
    // results as its double does. Only from the middle itself the double tells which way to go.
    std::string_view _writePlain(std::string_view text, const PlainNumber& plain) noexcept {
        const std::string_view kept = plain.fraction.substr(0, m_decimals);
        const std::string_view cut = plain.fraction.substr(kept.size());
        const bool isCanonical = plain.whole[0] != '0' || plain.whole.size() == 1;
        if (isCanonical && cut.empty() && kept.size() == m_decimals && text.back() != '.') return text;
        const bool isUp = !cut.empty() && cut[0] >= '5';
        if (isUp && cut[0] == '5' && cut.find_first_not_of('0', 1) == std::string_view::npos) {
            return WriteDouble(plain.Value());
        }
        if (plain.isNegative) _put('-');
        _put(isCanonical ? plain.whole : WithoutZeros(plain.whole));
        if (m_decimals != 0) _put('.');
        _put(kept);
        _put(kZeros.substr(0, m_decimals - kept.size()));
        if (m_end[-1] < '9') [[likely]] {
            m_end[-1] = static_cast<char>(m_end[-1] + isUp);  // without a branch: as good as random
            return _written();
        }
        return !isUp || _increment() ? _written() : _rewrite(plain);
    }
    // Adds one to the last digit; false, and all digits are nines, when that takes a further one.
    bool _increment() noexcept {
        char* digit = m_end;
        do {
            if (digit == m_text || *--digit == '-') return false;
        } while (*digit == '9' || *digit == '.');
        ++*digit;
        while (++digit != m_end) *digit = *digit == '.' ? '.' : '0';
        return true;
    }
    std::string_view _rewrite(const PlainNumber& plain) noexcept {
        m_end = m_text;
        return WriteDouble(plain.Value());
    }
    void _put(std::string_view text) noexcept {
        CopyShort(m_end, text.data(), text.size());
        m_end += text.size();
    }

    // How many units of the last decimal the number is, without its sign; exact, for a double is a whole number times a
    // power of two. False when they are too many for that.
    bool _countUnits(double number, uint64_t& units) const noexcept {
        __extension__ using Wide = unsigned __int128;
        constexpr int kFractionBits = 52, kBias = 1075;
        const auto bits = std::bit_cast<uint64_t>(number);
        const int exponent = static_cast<int>(bits >> kFractionBits & 0x7FF);
        const uint64_t fraction = bits & ((uint64_t{1} << kFractionBits) - 1);
        const uint64_t mantissa = exponent ? fraction | uint64_t{1} << kFractionBits : fraction;
        const Wide scaled = Wide{mantissa} * kPowers[m_decimals];
        const int shift = kBias - std::max(exponent, 1);  // number = mantissa / 2^shift
        if (shift < 0) return false;
        if (shift > 100) return units = 0, true;  // less than half a unit: `scaled` has less than 93 bits
        if (shift == 0) {
            units = static_cast<uint64_t>(scaled);
            return scaled >> 64 == 0;
        }
        const Wide whole = scaled >> shift;
        const Wide rest = scaled - (whole << shift);
        const Wide half = Wide{1} << (shift - 1);
        units = static_cast<uint64_t>(whole) + (rest > half || (rest == half && (whole & 1)));
        return whole >> 63 == 0;
    }

    char* const m_text;
    char* m_end;
    const size_t m_decimals;
};

std::string_view FixedText(std::string_view text, int decimals, FixedBuffer& buffer) noexcept {
    return FixedWriter(buffer, decimals).WriteText(text);
}

std::string_view FixedText(double number, int decimals, FixedBuffer& buffer) noexcept {
    return FixedWriter(buffer, decimals).WriteDouble(number);
}

}  // namespace luadui
