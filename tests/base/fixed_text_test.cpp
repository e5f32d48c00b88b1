#include "base/fixed_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "base/text.h"

namespace luadui {
namespace {

std::string Fixed(auto number, int decimals) {
    FixedBuffer buffer;
    return std::string(FixedText(number, decimals, buffer));
}

// Another implementation that rounds doubles exactly: std::to_chars, the same everywhere; a C library that does so, too,
// must agree.
std::string Exact(double number, int decimals) {
    char buffer[400];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, decimals).ptr;
#ifdef __GLIBC__
    char printed[400];
    std::snprintf(printed, sizeof printed, "%.*f", decimals, number);
    EXPECT_EQ(std::string(buffer, end), printed);
#endif
    return std::string(buffer, end);
}

TEST(FixedTextTest, RoundsTheDoubleNotItsText) {
    struct Case {
        const char *text, *whole, *two, *three;
    };
    const Case cases[] = {
        {"1.005", "1", "1.00", "1.005"},
        {"2.675", "3", "2.67", "2.675"},
        {"0.125", "0", "0.12", "0.125"},
        {"0.375", "0", "0.38", "0.375"},
        {"2.5", "2", "2.50", "2.500"},
        {"3.5", "4", "3.50", "3.500"},
        {"9.9995", "10", "10.00", "9.999"},
        {"99.9999", "100", "100.00", "100.000"},
        {"-0.001", "-0", "-0.00", "-0.001"},
        {"-0", "-0", "-0.00", "-0.000"},
        {"007.10", "7", "7.10", "7.100"},
        {"12.", "12", "12.00", "12.000"},
        {".5", "0", "0.50", "0.500"},
        {" +12.345\t", "12", "12.35", "12.345"},
        {"1e3", "1000", "1000.00", "1000.000"},
        {"1e-400", "0", "0.00", "0.000"},
        {"0.1250000000000000000000001", "0", "0.12", "0.125"},
        {"9007199254740993", "9007199254740992", "9007199254740992.00", "9007199254740992.000"},
        {"123456789012.345", "123456789012", "123456789012.35", "123456789012.345"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(Fixed(std::string_view(row.text), 0), row.whole) << row.text;
        EXPECT_EQ(Fixed(std::string_view(row.text), 2), row.two) << row.text;
        EXPECT_EQ(Fixed(std::string_view(row.text), 3), row.three) << row.text;
    }
    for (const char* text : {"", "-", "+-1", "abc", "nan", "inf", "-inf", "1e400", "0x10", "1.2.3", "1,000",
                             "12%", " ", ".", "1e"})
        EXPECT_EQ(Fixed(std::string_view(text), 2), "") << text;
    EXPECT_EQ(Fixed(std::string_view("1.5"), -1), "2");
    EXPECT_EQ(Fixed(std::string_view("1.5"), 99), "1.500000000000");
    EXPECT_EQ(Fixed(std::nan(""), 2) + Fixed(HUGE_VAL, 2), "");
}

class RandomNumbers {
  public:
    std::string Text() {
        switch (m_random() % 6) {
            case 0:  // prices
                return _digits(6) + "." + _digits(4);
            case 1:  // on the middle between two, for some count of decimals
                return _digits(4) + "." + _digits(5) + "5";
            case 2:
                return "-" + _digits(12) + "." + _digits(12) + "500";
            case 3:
                return _digits(25) + "." + _digits(25);
            case 4:
                return _digits(4) + "." + _digits(3) + "e" +
                       std::to_string(static_cast<int>(m_random() % 60) - 30);
            default:
                return DoubleText(Double());
        }
    }
    // Of any size; the halves of a unit among them.
    double Double() {
        if (m_random() % 2) return std::bit_cast<double>(m_random() & ~(uint64_t{1} << 62));
        return static_cast<double>(m_random() >> m_random() % 64) / static_cast<double>(1 << m_random() % 20);
    }
    int Decimals() { return static_cast<int>(m_random() % (FixedBuffer::kMostDecimals + 1)); }

  private:
    std::string _digits(size_t most) {
        std::string digits(1 + m_random() % most, '0');
        const uint64_t kinds = m_random() % 3;  // any digits, nines or zeros
        for (char& digit : digits)
            digit = static_cast<char>('0' + (kinds == 0 ? m_random() % 10 : kinds == 1 ? 9 : 0));
        return digits;
    }

    std::mt19937_64 m_random{20};
};

TEST(FixedTextTest, EqualsWhatIsExact) {
    RandomNumbers numbers;
    for (int i = 0; i < 2'000'000 && !testing::Test::HasFailure(); ++i) {
        const int decimals = numbers.Decimals();
        const std::string text = numbers.Text();
        const double number = ParseDouble(text).value();
        const std::string fixed = Fixed(std::string_view(text), decimals);
        ASSERT_EQ(fixed, Exact(number, decimals)) << text << " with " << decimals;
        ASSERT_EQ(Fixed(std::string_view(fixed), decimals), fixed) << "what was written is read as it is";
        const double other = numbers.Double();
        if (!std::isfinite(other)) continue;
        ASSERT_EQ(Fixed(other, decimals), Exact(other, decimals)) << other;
    }
}

}  // namespace
}  // namespace luadui
