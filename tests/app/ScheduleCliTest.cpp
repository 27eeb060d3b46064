// The schedule commands beyond what their golden cases show: a refused change leaves the book's
// files as they were.
#include <gtest/gtest.h>

#include <string>

#include "tests/app/CliFixture.h"

namespace folvant {
namespace {

using testing::Cli;

TEST_F(Cli, ScheduleRefusalsChangeNoFile) {
  CopySampleBook();
  const std::string account = BookFile("accounts/0.plist");
  for (const char* args : {
           "schedule enter Checking 0 --date 2026-06-01",  // entered already
           "schedule enter Checking 0 --date 2026-06-02",  // not a date of the schedule
           "schedule enter Checking 7",
           "schedule remove Checking 7",
           "schedule add Checking --every month --start 2026-01-01 --amount -1 --type Nope",
           "schedule add Checking --every week --start 2026-01-01 --amount 1 --weekend-shift "
           "before",
       }) {
    EXPECT_NE(Run(args).status, 0) << args;
    EXPECT_EQ(BookFile("accounts/0.plist"), account) << args;
  }
}

}  // namespace
}  // namespace folvant
