#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountScheduleCalendar.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;
using Messages = std::vector<std::string>;

platform::LocalTime On(std::int32_t n, int hour = 0) {
  return schedule::LocalTimeFromDay(schedule::DayFromDateNumber(n)) + std::chrono::hours{hour};
}

std::vector<std::int32_t> Dates(const std::vector<std::shared_ptr<ZELMAccountEntry>>& entries) {
  std::vector<std::int32_t> dates;
  for (const auto& entry : entries) dates.push_back(entry->GetDate());
  return dates;
}

// A complete stored schedule: a monthly rent payment with a split, three payments entered.
Dictionary RentDictionary() {
  ZELMAccountSchedule rent;
  rent.SetNumber(4);
  rent.SetDate(20080131);
  rent.SetAmount(-950.0);
  rent.SetIsDebit(true);
  rent.SetDescription("Rent");
  rent.SetToFrom("Landlord");
  rent.SetType(3);
  rent.SetNotes("by transfer");
  rent.addSplitLineItemWithCategory(7, "Flat", "Landlord", -900.0);
  rent.addSplitLineItemWithCategory(8, "Parking", "Landlord", -50.0);
  rent.SetRepeatIntervalType(schedule::kRepeatMonthly);
  rent.SetRepeatInterval(1);
  rent.SetRepeatUntilType(schedule::kUntilCount);
  rent.SetRepeatUntil(12);
  rent.SetUsePrecedingFriday(true);
  rent.AddCommittedDate(20080131);
  rent.AddCommittedDate(20080331);
  rent.AddCommittedDate(20080530);  // 31 May 2008 is a Saturday
  return rent.asDictionary();
}

// ---- Stored form ---------------------------------------------------------------------------

TEST(ZELMAccountSchedule, StoredForm) {
  // New: an entry's keys, then once, forever, no shift, nothing committed.
  Dictionary fresh = ZELMAccountEntry().asDictionary();
  for (const auto& [key, value] : Dictionary{{"repeatIntervalType", 0},
                                             {"repeatInterval", 1},
                                             {"repeatUntilType", 1},
                                             {"repeatUntil", 0},
                                             {"usePrecedingFriday", false},
                                             {"committedDates", Array{}}}) {
    fresh.append(key, value);
  }
  EXPECT_EQ(ZELMAccountSchedule().asDictionary(), fresh);
  const Dictionary dict = RentDictionary();
  testing::LogCapture log;
  EXPECT_EQ(ZELMAccountSchedule(nullptr).asDictionary(), fresh);
  const ZELMAccountSchedule loaded(&dict);
  EXPECT_EQ(loaded.asDictionary(), dict);
  EXPECT_EQ(log.messages(), Messages{});
  EXPECT_EQ(loaded.copy()->asDictionary(), dict);
  EXPECT_NE(dynamic_cast<ZELMAccountSchedule*>(loaded.copy().get()), nullptr);
}

TEST(ZELMAccountSchedule, DamagedKeysKeepNewValuesAndSaySo) {
  struct Row {
    const char* key;
    Value value;  // none: the key is removed
    Messages messages;
    Value stored;  // what asDictionary writes for the key afterwards
  };
  const Row rows[] = {
      {"repeatIntervalType", Value(), {"No repeatIntervalType found for schedule."}, 0},
      {"repeatInterval", Value(), {"No repeatInterval found for schedule."}, 1},
      {"repeatUntilType", Value(), {"No repeatUntilType found for schedule."}, 1},
      {"repeatUntil", Value(), {"No repeatUntil found for schedule."}, 0},
      {"usePrecedingFriday", Value(), {"No usePrecedingFriday found for schedule."}, false},
      {"committedDates", Value(), {"No committedDates found for schedule."}, Array{}},
      {"committedDates",
       "20080131",
       {"committedDates is in the wrong format for schedule."},
       Array{}},
      // Any kind converts as Foundation reads it, silently.
      {"repeatIntervalType", "22", {}, 22},
      {"repeatInterval", 2.9, {}, 2},
      {"usePrecedingFriday", "YES", {}, true},
      // Kept as stored: neither sorted nor checked.
      {"committedDates",
       Array{20080301, "20080101", 20080201.0},
       {},
       Array{20080301, 20080101, 20080201}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.key) + (row.value.isNone() ? " removed" : " retyped"));
    Dictionary dict = RentDictionary();
    if (row.value.isNone()) {
      dict.erase(row.key);
    } else {
      dict.set(row.key, row.value);
    }
    testing::LogCapture log;
    const ZELMAccountSchedule loaded(&dict);
    EXPECT_EQ(log.messages(), row.messages);
    const Dictionary saved = loaded.asDictionary();
    EXPECT_EQ(*saved.find(row.key), row.stored);
    // The other keys and the entry fields are untouched.
    Dictionary rest = saved;
    rest.erase(row.key);
    Dictionary original = RentDictionary();
    original.erase(row.key);
    EXPECT_EQ(rest, original);
  }
}

// ---- Occurrences as entries ----------------------------------------------------------------

TEST(ZELMAccountSchedule, OccurrencesArePlainEntriesCopiedFromTheTemplate) {
  const Dictionary dict = RentDictionary();
  const ZELMAccountSchedule rent(&dict);
  // Committed: 31 January, 31 March, 30 May (the shifted 31 May).
  const auto entries = rent.EntriesFromDate(20080101, 20080831);
  EXPECT_EQ(Dates(entries), (std::vector<std::int32_t>{20080731, 20080829}));
  for (const auto& entry : entries) {
    EXPECT_EQ(dynamic_cast<ZELMAccountSchedule*>(entry.get()), nullptr);
    Dictionary expected = ZELMAccountEntry(&dict).asDictionary();
    expected.set("date", entry->GetDate());
    EXPECT_EQ(entry->asDictionary(), expected);
    EXPECT_EQ(entry->GetNumber(), 4);  // the schedule's number until the account numbers it
    EXPECT_EQ(entry->GetAmount(), -950.0);
    EXPECT_EQ(entry->splitLineItems().size(), 2u);
  }
  const auto single = rent.EntryForDate(20090101);
  EXPECT_EQ(single->GetDate(), 20090101);
  EXPECT_EQ(single->GetDescription(), "Rent");
  EXPECT_EQ(dynamic_cast<ZELMAccountSchedule*>(single.get()), nullptr);
}

// Which dates are due is the calendar's business; here the schedule's own part: what a commit
// records, and the Friday shift of a calendar date.
TEST(ZELMAccountSchedule, CommittingADueEntryRecordsItsDate) {
  ZELMAccountSchedule once;
  once.SetDate(20080110);
  const auto due_once = once.EvaluateForDate(On(20080301, 9));
  ASSERT_EQ(Dates(due_once), std::vector<std::int32_t>{20080110});
  once.CommitEntry(due_once[0].get());
  once.CommitEntry(nullptr);
  EXPECT_EQ(once.GetCommittedDates(), std::vector<std::int32_t>{20080110});
  EXPECT_TRUE(once.EvaluateForDate(On(20080301)).empty());

  ZELMAccountSchedule rent;
  rent.SetDate(20080215);
  rent.SetRepeatIntervalType(schedule::kRepeatMonthly);
  rent.SetUsePrecedingFriday(true);
  rent.AddCommittedDate(20080215);
  const auto due = rent.EvaluateForDate(On(20080314, 8));  // Saturday 15 March 2008
  ASSERT_EQ(Dates(due), std::vector<std::int32_t>{20080314});
  rent.CommitEntry(due[0].get());
  EXPECT_TRUE(rent.DateIsCommitted(20080314));
  EXPECT_TRUE(rent.EvaluateForDate(On(20080320)).empty());
  EXPECT_EQ(rent.NextEntryDate(), 20080415);
  // A calendar date moves the same way and keeps its time of day.
  EXPECT_EQ(rent.AdjustDateForUsePrecedingFriday(On(20080316, 9)), On(20080314, 9));
  EXPECT_EQ(rent.AdjustDateForUsePrecedingFriday(On(20080317, 9)), On(20080317, 9));
  rent.SetUsePrecedingFriday(false);
  EXPECT_EQ(rent.AdjustDateForUsePrecedingFriday(On(20080316, 9)), On(20080316, 9));
}

// ---- Committed dates -----------------------------------------------------------------------

TEST(ZELMAccountSchedule, CommittedDatesAreSortedAndFreeOfRepeatsAfterACommit) {
  Dictionary dict = ZELMAccountSchedule().asDictionary();
  dict.set("committedDates", Array{20080401, 20080101, 20080301, 20080201});
  ZELMAccountSchedule s(&dict);
  EXPECT_EQ(s.GetLastCommittedDate(), 20080401);
  // The search trusts the order: 20080101 is below the first element, so it is not found.
  EXPECT_FALSE(s.DateIsCommitted(20080101));
  for (std::int32_t date : {20080115, 20080201, 20080115}) s.AddCommittedDate(date);
  EXPECT_EQ(s.GetCommittedDates(),
            (std::vector<std::int32_t>{20080101, 20080115, 20080201, 20080301, 20080401}));
  EXPECT_TRUE(s.DateIsCommitted(20080101));
  EXPECT_EQ(ZELMAccountSchedule().GetLastCommittedDate(), 0);
}

// ---- Sorting -------------------------------------------------------------------------------

TEST(ZELMAccountSchedule, SortsByNextDateWithoutOneLastThenByNumber) {
  const auto make = [](std::int32_t number, std::int32_t start, std::int32_t kind) {
    auto s = std::make_shared<ZELMAccountSchedule>();
    s->SetNumber(number);
    s->SetDate(start);
    s->SetRepeatIntervalType(kind);
    return s;
  };
  std::vector<std::shared_ptr<ZELMAccountSchedule>> list = {
      make(1, 20080101, schedule::kRepeatOnce),     // no next date
      make(2, 20080301, schedule::kRepeatMonthly),  //
      make(3, 20080201, schedule::kRepeatDaily),    //
      make(4, 20080301, schedule::kRepeatYearly),   // same next date as 2
      make(5, 20080101, 7),                         // unknown kind: no next date
  };
  for (const auto& a : list) {
    for (const auto& b : list) {
      EXPECT_EQ(a->NextEntryDateIsGreaterThan(*b), -b->NextEntryDateIsGreaterThan(*a));
      EXPECT_EQ(a->NextEntryDateIsGreaterThan_Reversed(*b), -a->NextEntryDateIsGreaterThan(*b));
      EXPECT_EQ(a->NextEntryDateIsGreaterThan(*b) == 0, a == b);
    }
  }
  std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
    return a->NextEntryDateIsGreaterThan(*b) < 0;
  });
  std::vector<std::int32_t> order;
  for (const auto& s : list) order.push_back(s->GetNumber());
  EXPECT_EQ(order, (std::vector<std::int32_t>{3, 2, 4, 1, 5}));
}

}  // namespace
}  // namespace folvant
