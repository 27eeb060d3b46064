// The schedule commands, run as a user would: listing rules and next dates, what is due on a
// pinned day, entering occurrences into the register, and adding the common kinds.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/CliFixture.h"

namespace folvant {
namespace {

using testing::Cli;
using testing::CommandResult;
using testing::JsonList;
using testing::JsonValues;
using testing::LineCount;

class ScheduleCli : public Cli {
 protected:
  void NewBook() {
    ASSERT_EQ(Folvant("init book").status, 0);
    ASSERT_EQ(Folvant("--book book account new Checking --starting-check 1001").status, 0);
  }
};

TEST_F(ScheduleCli, ListAndDueOnAPinnedDay) {
  CopySampleBook();
  const CommandResult list = Run("schedule list Checking");
  ASSERT_EQ(list.status, 0) << list.err;
  EXPECT_TRUE(list.err.empty()) << list.err;
  const std::string& out = list.out;
  // Sorted by next date; the header's columns line up with the rows.
  std::size_t at = 0;
  for (const char* row : {
           "   1  2026-06-19  every 2 weeks on Friday, forever ",
           "   2  2026-06-26  every 3 months on day 28, until 2027-12-31, weekends to the Friday "
           "before",
           "   0  2026-07-01  every month on day 1, forever ",
           "   3  2027-02-15  every year on 15 February, 10 times ",
       }) {
    at = out.find(row, at);
    EXPECT_NE(at, std::string::npos) << "missing or out of order: " << row << "\n" << out;
  }
  const std::string header = out.substr(0, out.find('\n'));
  const std::string first_row = out.substr(out.find('\n') + 1);
  EXPECT_EQ(header.find("To/From"), first_row.find("Acme Widgets Inc.")) << out;
  EXPECT_EQ(header.find("Amount") + 6, first_row.find('\n')) << "amounts end under the header";

  EXPECT_EQ(Run("schedule list Savings").out, "\"Savings\" has no schedules.\n");
  EXPECT_EQ(Run("schedule list Nowhere").status, 1);

  ASSERT_EQ(Run("schedule add Savings --every month --on 1 --start 2026-06-01 --amount 25").status,
            0);
  // Today (pinned, asked first): the new savings schedule, the latest paycheck, and the water
  // bill of Sunday 28 June moved to Friday 26.
  const CommandResult all = Run("schedule due --json");
  ASSERT_EQ(all.status, 0) << all.err;
  EXPECT_EQ(JsonValues(all.out, "date"), "2026-06-30, 2026-06-01, 2026-06-19, 2026-06-26");
  EXPECT_EQ(JsonValues(all.out, "account"), "Savings, Checking, Checking");
  EXPECT_EQ(JsonValues(Run("schedule due checking --json").out, "description"),
            "Paycheck, Quarterly water bill");
  // The water bill is due on the Friday it moved to, not the day before.
  EXPECT_EQ(JsonValues(Run("schedule due Checking --date 2026-06-26 --json").out, "toFrom"),
            "Acme Widgets Inc., County Water District");
  EXPECT_EQ(JsonValues(Run("schedule due Checking --date 2026-06-25 --json").out, "toFrom"),
            "Acme Widgets Inc.");

  const std::string text = Run("schedule due Checking").out;
  EXPECT_NE(text.find("2026-06-26  Checking         2  County Water District"), std::string::npos)
      << text;
  EXPECT_NE(text.find("2 occurrences due by 2026-06-30."), std::string::npos) << text;
  EXPECT_EQ(Run("schedule due Checking --date 2026-06-18").out, "Nothing is due by 2026-06-18.\n");
  EXPECT_EQ(Run("schedule due --date 2026-02-30").status, 2);
}

TEST_F(ScheduleCli, EnterAddsTheOccurrenceCommitsItAndRefusesItTwice) {
  NewBook();
  for (const char* args :
       {"--on 1 --start 2026-05-01 --amount -1650 --type Check --to-from Oakwood",
        "--on 28 --start 2026-03-01 --amount -40 --weekend-shift before"}) {
    ASSERT_EQ(Run("schedule add Checking --every month " + std::string(args)).status, 0) << args;
  }

  // Without --date: the earliest due occurrence, numbered and with the next check number.
  const CommandResult first = Run("schedule enter Checking 0");
  ASSERT_EQ(first.status, 0) << first.err;
  EXPECT_EQ(first.out,
            "Entered schedule 0 of \"Checking\" on 2026-05-01 as entry 1 (check 1001): "
            "-$ 1,650.00 Oakwood\nNext: 2026-06-01\n");
  const CommandResult second = Run("schedule enter Checking 0 --date 2026-06-01");
  EXPECT_NE(second.out.find("as entry 2 (check 1002)"), std::string::npos) << second.err;
  // Saturday 28 March moved to Friday 27: the occurrence is the Friday.
  EXPECT_EQ(Run("schedule enter Checking 1 --date 2026-03-28").status, 1);
  ASSERT_EQ(Run("schedule enter Checking 1 --date 2026-03-27").status, 0);

  // Refusals are one line and change no file.
  const std::string account = BookFile("accounts/0.plist");
  const CommandResult again = Run("schedule enter Checking 0 --date 2026-06-01");
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.err,
            "folvant: the occurrence of schedule 0 of \"Checking\" on 2026-06-01 is already "
            "entered\n");
  const CommandResult off = Run("schedule enter Checking 0 --date 2026-06-02");
  EXPECT_EQ(off.status, 1);
  EXPECT_EQ(LineCount(off.err), 1u);
  EXPECT_NE(off.err.find("2026-06-02 is not a date of schedule 0"), std::string::npos);
  EXPECT_EQ(Run("schedule enter Checking 7").status, 1);
  EXPECT_EQ(Folvant("--book book --today 2026-06-15 schedule enter Checking 0").status, 1)
      << "nothing due";
  EXPECT_EQ(BookFile("accounts/0.plist"), account);

  // Reopened from the files: the entries in the register, the committed dates in the schedule.
  const std::string reg = Run("register Checking --json").out;
  EXPECT_EQ(JsonValues(reg, "number"), "3, 1, 2");
  EXPECT_EQ(JsonValues(reg, "date"), "2026-03-27, 2026-05-01, 2026-06-01");
  EXPECT_EQ(JsonValues(reg, "checkNumber"), "null, 1001, 1002");
  EXPECT_EQ(JsonValues(reg, "current"), "-3340.00");
  const std::string list = Run("schedule list Checking --json").out;
  EXPECT_EQ(JsonValues(list, "next"), "2026-04-28, 2026-07-01");
  EXPECT_EQ(JsonValues(list, "committed"), "1, 2");
  EXPECT_EQ(JsonValues(Run("schedule due Checking --json").out, "date"),
            "2026-06-30, 2026-04-28, 2026-05-28, 2026-06-26");

  // Removing a schedule keeps what it entered; a missing one is refused.
  const CommandResult removed = Run("schedule remove Checking 1");
  EXPECT_EQ(removed.out.rfind("Removed schedule 1 from \"Checking\": every month on day 28", 0), 0u)
      << removed.out << removed.err;
  EXPECT_EQ(Run("schedule remove Checking 1").status, 1);
  EXPECT_EQ(JsonValues(Run("register Checking --json").out, "number"), "3, 1, 2");
  EXPECT_EQ(JsonValues(Run("schedule list Checking --json").out, "number"), "0");
}

// Each common shape is stored as the kind that gives its dates; the due dates by the end of
// 2026 show the stored rule does what the words say.
TEST_F(ScheduleCli, AddMapsTheCommonKindsOntoStoredKinds) {
  NewBook();
  struct Case {
    std::string args;
    std::string stored;    // kind, interval and until type
    std::string firstDue;  // the first three
  };
  const std::vector<Case> cases = {
      {"--every day --start 2026-12-30", "1 1 1", "2026-12-30 2026-12-31"},
      {"--every 1 day --start 2026-03-13 --weekend-shift before", "20 1 1",
       "2026-03-13 2026-03-16 2026-03-17"},
      {"--every 10 days --start 2026-03-01 --times 2", "20 10 2", "2026-03-01 2026-03-11"},
      {"--every week --on fri --start 2026-03-10", "2 1 1", "2026-03-13 2026-03-20 2026-03-27"},
      {"--every '2 weeks' --start 2026-03-10", "3 1 1", "2026-03-10 2026-03-24 2026-04-07"},
      {"--every 3 weeks --on Monday --start 2026-03-10", "21 3 1",
       "2026-03-16 2026-04-06 2026-04-27"},
      {"--every month --on 31 --start 2026-04-02", "4 1 1", "2026-05-31 2026-07-31 2026-08-31"},
      {"--every 2 months --start 2026-01-15 --until 2026-05-15", "22 2 3",
       "2026-01-15 2026-03-15 2026-05-15"},
      {"--every month --on last --start 2026-02-10", "6 1 1", "2026-02-28 2026-03-31 2026-04-30"},
      {"--every quarter --on 15 --start 2026-01-20", "10 1 1", "2026-02-15 2026-05-15 2026-08-15"},
      {"--every quarter --on last --start 2026-02-10", "11 1 1",
       "2026-03-31 2026-06-30 2026-09-30"},
      {"--every 2 quarters --start 2026-01-31", "24 2 1", "2026-01-31 2026-07-31"},
      {"--every year --on 02-29 --start 2026-01-01", "5 1 1", ""},
      // 15 March is a weekend day in 2025 and 2026.
      {"--every year --on 03-15 --start 2024-01-01 --weekend-shift before", "5 1 1",
       "2024-03-15 2025-03-14 2026-03-13"},
      {"--every 2 years --start 2022-06-30", "23 2 1", "2022-06-30 2024-06-30 2026-06-30"},
  };
  for (const Case& c : cases) {
    const CommandResult add = Run("schedule add Checking " + c.args + " --amount -1");
    ASSERT_EQ(add.status, 0) << c.args << ": " << add.err;
  }
  const std::string list = Run("schedule list Checking --json").out;
  const std::string due = Run("schedule due Checking --date 2026-12-31 --json").out;
  const std::vector<std::string> dates = JsonList(due, "date");  // the day asked first
  const std::vector<std::string> schedules = JsonList(due, "schedule");
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].args);
    const std::string number = std::to_string(i);
    const std::string one = list.substr(list.find("{\"number\": " + number + ","));
    EXPECT_EQ(JsonList(one, "repeatIntervalType").front() + " " +
                  JsonList(one, "repeatInterval").front() + " " +
                  JsonList(one, "repeatUntilType").front(),
              cases[i].stored);
    std::string first_due;
    for (std::size_t k = 0, n = 0; k < schedules.size(); ++k) {
      if (schedules[k] == number && n++ < 3) first_due += (n > 1 ? " " : "") + dates[k + 1];
    }
    EXPECT_EQ(first_due, cases[i].firstDue);
  }
  // The 29 February start moves to the next leap year.
  EXPECT_NE(Run("schedule list Checking").out.find("2028-02-29  every year on 29 February"),
            std::string::npos);

  const std::string monthly = "schedule add Checking --every month --start 2026-01-01 --amount 1 ";
  EXPECT_EQ(Run(monthly + "--until 2025-01-01").status, 1);
  EXPECT_EQ(Run(monthly + "--until 2027-01-01 --times 3").status, 2);
  EXPECT_EQ(Run(monthly + "--weekend-shift after").status, 2);
}

}  // namespace
}  // namespace folvant
