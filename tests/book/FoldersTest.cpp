// Folders, smart folders and the book's currencies, through the book's operations.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Folders.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountFile.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Kind = BookError::Kind;

// A book with one account, "Checking", of three entries: -10, -20 and -30.
class FoldersTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = testing::ScratchDir("folvant-folders");
    auto created = Book::Create(dir_);
    ASSERT_TRUE(created) << created.error().message;
    book_ = std::move(*created);
    auto account = book_->AddAccount("Checking");
    ASSERT_TRUE(account);
    for (int i = 1; i <= 3; ++i) {
      auto entry = std::make_shared<ZELMAccountEntry>();
      entry->SetNumber((*account)->NextAvailableNumber());
      entry->SetDate(20260100 + i);
      entry->SetAmount(-10.0 * i);
      (*account)->AddEntry(entry);
      numbers_.push_back(entry->GetNumber());
    }
    ASSERT_FALSE(book_->Save());
  }
  void TearDown() override {
    book_.reset();
    fs::remove_all(dir_);
  }

  std::unique_ptr<Book> book_;
  std::vector<std::int32_t> numbers_;
  fs::path dir_;
};

TEST_F(FoldersTest, EntriesMoveInAndOutAndComeBackWhenTheFolderGoes) {
  ASSERT_TRUE(NewFolder(*book_, "checking", "Bills"));
  EXPECT_EQ(NewFolder(*book_, "Checking", "BILLS").error().kind, Kind::kExists);

  auto moved = MoveEntries(*book_, "Checking", {numbers_[0], numbers_[2]}, "bills");
  ASSERT_TRUE(moved) << moved.error().message;
  EXPECT_EQ(moved->folder, "Bills");
  EXPECT_EQ(moved->entries, 2u);
  auto list = ListFolders(*book_, "Checking");
  ASSERT_TRUE(list);
  EXPECT_EQ(list->registerEntries, 1u);
  ASSERT_EQ(list->folders.size(), 1u);
  EXPECT_EQ(list->folders[0].entries, 2u);
  EXPECT_DOUBLE_EQ(list->folders[0].total, -40.0);

  // An unknown number anywhere in the list moves nothing.
  auto unknown = MoveEntries(*book_, "Checking", {numbers_[1], 999}, "Bills");
  ASSERT_FALSE(unknown);
  EXPECT_EQ(unknown.error().kind, Kind::kNotFound);
  EXPECT_EQ(unknown.error().message, "no entry number 999 in \"Checking\"");
  EXPECT_EQ(ListFolders(*book_, "Checking")->folders[0].entries, 2u);
  EXPECT_EQ(MoveEntries(*book_, "Checking", {numbers_[1]}, "Nowhere").error().kind,
            Kind::kNotFound);

  ASSERT_TRUE(MoveEntries(*book_, "Checking", {numbers_[0]}, ""));
  auto removed = RemoveFolder(*book_, "Checking", "bills");
  ASSERT_TRUE(removed);
  EXPECT_EQ(removed->entries, 1u);
  ASSERT_FALSE(book_->Save());

  book_.reset();
  auto reopened = Book::Open(dir_, {});
  ASSERT_TRUE(reopened);
  list = ListFolders(**reopened, "Checking");
  ASSERT_TRUE(list);
  EXPECT_TRUE(list->folders.empty());
  EXPECT_EQ(list->registerEntries, 3u);
  EXPECT_DOUBLE_EQ((*(*reopened)->FindAccount("Checking"))->GetBalance(), -60.0);
}

TEST_F(FoldersTest, SmartFoldersAreMadeFromWordsAndRemoved) {
  auto any = NewSmartFolder(*book_, "Checking", "Either", {"amount < -15", "resolved no"}, true);
  ASSERT_TRUE(any) << any.error().message;
  auto bad = NewSmartFolder(*book_, "Checking", "Odd", {"amount > 1", "amount about 3"}, false);
  ASSERT_FALSE(bad);
  EXPECT_EQ(bad.error().kind, Kind::kInvalid);
  EXPECT_NE(bad.error().message.find("about"), std::string::npos) << bad.error().message;
  EXPECT_EQ(NewSmartFolder(*book_, "Checking", "either", {"void no"}, false).error().kind,
            Kind::kExists);

  auto list = ListSmartFolders(*book_, "Checking");
  ASSERT_TRUE(list);
  const auto named = [&](const std::string& name) -> const SmartFolderLine* {
    for (const auto& line : list->smartFolders)
      if (line.name == name) return &line;
    return nullptr;
  };
  EXPECT_EQ(named("Odd"), nullptr) << "a bad condition makes nothing";
  const SmartFolderLine* either = named("Either");
  ASSERT_NE(either, nullptr);
  ASSERT_EQ(either->groups.size(), 2u);
  EXPECT_EQ(either->groups[0].join, "and");
  EXPECT_EQ(either->groups[1].join, "or");
  EXPECT_EQ(either->groups[1].match, "all");
  EXPECT_EQ(either->groups[1].conditions, std::vector<std::string>{"resolved no"});

  ASSERT_TRUE(RemoveSmartFolder(*book_, "Checking", "EITHER"));
  EXPECT_EQ(RemoveSmartFolder(*book_, "Checking", "Either").error().kind, Kind::kNotFound);
}

TEST_F(FoldersTest, DamagedAccountIsRefused) {
  book_.reset();
  const fs::path file = dir_ / "accounts" / "0.plist";
  auto read = ReadAccountFile(file);
  ASSERT_TRUE(read);
  std::string xml =
      AccountFileBytes(*AccountFromFile(std::move(*read), nullptr), plist::Format::kXml);
  const std::string key = "<key>amount</key>";
  xml.replace(xml.find(key), key.size(), "<key>amounu</key>");
  std::ofstream(file, std::ios::binary | std::ios::trunc) << xml;

  auto book = Book::Open(dir_, {Book::Access::kWrite, std::chrono::milliseconds(2000), {}});
  ASSERT_TRUE(book);
  EXPECT_TRUE(ListFolders(**book, "Checking")) << "a damaged account still reads";
  EXPECT_EQ(NewFolder(**book, "Checking", "Bills").error().kind, Kind::kDamaged);
  EXPECT_EQ(MoveEntries(**book, "Checking", {numbers_[0]}, "").error().kind, Kind::kDamaged);
  EXPECT_EQ(NewSmartFolder(**book, "Checking", "Big", {"amount > 1"}, false).error().kind,
            Kind::kDamaged);
}

TEST_F(FoldersTest, CurrenciesAreAddedOnceAndOnlyWhenKnown) {
  const std::size_t before = book_->currencies().size();
  auto peso = book_->RegisterCurrency("mxn");
  ASSERT_TRUE(peso) << peso.error().message;
  EXPECT_EQ((*peso)->code(), "MXN");
  EXPECT_EQ((*peso)->description(), "Mexican Peso");
  EXPECT_EQ(*book_->RegisterCurrency("MXN"), *peso);
  EXPECT_EQ(book_->currencies().size(), before + 1);
  EXPECT_EQ((*book_->RegisterCurrency("EUR"))->symbol(), "€");

  for (const char* code : {"XYZ", "US", "USDX", ""}) {
    auto refused = book_->RegisterCurrency(code);
    ASSERT_FALSE(refused) << code;
    EXPECT_EQ(refused.error().kind, Kind::kInvalid);
    EXPECT_EQ(refused.error().message, "\"" + std::string(code) + "\" is not a currency code");
  }
  EXPECT_EQ(book_->currencies().size(), before + 2);

  auto account = book_->AddAccount("Pesos", *peso, 12.5);
  ASSERT_TRUE(account);
  EXPECT_EQ((*account)->currency(), *peso);
  EXPECT_DOUBLE_EQ((*account)->GetBalance(), 12.5);
  EXPECT_EQ(book_->AddAccount("Huge", nullptr, 1e16).error().kind, Kind::kInvalid);
}

}  // namespace
}  // namespace folvant
