#include "folvant/values/ZELMUtilities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "folvant/platform/LocalCalendar.h"

namespace folvant {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(DateNumbers, RoundTripThroughLocalMidnightAndCarryOutOfRangeFields) {
  EXPECT_EQ(dateNumber(std::nullopt), 19700101);
  for (std::int32_t n : {20080229, 19000101, 20071231, 99991231}) {
    const LocalTime date = DateNumberToNSCalendarDate(n);
    EXPECT_EQ(platform::FormatLocalTime(date, "%H:%M:%S"), "00:00:00") << n;
    EXPECT_EQ(NSCalendarDateToDateNumber(date + std::chrono::hours{23}), n);
  }
  // 20089999 is month 99 of 2008, then 98 days on; -20080101 is year -2008, month -1, day -1:
  // 30 October of year -2009.
  const std::pair<std::int32_t, std::int32_t> rows[] = {
      {20071301, 20080101}, {20080100, 20071231},   {20070229, 20070301},
      {20089999, 20160607}, {-20080101, -20088970}, {20081232, 20090101}};
  for (const auto& [in, out] : rows) EXPECT_EQ(dateNumber(dateWithDateNumber(in)), out) << in;
}

TEST(DateNumbers, DaysInMonthAndQuarter) {
  // Date, days of its month, quarter.
  const std::tuple<std::int32_t, std::int32_t, std::int32_t> rows[] = {
      {19000215, 28, 0}, {20000201, 29, 0}, {20080331, 31, 0},
      {20080401, 30, 1}, {20070930, 30, 2}, {20071001, 31, 3}};
  for (const auto& [date, days, quarter] : rows) {
    EXPECT_EQ(daysInMonth(dateWithDateNumber(date)), days) << date;
    EXPECT_EQ(quarterOfYear(dateWithDateNumber(date)), quarter) << date;
  }
}

TEST(Rounding, RoundValueUsesPlainDoubleArithmeticButRoundAmountTheDecimalText) {
  // In, RoundValue, RoundAmount. 1.005 is just below 1.005 as a double; RoundValue(1.15) is
  // the product 115 * 0.01, not the nearest double; RoundValue's integer step saturates.
  const std::tuple<double, double, double> rows[] = {
      {-0.004, 0.0, 0.0},       {-1.236, -1.24, -1.24},
      {1.005, 1.0, 1.01},       {-1.005, -1.0, -1.01},
      {1.15, 115 * 0.01, 1.15}, {0.995, 1.0, 1.0},
      {0.1 + 0.2, 0.3, 0.3},    {1e20, 9223372036854775807.0 * 0.01, 1e20}};
  for (const auto& [in, round_value, round_amount] : rows) {
    EXPECT_EQ(RoundValue(in), round_value) << in;
    EXPECT_EQ(RoundAmount(in), round_amount) << in;
  }
  EXPECT_EQ(RoundValue(kNaN), 0.0);
  EXPECT_TRUE(std::isnan(RoundAmount(kNaN)));
  EXPECT_EQ(RoundAmount(-std::numeric_limits<double>::infinity()),
            -std::numeric_limits<double>::infinity());
  EXPECT_FALSE(std::signbit(RoundAmount(-0.001)));
}

TEST(Rounding, TruncateAndNearZero) {
  EXPECT_EQ(TruncateValue(2.349, 2), 2.34);
  EXPECT_EQ(TruncateValue(-2.349, 2), -2.34);
  EXPECT_TRUE(std::isnan(TruncateValue(2.5, -1)));  // scale 0: 0 / 0
  EXPECT_EQ(RoundNearZeroValue(0.001), 0.001);
  EXPECT_FALSE(std::signbit(RoundNearZeroValue(-0.0009)));
  EXPECT_EQ(RoundNearZeroValue(-0.0009), 0.0);
}

TEST(AmountText, Table) {
  // "%.2f" rounds the double, which is below 2.675, and an exact tie (0.125) to even.
  const std::tuple<double, const char*, const char*, const char*> rows[] = {
      {0, "0.00", "$0.00", "$0.00"},
      {1000, "1,000.00", "$1,000.00", "$1000.00"},
      {999.999, "1,000.00", "$1,000.00", "$1000.00"},
      {-1234567.891, "-1,234,567.89", "-$1,234,567.89", "-$1234567.89"},
      {-0.001, "-0.00", "-$0.00", "-$0.00"},
      {2.675, "2.67", "$2.67", "$2.67"},
      {0.125, "0.12", "$0.12", "$0.12"},
      {1e15, "1,000,000,000,000,000.00", "$1,000,000,000,000,000.00", "$1000000000000000.00"},
      {kNaN, "nan", "$nan", "$nan"},
  };
  for (const auto& [in, commas, dollar_commas, dollar] : rows) {
    EXPECT_EQ(FloatToCommasAmountString(in), commas) << in;
    EXPECT_EQ(FloatToDollarCommasAmountString(in), dollar_commas) << in;
    EXPECT_EQ(FloatToDollarAmountString(in), dollar) << in;
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
