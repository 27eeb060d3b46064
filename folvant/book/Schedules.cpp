#include "folvant/book/Schedules.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

namespace sc = schedule;
using Kind = BookError::Kind;
using platform::FormatIsoDate;

constexpr const char* kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};
constexpr const char* kMonths[] = {"January",   "February", "March",    "April",
                                   "May",       "June",     "July",     "August",
                                   "September", "October",  "November", "December"};

Unexpected<BookError> Invalid(std::string message) {
  return Unexpected{BookError::Of(Kind::kInvalid, std::move(message))};
}

std::optional<std::int32_t> Next(const ZELMAccountSchedule& s) {
  // A one-time schedule reports no next date of its own; its day is the next until entered.
  if (s.GetRepeatIntervalType() == sc::kRepeatOnce) {
    if (!s.GetCommittedDates().empty()) return std::nullopt;
    return s.GetDate();
  }
  const std::int32_t next = s.NextEntryDate();
  return next < 0 ? std::nullopt : std::optional<std::int32_t>(next);
}

platform::LocalTime LocalDay(std::int32_t date) {
  return sc::LocalTimeFromDay(sc::DayFromDateNumber(date));
}

// "every 2 weeks", "every month": the step, with the count only when it is not 1.
std::string Every(std::int32_t n, const char* unit) {
  if (n == 1) return std::string("every ") + unit;
  return "every " + std::to_string(n) + " " + unit + "s";
}

std::string EndInWords(const ZELMAccountSchedule& s) {
  switch (s.GetRepeatUntilType()) {
    case sc::kUntilForever:
      return "forever";
    case sc::kUntilCount:
      return std::to_string(s.GetRepeatUntil()) + (s.GetRepeatUntil() == 1 ? " time" : " times");
    case sc::kUntilDate:
      return "until " + FormatIsoDate(s.GetRepeatUntil());
    default:
      return "never (unknown end rule " + std::to_string(s.GetRepeatUntilType()) + ")";
  }
}

bool ParseInt(std::string_view text, std::int32_t& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// The unit, singular and lower case; empty when unknown.
std::string Unit(std::string_view text) {
  std::string unit = platform::AsciiLower(text);
  if (unit.size() > 1 && unit.back() == 's') unit.pop_back();
  if (unit == "once") return unit;
  for (const char* known : {"day", "week", "month", "quarter", "year"}) {
    if (unit == known) return unit;
  }
  return {};
}

// The first day on or after `from` that `matches`, looking no further than `limit` days.
std::optional<sc::Day> FirstDayFrom(sc::Day from, int limit,
                                    const std::function<bool(sc::Day)>& matches) {
  for (int i = 0; i <= limit; ++i) {
    if (matches(from + i)) return from + i;
  }
  return std::nullopt;
}

BookResult<std::shared_ptr<ZELMAccountSchedule>> ScheduleOf(const ZELMAccount& account,
                                                            std::int32_t number) {
  if (auto s = account.ScheduleForNumber(number)) return s;
  return Unexpected{BookError::Of(
      Kind::kNotFound, "\"" + account.GetName() + "\" has no schedule " + std::to_string(number))};
}

// The entry of the occurrence on `date`, or of the earliest one due today.
BookResult<std::shared_ptr<ZELMAccountEntry>> Occurrence(const ZELMAccountSchedule& s,
                                                         const std::string& which,
                                                         std::optional<std::int32_t> date) {
  if (!date) {
    const std::int32_t today = platform::Today();
    auto due = s.EvaluateForDate(LocalDay(today));
    if (due.empty()) {
      return Unexpected{
          BookError::Of(Kind::kNotFound, which + " has nothing due by " + FormatIsoDate(today))};
    }
    return due.front();
  }
  if (s.DateIsCommitted(*date)) {
    return Unexpected{BookError::Of(
        Kind::kExists,
        "the occurrence of " + which + " on " + FormatIsoDate(*date) + " is already entered")};
  }
  // An occurrence moves back at most two days off a weekend, so everything due two days later
  // holds the occurrence dated `date` if there is one; the end rule applies too.
  const std::int32_t later = sc::DateNumberFromDay(sc::DayFromDateNumber(*date) + 2);
  for (auto& candidate : s.EvaluateForDate(LocalDay(later))) {
    if (candidate->GetDate() == *date) return std::move(candidate);
  }
  return Invalid(FormatIsoDate(*date) + " is not a date of " + which + " (" + RuleInWords(s) + ")");
}

// The name of a transfer schedule's other account; empty for a schedule that is no transfer.
std::string TransferName(Book& book, const ZELMAccountSchedule& s) {
  if (!s.IsLinked()) return {};
  if (auto other = book.AccountWithNumber(s.GetLinkedAccount())) return (*other)->GetName();
  return "account " + std::to_string(s.GetLinkedAccount());
}

// Sets the template fields of a schedule being added or edited, with its transfer link; a
// refusal changes nothing.
std::optional<BookError> SetEntryFields(Book& book, ZELMAccount& a, ZELMAccountSchedule& s,
                                        bool adding, const ScheduledEntry& entry) {
  const std::string which = "schedule " + std::to_string(s.GetNumber()) + " of \"" + a.GetName() + "\"";
  EntryFields fields = entry.fields;
  fields.date.reset();
  fields.checkNumber.reset();
  fields.resolved.reset();

  // The transfer link it will have: none, the one it has, or a new one.
  std::shared_ptr<ZELMAccount> other;
  const bool unlink = entry.transferTo && entry.transferTo->empty();
  if (entry.transferTo && !entry.transferTo->empty()) {
    auto found = book.FindAccount(*entry.transferTo);
    if (!found) return found.error();
    other = *found;
    if (other.get() == &a) return BookError::Of(Kind::kInvalid, "a transfer needs two different accounts");
  } else if (!adding && !unlink && s.IsLinked()) {
    if (auto found = book.AccountWithNumber(s.GetLinkedAccount())) other = *found;
  }
  const bool transfer = other != nullptr || (!adding && !unlink && s.IsLinked());
  if (entry.toAmount && !transfer) {
    return BookError::Of(Kind::kInvalid, "an amount the other account receives is for a transfer schedule only");
  }
  if (transfer) {
    if ((fields.splits && !fields.splits->empty()) ||
        (!fields.splits && !s.splitLineItems().empty())) {
      return BookError::Of(Kind::kInvalid, "a transfer schedule cannot be split");
    }
    // The amount leaves this account, whatever sign it was given with.
    if (fields.amount) {
      fields.amount = -std::fabs(*fields.amount);
    } else if (!adding && s.GetAmount() > 0) {
      fields.amount = -s.GetAmount();
    }
    if (other && (adding || entry.transferTo)) {
      if (!fields.toFrom) fields.toFrom = other->GetName();
      if (!fields.type) {
        if (auto t = TransferType(a, true)) fields.type = t->GetName();
      }
    }
  }
  double exchanged = s.GetLinkedExchangedAmount();
  if (other && (entry.toAmount || fields.amount)) {
    const double amount = fields.amount ? -*fields.amount : -s.GetAmount();
    auto received = AmountReceived(a, *other, amount, entry.toAmount);
    if (!received) return received.error();
    // Only an amount given to receive is kept; otherwise each occurrence converts at its rate.
    exchanged = entry.toAmount ? -*received : 0.0;
  }
  if (auto refused = ApplyToTemplate(book, a, s, adding, fields, which, entry.newCategory)) {
    return refused;
  }
  if (unlink) {
    s.SetIsLinked(false);
    s.SetLinkedAccount(-1);
    s.SetLinkedEntry(-1);
    s.SetLinkedExchangedAmount(0.0);
  } else if (other) {
    s.SetIsLinked(true);
    s.SetLinkedAccount(other->GetNumber());
    s.SetLinkedEntry(-1);
    s.SetLinkedExchangedAmount(exchanged);
  }
  return std::nullopt;
}

}  // namespace

BookResult<std::shared_ptr<ZELMAccountSchedule>> BuildSchedule(const Recurrence& r) {
  const std::string unit = Unit(r.unit);
  if (unit.empty()) return Invalid("the unit must be day, week, month, quarter or year");
  const std::int32_t n = r.every;
  if (n < 1) return Invalid("every " + std::to_string(n) + ": the count must be 1 or more");
  const std::string on = platform::AsciiLower(r.on);
  if (r.start <= 0) return Invalid("a schedule needs its first day");
  sc::Day start = sc::DayFromDateNumber(r.start);
  std::int32_t kind = sc::kRepeatOnce;

  if (unit == "once") {
    if (!on.empty() || r.until || r.times > 0 || r.weekendsBefore) {
      return Invalid("a one-time schedule takes no day to fall on, no end and no weekend rule");
    }
  } else if (unit == "day") {
    if (!on.empty()) return Invalid("a daily schedule takes no day to fall on");
    // The daily kind never moves off a weekend; every N days does.
    kind = (n == 1 && !r.weekendsBefore) ? sc::kRepeatDaily : sc::kRepeatEveryNDays;
  } else if (unit == "week") {
    if (r.weekendsBefore) {
      return Invalid("a weekly schedule keeps its weekday: it does not move off weekends");
    }
    if (!on.empty()) {
      int wanted = -1;
      for (int d = 0; d < 7; ++d) {
        if (on.size() >= 3 && platform::AsciiLower(kWeekdays[d]).starts_with(on)) wanted = d;
      }
      if (wanted < 0) return Invalid("\"" + r.on + "\" is not a weekday");
      start = *FirstDayFrom(start, 6, [wanted](sc::Day d) { return sc::Weekday(d) == wanted; });
    }
    kind = n == 1 ? sc::kRepeatWeekly : n == 2 ? sc::kRepeatEveryTwoWeeks : sc::kRepeatEveryNWeeks;
  } else if (unit == "month" || unit == "quarter") {
    const bool month = unit == "month";
    if (on == "last") {
      if (n != 1) return Invalid("the last day needs every 1 " + unit);
      kind = month ? sc::kRepeatLastDayOfMonth : sc::kRepeatLastDayOfQuarter;
    } else {
      if (!on.empty()) {
        std::int32_t day = 0;
        if (!ParseInt(on, day) || day < 1 || day > 31) {
          return Invalid("\"" + r.on + "\" is not a day of the month (1-31 or last)");
        }
        start =
            *FirstDayFrom(start, 366, [day](sc::Day d) { return sc::CivilFromDay(d).day == day; });
      }
      if (month) {
        kind = n == 1 ? sc::kRepeatMonthly : sc::kRepeatEveryNMonths;
      } else {
        kind = n == 1 ? sc::kRepeatQuarterly : sc::kRepeatEveryNQuarters;
      }
    }
  } else {  // year
    if (!on.empty()) {
      std::int32_t month = 0, day = 0;
      const auto dash = on.find('-');
      const std::string not_a_day = "\"" + r.on + "\" is not a day of the year (MM-DD)";
      if (dash == std::string::npos || !ParseInt(std::string_view(on).substr(0, dash), month) ||
          !ParseInt(std::string_view(on).substr(dash + 1), day) || month < 1 || month > 12 ||
          day < 1 || day > 31) {
        return Invalid(not_a_day);
      }
      const auto found = FirstDayFrom(start, 366 * 4, [month, day](sc::Day d) {
        const sc::CivilDate c = sc::CivilFromDay(d);
        return c.month == month && c.day == day;
      });
      if (!found) return Invalid(not_a_day);
      start = *found;
    }
    kind = n == 1 ? sc::kRepeatYearly : sc::kRepeatEveryNYears;
  }
  const std::int32_t start_number = sc::DateNumberFromDay(start);

  std::int32_t until_type = sc::kUntilForever, until = 0;
  if (kind == sc::kRepeatOnce) {
    // nothing ends a single occurrence
  } else if (r.until) {
    if (*r.until < start_number) {
      return Invalid("until " + FormatIsoDate(*r.until) + " is before the start " +
                     FormatIsoDate(start_number));
    }
    until_type = sc::kUntilDate;
    until = *r.until;
  } else if (r.times > 0) {
    until_type = sc::kUntilCount;
    until = r.times;
  }

  auto s = std::make_shared<ZELMAccountSchedule>();
  s->SetDate(start_number);
  s->SetRepeatIntervalType(kind);
  s->SetRepeatInterval(kind >= sc::kRepeatEveryNDays ? n : 1);
  s->SetRepeatUntilType(until_type);
  s->SetRepeatUntil(until);
  s->SetUsePrecedingFriday(r.weekendsBefore);
  return s;
}

Recurrence RecurrenceOf(const ZELMAccountSchedule& s) {
  Recurrence r;
  r.start = s.GetDate();
  const std::int32_t n = std::max(1, s.GetRepeatInterval());
  bool shifts = true;
  switch (s.GetRepeatIntervalType()) {
    case sc::kRepeatOnce: r.unit = "once", shifts = false; break;
    case sc::kRepeatDaily: r.unit = "day", shifts = false; break;
    case sc::kRepeatWeekly: r.unit = "week", shifts = false; break;
    case sc::kRepeatEveryTwoWeeks: r.unit = "week", r.every = 2, shifts = false; break;
    case sc::kRepeatMonthly: r.unit = "month"; break;
    case sc::kRepeatYearly: r.unit = "year"; break;
    case sc::kRepeatLastDayOfMonth: r.unit = "month", r.on = "last"; break;
    case sc::kRepeatQuarterly: r.unit = "quarter"; break;
    case sc::kRepeatLastDayOfQuarter: r.unit = "quarter", r.on = "last"; break;
    case sc::kRepeatEveryNDays: r.unit = "day", r.every = n; break;
    case sc::kRepeatEveryNWeeks: r.unit = "week", r.every = n, shifts = false; break;
    case sc::kRepeatEveryNMonths: r.unit = "month", r.every = n; break;
    case sc::kRepeatEveryNYears: r.unit = "year", r.every = n; break;
    case sc::kRepeatEveryNQuarters: r.unit = "quarter", r.every = n; break;
    default: break;
  }
  r.weekendsBefore = shifts && s.GetUsePrecedingFriday();
  if (r.unit != "once") {
    if (s.GetRepeatUntilType() == sc::kUntilDate) r.until = s.GetRepeatUntil();
    if (s.GetRepeatUntilType() == sc::kUntilCount) r.times = std::max(1, s.GetRepeatUntil());
  }
  return r;
}

std::string RecurrenceInWords(const ZELMAccountSchedule& s) {
  const std::int32_t start = s.GetDate();
  const sc::CivilDate civil = sc::CivilFromDay(sc::DayFromDateNumber(start));
  const std::string weekday = kWeekdays[sc::Weekday(sc::DayFromDateNumber(start))];
  const std::string day_of_month = "on day " + std::to_string(civil.day);
  const std::string day_of_year =
      "on " + std::to_string(civil.day) + " " + kMonths[(civil.month - 1) % 12];
  const std::int32_t n = s.GetRepeatInterval();
  switch (s.GetRepeatIntervalType()) {
    case sc::kRepeatOnce:
      return "once on " + FormatIsoDate(start);
    case sc::kRepeatDaily:
      return "every day";
    case sc::kRepeatWeekly:
      return "every week on " + weekday;
    case sc::kRepeatEveryTwoWeeks:
      return "every 2 weeks on " + weekday;
    case sc::kRepeatMonthly:
      return "every month " + day_of_month;
    case sc::kRepeatYearly:
      return "every year " + day_of_year;
    case sc::kRepeatLastDayOfMonth:
      return "every month on its last day";
    case sc::kRepeatQuarterly:
      return "every 3 months " + day_of_month;
    case sc::kRepeatLastDayOfQuarter:
      return "every quarter on its last day";
    case sc::kRepeatEveryNDays:
      return Every(n, "day");
    case sc::kRepeatEveryNWeeks:
      return Every(n, "week") + " on " + weekday;
    case sc::kRepeatEveryNMonths:
      return Every(n, "month") + " " + day_of_month;
    case sc::kRepeatEveryNYears:
      return Every(n, "year") + " " + day_of_year;
    case sc::kRepeatEveryNQuarters:
      return Every(n, "quarter") + " " + day_of_month;
    default:
      return "never (unknown recurrence " + std::to_string(s.GetRepeatIntervalType()) + ")";
  }
}

std::string RuleInWords(const ZELMAccountSchedule& s) {
  std::string words = RecurrenceInWords(s);
  if (s.GetRepeatIntervalType() != sc::kRepeatOnce) words += ", " + EndInWords(s);
  if (s.GetUsePrecedingFriday()) words += ", weekends to the Friday before";
  return words;
}

BookResult<ScheduleListing> ListSchedules(Book& book, std::string_view name) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  std::vector<std::shared_ptr<ZELMAccountSchedule>> schedules = (*account)->GetSchedules();
  // By next date (a one-time schedule's day counts), those with none last, then by number.
  std::stable_sort(schedules.begin(), schedules.end(), [](const auto& a, const auto& b) {
    const auto x = Next(*a), y = Next(*b);
    if (x.has_value() != y.has_value()) return x.has_value();
    if (x != y) return *x < *y;
    return a->GetNumber() < b->GetNumber();
  });
  ScheduleListing listing{*account, {}};
  for (const auto& s : schedules) {
    ScheduleRow row;
    row.number = s->GetNumber();
    row.start = s->GetDate();
    row.next = Next(*s);
    row.rule = RuleInWords(*s);
    row.recurrence = RecurrenceOf(*s);
    row.kind = s->GetRepeatIntervalType();
    row.interval = s->GetRepeatInterval();
    row.untilType = s->GetRepeatUntilType();
    row.until = s->GetRepeatUntil();
    row.weekendsBefore = s->GetUsePrecedingFriday();
    row.committed = s->GetCommittedDates().size();
    row.check = s->IsCheck();
    row.type = EntryTypeName(**account, *s);
    row.category = EntryCategoryName(**account, *s);
    row.toFrom = s->GetToFrom();
    row.description = s->GetDescription();
    row.notes = s->GetNotes();
    row.amount = s->GetAmount();
    row.taxDeductible = s->GetTaxDeductible();
    for (const auto& item : s->splitLineItems()) {
      auto c = (*account)->accountEntryCategoryForNumber(item->category());
      row.splits.push_back(
          {c ? c->fullName() : std::string(), item->description(), item->toFrom(), item->amount()});
    }
    row.transferTo = TransferName(book, *s);
    listing.rows.push_back(std::move(row));
  }
  return listing;
}

BookResult<std::vector<DueOccurrence>> DueOccurrences(Book& book,
                                                      const std::optional<std::string>& name,
                                                      std::int32_t date) {
  std::vector<std::shared_ptr<ZELMAccount>> accounts;
  if (name) {
    auto account = book.FindAccount(*name);
    if (!account) return Unexpected{account.error()};
    accounts.push_back(*account);
  } else {
    accounts = book.LoadAllAccounts();
  }
  std::vector<DueOccurrence> due;
  for (const auto& account : accounts) {
    // A locked account shows nothing, its schedules included, until its password is given.
    if (!account->IsAuthenticated()) continue;
    for (const auto& s : account->GetSchedules()) {
      for (const auto& e : s->EvaluateForDate(LocalDay(date))) {
        due.push_back({account, s->GetNumber(), e->GetDate(), e->IsCheck(),
                       EntryTypeName(*account, *e), EntryCategoryName(*account, *e), e->GetToFrom(),
                       e->GetDescription(), e->GetAmount(), TransferName(book, *s)});
      }
    }
  }
  std::stable_sort(due.begin(), due.end(),
                   [](const DueOccurrence& a, const DueOccurrence& b) { return a.date < b.date; });
  return due;
}

BookResult<EnteredOccurrence> EnterOccurrence(Book& book, std::string_view name,
                                              std::int32_t number,
                                              std::optional<std::int32_t> date) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto s = ScheduleOf(a, number);
  if (!s) return Unexpected{s.error()};
  const std::string which = "schedule " + std::to_string(number) + " of \"" + a.GetName() + "\"";
  auto occurrence = Occurrence(**s, which, date);
  if (!occurrence) return Unexpected{occurrence.error()};
  const std::shared_ptr<ZELMAccountEntry> entry = *occurrence;

  // A transfer schedule's other account, ready to change, and what it receives.
  std::shared_ptr<ZELMAccount> other;
  double received = 0.0;
  if (entry->IsLinked()) {
    auto found = book.AccountWithNumber(entry->GetLinkedAccount());
    if (!found) {
      if (found.error().kind != Kind::kNotFound) return Unexpected{found.error()};
      return Unexpected{BookError::Of(
          Kind::kNotFound, which + " transfers to account " +
                               std::to_string(entry->GetLinkedAccount()) +
                               ", which the book does not hold; change it with schedule edit")};
    }
    other = *found;
    if (other.get() == &a) return Invalid(which + " transfers to its own account");
    if (auto refused = book.Changed(*other)) {
      return Unexpected{BookError::Of(refused->kind, which + " transfers to \"" +
                                                         other->GetName() +
                                                         "\", which cannot be changed: " +
                                                         refused->message)};
    }
    const double stored = entry->GetLinkedExchangedAmount();
    auto amount =
        AmountReceived(a, *other, -entry->GetAmount(),
                       stored != 0.0 && a.currency() != other->currency()
                           ? std::optional<double>(-stored)
                           : std::nullopt);
    if (!amount) return Unexpected{amount.error()};
    received = *amount;
  }

  entry->SetNumber(a.NextAvailableNumber());
  if (entry->IsCheck()) entry->SetCheckNumber(a.NextAvailableCheckNumber());
  a.AddEntry(entry);
  (*s)->CommitEntry(entry.get());
  std::optional<LinkedChange> linked;
  if (other) {
    auto deposit = LinkTransfer(*other, *entry, received);
    linked = LinkedChange{other->GetName(), deposit->GetNumber(), "received it"};
  }
  return EnteredOccurrence{
      *account,
      number,
      entry->GetNumber(),
      entry->IsCheck() ? std::optional<std::int32_t>(entry->GetCheckNumber()) : std::nullopt,
      entry->GetDate(),
      entry->GetAmount(),
      entry->GetToFrom(),
      Next(**s),
      linked};
}

BookResult<ScheduleChange> AddSchedule(Book& book, std::string_view name,
                                       const Recurrence& recurrence, const ScheduledEntry& entry) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto built = BuildSchedule(recurrence);
  if (!built) return Unexpected{built.error()};
  const std::shared_ptr<ZELMAccountSchedule> s = *built;
  s->SetNumber(a.NextAvailableScheduleNumber());
  if (auto refused = SetEntryFields(book, a, *s, true, entry)) return Unexpected{*refused};
  a.AddSchedule(s);
  return ScheduleChange{*account, s->GetNumber(), RuleInWords(*s), Next(*s)};
}

BookResult<ScheduleChange> EditSchedule(Book& book, std::string_view name, std::int32_t number,
                                        const std::optional<Recurrence>& recurrence,
                                        const ScheduledEntry& entry) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  ZELMAccount& a = **account;
  auto found = ScheduleOf(a, number);
  if (!found) return Unexpected{found.error()};
  ZELMAccountSchedule& s = **found;
  std::shared_ptr<ZELMAccountSchedule> built;
  if (recurrence) {
    auto rebuilt = BuildSchedule(*recurrence);
    if (!rebuilt) return Unexpected{rebuilt.error()};
    built = *rebuilt;
    if (built->GetRepeatIntervalType() == sc::kRepeatOnce && !s.GetCommittedDates().empty()) {
      return Invalid("schedule " + std::to_string(number) +
                     " has entered occurrences, so a one-time schedule of it would never occur; "
                     "add a new one");
    }
  }
  if (auto refused = SetEntryFields(book, a, s, false, entry)) return Unexpected{*refused};
  if (built) {
    s.SetDate(built->GetDate());
    s.SetRepeatIntervalType(built->GetRepeatIntervalType());
    s.SetRepeatInterval(built->GetRepeatInterval());
    s.SetRepeatUntilType(built->GetRepeatUntilType());
    s.SetRepeatUntil(built->GetRepeatUntil());
    s.SetUsePrecedingFriday(built->GetUsePrecedingFriday());
  }
  return ScheduleChange{*account, number, RuleInWords(s), Next(s)};
}

BookResult<Recurrence> ScheduleRecurrence(Book& book, std::string_view name,
                                          std::int32_t number) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  auto s = ScheduleOf(**account, number);
  if (!s) return Unexpected{s.error()};
  return RecurrenceOf(**s);
}

BookResult<ScheduleChange> RemoveSchedule(Book& book, std::string_view name, std::int32_t number) {
  auto account = book.AccountToChange(name);
  if (!account) return Unexpected{account.error()};
  auto s = ScheduleOf(**account, number);
  if (!s) return Unexpected{s.error()};
  (*account)->RemoveSchedule(s->get());
  return ScheduleChange{*account, number, RuleInWords(**s), std::nullopt};
}

}  // namespace folvant
