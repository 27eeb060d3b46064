#pragma once

#include <cstdint>
#include <vector>

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"

// The pure date rules of scheduled entries: civil-day arithmetic on date numbers, the recurrence
// kinds, the end rules and the committed-date search. ZELMAccountSchedule keeps the fields and
// the stored form and calls these; nothing here touches an entry, an account or the clock.
//
// Adding a month to January 31
// ----------------------------
// Years and months are added to the year and month first (months carry into years), then the
// day of month is clamped to the length of the resulting month, and only then are days added
// as calendar days:
//
//   2008-01-31 + 1 month          = 2008-02-29   (leap year)
//   2009-01-31 + 1 month          = 2009-02-28
//   2008-02-29 + 1 year           = 2009-02-28
//   2008-03-01 + 0 months - 1 day = 2008-02-29
//
// C++20's year_month_day rolls over instead (January 31 + 1 month is March 3) and other
// libraries snap to the month end; neither is this rule, so the clamp is ours. Every candidate
// is computed from the start date with the whole offset (S + k x step), never from the previous
// candidate, so a clamped day never carries into later months: the monthly candidates from
// January 31 are February 29 and then March 31, not March 29.
//
// A date number whose month or day is out of range is normalised as the platform calendar
// does: the months carry into the year and the day counts from the first of the month, so
// 20081301 is 2009-01-01 and 20080300 is 2008-02-29.
namespace folvant::schedule {

// The civil arithmetic is the platform's; these are its names in the schedule code.
using platform::CivilDate;
using platform::CivilFromDay;
using platform::DateNumberFromDay;
using platform::Day;
using platform::DayFromCivil;
using platform::DayFromDateNumber;
using platform::Weekday;

inline constexpr std::int32_t kRepeatOnce = 0;
inline constexpr std::int32_t kRepeatDaily = 1;
inline constexpr std::int32_t kRepeatWeekly = 2;
inline constexpr std::int32_t kRepeatEveryTwoWeeks = 3;
inline constexpr std::int32_t kRepeatMonthly = 4;
inline constexpr std::int32_t kRepeatYearly = 5;
inline constexpr std::int32_t kRepeatLastDayOfMonth = 6;
inline constexpr std::int32_t kRepeatQuarterly = 10;
inline constexpr std::int32_t kRepeatLastDayOfQuarter = 11;
inline constexpr std::int32_t kRepeatEveryNDays = 20;
inline constexpr std::int32_t kRepeatEveryNWeeks = 21;
inline constexpr std::int32_t kRepeatEveryNMonths = 22;
inline constexpr std::int32_t kRepeatEveryNYears = 23;
inline constexpr std::int32_t kRepeatEveryNQuarters = 24;

inline constexpr std::int32_t kUntilForever = 1;
inline constexpr std::int32_t kUntilCount = 2;
inline constexpr std::int32_t kUntilDate = 3;

// A local date and time (time of day dropped), and back at 00:00.
Day DayFromLocalTime(platform::LocalTime when);
platform::LocalTime LocalTimeFromDay(Day day);

// The clamping rule described above.
Day AddYearsMonthsDays(Day day, std::int64_t years, std::int64_t months, std::int64_t days);

// The last day of the calendar quarter holding `day` (March 31, June 30, September 30,
// December 31).
Day LastDayOfQuarter(Day day);

// A Saturday becomes the Friday before, a Sunday the Friday two days before; other days stay.
Day PrecedingFriday(Day day);

// The platform's distant future (4001-01-01): the end of every open-ended search.
Day DistantFuture();

// The committed-date search over a list that should be ascending: false for an empty list or
// for n outside [first, last]; otherwise a narrowing binary search that finishes with a linear
// scan of at most six elements. A list loaded out of order may therefore miss dates.
bool DateIsCommitted(const std::vector<std::int32_t>& committed, std::int32_t n);

// What a schedule's dates depend on.
struct Rule {
  std::int32_t start = 0;           // S, a date number
  std::int32_t kind = kRepeatOnce;  // repeatIntervalType
  std::int32_t interval = 1;        // N for kinds 20-24
  std::int32_t untilType = kUntilForever;
  std::int32_t until = 0;  // a count (until type 2) or a date number (until type 3)
  bool usePrecedingFriday = false;
};

// The occurrences in [from, to] that are not committed, ascending (date numbers). Ignores the
// end rule. Post-conditions, for every kind but the once kind and the weekly kinds 2 and 3:
//   - every date is a shifted candidate S + k x step whose unshifted date lies in the range;
//   - no date is committed, and the dates are strictly ascending;
//   - the kinds with a day check only list candidates on S's day of month.
// The once kind lists `from` itself (or nothing once anything is committed). The weekly kinds
// first align the range to the period from S with a remainder that truncates toward zero, so a
// range that starts a few days before S lists S + P first, not S.
std::vector<std::int32_t> OccurrencesBetween(const Rule& rule,
                                             const std::vector<std::int32_t>& committed,
                                             std::int32_t from, std::int32_t to);

// The occurrences due by `when` (by day), with the weekend extension and the end rule applied.
std::vector<std::int32_t> DueDates(const Rule& rule, const std::vector<std::int32_t>& committed,
                                   platform::LocalTime when);
// The size of DueDates without building it; `limit` stops the count early (HasPending needs 1).
std::int64_t CountDueDates(const Rule& rule, const std::vector<std::int32_t>& committed,
                           platform::LocalTime when, std::int64_t limit);

// The first occurrence from S that is not committed (shifted where the kind shifts), with the
// end rule applied; -1 for the once kind, an unknown kind or end rule, or no such date before
// the distant future.
std::int32_t NextDate(const Rule& rule, const std::vector<std::int32_t>& committed);

}  // namespace folvant::schedule
