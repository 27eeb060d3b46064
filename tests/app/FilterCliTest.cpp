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

TEST_F(FilterCli, SmartFoldersNarrowTheRegisterAfterItsOwnFilter) {
  ASSERT_EQ(Run("smart-folder new Savings Either --any --where 'description contains interest' "
                "--where 'resolved no'")
                .status,
            0);
  EXPECT_EQ(Rows("Savings --smart-folder Either"), 14) << "12 interest deposits and 2 transfers";
  EXPECT_EQ(Rows("Savings --smart-folder 'This Year'"), 12);
  EXPECT_EQ(Rows("Savings --smart-folder Either --unresolved"), 4)
      << "the register's own filter applies first";
  EXPECT_EQ(Rows("Savings --reset"), 24) << "the shown smart folder is not stored";
}

}  // namespace
}  // namespace folvant
