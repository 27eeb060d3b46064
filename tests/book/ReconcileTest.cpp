// Reconciling an account with a statement, the record of finished reconciliations and its undo.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/book/Reconcile.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/platform/LocalCalendar.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Kind = BookError::Kind;
using S = ReconcileSuggestion;

constexpr std::int32_t kStatementDay = 20260131;

struct Seen {
  S::Kind kind;
  std::vector<std::int32_t> entries;
  bool resolved;
  bool operator==(const Seen&) const = default;
};
using SeenList = std::vector<Seen>;

std::string Bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Books with one account, "Checking", starting at 100.00, of five unresolved entries: -10.00,
// -25.50, 200.00 and -40.00 in January and -7.00 in February.
class ReconcileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    pin_ = platform::PinClock(platform::MakeLocalTime(2026, 7, 15, 12));
    base_ = testing::ScratchDir("folvant-reconcile");
    book_ = MakeBook(base_ / "book");
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(base_);
    platform::PinClock(pin_);
  }

  static std::unique_ptr<Book> MakeBook(const fs::path& dir) {
    auto created = Book::Create(dir);
    EXPECT_TRUE(created) << created.error().message;
    auto account = (*created)->AddAccount("Checking", nullptr, 100.0);
    EXPECT_TRUE(account);
    const std::pair<std::int32_t, double> entries[] = {
        {20260102, -10.0}, {20260103, -25.5}, {20260104, 200.0}, {20260105, -40.0},
        {20260210, -7.0}};
    for (const auto& [date, amount] : entries) {
      auto entry = std::make_shared<ZELMAccountEntry>();
      entry->SetNumber((*account)->NextAvailableNumber());
      entry->SetDate(date);
      entry->SetAmount(amount);
      (*account)->AddEntry(entry);
    }
    EXPECT_FALSE((*created)->Save());
    return std::move(*created);
  }

  std::unique_ptr<Book> Reopen() {
    book_.reset();
    Book::OpenOptions options;
    options.access = Book::Access::kWrite;
    auto opened = Book::Open(base_ / "book", options);
    EXPECT_TRUE(opened) << opened.error().message;
    return std::move(*opened);
  }

  // The suggestions against a statement of that balance, as (kind, entries, resolved).
  std::vector<Seen> Suggestions(double balance) {
    auto view = ReconcileView(*book_, "Checking", {kStatementDay, balance});
    EXPECT_TRUE(view) << view.error().message;
    std::vector<Seen> seen;
    for (const S& s : view->suggestions) seen.push_back({s.kind, s.entries, s.resolved});
    return seen;
  }

  std::optional<platform::LocalTime> pin_;
  fs::path base_;
  std::unique_ptr<Book> book_;
};

TEST_F(ReconcileTest, ListsTheUnresolvedEntriesUpToTheDayAndTheDifference) {
  auto view = ReconcileView(*book_, "checking", {kStatementDay, 74.5});
  ASSERT_TRUE(view) << view.error().message;
  std::vector<std::int32_t> numbers;
  for (const UnresolvedEntry& e : view->unresolved) numbers.push_back(e.number);
  EXPECT_EQ(numbers, (std::vector<std::int32_t>{1, 2, 3, 4}));
  EXPECT_DOUBLE_EQ(view->resolvedBalance, 100.0);
  EXPECT_DOUBLE_EQ(view->difference, -25.5);
  EXPECT_FALSE(fs::exists(base_ / "book" / "reconciliations"));
}

TEST_F(ReconcileTest, SuggestsWhereTheDifferenceMayComeFrom) {
  EXPECT_EQ(Suggestions(74.5), (SeenList{{S::Kind::kOneEntry, {2}, false}}));
  EXPECT_EQ(Suggestions(50.0), (SeenList{{S::Kind::kTwoEntries, {1, 4}, false}}));
  // -40.00 that should have been a deposit of 40.00.
  EXPECT_EQ(Suggestions(140.0), (SeenList{{S::Kind::kSignFlipped, {4}, false}}));
  EXPECT_EQ(Suggestions(100.27), (SeenList{{S::Kind::kTransposedDigits, {}, false}}));
  EXPECT_TRUE(Suggestions(100.0).empty());
  // A resolved deposit of 200.00 that was a withdrawal counts twice against the statement.
  ASSERT_TRUE(TickEntries(*book_, "Checking", {kStatementDay, 0}, {3}));
  EXPECT_EQ(Suggestions(-100.0), (SeenList{{S::Kind::kSignFlipped, {3}, true}}));
}

TEST_F(ReconcileTest, FinishIsRefusedWhenOffAndRecordedWhenTheDifferenceIsZero) {
  auto plain = MakeBook(base_ / "plain");
  const Statement statement{kStatementDay, 64.5};

  auto late = TickEntries(*book_, "Checking", statement, {1, 5});
  ASSERT_FALSE(late);
  EXPECT_EQ(late.error().kind, Kind::kInvalid);
  EXPECT_EQ(late.error().message,
            "entry 5 is dated 2026-02-10, after the statement date 2026-01-31");
  EXPECT_EQ(TickEntries(*book_, "Checking", statement, {1, 99}).error().kind, Kind::kNotFound);
  auto resolved = TickEntries(*book_, "Checking", statement, {1, 2, 3});
  ASSERT_TRUE(resolved);
  EXPECT_EQ(*resolved, 3u);
  ASSERT_TRUE(UntickEntries(*book_, "Checking", {3}));

  auto off = FinishReconciliation(*book_, "Checking", {kStatementDay, 60.0});
  ASSERT_FALSE(off);
  EXPECT_EQ(off.error().kind, Kind::kInvalid);
  EXPECT_NE(off.error().message.find("by -4.50 USD"), std::string::npos) << off.error().message;

  auto finished = FinishReconciliation(*book_, "Checking", statement);
  ASSERT_TRUE(finished) << finished.error().message;
  EXPECT_EQ(finished->resolved, (std::vector<std::int32_t>{1, 2}));
  ASSERT_FALSE(book_->Save());

  // The same marks set without reconciling write the same account file.
  auto account = plain->AccountToChange("Checking");
  ASSERT_TRUE(account);
  for (std::int32_t n : {1, 2}) (*account)->GetEntryWithNumber(n)->SetCleared(1);
  ASSERT_FALSE(plain->Changed(**account));
  ASSERT_FALSE(plain->Save());
  EXPECT_EQ(Bytes(base_ / "book" / "accounts" / "0.plist"),
            Bytes(base_ / "plain" / "accounts" / "0.plist"));

  book_ = Reopen();
  auto history = ReconcileRecords(*book_, "Checking");
  ASSERT_TRUE(history);
  ASSERT_EQ(history->records.size(), 1u);
  const ReconciliationRecord& r = history->records[0];
  EXPECT_EQ(r.statement.date, kStatementDay);
  EXPECT_DOUBLE_EQ(r.statement.balance, 64.5);
  EXPECT_EQ(r.resolved, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(r.finished, platform::MakeLocalTime(2026, 7, 15, 12));
  EXPECT_TRUE(ReconcileView(*book_, "Checking", statement)->resolvedSinceLast.empty());
}

TEST_F(ReconcileTest, UndoUnresolvesTheLastReconciliationsEntriesAndRemovesItsRecord) {
  ASSERT_TRUE(TickEntries(*book_, "Checking", {kStatementDay, 0}, {1, 2}));
  ASSERT_TRUE(FinishReconciliation(*book_, "Checking", {kStatementDay, 64.5}));
  // Resolved by hand, outside a reconciliation run: the next one still records it.
  ASSERT_TRUE(ResolveEntries(*book_, "Checking", {3}));
  ASSERT_TRUE(FinishReconciliation(*book_, "Checking", {kStatementDay, 264.5}));
  ASSERT_FALSE(book_->Save());

  book_ = Reopen();
  auto undone = UndoReconciliation(*book_, "Checking");
  ASSERT_TRUE(undone) << undone.error().message;
  EXPECT_EQ(undone->record.resolved, (std::vector<std::int32_t>{3}));
  ASSERT_FALSE(book_->Save());

  book_ = Reopen();
  auto account = book_->FindAccount("Checking");
  ASSERT_TRUE(account);
  EXPECT_EQ((*account)->GetEntryWithNumber(3)->GetCleared(), 0);
  EXPECT_NE((*account)->GetEntryWithNumber(2)->GetCleared(), 0);
  EXPECT_DOUBLE_EQ((*account)->GetResolvedBalance(), 64.5);
  ASSERT_EQ(ReconcileRecords(*book_, "Checking")->records.size(), 1u);

  ASSERT_TRUE(UndoReconciliation(*book_, "Checking"));
  EXPECT_TRUE(ReconcileRecords(*book_, "Checking")->records.empty());
  EXPECT_EQ(UndoReconciliation(*book_, "Checking").error().kind, Kind::kNotFound);
}

}  // namespace
}  // namespace folvant
