// Runs the folvant program as a user would, in scratch folders, and checks what it prints,
// its exit status, and that failed commands leave the book's files as they were.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/app/CliFixture.h"

namespace folvant {
namespace {

namespace fs = std::filesystem;
using testing::Cli;
using testing::CommandResult;

TEST_F(Cli, BadInputGivesOneLineAndNonZeroStatus) {
  CommandResult missing = Folvant("--book nowhere account list");
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("nowhere: no book here"), std::string::npos) << missing.err;
  EXPECT_EQ(testing::LineCount(missing.err), 1u);

  ASSERT_EQ(Folvant("init book").status, 0);
  ASSERT_EQ(Folvant("--book book account new Checking").status, 0);
  CommandResult unknown = Folvant("--book book register Savings");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.err, "folvant: no account named \"Savings\" in the book\n");

  // A damaged account file is named in the error of the commands that need it, and only
  // theirs: the rest of the book works as usual.
  const fs::path account = dir_ / "book" / "accounts" / "0.plist";
  { std::ofstream(account, std::ios::binary) << "bplist00\x01\x02garbage"; }
  const std::string account_before = BookFile("accounts/0.plist");
  CommandResult damaged = Folvant("--book book folder new Checking Bills");
  EXPECT_EQ(damaged.status, 1);
  EXPECT_NE(damaged.err.find("accounts/0.plist is damaged"), std::string::npos) << damaged.err;
  EXPECT_NE(damaged.err.find("no backup"), std::string::npos) << damaged.err;
  EXPECT_EQ(testing::LineCount(damaged.err), 1u) << damaged.err;
  EXPECT_EQ(BookFile("accounts/0.plist"), account_before);
  EXPECT_EQ(Folvant("--book book account new Savings").status, 0);
  CommandResult list = Folvant("--book book account list");
  EXPECT_EQ(list.status, 0);
  EXPECT_NE(list.out.find("Checking"), std::string::npos) << list.out;
  EXPECT_NE(list.out.find("is damaged"), std::string::npos) << list.out;

  EXPECT_EQ(Folvant("--book book register Checking --sort 9").status, 2)
      << "an unknown sort key is a usage error";
}

TEST_F(Cli, SavingKeepsTheOldFileAsBackup) {
  ASSERT_EQ(Folvant("init book").status, 0);
  const std::string first = BookFile("book.plist");
  ASSERT_EQ(Folvant("--book book account new Checking").status, 0);
  EXPECT_EQ(BookFile("book.plist.bak"), first);
  EXPECT_NE(BookFile("book.plist"), first);
  for (const auto& file : fs::directory_iterator(dir_ / "book")) {
    EXPECT_NE(file.path().extension(), ".new") << "no temporary file is left behind";
  }
}

TEST_F(Cli, SampleBookLoadsCleanlyAndBalancesAddUp) {
  CopySampleBook();
  const CommandResult list = Run("account list");
  ASSERT_EQ(list.status, 0) << list.err;
  EXPECT_TRUE(list.err.empty()) << "the sample must load without a message:\n" << list.err;
  EXPECT_NE(list.out.find("Checking"), std::string::npos);
  EXPECT_NE(list.out.find("1.748,68 €  EUR"), std::string::npos) << list.out;

  // The last running balance of the register (date order, checks first) is the balance.
  const CommandResult reg = Run("register Checking --json");
  ASSERT_EQ(reg.status, 0) << reg.err;
  ASSERT_FALSE(testing::JsonList(reg.out, "balance").empty());
  EXPECT_EQ(testing::JsonList(reg.out, "balance").back(), testing::JsonValues(reg.out, "current"));
  EXPECT_NE(reg.out.find("\"void\": true"), std::string::npos) << "the sample has a voided check";
  EXPECT_NE(reg.out.find("\"category\": \"(split)\""), std::string::npos) << "and a split";

  // Sorting by amount, descending, puts the largest deposit first.
  EXPECT_EQ(testing::JsonList(Run("register Checking --sort amount --descending --json").out, "amount")
                .front(),
            "2480.16");
}

}  // namespace
}  // namespace folvant
