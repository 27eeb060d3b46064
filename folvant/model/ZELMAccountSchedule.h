#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

// A register entry that recurs. Its entry fields are the template of every occurrence and its
// date is the start date S; the rule (kind, N, end rule, weekend shift) says when it occurs,
// and committedDates (ascending, no duplicates) records the occurrences already entered.
// Occurrences are never stored: every query computes them again from S. Held by its account's
// schedule list through std::shared_ptr; the account back reference is not owned.
//
// Recurrence kinds: 0 once, 1 daily, 2 weekly, 3 every two weeks, 4 monthly, 5 yearly, 6 last
// day of each month, 10 quarterly, 11 last day of each quarter, 20-24 every N days, weeks,
// months, years, quarters; any other code has no occurrences. End rules: 1 forever, 2 after
// repeatUntil occurrences in all (committed ones included), 3 until the date repeatUntil.
class ZELMAccountSchedule : public ZELMAccountEntry {
 public:
  ZELMAccountSchedule() = default;
  // Reads the entry's keys, then the six schedule keys; a missing key is logged and keeps the
  // new-schedule value. nullptr leaves a new schedule and logs nothing.
  explicit ZELMAccountSchedule(const plist::Dictionary* dict);
  ZELMAccountSchedule(const ZELMAccountSchedule&) = delete;  // copies go through copy()

  // A schedule read back from this one's dictionary, with the same account.
  std::shared_ptr<ZELMAccountEntry> copy() const override;
  // The entry's keys plus "repeatIntervalType", "repeatInterval", "repeatUntilType",
  // "repeatUntil", "usePrecedingFriday" and "committedDates", always written.
  plist::Dictionary asDictionary() const override;

  void SetRepeatIntervalType(std::int32_t kind) { repeatIntervalType_ = kind; }
  void SetRepeatInterval(std::int32_t n) { repeatInterval_ = n; }
  void SetRepeatUntilType(std::int32_t rule) { repeatUntilType_ = rule; }
  void SetRepeatUntil(std::int32_t until) { repeatUntil_ = until; }
  void SetUsePrecedingFriday(bool shift) { usePrecedingFriday_ = shift; }
  std::int32_t GetRepeatIntervalType() const { return repeatIntervalType_; }
  std::int32_t GetRepeatInterval() const { return repeatInterval_; }
  std::int32_t GetRepeatUntilType() const { return repeatUntilType_; }
  std::int32_t GetRepeatUntil() const { return repeatUntil_; }
  bool GetUsePrecedingFriday() const { return usePrecedingFriday_; }

  // New entries for the occurrences in [from, to] (date numbers) that are not committed, in
  // ascending date order. The end rule is not applied here.
  std::vector<std::shared_ptr<ZELMAccountEntry>> EntriesFromDate(std::int32_t from,
                                                                 std::int32_t to) const;
  // New entries for the occurrences due by `date` (by day) that are not committed, with the end
  // rule applied. An occurrence on the coming weekend that shifts onto a Friday is due on that
  // Friday already.
  std::vector<std::shared_ptr<ZELMAccountEntry>> EvaluateForDate(platform::LocalTime date) const;
  // How many entries EvaluateForDate would return, counting no further than `limit`; builds no
  // entries.
  std::int64_t NumberOfEntriesDueByDate(platform::LocalTime date, std::int64_t limit) const;
  // The (shifted) date number of the first occurrence that is not committed, with the end rule
  // applied; -1 when there is none and always for a one-time schedule.
  std::int32_t NextEntryDate() const;
  // A plain entry copied from this schedule's stored form (number, amount, type, category,
  // texts, links, line items), with the same account, dated `date`.
  std::shared_ptr<ZELMAccountEntry> EntryForDate(std::int32_t date) const;

  bool DateIsCommitted(std::int32_t date) const;
  // Adds the date (unless the search finds it) and sorts the list ascending.
  void AddCommittedDate(std::int32_t date);
  // Commits the entry's date; nothing for no entry. Commit the entry as generated: its date is
  // the shifted one that the enumeration tests.
  void CommitEntry(const ZELMAccountEntry* entry);
  const std::vector<std::int32_t>& GetCommittedDates() const { return committedDates_; }
  // The greatest committed date number, 0 when nothing is committed.
  std::int32_t GetLastCommittedDate() const;

  // The date moved off a weekend onto the Friday before, when the schedule asks for that.
  platform::LocalTime AdjustDateForUsePrecedingFriday(platform::LocalTime date) const;

  // By NextEntryDate, a schedule without one last; then by schedule number. -1, 0 or 1.
  int NextEntryDateIsGreaterThan(const ZELMAccountSchedule& other) const;
  int NextEntryDateIsGreaterThan_Reversed(const ZELMAccountSchedule& other) const;

 private:
  schedule::Rule Rule() const;
  std::vector<std::shared_ptr<ZELMAccountEntry>> EntriesForDates(
      const std::vector<std::int32_t>& dates) const;

  std::int32_t repeatIntervalType_ = schedule::kRepeatOnce;
  std::int32_t repeatInterval_ = 1;
  std::int32_t repeatUntilType_ = schedule::kUntilForever;
  std::int32_t repeatUntil_ = 0;
  bool usePrecedingFriday_ = false;
  std::vector<std::int32_t> committedDates_;
};

}  // namespace folvant
