#include <gtest/gtest.h>

#include <vector>

#include "folvant/filters/ZELMFilterCondition.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

// One date qualifier evaluated on a pinned day, with the dates that must and must not pass.
struct Row {
  int today;
  std::int32_t qualifier;
  plist::Value data;
  std::vector<int> kept;
  std::vector<int> dropped;
};

// Wednesday 5 March 2008 unless a row says otherwise: its week runs from Sunday 2 March to
// Saturday 8 March; 2008 is a leap year.
const Row kRows[] = {
    // Absolute dates, with every form of data.
    {20080305, 0, 20080305, {20080304}, {20080305}},
    {20080305, 1, plist::Array{20080305}, {20080305}, {20080304, 20080306}},
    {20080305, 2, "20080305", {20080306}, {20080305}},
    {20080305, 70, plist::Array{20080301, 20080331}, {20080301, 20080331}, {20080229, 20080401}},
    {20080305, 23, plist::Array{}, {20080305}, {20080304}},
    {20080301, 24, 0, {20080229}, {20080301, 20080228}},
    // Days.
    {20080305, 20, 3, {20080303, 20080305}, {20080302, 20080306}},
    {20080305, 21, "3", {20080305, 20080307}, {20080304, 20080308}},
    {20080305, 22, plist::Array{10, 3}, {20080224, 20080302}, {20080223, 20080303}},
    // Weeks; "in the next 1 week" is the week's first day alone; 32 is empty for positive
    // counts and reaches forward only with a negative second count.
    {20080305, 30, 2, {20080224, 20080308}, {20080223, 20080309}},
    {20080305, 31, 1, {20080302}, {20080301, 20080303, 20080305}},
    {20080305, 31, 2, {20080302, 20080309}, {20080310}},
    {20080305, 32, plist::Array{1, 1}, {}, {20080217, 20080220, 20080224, 20080305}},
    {20080305, 32, plist::Array{1, -1}, {20080224, 20080302}, {20080223, 20080303}},
    {20080308, 33, 0, {20080302, 20080308}, {20080301, 20080309}},  // a Saturday
    {20080302, 33, 0, {20080302, 20080308}, {20080301, 20080309}},  // a Sunday
    {20080302, 34, 0, {20080224, 20080301}, {20080223, 20080302}},
    {20080305, 35, 0, {20080302, 20080305}, {20080301, 20080306}},
    // Months: 42 on 31 March moves back to a clamped 29 February and then 30 days.
    {20080305, 40, 2, {20080201, 20080331}, {20080131, 20080401}},
    {20080131, 41, 2, {20080101, 20080229}, {20071231, 20080301}},
    {20080331, 42, plist::Array{1, 0}, {20080130, 20080301}, {20080129, 20080302}},
    {20080305, 42, plist::Array{1, 0}, {20080201, 20080301}, {20080131, 20080302}},
    {20080229, 43, 0, {20080201, 20080229}, {20080131, 20080301}},
    {20080229, 44, 0, {20080101, 20080131}, {20071231, 20080201}},
    {20080215, 45, 0, {20080201, 20080215}, {20080131, 20080216}},
    // Quarters: the end of 51 keeps the day number, so September 30 gives December 30.
    {20080305, 50, 2, {20071001, 20080331}, {20070930, 20080401}},
    {20080930, 51, 2, {20080701, 20081230}, {20080630, 20081231}},
    {20080305, 52, plist::Array{2, 1}, {}, {20071001, 20080101, 20080305}},
    {20080401, 53, 0, {20080401, 20080630}, {20080331, 20080701}},
    {20080401, 54, 0, {20080101, 20080331}, {20071231, 20080401}},
    {20080401, 55, 0, {20080401}, {20080331, 20080402}},
    // Years.
    {20080229, 60, 2, {20070101, 20081231}, {20061231, 20090101}},
    {20080229, 61, 2, {20080101, 20091231}, {20071231, 20100101}},
    {20080229, 62, plist::Array{2, 1}, {}, {20060101, 20070601, 20080229}},
    {20071231, 63, plist::Array{}, {20070101, 20071231}, {20061231, 20080101}},
    {20071231, 64, 0, {20060101, 20061231}, {20051231, 20070101}},
    {20070615, 65, 0, {20070101, 20070615}, {20061231, 20070616}},
    // Unknown qualifiers match nothing.
    {20080305, 25, 1, {}, {20080305, 20080304}},
};

TEST(ZELMFilterConditionDate, QualifiersSelectTheirRangesOnPinnedDays) {
  // The dates a condition keeps; logic 0 keeps exactly the rest.
  const auto kept = [](const ZELMFilterCondition& condition, const std::vector<int>& dates) {
    ZELMFilterCondition::EntryList entries;
    for (int date : dates) {
      entries.push_back(std::make_shared<ZELMAccountEntry>());
      entries.back()->SetDate(date);
    }
    std::vector<int> result;
    for (const auto& entry : condition.filterEntries(entries)) result.push_back(entry->GetDate());
    return result;
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(::testing::Message() << "today " << row.today << ", qualifier " << row.qualifier);
    testing::ScopedClockPin pin(row.today);
    std::vector<int> all = row.kept;
    all.insert(all.end(), row.dropped.begin(), row.dropped.end());
    EXPECT_EQ(
        kept(ZELMFilterCondition(kConditionDate, row.qualifier, kConditionKeepsMatches, row.data),
             all),
        row.kept);
    EXPECT_EQ(
        kept(ZELMFilterCondition(kConditionDate, row.qualifier, kConditionKeepsOthers, row.data),
             all),
        row.dropped);
  }
}

}  // namespace
}  // namespace folvant
