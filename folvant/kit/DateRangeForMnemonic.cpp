#include "folvant/kit/DateRangeForMnemonic.h"

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"

namespace folvant {
namespace {

using platform::DateNumberFromDay;
using platform::Day;
using platform::DayFromCivil;

DateRange Range(Day first, Day last) { return {DateNumberFromDay(first), DateNumberFromDay(last)}; }

}  // namespace

std::optional<DateRange> DateRangeForMnemonic(std::int32_t code) {
  return DateRangeForMnemonic(code, platform::Today());
}

std::optional<DateRange> DateRangeForMnemonic(std::int32_t code, std::int32_t today) {
  if (!platform::IsValidDateNumber(today)) return std::nullopt;
  const std::int64_t year = today / 10000;
  const int month = today / 100 % 100;
  const Day now = platform::DayFromDateNumber(today);
  const Day week_start = now - platform::Weekday(now);
  const int quarter = month - (month - 1) % 3;  // the first month of the current quarter
  // Months are counted from January of this year: 0 is last December, 13 next January.
  const auto month_start = [&](std::int64_t m) { return DayFromCivil(year, m, 1); };
  const auto month_end = [&](std::int64_t m) { return DayFromCivil(year, m + 1, 0); };

  switch (code) {
    case kMnemonicToday:
      return Range(now, now);
    case kMnemonicYesterday:
      return Range(now - 1, now - 1);
    case kMnemonicLastWeek:
      return Range(week_start - 7, week_start - 1);
    case kMnemonicLastMonth:
      return Range(month_start(month - 1), month_end(month - 1));
    case kMnemonicLastQuarter:
      return Range(month_start(quarter - 3), month_end(quarter - 1));
    case kMnemonicLastYear:
      return Range(month_start(-11), month_end(0));
    case kMnemonicThisWeek:
      return Range(week_start, week_start + 6);
    case kMnemonicThisMonth:
      return Range(month_start(month), month_end(month));
    case kMnemonicThisQuarter:
      return Range(month_start(quarter), month_end(quarter + 2));
    case kMnemonicThisYear:
      return Range(month_start(1), month_end(12));
    case kMnemonicWeekToDate:
      return Range(week_start, now);
    case kMnemonicMonthToDate:
      return Range(month_start(month), now);
    case kMnemonicQuarterToDate:
      return Range(month_start(quarter), now);
    case kMnemonicYearToDate:
      return Range(month_start(1), now);
    default:
      return std::nullopt;
  }
}

}  // namespace folvant
