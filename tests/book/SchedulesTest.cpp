// Schedules in words: how the words become a stored rule, and entering occurrences.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Schedules.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Kind = BookError::Kind;

Recurrence Every(std::int32_t n, std::string unit, std::string on, std::int32_t start) {
  Recurrence r;
  r.every = n;
  r.unit = std::move(unit);
  r.on = std::move(on);
  r.start = start;
  return r;
}

// Each shape is stored as the kind that gives its dates, from the first day that matches --on.
TEST(BuildScheduleTest, WordsBecomeKindStepAndStart) {
  struct Case {
    Recurrence words;
    std::int32_t kind, interval, start;
  };
  Recurrence shifted_days = Every(1, "Days", "", 20260313);
  shifted_days.weekendsBefore = true;  // the plain daily kind never moves
  const std::vector<Case> cases = {
      {Every(1, "day", "", 20260310), 1, 1, 20260310},
      {shifted_days, 20, 1, 20260313},
      {Every(10, "days", "", 20260301), 20, 10, 20260301},
      {Every(1, "week", "fri", 20260310), 2, 1, 20260313},
      {Every(2, "WEEKS", "", 20260310), 3, 1, 20260310},
      {Every(3, "weeks", "Monday", 20260310), 21, 3, 20260316},
      {Every(1, "week", "tue", 20260310), 2, 1, 20260310},
      {Every(1, "month", "31", 20260402), 4, 1, 20260531},
      {Every(2, "months", "", 20260115), 22, 2, 20260115},
      {Every(1, "month", "last", 20260210), 6, 1, 20260210},
      {Every(1, "quarter", "15", 20260120), 10, 1, 20260215},
      {Every(1, "quarter", "Last", 20260210), 11, 1, 20260210},
      {Every(2, "quarters", "", 20260131), 24, 2, 20260131},
      {Every(1, "year", "02-29", 20260101), 5, 1, 20280229},
      {Every(2, "years", "", 20220630), 23, 2, 20220630},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.words.every) + " " + c.words.unit + " on " + c.words.on);
    auto s = BuildSchedule(c.words);
    ASSERT_TRUE(s) << s.error().message;
    EXPECT_EQ((*s)->GetRepeatIntervalType(), c.kind);
    EXPECT_EQ((*s)->GetRepeatInterval(), c.interval);
    EXPECT_EQ((*s)->GetDate(), c.start);
    EXPECT_EQ((*s)->GetRepeatUntilType(), 1) << "forever";
  }
}

TEST(BuildScheduleTest, EndRules) {
  Recurrence r = Every(1, "month", "15", 20260120);
  r.until = 20260215;  // the moved start itself is a last day
  auto until = BuildSchedule(r);
  ASSERT_TRUE(until) << until.error().message;
  EXPECT_EQ((*until)->GetRepeatUntilType(), 3);
  EXPECT_EQ((*until)->GetRepeatUntil(), 20260215);
  EXPECT_EQ(RuleInWords(**until), "every month on day 15, until 2026-02-15");

  r.until = 20260214;
  auto before = BuildSchedule(r);
  ASSERT_FALSE(before);
  EXPECT_EQ(before.error().message, "--until 2026-02-14 is before the start 2026-02-15");

  r.until.reset();
  r.times = 1;
  auto once = BuildSchedule(r);
  ASSERT_TRUE(once);
  EXPECT_EQ(RuleInWords(**once), "every month on day 15, 1 time");
}

TEST(BuildScheduleTest, WordsThatSayNothingAreInvalid) {
  Recurrence weekly_shift = Every(1, "week", "", 20260101);
  weekly_shift.weekendsBefore = true;
  const std::vector<std::pair<Recurrence, std::string>> cases = {
      {Every(1, "fortnight", "", 20260101), "the unit must be"},
      {Every(1, "s", "", 20260101), "the unit must be"},
      {Every(0, "day", "", 20260101), "is not a count of 1 or more"},
      {Every(1, "day", "1", 20260101), "--on does not apply to a daily schedule"},
      {weekly_shift, "keeps its weekday"},
      {Every(1, "week", "fr", 20260101), "\"fr\" is not a weekday"},
      {Every(1, "week", "fridays", 20260101), "is not a weekday"},
      {Every(2, "month", "last", 20260101), "--on last needs --every 1 month"},
      {Every(1, "quarter", "32", 20260101), "is not a day of the month"},
      {Every(1, "month", "1x", 20260101), "is not a day of the month"},
      {Every(1, "year", "13-01", 20260101), "is not a day of the year"},
      {Every(1, "year", "02-30", 20260101), "is not a day of the year"},
      {Every(1, "year", "0229", 20260101), "is not a day of the year"},
  };
  for (const auto& [words, message] : cases) {
    auto s = BuildSchedule(words);
    ASSERT_FALSE(s) << words.unit << " on " << words.on;
    EXPECT_EQ(s.error().kind, Kind::kInvalid);
    EXPECT_NE(s.error().message.find(message), std::string::npos) << s.error().message;
  }
}

class EnterOccurrenceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = testing::ScratchDir("folvant-schedules");
    auto created = Book::Create(dir_);
    ASSERT_TRUE(created) << created.error().message;
    book_ = std::move(*created);
    auto account = book_->AddAccount("Checking");
    ASSERT_TRUE(account);
    (*account)->SetStartingCheckNumber(1001);
    ScheduledEntry rent{-1650, "Oakwood", "Rent", "check", ""};
    ASSERT_TRUE(AddSchedule(*book_, "Checking", Every(1, "month", "1", 20260501), rent));
    Recurrence water = Every(1, "month", "28", 20260301);
    water.weekendsBefore = true;
    ASSERT_TRUE(AddSchedule(*book_, "checking", water, ScheduledEntry{-40, "", "", "", ""}));
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(dir_);
  }

  fs::path dir_;
  std::unique_ptr<Book> book_;
};

TEST_F(EnterOccurrenceTest, NumbersChecksAndRecordsTheDate) {
  testing::ScopedClockPin today(20260615);
  auto first = EnterOccurrence(*book_, "Checking", 0, std::nullopt);
  ASSERT_TRUE(first) << first.error().message;
  EXPECT_EQ(first->date, 20260501) << "the earliest due";
  EXPECT_EQ(first->checkNumber, 1001);
  EXPECT_EQ(first->next, 20260601);
  auto second = EnterOccurrence(*book_, "Checking", 0, 20260601);
  ASSERT_TRUE(second) << second.error().message;
  EXPECT_EQ(second->checkNumber, 1002);
  EXPECT_NE(second->entry, first->entry);
  EXPECT_EQ(second->next, 20260701);

  auto again = EnterOccurrence(*book_, "Checking", 0, 20260601);
  ASSERT_FALSE(again);
  EXPECT_EQ(again.error().kind, Kind::kExists);
  auto nothing = EnterOccurrence(*book_, "Checking", 0, std::nullopt);
  ASSERT_FALSE(nothing);
  EXPECT_EQ(nothing.error().message, "schedule 0 of \"Checking\" has nothing due by 2026-06-15");

  // Saturday 28 March moved to Friday 27: the occurrence is the Friday, and it is no check.
  auto saturday = EnterOccurrence(*book_, "Checking", 1, 20260328);
  ASSERT_FALSE(saturday);
  EXPECT_EQ(saturday.error().kind, Kind::kInvalid);
  EXPECT_EQ(saturday.error().message,
            "2026-03-28 is not a date of schedule 1 of \"Checking\" (every month on day 28, "
            "forever, weekends to the Friday before)");
  auto friday = EnterOccurrence(*book_, "Checking", 1, 20260327);
  ASSERT_TRUE(friday) << friday.error().message;
  EXPECT_FALSE(friday->checkNumber);
  EXPECT_EQ(friday->next, 20260428);

  EXPECT_EQ(EnterOccurrence(*book_, "Checking", 7, std::nullopt).error().kind, Kind::kNotFound);
  const auto account = *book_->FindAccount("Checking");
  EXPECT_EQ(account->GetAllEntries().size(), 3u);
  EXPECT_EQ(account->ScheduleForNumber(0)->GetCommittedDates(),
            (std::vector<std::int32_t>{20260501, 20260601}));
}

}  // namespace
}  // namespace folvant
