#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
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

std::shared_ptr<ZELMAccountSchedule> Schedule(std::int32_t number, std::int32_t start = 20080101,
                                              std::int32_t kind = schedule::kRepeatOnce) {
  auto s = std::make_shared<ZELMAccountSchedule>();
  s->SetNumber(number);
  s->SetDate(start);
  s->SetRepeatIntervalType(kind);
  return s;
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
  ZELMAccountSchedule rent;
  rent.SetDate(20080215);
  rent.SetRepeatIntervalType(schedule::kRepeatMonthly);
  rent.SetUsePrecedingFriday(true);
  rent.AddCommittedDate(20080215);
  const auto due = rent.EvaluateForDate(On(20080314, 8));  // Saturday 15 March 2008
  ASSERT_EQ(Dates(due), std::vector<std::int32_t>{20080314});
  rent.CommitEntry(due[0].get());
  rent.CommitEntry(nullptr);
  EXPECT_EQ(rent.GetCommittedDates(), (std::vector<std::int32_t>{20080215, 20080314}));
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
  // In the expected order: every pair compares so, and the reversed twin the other way.
  const std::vector<std::shared_ptr<ZELMAccountSchedule>> ordered = {
      Schedule(3, 20080201, schedule::kRepeatDaily),    //
      Schedule(2, 20080301, schedule::kRepeatMonthly),  //
      Schedule(4, 20080301, schedule::kRepeatYearly),   // same next date as 2
      Schedule(1, 20080101, schedule::kRepeatOnce),     // no next date
      Schedule(5, 20080101, 7),                         // unknown kind: no next date
  };
  folvant::testing::ExpectOrder(
      ordered,
      [](const ZELMAccountSchedule& a, const ZELMAccountSchedule& b) {
        return a.NextEntryDateIsGreaterThan(b);
      },
      [](const ZELMAccountSchedule& a, const ZELMAccountSchedule& b) {
        return a.NextEntryDateIsGreaterThan_Reversed(b);
      });
}

// ---- Schedules of an account ------------------------------------------------------------

std::vector<std::int32_t> Numbers(const ZELMAccount& account) {
  std::vector<std::int32_t> numbers;
  for (const auto& s : account.GetSchedules()) numbers.push_back(s->GetNumber());
  return numbers;
}

TEST(AccountSchedules, InitSchedulesKeepsTheDictionariesAndSkipsTheRest) {
  ZELMAccount account;
  account.AddSchedule(Schedule(5));
  {
    testing::LogCapture log;
    EXPECT_EQ(account.InitSchedules(nullptr), nullptr);
    const Value not_an_array("schedules");
    EXPECT_EQ(account.InitSchedules(&not_an_array), nullptr);
    EXPECT_EQ(log.messages(), Messages{"Invalid theArray supplied to ZELMAccount:InitSchedules"});
    EXPECT_EQ(Numbers(account), std::vector<std::int32_t>{5});
  }
  Dictionary first = Schedule(1)->asDictionary();
  Dictionary second = Schedule(2)->asDictionary();
  const Value array(Array{first, "a string", second});
  testing::LogCapture log;
  const ZELMAccount::ScheduleList* list = account.InitSchedules(&array);
  EXPECT_EQ(log.messages(),
            Messages{"Invalid theDictionary encountered in ZELMAccount:InitSchedules"});
  ASSERT_EQ(list, &account.GetSchedules());
  EXPECT_EQ(Numbers(account), (std::vector<std::int32_t>{1, 2}));
  for (const auto& s : account.GetSchedules()) EXPECT_EQ(s->GetAccount(), &account);
}

TEST(AccountSchedules, NumbersAndLookups) {
  ZELMAccount account;
  EXPECT_EQ(account.NextAvailableScheduleNumber(), 0);
  const auto two = Schedule(2), seven = Schedule(7), other_seven = Schedule(7);
  account.SetSchedules(ZELMAccount::ScheduleList{two, seven, other_seven});
  EXPECT_EQ(two->GetAccount(), &account);
  EXPECT_EQ(account.NextAvailableScheduleNumber(), 8);
  EXPECT_EQ(account.ScheduleForNumber(7), seven);  // the first of that number
  EXPECT_EQ(account.ScheduleForNumber(3), nullptr);
  account.RemoveSchedule(seven.get());
  EXPECT_EQ(account.ScheduleForNumber(7), other_seven);
  account.RemoveSchedule(other_seven.get());
  EXPECT_EQ(account.NextAvailableScheduleNumber(), 3);
  // Negative numbers never push the next one below 0.
  account.SetSchedules(ZELMAccount::ScheduleList{Schedule(-4), Schedule(-1)});
  EXPECT_EQ(account.NextAvailableScheduleNumber(), 0);
  const auto added = Schedule(0);
  account.AddSchedule(added);
  EXPECT_EQ(added->GetAccount(), &account);
  EXPECT_EQ(Numbers(account), (std::vector<std::int32_t>{-4, -1, 0}));
}

TEST(AccountSchedules, PendingEntriesAreCountedOverEverySchedule) {
  ZELMAccount account;
  {
    testing::ScopedClockPin today(20080310);
    EXPECT_FALSE(account.HasPendingScheduledEntries());
  }
  auto weekly = Schedule(0, 20080303, schedule::kRepeatWeekly);  // 3, 10, 17 March
  weekly->AddCommittedDate(20080303);
  auto later = Schedule(1, 20080401);  // once, on 1 April
  auto limited = Schedule(2, 20080301, schedule::kRepeatDaily);
  limited->SetRepeatUntilType(schedule::kUntilCount);
  limited->SetRepeatUntil(4);
  account.SetSchedules(ZELMAccount::ScheduleList{weekly, later, limited});

  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(std::nullopt), 0);
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(On(20080302, 10)), 2);
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(On(20080317, 10)), 2 + 0 + 4);
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(On(20080401, 10)), 4 + 1 + 4);
  {
    testing::ScopedClockPin today(20080229);
    EXPECT_FALSE(account.HasPendingScheduledEntries());
  }
  {
    testing::ScopedClockPin today(20080301, 0, 0, 1);
    EXPECT_TRUE(account.HasPendingScheduledEntries());
  }
}

}  // namespace
}  // namespace folvant
