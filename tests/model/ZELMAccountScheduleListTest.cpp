#include <gtest/gtest.h>

#include <memory>
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

std::shared_ptr<ZELMAccountSchedule> Schedule(std::int32_t number, std::int32_t start = 20080101,
                                              std::int32_t kind = schedule::kRepeatOnce) {
  auto s = std::make_shared<ZELMAccountSchedule>();
  s->SetNumber(number);
  s->SetDate(start);
  s->SetRepeatIntervalType(kind);
  return s;
}

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
  const auto on = [](std::int32_t n) {
    return schedule::LocalTimeFromDay(schedule::DayFromDateNumber(n)) + std::chrono::hours{10};
  };
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
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(on(20080302)), 2);
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(on(20080317)), 2 + 0 + 4);
  EXPECT_EQ(account.numberOfPendingScheduledEntriesForDate(on(20080401)), 4 + 1 + 4);
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
