#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"
#include "folvant/book/Entries.h"

namespace folvant {

class Book;
class ZELMAccount;
class ZELMAccountSchedule;

// When a schedule occurs, in the words a person gives it: "every 2 weeks on Friday from
// 2026-07-01, 3 times".
struct Recurrence {
  std::int32_t every = 1;  // the step, in units
  // day, week, month, quarter or year (plurals and any case read too), or "once": a single
  // occurrence on the start day, with no day within the unit, end or weekend rule.
  std::string unit;
  // The day within the unit: a weekday (week; three letters or more), a day of the month or
  // "last" (month, quarter), MM-DD (year). The start moves forward to the first such day; empty
  // keeps the start's own.
  std::string on;
  std::int32_t start = 0;             // the first possible day (a date number)
  std::optional<std::int32_t> until;  // the last possible day
  std::int32_t times = 0;             // occurrences in all, when there is no last day; 0: forever
  bool weekendsBefore = false;        // a weekend occurrence moves to the Friday before
};

// A new, unnumbered schedule with the recurrence's kind, step, start and end rule, and no entry
// fields. A recurrence that says nothing sensible is kInvalid.
BookResult<std::shared_ptr<ZELMAccountSchedule>> BuildSchedule(const Recurrence& recurrence);

// The recurrence of a stored schedule, as BuildSchedule takes it back; an unknown kind gives an
// empty unit.
Recurrence RecurrenceOf(const ZELMAccountSchedule& schedule);

// "every 2 weeks on Friday", "every month on its last day", "once on 2026-07-01".
std::string RecurrenceInWords(const ZELMAccountSchedule& schedule);
// The recurrence with its end and weekend rule: "every month on day 1, forever, weekends to the
// Friday before".
std::string RuleInWords(const ZELMAccountSchedule& schedule);

// One schedule of an account, with its stored rule.
struct ScheduleRow {
  std::int32_t number = 0;
  std::int32_t start = 0;
  std::optional<std::int32_t> next;  // none when nothing is left to occur (a one-time
                                     // schedule's is its day until it is entered)
  std::string rule;                  // RuleInWords
  Recurrence recurrence;
  std::int32_t kind = 0, interval = 1, untilType = 0, until = 0;
  bool weekendsBefore = false;
  std::size_t committed = 0;  // occurrences entered
  bool check = false;
  std::string type, category, toFrom, description, notes;
  double amount = 0.0;
  bool taxDeductible = false;
  std::vector<EntryDetails::Line> splits;
  std::string transferTo;  // the other account of a transfer schedule; empty for none
};

struct ScheduleListing {
  std::shared_ptr<ZELMAccount> account;
  std::vector<ScheduleRow> rows;  // by next date, those without one last
};

BookResult<ScheduleListing> ListSchedules(Book& book, std::string_view account);

// An occurrence due and not yet entered: the entry it would make.
struct DueOccurrence {
  std::shared_ptr<ZELMAccount> account;
  std::int32_t schedule = 0;
  std::int32_t date = 0;
  bool check = false;
  std::string type, category, toFrom, description;
  double amount = 0.0;
  std::string transferTo;
};

// The occurrences due by `date` in the account, or in every account that can be read when none
// is named (the book gathers warnings for the others), by date.
BookResult<std::vector<DueOccurrence>> DueOccurrences(Book& book,
                                                      const std::optional<std::string>& account,
                                                      std::int32_t date);

// What entering an occurrence, adding or removing a schedule did.
struct EnteredOccurrence {
  std::shared_ptr<ZELMAccount> account;
  std::int32_t schedule = 0;
  std::int32_t entry = 0;  // its number in the register
  std::optional<std::int32_t> checkNumber;
  std::int32_t date = 0;
  double amount = 0.0;
  std::string toFrom;
  std::optional<std::int32_t> next;  // the schedule's next date after it
  std::optional<LinkedChange> linked;  // a transfer schedule's deposit in the other account
};

struct ScheduleChange {
  std::shared_ptr<ZELMAccount> account;
  std::int32_t number = 0;
  std::string rule;
  std::optional<std::int32_t> next;
};

// Enters the schedule's occurrence on `date` (default: the earliest one due today) into the
// register, numbered and with the next check number for a check, and records it as entered.
// A transfer schedule's occurrence is linked to a deposit made in the other account, as a
// transfer is. The accounts are marked changed; the caller saves the book.
BookResult<EnteredOccurrence> EnterOccurrence(Book& book, std::string_view account,
                                              std::int32_t number,
                                              std::optional<std::int32_t> date);

// The entry fields every occurrence copies. Adding takes what is set and defaults the rest, as
// adding an entry does; editing changes what is set. The date, check number and resolved mark
// are not a schedule's: its start is the recurrence's, checks are numbered when entered.
struct ScheduledEntry {
  EntryFields fields;
  bool newCategory = false;
  // A transfer to this account (name or number): the amount leaves this account, whatever its
  // sign, and the to/from defaults to the other account's name. Empty when editing: no longer a
  // transfer.
  std::optional<std::string> transferTo;
  std::optional<double> toAmount;  // what the other account receives, between currencies
};

// Adds a schedule with the next free number; the account is marked changed.
BookResult<ScheduleChange> AddSchedule(Book& book, std::string_view account,
                                       const Recurrence& recurrence, const ScheduledEntry& entry);
// Changes a schedule's recurrence when one is given, and the entry fields given. The occurrences
// already entered stay entered. A refusal changes nothing.
BookResult<ScheduleChange> EditSchedule(Book& book, std::string_view account, std::int32_t number,
                                        const std::optional<Recurrence>& recurrence,
                                        const ScheduledEntry& entry);
// The schedule's recurrence, for a change to start from.
BookResult<Recurrence> ScheduleRecurrence(Book& book, std::string_view account,
                                          std::int32_t number);
// Removes a schedule; the occurrences already entered stay in the register. The account is
// marked changed.
BookResult<ScheduleChange> RemoveSchedule(Book& book, std::string_view account,
                                          std::int32_t number);

}  // namespace folvant
