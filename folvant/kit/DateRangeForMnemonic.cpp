#include "folvant/kit/DateRangeForMnemonic.h"

#include <chrono>

#include "folvant/platform/Clock.h"

namespace folvant {
namespace {

using namespace std::chrono;

std::int32_t ToNumber(sys_days day) {
  const year_month_day ymd{day};
  return static_cast<int>(ymd.year()) * 10000 + static_cast<int>(unsigned(ymd.month())) * 100 +
         static_cast<int>(unsigned(ymd.day()));
}

DateRange Range(sys_days first, sys_days last) { return {ToNumber(first), ToNumber(last)}; }

// First day of the month `offset` months from the month of `ym`.
sys_days MonthStart(year_month ym, int offset) { return sys_days{(ym + months{offset}) / 1}; }

// Last day of the month `offset` months from the month of `ym`.
sys_days MonthEnd(year_month ym, int offset) {
  return sys_days{(ym + months{offset}) / std::chrono::last};
}

}  // namespace

std::optional<DateRange> DateRangeForMnemonic(std::int32_t code) {
  return DateRangeForMnemonic(code, platform::Today());
}

std::optional<DateRange> DateRangeForMnemonic(std::int32_t code, std::int32_t today) {
  const year_month_day ymd{year{today / 10000}, month{static_cast<unsigned>(today / 100 % 100)},
                           day{static_cast<unsigned>(today % 100)}};
  if (today < 0 || !ymd.ok()) return std::nullopt;
  const sys_days now{ymd};
  const year_month ym{ymd.year(), ymd.month()};
  const sys_days week_start = now - (weekday{now} - Sunday);
  // Months since January of the current quarter's first month.
  const int quarter_offset = -static_cast<int>((unsigned(ymd.month()) - 1) % 3);
  const year_month jan{ymd.year(), January};

  switch (code) {
    case kMnemonicToday:
      return Range(now, now);
    case kMnemonicYesterday:
      return Range(now - days{1}, now - days{1});
    case kMnemonicLastWeek:
      return Range(week_start - days{7}, week_start - days{1});
    case kMnemonicLastMonth:
      return Range(MonthStart(ym, -1), MonthEnd(ym, -1));
    case kMnemonicLastQuarter:
      return Range(MonthStart(ym, quarter_offset - 3), MonthEnd(ym, quarter_offset - 1));
    case kMnemonicLastYear:
      return Range(MonthStart(jan, -12), MonthEnd(jan, -1));
    case kMnemonicThisWeek:
      return Range(week_start, week_start + days{6});
    case kMnemonicThisMonth:
      return Range(MonthStart(ym, 0), MonthEnd(ym, 0));
    case kMnemonicThisQuarter:
      return Range(MonthStart(ym, quarter_offset), MonthEnd(ym, quarter_offset + 2));
    case kMnemonicThisYear:
      return Range(MonthStart(jan, 0), MonthEnd(jan, 11));
    case kMnemonicWeekToDate:
      return Range(week_start, now);
    case kMnemonicMonthToDate:
      return Range(MonthStart(ym, 0), now);
    case kMnemonicQuarterToDate:
      return Range(MonthStart(ym, quarter_offset), now);
    case kMnemonicYearToDate:
      return Range(MonthStart(jan, 0), now);
    default:
      return std::nullopt;
  }
}

}  // namespace folvant
