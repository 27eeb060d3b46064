#include "folvant/model/ZELMAccountScheduleCalendar.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace folvant::schedule {
namespace {

// The smallest k >= 0 with k x step >= distance (step > 0).
std::int64_t FirstStepAtOrAfter(std::int64_t distance, std::int64_t step) {
  return distance > 0 ? (distance + step - 1) / step : 0;
}

std::int64_t MonthIndex(Day day) {
  const CivilDate c = CivilFromDay(day);
  return c.year * 12 + (c.month - 1);
}

// How the candidates of one kind are laid out; the weekly kinds and the once kind have their
// own range arithmetic and are not described here.
enum class Shape {
  kDays,         // S + k x step days
  kMonths,       // S + k x step months, clamped
  kMonthEnds,    // the last day of S's month, then of each following month
  kQuarterEnds,  // the last day of the quarter holding S + 3k months
};

struct Stepping {
  Shape shape;
  std::int64_t step;  // days or months
  bool shifts;        // weekend shift applies (when the schedule asks for it)
  bool dayCheck;      // only candidates on S's day of month count
  bool dedup;         // two candidates shifted onto one day give one occurrence
};

// A repeatInterval below 1 would make the every-N kinds stand still on S and never pass the
// range's end; a hand-edited file must not hang the program, so such a rule has no occurrences.
std::optional<Stepping> SteppingFor(const Rule& rule) {
  const std::int64_t n = rule.interval;
  switch (rule.kind) {
    case kRepeatDaily:
      return Stepping{Shape::kDays, 1, false, false, false};
    case kRepeatMonthly:
      return Stepping{Shape::kMonths, 1, true, true, false};
    case kRepeatYearly:
      return Stepping{Shape::kMonths, 12, true, false, false};
    case kRepeatLastDayOfMonth:
      return Stepping{Shape::kMonthEnds, 1, true, false, false};
    case kRepeatQuarterly:
      return Stepping{Shape::kMonths, 3, true, true, false};
    case kRepeatLastDayOfQuarter:
      return Stepping{Shape::kQuarterEnds, 3, true, false, false};
    case kRepeatEveryNDays:
      if (n < 1) return std::nullopt;
      return Stepping{Shape::kDays, n, true, false, true};
    case kRepeatEveryNWeeks:
      if (n < 1) return std::nullopt;
      return Stepping{Shape::kDays, 7 * n, false, false, false};
    case kRepeatEveryNMonths:
      if (n < 1) return std::nullopt;
      return Stepping{Shape::kMonths, n, true, true, false};
    case kRepeatEveryNYears:
      if (n < 1) return std::nullopt;
      return Stepping{Shape::kMonths, 12 * n, true, false, false};
    case kRepeatEveryNQuarters:
      if (n < 1) return std::nullopt;
      return Stepping{Shape::kMonths, 3 * n, true, true, false};
    default:
      return std::nullopt;
  }
}

// The one loop behind listing, counting and the next date. Visits the occurrences of [from, to]
// that are not committed, ascending; `visit(date_number, day)` returns false to stop. For each
// candidate, in this order: the stop test, the range test, the day check, the weekend shift,
// the committed test on the shifted date, and (every N days) the duplicate test.
template <typename Visit>
void ForEachOccurrence(const Rule& rule, const std::vector<std::int32_t>& committed, Day from,
                       Day to, Visit&& visit) {
  if (to < from) return;
  const Day start = DayFromDateNumber(rule.start);

  if (rule.kind == kRepeatOnce) {
    // The one occurrence carries the first day of the range, whatever S is.
    if (committed.empty()) visit(DateNumberFromDay(from), from);
    return;
  }

  if (rule.kind == kRepeatWeekly || rule.kind == kRepeatEveryTwoWeeks) {
    // Align both ends to the period from S. The remainder truncates toward zero, so for a range
    // that starts before S the first day lands one period late (S - 3 days gives S + 7 days)
    // and one that starts a whole number of periods before S lists days before S. Both are
    // long-standing behaviour that saved registers depend on.
    const std::int64_t period = rule.kind == kRepeatWeekly ? 7 : 14;
    Day first = from;
    Day last = to;
    if (const std::int64_t r = (from - start) % period; r != 0) first += period - r;
    if (const std::int64_t r = (to - start) % period; r != 0) last -= r;
    for (Day d = first; d <= last; d += period) {
      const std::int32_t n = DateNumberFromDay(d);
      if (!DateIsCommitted(committed, n) && !visit(n, d)) return;
    }
    return;
  }

  const std::optional<Stepping> stepping = SteppingFor(rule);
  if (!stepping) return;
  const Stepping& st = *stepping;
  const bool shift = st.shifts && rule.usePrecedingFriday;
  const int start_day_of_month = CivilFromDay(start).day;
  const Day first_of_next_month = AddYearsMonthsDays(start - (start_day_of_month - 1), 0, 1, 0);

  std::int64_t k = 0;
  switch (st.shape) {
    case Shape::kDays:
      k = FirstStepAtOrAfter(from - start, st.step);
      break;
    case Shape::kMonths:
    case Shape::kMonthEnds:
      k = FirstStepAtOrAfter(MonthIndex(from) - MonthIndex(start), st.step);
      break;
    case Shape::kQuarterEnds:
      // A quarter's last day is at most two months after any day of that quarter.
      k = FirstStepAtOrAfter(MonthIndex(from) - MonthIndex(start) - 2, st.step);
      break;
  }

  std::optional<Day> last_listed;
  for (;; ++k) {
    Day candidate = 0;
    switch (st.shape) {
      case Shape::kDays:
        candidate = start + k * st.step;
        if (candidate > to) return;
        break;
      case Shape::kMonths:
        candidate = AddYearsMonthsDays(start, 0, k * st.step, 0);
        if (candidate > to) return;
        break;
      case Shape::kMonthEnds:
        candidate = AddYearsMonthsDays(first_of_next_month, 0, k, -1);
        if (candidate > to + 1) return;
        break;
      case Shape::kQuarterEnds: {
        const Day anchor = AddYearsMonthsDays(start, 0, k * st.step, 0);
        if (anchor > to) return;
        candidate = LastDayOfQuarter(anchor);
        break;
      }
    }
    if (candidate < from || candidate > to) continue;
    if (st.dayCheck && CivilFromDay(candidate).day != start_day_of_month) continue;
    const Day date = shift ? PrecedingFriday(candidate) : candidate;
    const std::int32_t n = DateNumberFromDay(date);
    if (DateIsCommitted(committed, n)) continue;
    // Shifted dates never decrease, so a repeat can only be the last date listed.
    if (st.dedup && last_listed == date) continue;
    last_listed = date;
    if (!visit(n, date)) return;
  }
}

// The range of occurrences due by a day, and how many of them the end rule lets through.
struct DueRange {
  Day from;
  Day to;
  std::int64_t limit;  // most occurrences the end rule allows
};

// Nothing when the end rule leaves nothing due. The range runs from S to the due day, which
// moves onto the coming Sunday from a Friday or Saturday when weekend occurrences shift onto
// the Friday: those occurrences are due on the Friday already.
std::optional<DueRange> DueRangeFor(const Rule& rule, std::size_t committed_count,
                                    platform::LocalTime when) {
  const Day day = DayFromLocalTime(when);
  const Day start = DayFromDateNumber(rule.start);
  const int weekday = Weekday(day);
  constexpr std::int64_t kUnlimited = std::numeric_limits<std::int64_t>::max();
  const auto extended = [&] {
    if (!rule.usePrecedingFriday) return day;
    if (weekday == 5) return day + 2;
    if (weekday == 6) return day + 1;
    return day;
  };
  switch (rule.untilType) {
    case kUntilForever: {
      const Day to = extended();
      if (to < start) return std::nullopt;
      return DueRange{start, to, kUnlimited};
    }
    case kUntilCount: {
      const auto count = static_cast<std::int64_t>(committed_count);
      if (count >= rule.until) return std::nullopt;
      const Day to = extended();
      if (to < start) return std::nullopt;
      return DueRange{start, to, rule.until - count};
    }
    case kUntilDate: {
      const Day until = DayFromDateNumber(rule.until);
      if (day >= until && day >= start) return DueRange{start, until, kUnlimited};
      // The extension never reaches past the last day.
      Day to = day;
      if (rule.usePrecedingFriday) {
        const std::int64_t gap = day - until;
        if (weekday == 5 && gap <= -2) to = day + 2;
        if (weekday == 5 && gap == -1) to = day + 1;
        if (weekday == 6 && gap <= -1) to = day + 1;
      }
      if (to < start) return std::nullopt;
      return DueRange{start, to, kUnlimited};
    }
    default:
      return std::nullopt;
  }
}

}  // namespace

Day DayFromLocalTime(platform::LocalTime when) {
  return std::chrono::floor<std::chrono::days>(when).time_since_epoch().count();
}

platform::LocalTime LocalTimeFromDay(Day day) {
  return platform::LocalTime{std::chrono::days{day}};
}

Day AddYearsMonthsDays(Day day, std::int64_t years, std::int64_t months, std::int64_t days) {
  const CivilDate c = CivilFromDay(day);
  const std::int64_t total = c.year * 12 + (c.month - 1) + years * 12 + months;
  const std::int64_t y = platform::FloorDiv(total, 12);
  const int m = static_cast<int>(total - y * 12) + 1;
  return DayFromCivil(y, m, std::min(c.day, platform::MonthLength(y, m))) + days;
}

Day LastDayOfQuarter(Day day) {
  const CivilDate c = CivilFromDay(day);
  const int last_month = (c.month - 1) / 3 * 3 + 3;
  return DayFromCivil(c.year, last_month + 1, 1) - 1;
}

Day PrecedingFriday(Day day) {
  switch (Weekday(day)) {
    case 6:
      return day - 1;
    case 0:
      return day - 2;
    default:
      return day;
  }
}

Day DistantFuture() { return DayFromCivil(4001, 1, 1); }

bool DateIsCommitted(const std::vector<std::int32_t>& committed, std::int32_t n) {
  if (committed.empty() || n < committed.front() || n > committed.back()) return false;
  std::size_t lo = 0;
  std::size_t hi = committed.size() - 1;
  std::size_t mid = hi / 2;
  while (mid - lo > 2) {
    if (n == committed[mid]) return true;
    if (n > committed[mid]) {
      lo = mid;
      mid = lo + (hi - lo) / 2;
    } else {
      hi = mid;
      mid = lo + (mid - lo) / 2;
    }
  }
  for (std::size_t i = lo; i <= hi; ++i) {
    if (committed[i] == n) return true;
  }
  return false;
}

std::vector<std::int32_t> OccurrencesBetween(const Rule& rule,
                                             const std::vector<std::int32_t>& committed,
                                             std::int32_t from, std::int32_t to) {
  std::vector<std::int32_t> dates;
  ForEachOccurrence(rule, committed, DayFromDateNumber(from), DayFromDateNumber(to),
                    [&](std::int32_t n, Day) {
                      dates.push_back(n);
                      return true;
                    });
  return dates;
}

std::vector<std::int32_t> DueDates(const Rule& rule, const std::vector<std::int32_t>& committed,
                                   platform::LocalTime when) {
  std::vector<std::int32_t> dates;
  const std::optional<DueRange> range = DueRangeFor(rule, committed.size(), when);
  if (!range) return dates;
  ForEachOccurrence(rule, committed, range->from, range->to, [&](std::int32_t n, Day) {
    dates.push_back(n);
    return static_cast<std::int64_t>(dates.size()) < range->limit;
  });
  return dates;
}

std::int64_t CountDueDates(const Rule& rule, const std::vector<std::int32_t>& committed,
                           platform::LocalTime when, std::int64_t limit) {
  const std::optional<DueRange> range = DueRangeFor(rule, committed.size(), when);
  if (!range || limit <= 0) return 0;
  limit = std::min(limit, range->limit);
  std::int64_t count = 0;
  ForEachOccurrence(rule, committed, range->from, range->to,
                    [&](std::int32_t, Day) { return ++count < limit; });
  return count;
}

std::int32_t NextDate(const Rule& rule, const std::vector<std::int32_t>& committed) {
  // A one-time schedule never reports a next date.
  if (rule.kind == kRepeatOnce) return -1;
  const Day start = DayFromDateNumber(rule.start);
  std::optional<Day> found;
  std::int32_t found_number = -1;
  ForEachOccurrence(rule, committed, start, DistantFuture(), [&](std::int32_t n, Day day) {
    found = day;
    found_number = n;
    return false;
  });
  if (!found) return -1;
  switch (rule.untilType) {
    case kUntilForever:
      return found_number;
    case kUntilCount:
      return static_cast<std::int64_t>(committed.size()) >= rule.until ? -1 : found_number;
    case kUntilDate: {
      const Day until = DayFromDateNumber(rule.until);
      return *found > until || until < start ? -1 : found_number;
    }
    default:
      return -1;
  }
}

}  // namespace folvant::schedule
