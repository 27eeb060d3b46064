#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Civil dates of the proleptic Gregorian calendar: day counts, year-month-day triples and date
// numbers (year x 10000 + month x 100 + day). This is the one place the calendar arithmetic is
// written; everything that counts days goes through it.
namespace folvant::platform {

// a / b rounded toward negative infinity (b > 0).
constexpr std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
  const std::int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// A civil day: days since 1970-01-01. 64 bits, so that any date number, however wild, any
// multiple of a schedule's step and any year a property-list date can reach stay exact.
using Day = std::int64_t;

struct CivilDate {
  std::int64_t year = 1970;
  int month = 1;  // 1-12
  int day = 1;    // 1-31
  bool operator==(const CivilDate&) const = default;
};

bool IsLeapYear(std::int64_t year);

// The length of a month (1-12) of a year: 28, 29, 30 or 31; 0 for a month outside 1-12.
int MonthLength(std::int64_t year, int month);

// Lenient, as a calendar counts: months carry into the year (month 13 of 2007 is January 2008,
// month 0 is December of the year before) and day d is the first of the month + (d - 1) days
// (day 0 is the last day of the month before). Years must lie within +-10^15 and months and
// days within +-10^17, which every date number and every LocalTime does by far.
Day DayFromCivil(std::int64_t year, std::int64_t month, std::int64_t day);
CivilDate CivilFromDay(Day day);

// 0 Sunday, 1 Monday, ... 5 Friday, 6 Saturday.
int Weekday(Day day);

// A date number read with truncating division (year n / 10000, month n % 10000 / 100, day
// n % 100) and handed to DayFromCivil as it is: 20081301 is 2009-01-01 and 20080300 is
// 2008-02-29.
Day DayFromDateNumber(std::int32_t date_number);
// The date number of a day; saturates at the int32 limits for years no date number can hold.
std::int32_t DateNumberFromDay(Day day);
// Whether a date number names a real day (month 1-12, day within the month, year 0 or later).
bool IsValidDateNumber(std::int32_t date_number);

// A date number as YYYY-MM-DD (the year with at least four digits).
std::string FormatIsoDate(std::int32_t date);

// Reads YYYY-MM-DD (or YYYYMMDD) into a date number; false when the text is not a real day.
bool ParseIsoDate(std::string_view text, std::int32_t& date);

}  // namespace folvant::platform
