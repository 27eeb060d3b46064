// The book as a store: locks, lazy loading, saves that write only what changed, damaged and
// missing account files, repairs, and saves killed at any moment.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountFile.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using Access = Book::Access;

class BookTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = testing::ScratchDir("folvant-book");
    auto book = Book::Create(dir_);
    ASSERT_TRUE(book) << book.error().message;
    for (const char* name : {"Checking", "Savings"}) {
      auto account = (*book)->AddAccount(name);
      ASSERT_TRUE(account);
      for (int i = 0; i < 3; ++i) {
        auto entry = std::make_shared<ZELMAccountEntry>();
        entry->SetNumber((*account)->NextAvailableNumber());
        entry->SetDate(20260101 + i);
        entry->SetAmount(-10.25 * (i + 1));
        (*account)->AddEntry(entry);
      }
    }
    ASSERT_FALSE((*book)->Save());
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::unique_ptr<Book> Open(Access access = Access::kRead, int wait_ms = 2000) {
    Book::OpenOptions options;
    options.access = access;
    options.lockWait = std::chrono::milliseconds(wait_ms);
    auto book = Book::Open(dir_, options);
    EXPECT_TRUE(book) << book.error().message;
    return book ? std::move(*book) : nullptr;
  }
  fs::path AccountFile(int number) const {
    return dir_ / "accounts" / (std::to_string(number) + ".plist");
  }
  // Rewrites an account file as XML with `from` replaced by `to` in its text.
  void Tamper(int number, const std::string& from, const std::string& to) {
    auto file = ReadAccountFile(AccountFile(number));
    ASSERT_TRUE(file);
    auto account = AccountFromFile(std::move(*file), nullptr);
    std::string xml = AccountFileBytes(*account, plist::Format::kXml);
    for (auto at = xml.find(from); at != std::string::npos; at = xml.find(from, at + to.size())) {
      xml.replace(at, from.size(), to);
    }
    std::ofstream(AccountFile(number), std::ios::binary | std::ios::trunc) << xml;
  }
  double Balance(Book& book, const char* name) {
    auto account = book.FindAccount(name);
    return account ? (*account)->GetBalance() : -1e9;
  }

  fs::path dir_;
};

TEST_F(BookTest, SecondWriterWaitsThenFailsNamingTheBook) {
  auto writer = Open(Access::kWrite);
  Book::OpenOptions options;
  options.access = Access::kWrite;
  options.lockWait = std::chrono::milliseconds(50);
  auto second = Book::Open(dir_, options);
  ASSERT_FALSE(second);
  EXPECT_EQ(second.error().kind, BookError::Kind::kBusy);
  EXPECT_NE(second.error().message.find(dir_.string()), std::string::npos);
  writer.reset();
  EXPECT_TRUE(Open(Access::kWrite, 50));
}

// Two programs that change different accounts of one book at the same moment both land.
TEST_F(BookTest, ConcurrentWritersLoseNothing) {
  constexpr int kRounds = 15;
  auto work = [this](const char* name) {
    for (int i = 0; i < kRounds; ++i) {
      Book::OpenOptions options;
      options.access = Access::kWrite;
      options.lockWait = std::chrono::milliseconds(20000);
      auto book = Book::Open(dir_, options);
      if (!book) _exit(3);
      auto account = (*book)->AccountToChange(name);
      if (!account) _exit(4);
      (*account)->SetStartingBalance((*account)->GetStartingBalance() + 1);
      if ((*book)->Save()) _exit(5);
    }
    _exit(0);
  };
  const pid_t a = ::fork();
  if (a == 0) work("Checking");
  const pid_t b = ::fork();
  if (b == 0) work("Savings");
  for (pid_t child : {a, b}) {
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  }
  auto book = Open();
  EXPECT_EQ((*book->FindAccount("Checking"))->GetStartingBalance(), kRounds);
  EXPECT_EQ((*book->FindAccount("Savings"))->GetStartingBalance(), kRounds);
}

TEST_F(BookTest, SavesOnlyWhatChanged) {
  const auto checking = platform::IdentityOf(AccountFile(0));
  const auto savings = platform::IdentityOf(AccountFile(1));
  const auto book_file = platform::IdentityOf(dir_ / Book::kBookFileName);
  {
    auto book = Open(Access::kWrite);
    ASSERT_TRUE(book->FindAccount("checking"));
    EXPECT_FALSE(book->Save());  // read, nothing changed: nothing written
  }
  EXPECT_EQ(platform::IdentityOf(AccountFile(0)), checking);
  EXPECT_EQ(platform::IdentityOf(dir_ / Book::kBookFileName), book_file);
  {
    auto book = Open(Access::kWrite);
    auto account = book->AccountToChange("Savings");
    ASSERT_TRUE(account);
    (*account)->SetStartingBalance(100);
    EXPECT_FALSE(book->Save());
  }
  EXPECT_EQ(platform::IdentityOf(AccountFile(0)), checking);
  EXPECT_NE(platform::IdentityOf(AccountFile(1)), savings);
  // The balances the book keeps follow the saved file, and are recomputed when the file
  // changes behind the book's back.
  auto book = Open();
  auto list = book->ListAccounts();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_DOUBLE_EQ(*list[0].balance, -61.5);
  EXPECT_DOUBLE_EQ(*list[1].balance, 38.5);
  EXPECT_EQ(list[1].entries, 3);
  Tamper(0, "<real>-10.25</real>", "<real>-1000</real>");
  EXPECT_DOUBLE_EQ(*Open()->ListAccounts()[0].balance, -1051.25);
}

TEST_F(BookTest, ReaderCannotChange) {
  auto book = Open(Access::kRead);
  auto account = book->AccountToChange("Checking");
  ASSERT_FALSE(account);
  EXPECT_EQ(account.error().kind, BookError::Kind::kReadOnly);
}

// One flipped byte in the key "amount": every entry reads as 0.00. The file and its backup must
// survive every later command until the user repairs it.
TEST_F(BookTest, DamagedAccountIsNeverWrittenOverSilently) {
  // A save of Checking first, so that its backup is the last good version.
  {
    auto book = Open(Access::kWrite);
    (*book->AccountToChange("Checking"))->SetStartingBalance(5);
    ASSERT_FALSE(book->Save());
  }
  Tamper(0, "<key>amount</key>", "<key>amounu</key>");
  const std::string damaged = testing::ReadFileBytes(AccountFile(0).string());
  const std::string backup = testing::ReadFileBytes(AccountFile(0).string() + ".bak");
  {
    auto book = Open(Access::kWrite);
    auto account = book->FindAccount("Checking");
    ASSERT_TRUE(account);
    EXPECT_EQ(book->Damage(**account), "3 entries had no amount and were read as 0.00");
    EXPECT_EQ(book->DamageDetails(**account).size(), 3u);
    ASSERT_EQ(book->TakeWarnings().size(), 1u);
    auto refused = book->Changed(**account);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->kind, BookError::Kind::kDamaged);
    EXPECT_NE(refused->message.find("folvant repair Checking"), std::string::npos);
    EXPECT_FALSE(book->AccountToChange("Checking"));
    // The healthy account still changes.
    (*book->AccountToChange("Savings"))->SetStartingBalance(1);
    EXPECT_FALSE(book->Save());
  }
  EXPECT_EQ(testing::ReadFileBytes(AccountFile(0).string()), damaged);
  EXPECT_EQ(testing::ReadFileBytes(AccountFile(0).string() + ".bak"), backup);

  auto book = Open(Access::kWrite);
  auto report = book->Repair("checking", false);
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_EQ(testing::ReadFileBytes(report->damagedCopy.string()), damaged);
  EXPECT_EQ(testing::ReadFileBytes(AccountFile(0).string() + ".bak"), backup);
  EXPECT_TRUE(book->AccountToChange("Checking"));
  book.reset();
  auto reopened = Open();
  auto account = reopened->FindAccount("Checking");
  EXPECT_EQ(reopened->Damage(**account), "");
  EXPECT_DOUBLE_EQ((*account)->GetBalance(), 5);  // the amounts as they were read: 0.00
}

TEST_F(BookTest, UnreadableAccountAffectsOnlyItself) {
  {
    auto book = Open(Access::kWrite);
    (*book->AccountToChange("Checking"))->SetStartingBalance(7);
    ASSERT_FALSE(book->Save());
  }
  const std::string bytes = testing::ReadFileBytes(AccountFile(0).string());
  std::ofstream(AccountFile(0), std::ios::binary | std::ios::trunc) << bytes.substr(0, 40);
  {
    auto book = Open(Access::kWrite);
    auto account = book->FindAccount("Checking");
    ASSERT_FALSE(account);
    EXPECT_EQ(account.error().kind, BookError::Kind::kDamaged);
    EXPECT_NE(account.error().message.find(".bak"), std::string::npos);
    EXPECT_NE(account.error().message.find("--from-backup"), std::string::npos);
    auto list = book->ListAccounts();
    EXPECT_EQ(list[0].health, AccountHealth::kUnreadable);
    EXPECT_FALSE(list[0].balance);
    EXPECT_EQ(list[1].health, AccountHealth::kHealthy);
    (*book->AccountToChange("Savings"))->SetStartingBalance(2);
    EXPECT_FALSE(book->Save());
    EXPECT_FALSE(book->Repair("Checking", false));
    ASSERT_TRUE(book->Repair("Checking", true));
  }
  auto book = Open();
  EXPECT_DOUBLE_EQ(Balance(*book, "Checking"), -61.5);  // the backup: before the last save
  EXPECT_DOUBLE_EQ(Balance(*book, "Savings"), -59.5);

  fs::remove(AccountFile(1));
  auto missing = Open()->FindAccount("Savings");
  ASSERT_FALSE(missing);
  EXPECT_NE(missing.error().message.find("is missing"), std::string::npos);
}

// A save killed at any moment leaves every file as it was or as it should be: the book always
// opens, every account reads cleanly, and what was saved never goes back.
TEST_F(BookTest, SaveKilledAtAnyMomentLeavesAReadableBook) {
  std::mt19937 random(20261123);
  double last = 0;
  for (int round = 0; round < 40; ++round) {
    // The child reports each finished save, so that every round kills a later save at a random
    // moment however slow the machine is.
    int saves[2];
    ASSERT_EQ(::pipe(saves), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      ::close(saves[0]);
      for (int i = 0;; ++i) {
        Book::OpenOptions options;
        options.access = Access::kWrite;
        auto book = Book::Open(dir_, options);
        if (!book) _exit(3);
        for (const char* name : {"Checking", "Savings"}) {
          auto account = (*book)->AccountToChange(name);
          if (!account) _exit(4);
          (*account)->SetStartingBalance((*account)->GetStartingBalance() + 1);
          if (i % 3 == 0) {
            auto entry = std::make_shared<ZELMAccountEntry>();
            entry->SetNumber((*account)->NextAvailableNumber());
            (*account)->AddEntry(entry);
          }
        }
        (*book)->AddCategory("c" + std::to_string(i), nullptr);
        if ((*book)->Save()) _exit(5);
        if (::write(saves[1], "s", 1) != 1) _exit(6);
      }
    }
    ::close(saves[1]);
    char saved = 0;
    ASSERT_EQ(::read(saves[0], &saved, 1), 1) << "the saving child stopped before its first save";
    ::usleep(std::uniform_int_distribution<int>(0, 40'000)(random));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ::close(saves[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the saving child stopped by itself: " << status;

    auto book = Open();
    ASSERT_TRUE(book);
    for (const AccountListing& line : book->ListAccounts()) {
      EXPECT_EQ(line.health, AccountHealth::kHealthy) << line.name << ": " << line.problem;
    }
    auto checking = book->FindAccount("Checking");
    ASSERT_TRUE(checking);
    EXPECT_EQ(book->Damage(**checking), "");
    EXPECT_GE((*checking)->GetStartingBalance(), last);
    last = (*checking)->GetStartingBalance();
  }
  EXPECT_GT(last, 0);
}

}  // namespace
}  // namespace folvant
