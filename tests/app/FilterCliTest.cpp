// The register's stored view filter, folders and smart folders, run through the program on a
// copy of the sample book with today pinned to 2026-06-30 (a Tuesday).
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/app/CliFixture.h"

namespace folvant {
namespace {

using testing::CommandResult;

class FilterCli : public testing::Cli {
 protected:
  void SetUp() override {
    Cli::SetUp();
    CopySampleBook();
  }
  // The number of rows the register shows with these options.
  std::size_t Rows(const std::string& args) {
    const CommandResult run = Run("register " + args + " --json");
    EXPECT_EQ(run.status, 0) << args << ": " << run.err;
    std::size_t rows = 0;
    for (auto at = run.out.find("\"number\": "); at != std::string::npos;
         at = run.out.find("\"number\": ", at + 1)) {
      ++rows;
    }
    return rows;
  }
  std::string SavingsFile() { return BookFile("accounts/1.plist"); }
};

// Savings holds 24 entries from 2025-07-20 to 2026-06-28: a transfer "Monthly savings" of 400
// on the 20th and a deposit "Interest" on the 28th of each month; May and June are unresolved.
TEST_F(FilterCli, EachOptionNarrowsTheRegisterAndIsRemembered) {
  EXPECT_EQ(Rows("Savings"), 24);
  const CommandResult plain = Run("register Savings");
  EXPECT_EQ(plain.out.rfind("   No.  Date ", 0), 0u) << "no filter, no header:\n" << plain.out;

  const CommandResult unresolved = Run("register Savings --unresolved");
  EXPECT_EQ(unresolved.out.rfind("Filter: unresolved only\n   No.  Date ", 0), 0u) << unresolved.out;
  EXPECT_NE(unresolved.out.find("Shown:            4 of 24 entries, total $ 819.98\n"),
            std::string::npos)
      << unresolved.out;
  const std::string stored = SavingsFile();
  EXPECT_EQ(Rows("Savings"), 4) << "the next plain register shows the stored filter";
  EXPECT_EQ(SavingsFile(), stored) << "nothing changed, so nothing is saved";

  EXPECT_EQ(Rows("Savings --resolved"), 20);
  EXPECT_EQ(Rows("Savings --search interest --field description"), 10);
  EXPECT_EQ(Rows("Savings --dates 2026-01-01..2026-03-31"), 3);
  const CommandResult all_three = Run("register Savings --json");
  EXPECT_NE(all_three.out.find("  \"filter\": {\n    \"active\": true,\n    \"field\": "
                               "\"description\",\n    \"search\": \"interest\",\n    \"dates\": "
                               "\"2026-01-01..2026-03-31\",\n    \"from\": \"2026-01-01\",\n    "
                               "\"to\": \"2026-03-31\",\n    \"resolved\": \"resolved\",\n    "
                               "\"taxDeductible\": \"all\",\n    \"folder\": null,\n    "
                               "\"smartFolder\": null\n  }"),
            std::string::npos)
      << all_three.out;

  EXPECT_EQ(Rows("Savings --reset"), 24);
  EXPECT_EQ(Rows("Savings"), 24) << "--reset is stored too";

  // Each named range and search field, from a clean filter each time, by the rows it shows.
  const std::pair<std::size_t, std::vector<const char*>> rows[] = {
      {24,
       {"--dates all", "--dates through-today", "--field check --search -1",
        "--not-tax-deductible"}},
      {12,
       {"--dates this-year", "--dates last-year", "--dates year-to-date", "--search INTEREST",
        "--field payee --search checking", "--field type --search deposit",
        "--field amount --search 400.0", "--field category --search income:"}},
      {6, {"--dates this-quarter", "--dates last-quarter", "--dates quarter-to-date"}},
      {2, {"--dates this-month", "--dates last-month", "--dates month-to-date"}},
      {1, {"--dates this-week", "--dates week-to-date", "--dates 2025-07-28..2025-07-28"}},
      {0,
       {"--dates today", "--dates yesterday", "--dates last-week",
        "--field description --search checking", "--field notes --search interest",
        "--field split-category --search x", "--tax-deductible"}}};
  for (const auto& [expected, options] : rows) {
    for (const char* option : options) {
      EXPECT_EQ(Rows("Savings --reset " + std::string(option)), expected) << option;
    }
  }
}

TEST_F(FilterCli, BadFilterOptionsAreUsageErrorsAndChangeNothing) {
  const std::string before = SavingsFile();
  for (const char* options : {"--resolved --unresolved", "--tax-deductible --not-tax-deductible",
                              "--dates 2026-03-01..2026-02-01", "--dates someday",
                              "--field memo --search x", "--folder A --smart-folder B"}) {
    const CommandResult run = Run(std::string("register Savings --reset ") + options);
    EXPECT_EQ(run.status, 2) << options;
    EXPECT_EQ(run.err.rfind("folvant: ", 0), 0u) << run.err;
  }
  EXPECT_NE(Run("register Savings --dates someday").err.find("use one of: all, through-today"),
            std::string::npos);
  EXPECT_EQ(Run("register Savings --reset --unresolved --folder Nowhere").status, 1);
  EXPECT_EQ(Run("register Savings --reset --unresolved --smart-folder Nowhere").status, 1);
  EXPECT_EQ(SavingsFile(), before);
}

TEST_F(FilterCli, FoldersKeepEveryEntryAndBalance) {
  const std::string balances = Run("account list").out;
  ASSERT_EQ(Run("folder new Savings Interest").status, 0);
  EXPECT_EQ(Run("folder new Savings interest").status, 1) << "names are unique, ignoring case";

  const std::string before_bad_move = SavingsFile();
  const CommandResult bad = Run("folder move Savings 2 99 --to Interest");
  EXPECT_EQ(bad.err, "folvant: no entry number 99 in \"Savings\"\n");
  EXPECT_EQ(SavingsFile(), before_bad_move) << "a bad number moves nothing";
  EXPECT_EQ(Run("folder move Savings 2").status, 2);
  EXPECT_EQ(Run("folder move Savings 2 --to Nowhere").status, 1);

  const CommandResult moved = Run("folder move Savings 2 4 6 --to Interest");
  EXPECT_EQ(moved.out, "Moved 3 entries to folder \"Interest\"\n");
  EXPECT_EQ(Run("folder list Savings --json").out,
            "{\n  \"account\": \"Savings\",\n  \"registerEntries\": 21,\n  \"folders\": [\n"
            "    {\"name\": \"Interest\", \"entries\": 3, \"total\": 30.57}\n  ]\n}\n");
  EXPECT_EQ(Run("account list").out, balances);
  EXPECT_EQ(Rows("Savings"), 24) << "the register shows the folders' entries too";
  EXPECT_EQ(Rows("Savings --folder interest"), 3);
  EXPECT_EQ(Rows("Savings --folder interest --search 11.05 --field amount"), 1)
      << "the stored filter applies within the folder";
  ASSERT_EQ(Rows("Savings --reset"), 24);

  EXPECT_EQ(Run("folder move Savings 4 --to-register").out, "Moved 1 entry to the register\n");
  const CommandResult removed = Run("folder remove Savings Interest");
  EXPECT_EQ(removed.out, "Removed folder \"Interest\"; its 2 entries are back in the register\n");
  EXPECT_EQ(Run("folder list Savings").out,
            "Folder  Entries             Total\n\nIn the register itself: 24 entries\n");
  EXPECT_EQ(Run("account list").out, balances);
  EXPECT_EQ(Run("folder remove Savings Interest").status, 1);
}

TEST_F(FilterCli, SmartFoldersAreSavedListedShownAndRemoved) {
  for (const char* args : {"Big --where 'amount > 100' --where 'date in-last 3 months'",
                           "Either --any --where 'description contains interest' --where "
                           "'resolved no'"}) {
    ASSERT_EQ(Run("smart-folder new Savings " + std::string(args)).status, 0) << args;
  }
  EXPECT_EQ(Run("smart-folder new Savings big --where 'void no'").status, 1);

  const std::string before = SavingsFile();
  const CommandResult bad = Run("smart-folder new Savings Odd --where 'amount about 3'");
  EXPECT_EQ(bad.status, 2);
  EXPECT_EQ(bad.err,
            "folvant: --where: unknown comparison \"about\" for amount; use one of: =, !=, >, <\n");
  EXPECT_EQ(Run("smart-folder new Savings Odd").status, 2) << "--where is required";
  EXPECT_EQ(SavingsFile(), before);

  EXPECT_EQ(Run("smart-folder list Savings").out,
            "This Year\n  --where 'date this-year'\n"
            "Last Year\n  --where 'date last-year'\n"
            "Big\n  --where 'amount > 100' --where 'date in-last 3 months'\n"
            "Either\n  --any --where 'description contains interest' --where 'resolved no'\n");
  EXPECT_NE(Run("smart-folder list Savings --json")
                .out.find("{\"name\": \"Either\", \"groups\": [{\"join\": \"and\", \"match\": "
                          "\"all\", \"conditions\": [\"description contains interest\"]}, "
                          "{\"join\": \"or\", \"match\": \"all\", \"conditions\": "
                          "[\"resolved no\"]}]}"),
            std::string::npos);

  EXPECT_EQ(Rows("Savings --smart-folder big"), 3) << "the transfers of April to June";
  EXPECT_EQ(Rows("Savings --smart-folder Either"), 14) << "12 interest deposits and 2 transfers";
  EXPECT_EQ(Rows("Savings --smart-folder 'This Year'"), 12);
  EXPECT_EQ(Rows("Savings --smart-folder Either --unresolved"), 4)
      << "the register's own filter applies first";
  EXPECT_EQ(Rows("Savings --reset"), 24) << "the shown smart folder is not stored";
  EXPECT_NE(Run("register Savings --smart-folder big").out.find("Filter: smart folder \"Big\"\n"),
            std::string::npos);

  EXPECT_EQ(Run("smart-folder remove Savings BIG").out, "Removed smart folder \"Big\"\n");
  EXPECT_EQ(Run("smart-folder list Savings").out.find("Big"), std::string::npos);
  EXPECT_EQ(Run("register Savings --smart-folder Big").status, 1);
  EXPECT_EQ(Run("smart-folder remove Savings Big").status, 1);
}

}  // namespace
}  // namespace folvant
