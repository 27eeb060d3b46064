// Entries and transfers through the book's operations.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Kind = BookError::Kind;

// A book with "Checking" (USD, checks from 1001), "Savings" (USD), "Travel" (EUR at 1.25 USD)
// and the categories Auto:Fuel, Food:Groceries and Food:Dining.
class EntriesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = testing::ScratchDir("folvant-entries");
    auto created = Book::Create(dir_);
    ASSERT_TRUE(created) << created.error().message;
    book_ = std::move(*created);
    auto usd = book_->RegisterCurrency("USD");
    auto eur = book_->RegisterCurrency("EUR");
    ASSERT_TRUE(usd && eur);
    (*eur)->setRate(1.25);
    auto checking = book_->AddAccount("Checking", *usd, 1000.0);
    ASSERT_TRUE(checking);
    (*checking)->SetStartingCheckNumber(1001);
    ASSERT_TRUE(book_->AddAccount("Savings", *usd));
    ASSERT_TRUE(book_->AddAccount("Travel", *eur));
    auto* auto_ = book_->AddCategory("Auto", nullptr).get();
    book_->AddCategory("Fuel", auto_);
    auto* food = book_->AddCategory("Food", nullptr).get();
    book_->AddCategory("Groceries", food);
    book_->AddCategory("Dining", food);
    ASSERT_FALSE(book_->Save());
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(dir_);
  }

  EntryChange Add(const EntryFields& fields, const EntryOptions& options = {}) {
    auto added = AddEntry(*book_, "Checking", fields, options);
    EXPECT_TRUE(added) << (added ? "" : added.error().message);
    return added ? *added : EntryChange{};
  }

  std::string Bytes(const fs::path& file) {
    std::ifstream in(dir_ / file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
  }

  std::unique_ptr<Book> book_;
  fs::path dir_;
};

TEST_F(EntriesTest, AnEarlierEntryWithTheSamePayeeFillsInWhatIsNotGiven) {
  EntryFields first;
  first.amount = -40.0;
  first.toFrom = "Shell";
  first.type = "debit card";
  first.category = "Auto:Fuel";
  first.description = "Fuel";
  Add(first);

  EntryFields next;
  next.amount = -35.5;
  next.toFrom = "SHELL";
  next.description = "Car wash";
  const EntryChange remembered = Add(next);
  EXPECT_EQ(remembered.remembered, (std::vector<std::string>{"type", "category"}));
  EXPECT_EQ(remembered.entry.type, "Debit Card");
  EXPECT_EQ(remembered.entry.category, "Auto:Fuel");
  EXPECT_EQ(remembered.entry.description, "Car wash");
  EXPECT_EQ(remembered.entry.number, 2);
  EXPECT_DOUBLE_EQ(remembered.balance, 1000.0 - 40.0 - 35.5);

  // A deposit from the same name remembers nothing of the debits; --no-memory nothing at all.
  EntryFields deposit;
  deposit.amount = 5.0;
  deposit.toFrom = "Shell";
  EXPECT_TRUE(Add(deposit).remembered.empty());
  EntryOptions forget;
  forget.noMemory = true;
  const EntryChange plain = Add(next, forget);
  EXPECT_TRUE(plain.remembered.empty());
  EXPECT_EQ(plain.entry.category, "");
}

TEST_F(EntriesTest, ChecksTakeTheNextNumberAndAUsedNumberIsRefused) {
  EntryFields check;
  check.amount = -10.0;
  check.check = true;
  EXPECT_EQ(Add(check).entry.checkNumber, 1001);
  const EntryChange second = Add(check);
  EXPECT_EQ(second.entry.checkNumber, 1002);
  EXPECT_EQ(second.entry.type, "Check");

  check.checkNumber = 1001;
  auto refused = AddEntry(*book_, "Checking", check);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind, Kind::kExists);
  EntryOptions allow;
  allow.allowDuplicateCheck = true;
  EXPECT_EQ(Add(check, allow).entry.checkNumber, 1001);

  EntryFields deposit;
  deposit.amount = 10.0;
  deposit.check = true;
  EXPECT_EQ(AddEntry(*book_, "Checking", deposit).error().kind, Kind::kInvalid);
}

TEST_F(EntriesTest, ASplitEntryIsTheTotalOfItsLineItems) {
  EntryFields split;
  split.toFrom = "Market";
  split.splits = std::vector<SplitFields>{{"Food:Groceries", -30.004, "weekly"},
                                          {"food:dining", -12.5, "lunch"}};
  const EntryChange added = Add(split);
  EXPECT_DOUBLE_EQ(added.entry.amount, -42.5);
  EXPECT_EQ(added.entry.kind, "debit");
  ASSERT_EQ(added.entry.splits.size(), 2u);
  EXPECT_EQ(added.entry.splits[1].category, "Food:Dining");

  split.amount = -40.0;
  auto refused = AddEntry(*book_, "Checking", split);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().message, "the line items add up to -42.50, not -40.00");
  // A split entry's amount changes through its line items only.
  EntryFields amount;
  amount.amount = -1.0;
  EXPECT_EQ(EditEntry(*book_, "Checking", added.entry.number, amount).error().kind, Kind::kInvalid);
}

TEST_F(EntriesTest, AnUnknownCategoryIsRefusedWithTheClosestNamesUnlessItIsToBeMade) {
  EntryFields fields;
  fields.amount = -5.0;
  fields.category = "Food:Grocery";
  auto refused = AddEntry(*book_, "Checking", fields);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind, Kind::kNotFound);
  EXPECT_EQ(refused.error().message,
            "no category named \"Food:Grocery\" in the book; the closest: \"Food:Groceries\"");
  EXPECT_EQ(refused.error().hint, "--new-category creates it");

  fields.category = "Food:Snacks:Chips";
  EntryOptions make;
  make.newCategory = true;
  EXPECT_EQ(Add(fields, make).entry.category, "Food:Snacks:Chips");
  EXPECT_EQ(Add(fields).entry.category, "Food:Snacks:Chips");
}

TEST_F(EntriesTest, ATransferIsALinkedPairThatStaysInStep) {
  TransferRequest request{"Checking", "Travel", 125.0, 20260301, "Trip money", std::nullopt};
  auto made = Transfer(*book_, request);
  ASSERT_TRUE(made) << made.error().message;
  EXPECT_DOUBLE_EQ(made->debit.amount, -125.0);
  EXPECT_DOUBLE_EQ(made->deposit.amount, 100.0);  // 125 USD at 1.25 USD per EUR
  ASSERT_TRUE(made->debit.linked && made->deposit.linked);
  EXPECT_EQ(made->debit.linked->account, "Travel");
  EXPECT_EQ(made->debit.linked->number, made->deposit.number);
  EXPECT_EQ(made->deposit.linked->account, "Checking");
  EXPECT_EQ(made->deposit.toFrom, "Checking");
  const std::int32_t debit = made->debit.number, deposit = made->deposit.number;

  // Changing one side changes the other, converted; the resolved mark stays each side's own.
  EntryFields fields;
  fields.amount = 50.0;  // on the receiving side, in euros
  fields.description = "Less";
  auto edited = EditEntry(*book_, "Travel", deposit, fields);
  ASSERT_TRUE(edited) << edited.error().message;
  ASSERT_TRUE(edited->linked);
  EXPECT_EQ(edited->linked->what, "was updated to match");
  auto other = ShowEntry(*book_, "Checking", debit);
  ASSERT_TRUE(other);
  EXPECT_DOUBLE_EQ(other->amount, -62.5);
  EXPECT_EQ(other->description, "Less");
  ASSERT_TRUE(ResolveEntries(*book_, "Checking", {debit}));
  EXPECT_FALSE(ShowEntry(*book_, "Travel", deposit)->resolved);

  ASSERT_TRUE(VoidEntry(*book_, "Checking", debit));
  EXPECT_TRUE(ShowEntry(*book_, "Travel", deposit)->isVoid);
  auto travel = book_->FindAccount("Travel");
  EXPECT_DOUBLE_EQ((*travel)->GetBalance(), 0.0);

  auto deleted = DeleteEntry(*book_, "Travel", deposit);
  ASSERT_TRUE(deleted);
  EXPECT_EQ(deleted->linked->what, "was deleted too");
  EXPECT_EQ(ShowEntry(*book_, "Checking", debit).error().kind, Kind::kNotFound);

  // Same currency: the amount received is the amount sent, and no other can be given.
  request.to = "Savings";
  request.toAmount = 3.0;
  EXPECT_EQ(Transfer(*book_, request).error().kind, Kind::kInvalid);
}

TEST_F(EntriesTest, ARefusedChangeLeavesTheFilesAsTheyWere) {
  EntryFields check;
  check.amount = -10.0;
  check.check = true;
  Add(check);
  ASSERT_FALSE(book_->Save());
  const std::string before = Bytes("accounts/0.plist");
  const std::size_t categories = book_->allCategories().size();

  check.checkNumber = 1001;
  check.category = "Auto:Fuel";
  EXPECT_FALSE(AddEntry(*book_, "Checking", check));  // check number in use
  check.checkNumber.reset();
  check.category = "Nowhere";
  EXPECT_FALSE(AddEntry(*book_, "Checking", check));
  EntryFields split;
  split.amount = -1.0;
  split.splits = std::vector<SplitFields>{{"New:One", -2.0, ""}};
  EntryOptions make;
  make.newCategory = true;
  EXPECT_FALSE(AddEntry(*book_, "Checking", split, make));  // the total does not match
  EXPECT_FALSE(ResolveEntries(*book_, "Checking", {1, 99}));
  EXPECT_FALSE(Transfer(*book_, {"Checking", "Checking", 5.0, std::nullopt, "", std::nullopt}));
  // The account is written again (it was taken for changing), with the same contents.
  ASSERT_FALSE(book_->Save());
  EXPECT_EQ(Bytes("accounts/0.plist"), before);
  EXPECT_EQ(book_->allCategories().size(), categories);
  EXPECT_EQ(ShowEntry(*book_, "Checking", 1)->resolved, false);
}

}  // namespace
}  // namespace folvant
