#include <gtest/gtest.h>

#include <limits>

#include "folvant/platform/CivilDate.h"

namespace folvant::platform {
namespace {

// The four centuries around today are checked against std::chrono by the schedule tests; the
// Gregorian calendar repeats every 400 years (146097 days, a whole number of weeks), so the
// same answers 400 years apart carry that check to every year.
TEST(CivilDate, FourHundredYearsApartOverAMillionYearsEachWay) {
  constexpr std::int64_t kEra = 146097;
  for (std::int64_t year = -1000000; year <= 1000000; year += 997) {
    for (int month = 1; month <= 12; ++month) {
      for (int day : {1, MonthLength(year, month)}) {
        SCOPED_TRACE(::testing::Message() << year << "-" << month << "-" << day);
        const Day d = DayFromCivil(year, month, day);
        ASSERT_EQ(DayFromCivil(year + 400, month, day), d + kEra);
        ASSERT_EQ(CivilFromDay(d), (CivilDate{year, month, day}));
        const CivilDate next = day == 1      ? CivilDate{year, month, 2}
                               : month == 12 ? CivilDate{year + 1, 1, 1}
                                             : CivilDate{year, month + 1, 1};
        ASSERT_EQ(CivilFromDay(d + 1), next);
        ASSERT_EQ(Weekday(d + kEra), Weekday(d));
      }
    }
  }
}

TEST(CivilDate, DateNumbersAtTheInt32Limits) {
  constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
  // 2147483647 is year 214748, month 36, day 47: the months and days carry.
  EXPECT_EQ(DayFromDateNumber(kMax), DayFromCivil(214751, 1, 16));
  EXPECT_EQ(DayFromDateNumber(kMin), DayFromCivil(-214752, 10, 13));  // -214748, -36, -48
  // The last day a date number can hold, and the saturation beyond it.
  const Day last = DayFromDateNumber(2147481231);
  EXPECT_EQ(DateNumberFromDay(last), 2147481231);
  EXPECT_EQ(DateNumberFromDay(last + 1), kMax);
  EXPECT_EQ(DateNumberFromDay(DayFromDateNumber(kMin)), kMin);
  EXPECT_FALSE(IsValidDateNumber(kMax));
  EXPECT_FALSE(IsValidDateNumber(kMin));
}

TEST(CivilDate, IsoText) {
  std::int32_t date = 0;
  EXPECT_TRUE(ParseIsoDate("2008-02-29", date));
  EXPECT_EQ(date, 20080229);
  EXPECT_TRUE(ParseIsoDate("00000101", date));
  EXPECT_EQ(date, 101);
  for (const char* text : {"2007-02-29", "2008-13-01", "2008-00-10", "2008-1-01", "+0080101"}) {
    EXPECT_FALSE(ParseIsoDate(text, date)) << text;
  }
  EXPECT_EQ(FormatIsoDate(20080229), "2008-02-29");
  EXPECT_EQ(FormatIsoDate(101), "0000-01-01");
}

}  // namespace
}  // namespace folvant::platform
