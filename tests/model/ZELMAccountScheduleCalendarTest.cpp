#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccountScheduleCalendar.h"

namespace folvant::schedule {
namespace {

namespace chr = std::chrono;

// ---- An independent calendar: std::chrono, and a naive walk over every day of a range ------

chr::sys_days ChronoDay(std::int32_t n) {
  return chr::sys_days{chr::year{n / 10000} / (n / 100 % 100) / (n % 100)};
}

std::int32_t ChronoNumber(chr::sys_days day) {
  const chr::year_month_day ymd{day};
  return static_cast<int>(ymd.year()) * 10000 + static_cast<int>(unsigned(ymd.month())) * 100 +
         static_cast<int>(unsigned(ymd.day()));
}

// One day of a range with everything the naive walk asks about it, computed once per range
// and shared by every rule of the grid.
struct NaiveDay {
  long serial;  // days since 1970-01-01
  int year, month, day, month_length;
  std::int32_t number;
  std::int32_t friday_number;  // the number after the weekend shift
};

std::vector<NaiveDay> NaiveDays(chr::sys_days from, chr::sys_days to) {
  std::vector<NaiveDay> days;
  for (chr::sys_days day = from; day <= to; day += chr::days{1}) {
    const chr::year_month_day ymd{day};
    const unsigned wd = chr::weekday{day}.c_encoding();
    const chr::sys_days friday = day - chr::days{wd == 6 ? 1 : wd == 0 ? 2 : 0};
    days.push_back({day.time_since_epoch().count(), static_cast<int>(ymd.year()),
                    static_cast<int>(unsigned(ymd.month())), static_cast<int>(unsigned(ymd.day())),
                    static_cast<int>(unsigned((ymd.year() / ymd.month() / chr::last).day())),
                    ChronoNumber(day), ChronoNumber(friday)});
  }
  return days;
}

// Whether `d` is an (unshifted) occurrence of the kind, judged by the day alone.
bool IsRawOccurrence(const Rule& rule, const NaiveDay& s, const NaiveDay& d) {
  if (d.serial < s.serial) return false;
  const int months = (d.year - s.year) * 12 + d.month - s.month;
  const long days = d.serial - s.serial;
  const int n = rule.interval;
  const bool same_day = d.day == s.day;
  const bool yearly_day = d.day == std::min(s.day, d.month_length);
  const bool month_end = d.day == d.month_length;
  switch (rule.kind) {
    case kRepeatDaily:
      return true;
    case kRepeatWeekly:
      return days % 7 == 0;
    case kRepeatEveryTwoWeeks:
      return days % 14 == 0;
    case kRepeatMonthly:
      return same_day;
    case kRepeatYearly:
      return months % 12 == 0 && yearly_day;
    case kRepeatLastDayOfMonth:
      return month_end;
    case kRepeatQuarterly:
      return same_day && months % 3 == 0;
    case kRepeatLastDayOfQuarter:
      return month_end && d.month % 3 == 0;
    case kRepeatEveryNDays:
      return days % n == 0;
    case kRepeatEveryNWeeks:
      return days % (7 * n) == 0;
    case kRepeatEveryNMonths:
      return same_day && months % n == 0;
    case kRepeatEveryNYears:
      return months % (12 * n) == 0 && yearly_day;
    case kRepeatEveryNQuarters:
      return same_day && months % (3 * n) == 0;
    default:
      return false;
  }
}

bool KindShifts(std::int32_t kind) {
  return kind == kRepeatMonthly || kind == kRepeatYearly || kind == kRepeatLastDayOfMonth ||
         kind == kRepeatQuarterly || kind == kRepeatLastDayOfQuarter || kind == kRepeatEveryNDays ||
         kind == kRepeatEveryNMonths || kind == kRepeatEveryNYears || kind == kRepeatEveryNQuarters;
}

std::vector<std::int32_t> NaiveOccurrences(const Rule& rule, const NaiveDay& start,
                                           const std::vector<NaiveDay>& range,
                                           const std::vector<std::int32_t>& committed) {
  const std::set<std::int32_t> skip(committed.begin(), committed.end());
  std::set<std::int32_t> listed;
  std::vector<std::int32_t> out;
  for (const NaiveDay& day : range) {
    if (!IsRawOccurrence(rule, start, day)) continue;
    const bool shift = KindShifts(rule.kind) && rule.usePrecedingFriday;
    const std::int32_t n = shift ? day.friday_number : day.number;
    if (skip.contains(n) || !listed.insert(n).second) continue;
    out.push_back(n);
  }
  return out;
}

std::string Describe(const Rule& r, std::int32_t from, std::int32_t to) {
  return "start " + std::to_string(r.start) + " kind " + std::to_string(r.kind) + " N " +
         std::to_string(r.interval) + (r.usePrecedingFriday ? " shift" : "") + " range " +
         std::to_string(from) + ".." + std::to_string(to);
}

// ---- Calendar arithmetic ---------------------------------------------------------------------

TEST(ScheduleCalendar, DaysAndDateNumbersAgreeWithChronoOverFourCenturies) {
  const Day first = DayFromDateNumber(18000101);
  const Day last = DayFromDateNumber(22001231);
  ASSERT_EQ(first, ChronoDay(18000101).time_since_epoch().count());
  for (Day day = first; day <= last; ++day) {
    const chr::sys_days expected{chr::days{day}};
    const std::int32_t n = DateNumberFromDay(day);
    ASSERT_EQ(n, ChronoNumber(expected)) << day;
    ASSERT_EQ(DayFromDateNumber(n), day) << n;
    ASSERT_EQ(static_cast<unsigned>(Weekday(day)), chr::weekday{expected}.c_encoding()) << n;
  }
}

TEST(ScheduleCalendar, MonthArithmeticClampsTheDayThenAddsDays) {
  struct Row {
    std::int32_t date;
    int years, months, days;
    std::int32_t expected;
  };
  const Row rows[] = {
      {20280131, 0, 1, 0, 20280229},  // leap February
      {20090131, 0, 1, 0, 20090228},
      {20080229, 1, 0, 0, 20090228},  // leap day + 1 year
      {20080229, 4, 0, 0, 20120229},
      {20080301, 0, 0, -1, 20080229},  // the 1st + 0 months - 1 day
      {20080131, 0, 2, 0, 20080331},   // the clamp does not carry
      {20081031, 0, 4, 0, 20090228},   // months carry into years
      {20080331, 0, -1, 0, 20080229},  // negative months clamp too
      {20080115, 0, -13, 0, 20061215},
      {20080131, 0, 1, 1, 20080301},  // days are added after the clamp
      {20081231, 0, 0, 1, 20090101},
      {21000228, 0, 0, 1, 21000301},  // 2100 is not a leap year
      {20000228, 0, 0, 1, 20000229},  // 2000 is
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.date);
    EXPECT_EQ(DateNumberFromDay(
                  AddYearsMonthsDays(DayFromDateNumber(row.date), row.years, row.months, row.days)),
              row.expected);
  }
}

// ---- Recurrence against the naive walk ------------------------------------------------------

TEST(ScheduleRecurrence, EveryKindMatchesANaiveDayByDayWalk) {
  // Month ends, a leap day (yearly: back on the 29th in 2028), a Saturday, a Sunday, and a start
  // before the leap century 2000.
  const std::int32_t starts[] = {20070131, 20240229, 20080315, 20081102,
                                 20090330, 20101231, 20110228, 19991130};
  const std::int32_t plain_kinds[] = {1, 2, 3, 4, 5, 6, 10, 11};
  const std::int32_t every_n_kinds[] = {20, 21, 22, 23, 24};
  struct Range {
    int from_offset;  // days from S
    int length;       // days
    bool weekly_ok;   // the weekly kinds align ranges that start before S differently
  };
  const Range ranges[] = {{0, 4 * 366, true}, {400, 4 * 365 + 17, true}, {-45, 2 * 365, false}};

  int compared = 0;
  for (std::int32_t start : starts) {
    std::vector<Rule> rules;
    for (bool shift : {false, true}) {
      // The kinds without a multiplier must ignore it.
      for (std::int32_t kind : plain_kinds) rules.push_back({start, kind, 3, 1, 0, shift});
      for (std::int32_t kind : every_n_kinds) {
        for (std::int32_t n : {1, 2, 7}) rules.push_back({start, kind, n, 1, 0, shift});
      }
    }
    const NaiveDay s = NaiveDays(ChronoDay(start), ChronoDay(start)).front();
    for (const Range& range : ranges) {
      const chr::sys_days from = ChronoDay(start) + chr::days{range.from_offset};
      const chr::sys_days to = from + chr::days{range.length};
      const std::vector<NaiveDay> days = NaiveDays(from, to);
      const std::int32_t f = ChronoNumber(from);
      const std::int32_t t = ChronoNumber(to);
      for (const Rule& rule : rules) {
        if (!range.weekly_ok && (rule.kind == kRepeatWeekly || rule.kind == kRepeatEveryTwoWeeks)) {
          continue;
        }
        SCOPED_TRACE(Describe(rule, f, t));
        const std::vector<std::int32_t> all = NaiveOccurrences(rule, s, days, {});
        EXPECT_EQ(OccurrencesBetween(rule, {}, f, t), all);

        // Commit every third occurrence: the rest must still be listed, nothing committed.
        std::vector<std::int32_t> committed;
        for (std::size_t i = 0; i < all.size(); i += 3) committed.push_back(all[i]);
        EXPECT_EQ(OccurrencesBetween(rule, committed, f, t),
                  NaiveOccurrences(rule, s, days, committed));

        if (range.from_offset == 0 && all.size() > 1) {
          EXPECT_EQ(NextDate(rule, {}), all[0]);
          EXPECT_EQ(NextDate(rule, {all[0]}), all[1]);
        }
        ++compared;
      }
    }
  }
  EXPECT_GT(compared, 800);
}

TEST(ScheduleRecurrence, CasesWorthNaming) {
  struct Row {
    Rule rule;
    std::int32_t from, to;
    std::vector<std::int32_t> expected;
  };
  const std::vector<std::int32_t> none;
  const Row rows[] = {
      // Two anchors the day-by-day walk above must agree with. Monthly from the 31st: only months
      // of 31 days.
      {{20080131, kRepeatMonthly}, 20080101, 20080731, {20080131, 20080331, 20080531, 20080731}},
      // Yearly from 29 February: 28 February in common years.
      {{20080229, kRepeatYearly}, 20080101, 20101231, {20080229, 20090228, 20100228}},
      // Once: the first day of the range, not S.
      {{20080110}, 20080301, 20080401, {20080301}},
      {{20080110, kRepeatDaily}, 20080301, 20080228, none},
      // Weekly from three days before S: the remainder -3 moves the start to S + 7.
      {{20080110, kRepeatWeekly}, 20080107, 20080124, {20080117, 20080124}},
      // Weekly from a whole week before S: no remainder, so the day before S is listed.
      {{20080110, kRepeatWeekly}, 20080103, 20080117, {20080103, 20080110, 20080117}},
      // A multiplier below 1 and unknown kinds: nothing (and no endless loop).
      {{20080110, kRepeatEveryNDays, 0}, 20080101, 20081231, none},
      {{20080110, kRepeatEveryNMonths, -2}, 20080101, 20081231, none},
      {{20080110, 7}, 20080101, 20081231, none},
      {{20080110, 25}, 20080101, 20081231, none},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(Describe(row.rule, row.from, row.to));
    EXPECT_EQ(OccurrencesBetween(row.rule, {}, row.from, row.to), row.expected);
  }
}

// ---- End rules and the due range ------------------------------------------------------------

platform::LocalTime On(std::int32_t n) { return LocalTimeFromDay(DayFromDateNumber(n)); }

TEST(ScheduleEndRules, DueDatesByRule) {
  struct Row {
    Rule rule;
    std::vector<std::int32_t> committed;
    std::int32_t day;
    std::vector<std::int32_t> expected;
  };
  const std::vector<std::int32_t> none;
  const Rule shifted_monthly{20080215, kRepeatMonthly, 1, kUntilForever, 0, true};
  const Row rows[] = {
      // Once: due from S on, dated S, until committed.
      {{20080110}, none, 20080301, {20080110}},
      {{20080110}, none, 20080109, none},
      {{20080110}, {20080110}, 20080301, none},
      {{20080103, kRepeatWeekly}, {20080103}, 20080120, {20080110, 20080117}},
      // Saturday 15 March is due on Friday 14 March, not on the Thursday, and not at all
      // without the shift.
      {shifted_monthly, {20080215}, 20080314, {20080314}},
      {shifted_monthly, {20080215}, 20080313, none},
      {{20080215, kRepeatMonthly}, {20080215}, 20080314, none},
      // Count 3 with one committed: at most two more; none once the count is reached.
      {{20080101, kRepeatDaily, 1, kUntilCount, 3}, {20080101}, 20080301, {20080102, 20080103}},
      {{20080101, kRepeatDaily, 1, kUntilCount, 1}, {20080101}, 20080301, none},
      // Until a date before the day: up to that date only.
      {{20080101, kRepeatWeekly, 1, kUntilDate, 20080120},
       none,
       20080301,
       {20080101, 20080108, 20080115}},
      // Until a date after a Friday: the extension stops at the last day.
      {{20080312, kRepeatDaily, 1, kUntilDate, 20080315, true},
       none,
       20080314,
       {20080312, 20080313, 20080314, 20080315}},
      {{20080312, kRepeatDaily, 1, kUntilDate, 20080320, true},
       none,
       20080314,
       {20080312, 20080313, 20080314, 20080315, 20080316}},
      {{20080316, kRepeatMonthly, 1, kUntilDate, 20080316, true}, none, 20080314, {20080314}},
      {{20080316, kRepeatMonthly, 1, kUntilDate, 20080315, true}, none, 20080314, none},
      {{20080101, kRepeatDaily, 1, 4}, none, 20080301, none},  // unknown end rule
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(Describe(row.rule, row.day, row.day));
    EXPECT_EQ(DueDates(row.rule, row.committed, On(row.day)), row.expected);
    EXPECT_EQ(CountDueDates(row.rule, row.committed, On(row.day), 1'000'000),
              static_cast<std::int64_t>(row.expected.size()));
    EXPECT_EQ(CountDueDates(row.rule, row.committed, On(row.day), 1), row.expected.empty() ? 0 : 1);
  }
}

TEST(ScheduleEndRules, NextDateByRule) {
  struct Row {
    Rule rule;
    std::vector<std::int32_t> committed;
    std::int32_t expected;
  };
  const Rule shifted_monthly{20080315, kRepeatMonthly, 1, kUntilForever, 0, true};
  const Row rows[] = {
      {{20080110}, {}, -1},  // once never has a next date
      {shifted_monthly, {}, 20080314},
      {shifted_monthly, {20080314}, 20080415},
      {{20080110, kRepeatDaily, 1, kUntilCount, 2}, {20080110}, 20080111},
      {{20080110, kRepeatDaily, 1, kUntilCount, 2}, {20080110, 20080111}, -1},
      {{20080110, kRepeatWeekly, 1, kUntilDate, 20080117}, {20080110}, 20080117},
      {{20080110, kRepeatWeekly, 1, kUntilDate, 20080116}, {20080110}, -1},
      {{20080110, kRepeatDaily, 1, kUntilDate, 20080101}, {}, -1},  // until before S
      {{20080110, kRepeatDaily, 1, 0}, {}, -1},                     // unknown end rule
      {{20080110, 12}, {}, -1},                                     // unknown kind
      {{20080110, kRepeatEveryNWeeks, 0}, {}, -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(Describe(row.rule, 0, 0));
    EXPECT_EQ(NextDate(row.rule, row.committed), row.expected);
  }
}

}  // namespace
}  // namespace folvant::schedule
