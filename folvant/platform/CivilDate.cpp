#include "folvant/platform/CivilDate.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>

namespace folvant::platform {

// The day-count conversions are Howard Hinnant's days_from_civil and civil_from_days: years
// are split into 400-year eras of 146097 days, each counted from 1 March so that the leap day
// ends the year. 719468 is the day number of 1970-01-01 counted from 0000-03-01.

bool IsLeapYear(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int MonthLength(std::int64_t year, int month) {
  static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

Day DayFromCivil(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t months = year * 12 + (month - 1);
  std::int64_t y = FloorDiv(months, 12);
  const std::int64_t m = months - y * 12 + 1;
  y -= m <= 2;
  const std::int64_t era = FloorDiv(y, 400);
  const std::int64_t yoe = y - era * 400;
  const std::int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5;  // of the first
  const std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468 + (day - 1);
}

CivilDate CivilFromDay(Day day) {
  const std::int64_t z = day + 719468;
  const std::int64_t era = FloorDiv(z, 146097);
  const std::int64_t doe = z - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  CivilDate date;
  date.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  date.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  date.year = yoe + era * 400 + (date.month <= 2);
  return date;
}

int Weekday(Day day) { return static_cast<int>((day % 7 + 11) % 7); }  // 1970-01-01: Thursday

Day DayFromDateNumber(std::int32_t date_number) {
  return DayFromCivil(date_number / 10000, date_number % 10000 / 100, date_number % 100);
}

std::int32_t DateNumberFromDay(Day day) {
  const CivilDate c = CivilFromDay(day);
  const std::int64_t n = c.year * 10000 + c.month * 100 + c.day;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      n, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

bool IsValidDateNumber(std::int32_t date_number) {
  const int month = date_number / 100 % 100;
  const int day = date_number % 100;
  return day >= 1 && day <= MonthLength(date_number / 10000, month);
}

std::string FormatIsoDate(std::int32_t date) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
  return text;
}

bool ParseIsoDate(std::string_view text, std::int32_t& date) {
  char digits[8];
  std::size_t count = 0;
  for (char c : text) {
    if (c == '-') continue;
    if (count == sizeof digits) return false;
    digits[count++] = c;
  }
  if (count != sizeof digits) return false;
  int value = 0;
  const auto result = std::from_chars(digits, digits + count, value);
  if (result.ec != std::errc() || result.ptr != digits + count) return false;
  if (!IsValidDateNumber(value)) return false;
  date = value;
  return true;
}

}  // namespace folvant::platform
