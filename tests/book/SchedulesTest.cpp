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
    // Read back for a change, the stored rule builds the same schedule.
    auto again = BuildSchedule(RecurrenceOf(**s));
    ASSERT_TRUE(again) << again.error().message;
    EXPECT_EQ(RuleInWords(**again), RuleInWords(**s));
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
  EXPECT_EQ(before.error().message, "until 2026-02-14 is before the start 2026-02-15");

  r.until.reset();
  r.times = 1;
  auto one_time = BuildSchedule(r);
  ASSERT_TRUE(one_time);
  EXPECT_EQ(RuleInWords(**one_time), "every month on day 15, 1 time");

  auto once = BuildSchedule(Every(1, "once", "", 20260704));
  ASSERT_TRUE(once);
  EXPECT_EQ((*once)->GetRepeatIntervalType(), 0);
  EXPECT_EQ(RuleInWords(**once), "once on 2026-07-04");
  r = Every(1, "once", "", 20260704);
  r.times = 2;
  EXPECT_FALSE(BuildSchedule(r)) << "a single occurrence has no end rule";
}

TEST(BuildScheduleTest, WordsThatSayNothingAreInvalid) {
  Recurrence weekly_shift = Every(1, "week", "", 20260101);
  weekly_shift.weekendsBefore = true;
  const std::vector<std::pair<Recurrence, std::string>> cases = {
      {Every(1, "fortnight", "", 20260101), "the unit must be"},
      {Every(1, "s", "", 20260101), "the unit must be"},
      {Every(0, "day", "", 20260101), "the count must be 1 or more"},
      {Every(1, "day", "1", 20260101), "a daily schedule takes no day to fall on"},
      {weekly_shift, "keeps its weekday"},
      {Every(1, "week", "fr", 20260101), "\"fr\" is not a weekday"},
      {Every(1, "week", "fridays", 20260101), "is not a weekday"},
      {Every(2, "month", "last", 20260101), "the last day needs every 1 month"},
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

ScheduledEntry Fields(double amount, std::string toFrom, std::string description = {},
                      std::string type = {}) {
  ScheduledEntry entry;
  entry.fields.amount = amount;
  if (!toFrom.empty()) entry.fields.toFrom = std::move(toFrom);
  if (!description.empty()) entry.fields.description = std::move(description);
  if (!type.empty()) entry.fields.type = std::move(type);
  return entry;
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
    auto rent = AddSchedule(*book_, "Checking", Every(1, "month", "1", 20260501),
                            Fields(-1650, "Oakwood", "Rent", "check"));
    ASSERT_TRUE(rent) << rent.error().message;
    Recurrence water = Every(1, "month", "28", 20260301);
    water.weekendsBefore = true;
    ASSERT_TRUE(AddSchedule(*book_, "checking", water, Fields(-40, "")));
    ASSERT_TRUE(book_->AddAccount("Savings"));
  }

  std::shared_ptr<ZELMAccount> Account(const char* name) { return *book_->FindAccount(name); }
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

// A transfer schedule makes the linked pair each time it is entered; the amount always leaves.
TEST_F(EnterOccurrenceTest, ATransferScheduleEntersTheLinkedPair) {
  testing::ScopedClockPin today(20260615);
  ScheduledEntry saving = Fields(200, "", "Saving");
  saving.transferTo = "Savings";
  auto added = AddSchedule(*book_, "Checking", Every(1, "month", "10", 20260601), saving);
  ASSERT_TRUE(added) << added.error().message;
  const auto s = Account("Checking")->ScheduleForNumber(added->number);
  EXPECT_EQ(s->GetAmount(), -200);
  EXPECT_EQ(s->GetToFrom(), "Savings") << "the other account names the payee";

  auto entered = EnterOccurrence(*book_, "Checking", added->number, std::nullopt);
  ASSERT_TRUE(entered) << entered.error().message;
  ASSERT_TRUE(entered->linked);
  EXPECT_EQ(entered->linked->account, "Savings");
  const auto debit = Account("Checking")->GetEntryWithNumber(entered->entry);
  const auto deposit = Account("Savings")->GetEntryWithNumber(entered->linked->number);
  ASSERT_TRUE(debit && deposit);
  EXPECT_EQ(deposit->GetAmount(), 200);
  EXPECT_EQ(deposit->GetDate(), 20260610);
  EXPECT_EQ(debit->GetLinkedEntry(), deposit->GetNumber());
  EXPECT_EQ(deposit->GetLinkedEntry(), debit->GetNumber());
  EXPECT_EQ(deposit->GetLinkedAccount(), Account("Checking")->GetNumber());

  // Once the other account is gone, entering is refused and changes nothing.
  ASSERT_FALSE(book_->RemoveAccount(*Account("Savings")));
  const std::size_t entries = Account("Checking")->GetAllEntries().size();
  auto refused = EnterOccurrence(*book_, "Checking", added->number, 20260710);
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().message.find("which the book does not hold"), std::string::npos)
      << refused.error().message;
  EXPECT_EQ(Account("Checking")->GetAllEntries().size(), entries);
  EXPECT_EQ(s->GetCommittedDates().size(), 1u);
}

TEST_F(EnterOccurrenceTest, OneTimeAndSplitSchedules) {
  testing::ScopedClockPin today(20260615);
  ScheduledEntry shop = Fields(0, "Market");
  shop.fields.amount.reset();
  shop.fields.splits = {{"Food:Groceries", -60, "weekly"}, {"Home", -15.5, ""}};
  shop.newCategory = true;
  auto added = AddSchedule(*book_, "Checking", Every(1, "once", "", 20260612), shop);
  ASSERT_TRUE(added) << added.error().message;
  EXPECT_EQ(added->next, 20260612) << "a one-time schedule's day is its next until entered";
  auto entered = EnterOccurrence(*book_, "Checking", added->number, std::nullopt);
  ASSERT_TRUE(entered) << entered.error().message;
  EXPECT_EQ(entered->amount, -75.5);
  EXPECT_FALSE(entered->next);
  EXPECT_EQ(Account("Checking")->GetEntryWithNumber(entered->entry)->splitLineItems().size(), 2u);
  EXPECT_FALSE(EnterOccurrence(*book_, "Checking", added->number, std::nullopt));
}

// Editing changes what is given and keeps the rest; a refusal leaves the schedule as it was.
TEST_F(EnterOccurrenceTest, EditingKeepsWhatIsNotGiven) {
  const auto s = Account("Checking")->ScheduleForNumber(0);
  auto recurrence = ScheduleRecurrence(*book_, "Checking", 0);
  ASSERT_TRUE(recurrence);
  recurrence->times = 12;
  ScheduledEntry cheaper;
  cheaper.fields.amount = -1600;
  auto edited = EditSchedule(*book_, "Checking", 0, *recurrence, cheaper);
  ASSERT_TRUE(edited) << edited.error().message;
  EXPECT_EQ(edited->rule, "every month on day 1, 12 times");
  EXPECT_EQ(s->GetAmount(), -1600);
  EXPECT_EQ(s->GetToFrom(), "Oakwood");
  EXPECT_TRUE(s->IsCheck()) << "still of the check type";

  const plist::Dictionary before = s->asDictionary();
  ScheduledEntry bad;
  bad.fields.description = "changed";
  bad.fields.category = "No:Such";
  EXPECT_EQ(EditSchedule(*book_, "Checking", 0, std::nullopt, bad).error().kind, Kind::kNotFound);
  bad.fields.category.reset();
  bad.transferTo = "Checking";
  EXPECT_FALSE(EditSchedule(*book_, "Checking", 0, std::nullopt, bad));
  recurrence->unit = "fortnight";
  EXPECT_FALSE(EditSchedule(*book_, "Checking", 0, *recurrence, ScheduledEntry{}));
  EXPECT_EQ(s->asDictionary(), before);
}

}  // namespace
}  // namespace folvant
