#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"

namespace folvant {

class Book;
class ZELMAccount;
class ZELMAccountSchedule;

// When a schedule occurs, in the words a person gives it: "every 2 weeks on Friday from
// 2026-07-01, 3 times".
struct Recurrence {
  std::int32_t every = 1;  // the step, in units
  std::string unit;        // day, week, month, quarter or year; plurals and any case read too
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

// "every 2 weeks on Friday", "every month on its last day", "once on 2026-07-01".
std::string RecurrenceInWords(const ZELMAccountSchedule& schedule);
// The recurrence with its end and weekend rule: "every month on day 1, forever, weekends to the
// Friday before".
std::string RuleInWords(const ZELMAccountSchedule& schedule);

// One schedule of an account, with its stored rule.
struct ScheduleRow {
  std::int32_t number = 0;
  std::int32_t start = 0;
  std::optional<std::int32_t> next;  // none when nothing is left to occur
  std::string rule;                  // RuleInWords
  std::int32_t kind = 0, interval = 1, untilType = 0, until = 0;
  bool weekendsBefore = false;
  std::size_t committed = 0;  // occurrences entered
  bool check = false;
  std::string type, category, toFrom, description;
  double amount = 0.0;
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
};

struct ScheduleChange {
  std::shared_ptr<ZELMAccount> account;
  std::int32_t number = 0;
  std::string rule;
  std::optional<std::int32_t> next;
};

// Enters the schedule's occurrence on `date` (default: the earliest one due today) into the
// register, numbered and with the next check number for a check, and records it as entered.
// The account is marked changed; the caller saves the book.
BookResult<EnteredOccurrence> EnterOccurrence(Book& book, std::string_view account,
                                              std::int32_t number,
                                              std::optional<std::int32_t> date);

// The entry fields every occurrence of a new schedule copies.
struct ScheduledEntry {
  double amount = 0.0;  // negative for money leaving the account
  std::string toFrom;
  std::string description;
  std::string type;      // an entry type's name, matched ignoring case; empty: the default type
  std::string category;  // a category's full name ("Parent:Child"); empty: none
};

// Adds a schedule with the next free number; the account is marked changed.
BookResult<ScheduleChange> AddSchedule(Book& book, std::string_view account,
                                       const Recurrence& recurrence, const ScheduledEntry& entry);
// Removes a schedule; the occurrences already entered stay in the register. The account is
// marked changed.
BookResult<ScheduleChange> RemoveSchedule(Book& book, std::string_view account,
                                          std::int32_t number);

}  // namespace folvant
