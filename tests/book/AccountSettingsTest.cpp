// Categories, entry types, currencies, account changes and locked accounts, through the book's
// operations.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "folvant/book/Accounts.h"
#include "folvant/book/Book.h"
#include "folvant/book/Categories.h"
#include "folvant/book/Currencies.h"
#include "folvant/book/Types.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Kind = BookError::Kind;

std::string Bytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A book with Checking and Savings, the categories Food, Food:Groceries and Auto, and in
// Checking an entry in Food:Groceries and a split entry with one line item in it.
class AccountSettingsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = testing::ScratchDir("folvant-settings");
    auto created = Book::Create(dir_);
    ASSERT_TRUE(created) << created.error().message;
    book_ = std::move(*created);
    checking_ = *book_->AddAccount("Checking");
    savings_ = *book_->AddAccount("Savings");
    auto food = book_->AddCategory("Food", nullptr);
    groceries_ = book_->AddCategory("Groceries", food.get());
    auto_ = book_->AddCategory("Auto", nullptr);
    auto plain = std::make_shared<ZELMAccountEntry>();
    plain->SetNumber(checking_->NextAvailableNumber());
    plain->SetAmount(-5.0);
    plain->SetCategory(groceries_->number());
    checking_->AddEntry(plain);
    auto split = std::make_shared<ZELMAccountEntry>();
    split->SetNumber(checking_->NextAvailableNumber());
    split->addSplitLineItemWithCategory(groceries_->number(), "milk", "", -2.0);
    checking_->AddEntry(split);
    ASSERT_FALSE(book_->Save());
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(dir_);
  }
  // The book again, as a new command would open it.
  Book& Reopen(std::optional<std::string> password = std::nullopt) {
    book_.reset();
    Book::OpenOptions options;
    options.access = Book::Access::kWrite;
    options.password = std::move(password);
    auto book = Book::Open(dir_, options);
    EXPECT_TRUE(book) << book.error().message;
    book_ = std::move(*book);
    return *book_;
  }
  std::int64_t Uses(std::string_view fullName) {
    const auto lines = ListCategories(*book_);
    if (!lines) return -2;
    for (const CategoryLine& line : *lines) {
      if (line.fullName == fullName) return line.uses;
    }
    return -1;
  }

  std::unique_ptr<Book> book_;
  std::shared_ptr<ZELMAccount> checking_, savings_;
  std::shared_ptr<ZELMAccountEntryCategory> groceries_, auto_;
  fs::path dir_;
};

TEST_F(AccountSettingsTest, TheTreeGrowsMovesAndKeepsNamesUniquePerLevel) {
  ASSERT_TRUE(NewCategory(*book_, "food:Dining"));
  EXPECT_EQ(NewCategory(*book_, "Food:dining").error().kind, Kind::kExists);
  EXPECT_EQ(NewCategory(*book_, "Fod:Snacks").error().kind, Kind::kNotFound);
  EXPECT_EQ(NewCategory(*book_, "Food:").error().kind, Kind::kInvalid);

  auto moved = MoveCategory(*book_, "Food:Groceries", "Auto");
  ASSERT_TRUE(moved) << moved.error().message;
  EXPECT_EQ(moved->category, "Auto:Groceries");
  EXPECT_EQ(MoveCategory(*book_, "Auto", "Auto:Groceries").error().kind, Kind::kInvalid);
  ASSERT_TRUE(RenameCategory(*book_, "Auto", "Car"));
  ASSERT_TRUE(MoveCategory(*book_, "Car:Groceries", ""));
  ASSERT_FALSE(book_->Save());

  // Entries keep the category by number, whatever its name and place.
  Reopen();
  std::vector<std::string> names;
  const auto lines = ListCategories(*book_);
  ASSERT_TRUE(lines);
  for (const CategoryLine& line : *lines) names.push_back(line.fullName);
  EXPECT_EQ(names, (std::vector<std::string>{"Car", "Food", "Food:Dining", "Groceries"}));
  EXPECT_EQ(Uses("Groceries"), 2);
}

TEST_F(AccountSettingsTest, ACategoryInUseGoesOnlyWithItsUsesMovedElsewhere) {
  const std::string before = Bytes(dir_ / "accounts" / "0.plist");
  auto refused = RemoveCategory(*book_, "Food:Groceries", std::nullopt);
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().message.find("in use"), std::string::npos);
  EXPECT_EQ(RemoveCategory(*book_, "Food", "Auto").error().kind, Kind::kInvalid);  // has children

  auto removed = RemoveCategory(*book_, "Food:Groceries", "Auto");
  ASSERT_TRUE(removed) << removed.error().message;
  EXPECT_EQ(removed->moved, 2);
  ASSERT_FALSE(book_->Save());
  EXPECT_NE(Bytes(dir_ / "accounts" / "0.plist"), before);
  Reopen();
  EXPECT_EQ(Uses("Auto"), 2);
  EXPECT_EQ(Uses("Food:Groceries"), -1);
  ASSERT_TRUE(RemoveCategory(*book_, "Food", std::nullopt));
}

TEST_F(AccountSettingsTest, TypesAreRenamedRetiredDefaultedAndImported) {
  // "Transfer" is both a debit and a deposit type: it needs its side.
  EXPECT_EQ(RenameType(*book_, "Checking", "transfer", TypeSide::kEither, "Move").error().kind,
            Kind::kInvalid);
  ASSERT_TRUE(RenameType(*book_, "Checking", "transfer", TypeSide::kDeposit, "Move In"));
  EXPECT_EQ(RenameType(*book_, "Checking", "ATM", TypeSide::kEither, "cash").error().kind,
            Kind::kExists);
  EXPECT_EQ(checking_->depositEntryTypeForName("Move In")->GetNumber(), 12);

  ASSERT_TRUE(SetDefaultTypes(*book_, "Checking", "Check", "Deposit"));
  EXPECT_EQ(SetDefaultTypes(*book_, "Checking", "Deposit", std::nullopt).error().kind,
            Kind::kNotFound);  // not a debit type
  auto removed = RemoveType(*book_, "Checking", "check", TypeSide::kEither);
  ASSERT_TRUE(removed);
  EXPECT_EQ(checking_->GetDefaultDebitType(), nullptr);
  EXPECT_EQ(checking_->GetDefaultDepositType()->GetName(), "Deposit");
  EXPECT_EQ(checking_->nextAvailableTypeNumber(), 13);  // the retired type keeps its number

  // Savings takes what it lacks on each side; its own "Transfer" does not count as "Move In".
  ASSERT_TRUE(NewType(*book_, "Checking", "Fee", false, false));
  auto imported = ImportTypes(*book_, "Savings", "Checking");
  ASSERT_TRUE(imported) << imported.error().message;
  EXPECT_EQ(imported->added, (std::vector<std::string>{"Fee", "Move In"}));
  EXPECT_EQ(savings_->debitEntryTypeForName("Fee")->GetNumber(), 13);
  EXPECT_EQ(ImportTypes(*book_, "Savings", "Checking")->added.size(), 0u);
}

TEST_F(AccountSettingsTest, CurrencyCodesAreRefusedAsTheEditorRefusesThem) {
  EXPECT_EQ(NewCurrency(*book_, "EURO", {}).error().kind, Kind::kInvalid);
  EXPECT_EQ(NewCurrency(*book_, "usd", {}).error().kind, Kind::kInvalid);
  CurrencySettings rate;
  rate.rate = 0.0;
  EXPECT_FALSE(NewCurrency(*book_, "EUR", rate));
  rate.rate = 1.1;
  auto euro = NewCurrency(*book_, "EUR", rate);
  ASSERT_TRUE(euro) << euro.error().message;
  EXPECT_EQ(euro->symbol, "€");  // the known form of a known code
  auto own = NewCurrency(*book_, "XQZ", {});
  ASSERT_TRUE(own);
  EXPECT_EQ(own->symbol, "XQZ");
  EXPECT_FALSE(EditCurrency(*book_, "USD", rate));  // the base rate stays 1

  AccountEdit inEuro;
  inEuro.currency = "EUR";
  ASSERT_TRUE(EditAccount(*book_, "Savings", inEuro));
  CurrencySettings code;
  code.code = "eur";
  EXPECT_FALSE(EditCurrency(*book_, "XQZ", code));
  ASSERT_TRUE(EditCurrency(*book_, "EUR", code));  // its own code, in other letters
  ASSERT_FALSE(book_->Save());
  Reopen();
  EXPECT_EQ((*book_->FindAccount("Savings"))->currency()->code(), "EUR") << "kept in capitals";
  EXPECT_EQ(book_->currencies().size(), 3u);
}

TEST_F(AccountSettingsTest, AnAccountWithTransfersLinkedToItGoesOnlyUnlinked) {
  auto transfer = std::make_shared<ZELMAccountEntry>();
  transfer->SetNumber(savings_->NextAvailableNumber());
  transfer->SetAmount(5.0);
  transfer->SetIsLinked(true);
  transfer->SetLinkedAccount(checking_->GetNumber());
  transfer->SetLinkedEntry(1);
  savings_->AddEntry(transfer);
  ASSERT_FALSE(book_->Changed(*savings_));
  ASSERT_FALSE(book_->Save());
  const std::string checking = Bytes(dir_ / "accounts" / "0.plist");
  const std::string savings = Bytes(dir_ / "accounts" / "1.plist");

  Reopen();
  auto refused = RemoveAccount(*book_, "Checking", false);
  ASSERT_FALSE(refused);
  EXPECT_NE(refused.error().message.find("Savings"), std::string::npos);
  ASSERT_FALSE(book_->Save());
  EXPECT_EQ(Bytes(dir_ / "accounts" / "0.plist"), checking);
  EXPECT_EQ(Bytes(dir_ / "accounts" / "1.plist"), savings);

  auto removed = RemoveAccount(*book_, "Checking", true);
  ASSERT_TRUE(removed) << removed.error().message;
  EXPECT_EQ(removed->unlinked, 1);
  ASSERT_FALSE(book_->Save());
  EXPECT_FALSE(fs::exists(dir_ / "accounts" / "0.plist"));
  EXPECT_TRUE(fs::exists(dir_ / "accounts" / "0.plist.removed"));
  Reopen();
  EXPECT_EQ(book_->FindAccount("Checking").error().kind, Kind::kNotFound);
  EXPECT_FALSE((*book_->FindAccount("Savings"))->GetAllEntries().front()->IsLinked());
}

TEST_F(AccountSettingsTest, ALockedAccountShowsAndChangesNothingWithoutItsPassword) {
  ASSERT_TRUE(LockAccount(*book_, "Checking", "secret"));
  ASSERT_FALSE(book_->Save());
  const std::string locked = Bytes(dir_ / "accounts" / "0.plist");

  Reopen();
  EXPECT_EQ(book_->FindAccount("Checking").error().kind, Kind::kLocked);
  AccountEdit rename;
  rename.name = "Mine";
  EXPECT_EQ(EditAccount(*book_, "Checking", rename).error().kind, Kind::kLocked);
  // Its uses still hold a category in place, and a reassignment cannot reach into it.
  EXPECT_EQ(RemoveCategory(*book_, "Food:Groceries", "Auto").error().kind, Kind::kLocked);
  ASSERT_FALSE(book_->Save());
  EXPECT_EQ(Bytes(dir_ / "accounts" / "0.plist"), locked);

  Reopen("wrong");
  int asked = 0;
  book_->setPasswordAsker([&asked](std::string_view account) -> std::optional<std::string> {
    ++asked;
    return account == "Checking" ? std::optional<std::string>("secret") : std::nullopt;
  });
  ASSERT_TRUE(book_->FindAccount("checking"));
  ASSERT_TRUE(book_->FindAccount("Checking"));
  EXPECT_EQ(asked, 1);
  ASSERT_TRUE(UnlockAccount(*book_, "Checking"));
  ASSERT_FALSE(book_->Save());
  Reopen();
  auto open = book_->FindAccount("Checking");
  ASSERT_TRUE(open);
  EXPECT_FALSE((*open)->HasPassword());
}

}  // namespace
}  // namespace folvant
