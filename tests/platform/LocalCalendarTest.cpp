#include "folvant/platform/LocalCalendar.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/TestSupport.h"

// The suite runs with TZ=America/New_York.
namespace folvant::platform {
namespace {

using std::chrono::sys_days;
using std::chrono::sys_seconds;

TEST(LocalCalendar, FieldsCarryIntoTheNextUnit) {
  struct Row {
    std::int64_t year, month, day;
    CivilDay expected;
    int weekday;
  };
  const Row rows[] = {
      {2008, 2, 29, {2008, 2, 29}, 5},   {2008, 2, 30, {2008, 3, 1}, 6},
      {2007, 13, 1, {2008, 1, 1}, 2},    {2008, 1, 0, {2007, 12, 31}, 1},
      {2008, 0, 0, {2007, 11, 30}, 5},   {2008, -11, 1, {2007, 1, 1}, 1},
      {1969, 12, 31, {1969, 12, 31}, 3}, {200000, 12, 31, {200000, 12, 31}, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.year << "-" << row.month << "-" << row.day);
    const LocalTime t = MakeLocalTime(row.year, row.month, row.day, 23, 59, 59);
    EXPECT_EQ(DayOf(t), row.expected);
    EXPECT_EQ(WeekdayOf(t), row.weekday);
  }
}

TEST(LocalCalendar, AbsoluteTimeUsesTheLocalZone) {
  const sys_seconds winter = sys_days{std::chrono::year{2008} / 1 / 1} + std::chrono::hours{5};
  EXPECT_EQ(ToAbsoluteTime(MakeLocalTime(2008, 1, 1)), winter);
  const sys_seconds summer = sys_days{std::chrono::year{2008} / 7 / 4} + std::chrono::hours{4};
  EXPECT_EQ(ToAbsoluteTime(MakeLocalTime(2008, 7, 4)), summer);
  // 02:30 on 9 March 2008 does not exist in New York: the clock jumped from 02:00 to 03:00.
  EXPECT_EQ(
      ToAbsoluteTime(MakeLocalTime(2008, 3, 9, 2, 30)),
      sys_days{std::chrono::year{2008} / 3 / 9} + std::chrono::hours{7} + std::chrono::minutes{30});
}

TEST(LocalCalendar, PropertyListDates) {
  // The reference date is 2001-01-01 00:00:00 UTC, 19:00 the evening before in New York.
  EXPECT_EQ(FromPlistDate(plist::Date{0}), MakeLocalTime(2000, 12, 31, 19));
  EXPECT_EQ(FromPlistDate(plist::Date{-0.5}), MakeLocalTime(2000, 12, 31, 18, 59, 59));
  EXPECT_EQ(ToPlistDate(MakeLocalTime(2000, 12, 31, 19)), plist::Date{0});
  for (const LocalTime t : {MakeLocalTime(2008, 2, 29), MakeLocalTime(1901, 6, 1, 12),
                            MakeLocalTime(2037, 12, 31, 23, 59, 59)}) {
    EXPECT_EQ(FromPlistDate(ToPlistDate(t)), t);
  }
  // Values no calendar can hold saturate instead of failing.
  EXPECT_EQ(FromPlistDate(plist::Date{std::numeric_limits<double>::quiet_NaN()}),
            FromPlistDate(plist::Date{0}));
  const LocalTime far = FromPlistDate(plist::Date{1e300});
  EXPECT_GT(DayOf(far).year, 100000000000LL);
  EXPECT_LT(DayOf(FromPlistDate(plist::Date{-1e300})).year, -100000000000LL);
}

TEST(LocalCalendar, FormatsAndParsesWithStrftimePatterns) {
  const LocalTime t = MakeLocalTime(2008, 2, 29, 7, 5, 9);
  EXPECT_EQ(FormatLocalTime(t, "%Y-%m-%d %H:%M:%S %a %j"), "2008-02-29 07:05:09 Fri 060");
  EXPECT_EQ(FormatLocalTime(t, "%Z"), "EST");
  EXPECT_EQ(FormatLocalTime(MakeLocalTime(2008, 7, 4), "%Z"), "EDT");
  EXPECT_EQ(FormatLocalTime(t, ""), "");
  EXPECT_EQ(FormatLocalTime(t, std::string(5000, 'x') + "%y").size(), 5002u);

  UserSettings settings;
  settings.shortDateFormat = "%d/%m/%Y";
  folvant::testing::ScopedSettingsPin pin(settings);
  EXPECT_EQ(FormatShortDate(t), "29/02/2008");

  struct Row {
    const char* text;
    const char* format;
    std::optional<LocalTime> expected;
  };
  const Row rows[] = {
      {"2008-02-29", "%Y-%m-%d", MakeLocalTime(2008, 2, 29)},
      {"3/4", "%m/%d", MakeLocalTime(1970, 3, 4)},
      {"Mar 4 2008", "%b %d %Y", MakeLocalTime(2008, 3, 4)},
      {"2007-02-29", "%Y-%m-%d", std::nullopt},
      {"2008-04-31", "%Y-%m-%d", std::nullopt},
      {"2008-02-29junk", "%Y-%m-%d", std::nullopt},
      {"x", "", std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(ParseLocalTime(row.text, row.format), row.expected);
  }
  EXPECT_EQ(ParseLocalTime(std::string_view("2008-02-29\0", 11), "%Y-%m-%d"), std::nullopt);
}

}  // namespace
}  // namespace folvant::platform
