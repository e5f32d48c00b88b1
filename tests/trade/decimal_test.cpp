#include "trade/decimal.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/text.h"

namespace luadui {
namespace {

#define MOST "99999999999999999999.99999999"

Decimal Read(std::string_view text) { return Decimal::Parse(text).value_or(-777); }

TEST(DecimalTest, ReadsWhatServersWrite) {
    for (const std::string_view row :
         {"0=0", "-0.0=0", " +12.50\r\n=12.5", ".5=0.5", "0.03=0.03", "5.=5", "1e9=1000000000",
          "-2.5E-3=-0.0025", "0.123456789=0.12345678", "1e-9=0", "1e+19=10000000000000000000", MOST "=" MOST,
          "0e99999999999999999999=0", "1e-99999999999999999999=0", "00000000000000000000000000007=7",
          "0.0000000000000000000000005e20=0.00005"}) {
        const auto parts = SplitText(row, '=');
        EXPECT_EQ(Read(parts[0]).Text(), parts[1]);
        EXPECT_EQ(Read(parts[0]).ToDouble(), ParseDouble(parts[1]));
    }
    for (const std::string_view bad :
         {"", "-", "+-5", "1,234.50", ".", "1e", "1e+-2", "1.2.3", "0x10", "nan", "1 2", "1e20",
          "100000000000000000000000000000", "1e99999999999999999999"}) {
        EXPECT_FALSE(Decimal::Parse(bad)) << bad;
    }
    EXPECT_EQ(Decimal::FromDouble(-1.005)->Text(2), "-1.01");
    EXPECT_FALSE(Decimal::FromDouble(1e20));
    EXPECT_FALSE(Decimal::FromDouble(std::numeric_limits<double>::quiet_NaN()));
}

TEST(DecimalTest, CutsResultsAndBoundsThem) {
    for (const std::string_view row :
         {"12345678901.23456789 * -98765432.10987654 = -1219326311370217912.60783452",
          MOST " * 0.99999999 = 99999998999999999999.99999999", "0.00000001 * -0.99999999 = 0",
          "-2 / 3 = -0.66666666", "123456789012.5 / -0.00012345 = -1000054994025921.42567841", "5 / 0 = 0",
          MOST " / 0.3 = " MOST, MOST " * " MOST " = " MOST, "-1e19 * 10 = -" MOST, "-1e19 * 1e19 = -" MOST,
          MOST " + 1e-8 = " MOST, "-5e19 - 6e19 = -" MOST}) {
        const auto parts = SplitText(row, ' ');
        const Decimal a = Read(parts[0]), b = Read(parts[2]);
        const char sign = parts[1][0];
        EXPECT_EQ((sign == '*'   ? a * b
                   : sign == '/' ? a / b
                   : sign == '+' ? a + b
                                 : a - b)
                      .Text(),
                  parts[4])
            << row;
    }
    EXPECT_EQ(Decimal::Largest().ToLong(), std::numeric_limits<int64_t>::max());
    EXPECT_EQ((-Decimal::Largest()).WholeTimes(Read("1e-8")), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(Read("-1.99").ToLong(), -1);
}

TEST(DecimalTest, RoundsTheSameOnBothSidesOfZero) {
    using enum Decimal::Rounding;
    for (const std::string_view row : {"0.0025 0 0.005 0.005 0.00", "0.00249999 0 0 0.005 0.00",
                                       "1.005 1.005 1.005 1.005 1.01", "9.99500001 9.995 9.995 10 10.00",
                                       "-1.2575 -1.255 -1.26 -1.26 -1.26", "-0.004 0 -0.005 -0.005 0.00"}) {
        const auto parts = SplitText(row, ' ');
        const Decimal number = Read(parts[0]), step = Decimal::Of(5, 3);
        EXPECT_EQ(number.ToStep(step, kDown).Text(), parts[1]) << row;
        EXPECT_EQ(number.ToStep(step, kHalfUp).Text(), parts[2]) << row;
        EXPECT_EQ(number.ToStep(step, kUp).Text(), parts[3]) << row;
        EXPECT_EQ(number.Text(2), parts[4]) << row;
    }
}

}  // namespace
}  // namespace luadui
