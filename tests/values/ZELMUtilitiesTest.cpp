#include "folvant/values/ZELMUtilities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "folvant/platform/LocalCalendar.h"

namespace folvant {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(DateNumbers, RoundTripThroughLocalMidnightAndCarryOutOfRangeFields) {
  EXPECT_EQ(dateNumber(std::nullopt), 19700101);
  for (std::int32_t n : {20080229, 19000101, 20071231, 99991231}) {
    SCOPED_TRACE(n);
    const LocalTime date = DateNumberToNSCalendarDate(n);
    EXPECT_EQ(platform::FormatLocalTime(date, "%H:%M:%S"), "00:00:00");
    EXPECT_EQ(NSCalendarDateToDateNumber(date + std::chrono::hours{23}), n);
  }
  struct Row {
    std::int32_t in, out;
  };
  const Row rows[] = {
      {20071301, 20080101},   {20080100, 20071231},
      {20070229, 20070301},   {20089999, 20160607},  // month 99 of 2008, then 98 days on
      {-20080101, -20088970},  // year -2008, month -1, day -1: 30 October of year -2009
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(dateNumber(dateWithDateNumber(row.in)), row.out);
  }
}

TEST(DateNumbers, DaysInMonthAndQuarter) {
  struct Row {
    std::int32_t date, days, quarter;
  };
  const Row rows[] = {{19000215, 28, 0}, {20000201, 29, 0}, {20080331, 31, 0},
                      {20080401, 30, 1}, {20070930, 30, 2}, {20071001, 31, 3}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.date);
    EXPECT_EQ(daysInMonth(dateWithDateNumber(row.date)), row.days);
    EXPECT_EQ(quarterOfYear(dateWithDateNumber(row.date)), row.quarter);
  }
}

TEST(Rounding, RoundValueUsesPlainDoubleArithmeticButRoundAmountTheDecimalText) {
  struct Row {
    double in, round_value, round_amount;
  };
  const Row rows[] = {
      {-0.004, 0.0, 0.0},
      {1.234, 1.23, 1.23},
      {-1.236, -1.24, -1.24},
      {1.005, 1.0, 1.01},  // the double is just below 1.005
      {-1.005, -1.0, -1.01},
      {1.15, 115 * 0.01, 1.15},  // 1.1500000000000001: the product, not the nearest double
      {0.995, 1.0, 1.0},
      {0.1 + 0.2, 0.3, 0.3},
      {1.23e-5, 0.0, 0.0},
      {1e20, 9223372036854775807.0 * 0.01, 1e20},  // RoundValue's integer step saturates
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(RoundValue(row.in), row.round_value);
    EXPECT_EQ(RoundAmount(row.in), row.round_amount);
  }
  EXPECT_EQ(RoundValue(kNaN), 0.0);
  EXPECT_TRUE(std::isnan(RoundAmount(kNaN)));
  EXPECT_EQ(RoundAmount(-kInf), -kInf);
  EXPECT_FALSE(std::signbit(RoundAmount(-0.001)));
}

TEST(Rounding, TruncateAndNearZero) {
  EXPECT_EQ(TruncateValue(2.349, 2), 2.34);
  EXPECT_EQ(TruncateValue(-2.349, 2), -2.34);
  EXPECT_TRUE(std::isnan(TruncateValue(2.5, -1)));  // scale 0: 0 / 0
  EXPECT_EQ(RoundNearZeroValue(0.001), 0.001);
  EXPECT_EQ(RoundNearZeroValue(-0.0009), 0.0);
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0009)));
}

TEST(AmountText, Table) {
  struct Row {
    double in;
    const char* commas;
    const char* dollar_commas;
    const char* dollar;
  };
  const Row rows[] = {
      {0, "0.00", "$0.00", "$0.00"},
      {100, "100.00", "$100.00", "$100.00"},
      {1000, "1,000.00", "$1,000.00", "$1000.00"},
      {999.999, "1,000.00", "$1,000.00", "$1000.00"},
      {-1234567.891, "-1,234,567.89", "-$1,234,567.89", "-$1234567.89"},
      {-12.5, "-12.50", "-$12.50", "-$12.50"},
      {-0.001, "-0.00", "-$0.00", "-$0.00"},
      {2.675, "2.67", "$2.67", "$2.67"},  // "%.2f" rounds the double, which is below 2.675
      {0.125, "0.12", "$0.12", "$0.12"},  // and an exact tie to even
      {1e15, "1,000,000,000,000,000.00", "$1,000,000,000,000,000.00", "$1000000000000000.00"},
      {kNaN, "nan", "$nan", "$nan"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.in);
    EXPECT_EQ(FloatToCommasAmountString(row.in), row.commas);
    EXPECT_EQ(FloatToDollarCommasAmountString(row.in), row.dollar_commas);
    EXPECT_EQ(FloatToDollarAmountString(row.in), row.dollar);
  }
  EXPECT_EQ(FloatToDollarAmountString(-0.0), "$-0.00");  // -0.0 is not below zero
}

TEST(EnglishList, NeverACommaBeforeTheConjunction) {
  const std::vector<std::string> items = {"a", "b", "c", "d"};
  const char* expected[] = {"", "a", "a and b", "a, b and c", "a, b, c and d"};
  for (std::size_t n = 0; n <= items.size(); ++n) {
    EXPECT_EQ(StringsToEnglishList(std::span(items).first(n)), expected[n]);
  }
}

TEST(BubbleSort, AscendingStableAndNaNPairsStay) {
  std::vector<std::int32_t> longs = {5, -1, 3, 3, 0, -7};
  BubbleSort_Long(longs.data(), 5);  // the last element takes no part
  EXPECT_EQ(longs, (std::vector<std::int32_t>{-1, 0, 3, 3, 5, -7}));

  // 0.0 and -0.0 are equal, so they keep their order.
  std::vector<double> zeros = {2.5, 0.0, -0.0};
  BubbleSort_Double(zeros.data(), 3);
  EXPECT_FALSE(std::signbit(zeros[0]));
  EXPECT_TRUE(std::signbit(zeros[1]));

  // A NaN blocks every swap across it: the values on each side sort among themselves.
  std::vector<double> doubles = {3.0, 1.0, kNaN, 2.0, 0.5};
  BubbleSort_Double(doubles.data(), 5);
  EXPECT_EQ(doubles[1], 3.0);
  EXPECT_TRUE(std::isnan(doubles[2]));
  EXPECT_EQ(doubles[3], 0.5);
  std::vector<float> floats = {1.5f, std::nanf(""), -2.0f, -3.0f};
  BubbleSort_Float(floats.data(), 4);
  EXPECT_EQ(floats[0], 1.5f);
  EXPECT_EQ(floats[2], -3.0f);
}

}  // namespace
}  // namespace folvant
