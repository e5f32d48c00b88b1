// Decimal: exact decimal numbers for money, prices and quantities.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace luadui {

// A number with eight decimals and twenty digits before them. What a result has beyond that is cut off; one that
// is too large becomes Largest(), or its negative. Dividing by zero gives zero.
//
// Threads: those of a value.
class Decimal {
  public:
    static constexpr int kDecimals = 8;

    constexpr Decimal() = default;
    constexpr Decimal(int64_t number)
        : m_units(static_cast<Units>(number) * kOne) {}  // NOLINT(google-explicit-constructor)
    // A double would be cut to a whole number on the way; FromDouble says what becomes of it.
    template <std::floating_point Number>
    Decimal(Number number) = delete;
    // `mantissa` / 10^`decimals`: Of(5, 3) is 0.005. At most kDecimals.
    static constexpr Decimal Of(int64_t mantissa, int decimals) {
        Decimal number(mantissa);
        for (int i = 0; i < decimals; ++i) number.m_units /= 10;
        return number;
    }
    static Decimal Largest();
    // The shortest decimal number that reads as `number`; none for what is no number or too large.
    static std::optional<Decimal> FromDouble(double number);
    // What a server wrote: digits with sign, point and exponent, blanks around them. None for anything else ("-",
    // empty text, "1,234.50", more digits than fit before the point).
    static std::optional<Decimal> Parse(std::string_view text);

    // Toward zero; to the nearer one, from the middle away from zero; away from zero.
    enum class Rounding { kDown, kHalfUp, kUp };
    // A multiple of `step`; unchanged when that is not above zero.
    Decimal ToStep(Decimal step, Rounding rounding) const;
    // How many whole times `other` goes into it, cut toward zero; bounded by the range of the type.
    int64_t WholeTimes(Decimal other) const;
    // How many whole times `a` * `b`, with all its decimals, goes into it.
    int64_t WholeTimesProduct(Decimal a, Decimal b) const;

    // With exactly that many decimals (0 to kDecimals), rounded half up: "-0.50".
    std::string Text(int decimals) const;
    // With as many decimals as it has.
    std::string Text() const;
    double ToDouble() const;
    // Cut toward zero, bounded by the range of the type.
    int64_t ToLong() const;

    friend Decimal operator+(Decimal a, Decimal b);
    friend Decimal operator-(Decimal a, Decimal b);
    friend Decimal operator*(Decimal a, Decimal b);
    friend Decimal operator/(Decimal a, Decimal b);
    Decimal& operator+=(Decimal other) { return *this = *this + other; }
    Decimal& operator-=(Decimal other) { return *this = *this - other; }
    Decimal operator-() const { return Decimal(0) - *this; }
    friend constexpr auto operator<=>(const Decimal&, const Decimal&) = default;

  private:
    __extension__ using Units = __int128;
    static constexpr int64_t kOne = 100'000'000;

    Units m_units = 0;
};

}  // namespace luadui
