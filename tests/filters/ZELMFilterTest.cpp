#include <gtest/gtest.h>

#include "folvant/filters/ZELMFilter.h"
#include "tests/filters/FilterTestRegister.h"

namespace folvant {
namespace {

using testing::TestRegister;
using EntryList = ZELMFilter::EntryList;

// A group of description conditions ("contains" each text), joined by `qualifier`.
std::shared_ptr<ZELMFilterConditionGroup> Group(std::int32_t logic, std::int32_t qualifier,
                                                std::initializer_list<const char*> texts) {
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  group->setLogic(logic);
  group->setQualifier(qualifier);
  for (const char* text : texts)
    group->addConditionWithCategory(kConditionDescription, kConditionKeepsMatches, kTextContains,
                                    text);
  return group;
}

class ZELMFilterTest : public ::testing::Test {
 protected:
  TestRegister reg;
  std::shared_ptr<ZELMAccountEntry> ab = reg.Add(1, -1, "a b");
  std::shared_ptr<ZELMAccountEntry> a = reg.Add(2, -2, "a");
  std::shared_ptr<ZELMAccountEntry> b = reg.Add(3, -4, "b");
  std::shared_ptr<ZELMAccountEntry> c = reg.Add(4, -8, "c");
  EntryList all = {ab, a, b, c};
};

TEST_F(ZELMFilterTest, GroupsJoinConditionsWithAllOrAny) {
  EXPECT_EQ(ZELMFilterConditionGroup().filterEntries(all), all);
  EXPECT_EQ(Group(kGroupNarrows, kGroupMatchesAll, {"a", "b"})->filterEntries(all), EntryList{ab});
  EXPECT_EQ(Group(kGroupNarrows, kGroupMatchesAny, {"a", "b", "c"})->filterEntries(all), all);
  EXPECT_EQ(Group(kGroupNarrows, 2, {"a"})->filterEntries(all), EntryList{});
  // An any-group that leaves entries unmatched after its last condition fails as a whole.
  EXPECT_EQ(Group(kGroupNarrows, kGroupMatchesAny, {"a", "b"})->filterEntries(all), std::nullopt);
  EXPECT_EQ(Group(kGroupNarrows, kGroupMatchesAny, {})->filterEntries(all), std::nullopt);
  EXPECT_EQ(Group(kGroupNarrows, kGroupMatchesAny, {})->filterEntries({}), EntryList{});
}

TEST_F(ZELMFilterTest, FiltersNarrowAndAddByIdentity) {
  ZELMFilter filter;
  EXPECT_EQ(filter.filterEntries(all), all);
  // A(0) then B(1): A's matches that B does not add, then B's matches.
  filter.addConditionGroup(Group(kGroupNarrows, kGroupMatchesAll, {"a"}));
  filter.addConditionGroup(Group(kGroupAdds, kGroupMatchesAll, {"b"}));
  EXPECT_EQ(filter.filterEntries(all), (EntryList{a, ab, b}));
  // A(0), B(1), C(0) is (A and C) or B.
  filter.addConditionGroup(Group(kGroupNarrows, kGroupMatchesAll, {"a "}));
  EXPECT_EQ(filter.filterEntries(all), (EntryList{ab, b}));
  // Other logic values are skipped.
  filter.insertConditionGroup(Group(2, kGroupMatchesAll, {"zzz"}), 0);
  EXPECT_EQ(filter.filterEntries(all), (EntryList{ab, b}));

  // A lone adding group never narrows: everything, the added entries last, and an entry
  // listed twice is added twice.
  ZELMFilter adds;
  adds.addConditionGroup(Group(kGroupAdds, kGroupMatchesAll, {"b"}));
  EXPECT_EQ(adds.filterEntries(all), (EntryList{a, c, ab, b}));
  EXPECT_EQ(adds.filterEntries({b, c, b}), (EntryList{c, b, b}));
}

TEST_F(ZELMFilterTest, AFailingGroupLeavesTheFilterWithoutAResult) {
  ZELMFilter filter;
  filter.addConditionGroup(Group(kGroupAdds, kGroupMatchesAny, {"a"}));
  EXPECT_EQ(filter.filterEntries(all), EntryList{});
  EXPECT_EQ(filter.filterAndTotalEntries(all), 0.0);
  // Only the entries a group is given count: here the any-group sees "a" entries alone.
  ZELMFilter narrowed;
  narrowed.addConditionGroup(Group(kGroupNarrows, kGroupMatchesAll, {"a"}));
  narrowed.addConditionGroup(Group(kGroupNarrows, kGroupMatchesAny, {"b", "a"}));
  EXPECT_EQ(narrowed.filterEntries(all), (EntryList{ab, a}));
}

TEST_F(ZELMFilterTest, TotalSkipsVoidEntriesAndUsesSplitTotals) {
  ZELMFilter filter;
  filter.addConditionGroup(Group(kGroupNarrows, kGroupMatchesAny, {"a", "b", "c"}));
  EXPECT_EQ(filter.filterAndTotalEntries(all), -15.0);
  b->SetVoid(true);
  c->addSplitLineItemWithCategory(-1, "", "", -0.5);
  EXPECT_EQ(filter.filterAndTotalEntries(all), -3.5);
}

TEST_F(ZELMFilterTest, ListsIgnoreDuplicatesAndBadIndexes) {
  ZELMFilter filter;
  const auto first = Group(kGroupNarrows, kGroupMatchesAll, {}),
             second = Group(kGroupAdds, kGroupMatchesAll, {});
  filter.addConditionGroup(first);
  filter.addConditionGroup(first);
  filter.insertConditionGroup(second, 2);
  filter.insertConditionGroup(second, -1);
  filter.insertConditionGroup(second, 1);  // the count appends
  filter.removeConditionGroupAtIndex(2);
  EXPECT_EQ(filter.conditionGroups(), (std::vector{first, second}));

  // A condition needs data, and is in a group once.
  EXPECT_EQ(first->addConditionWithCategory(kConditionToFrom, kConditionKeepsOthers, kTextEndsWith,
                                            plist::Value()),
            nullptr);
  const auto condition =
      first->addConditionWithCategory(kConditionToFrom, kConditionKeepsOthers, kTextEndsWith, "x");
  first->addCondition(condition);
  EXPECT_EQ(first->conditions(), std::vector{condition});
}

TEST(ZELMFilterStoredForm, RoundTripsSkipsWhatDoesNotLoadAndCopiesDeeply) {
  const plist::Dictionary condition{
      {"category", 1}, {"logic", 1}, {"qualifier", 64}, {"data", plist::Array{}}};
  const plist::Dictionary group{
      {"logic", 1}, {"qualifier", 0}, {"conditions", plist::Array{condition, condition}}};
  const plist::Dictionary stored{{"name", "Old"}, {"conditionGroups", plist::Array{group}}};
  const auto filter = ZELMFilter::filterWithDictionary(&stored);
  EXPECT_EQ(filter->asDictionary(), stored);

  const plist::Dictionary damaged{
      {"name", 5},
      {"conditionGroups",
       plist::Array{"x", plist::Dictionary{{"conditions", plist::Array{1, condition}}}}}};
  const plist::Dictionary loaded{
      {"name", ""},
      {"conditionGroups",
       plist::Array{plist::Dictionary{
           {"logic", 0}, {"qualifier", 1}, {"conditions", plist::Array{condition}}}}}};
  EXPECT_EQ(ZELMFilter(&damaged).asDictionary(), loaded);
  const plist::Dictionary not_an_array{{"conditionGroups", group}};
  EXPECT_TRUE(ZELMFilter(&not_an_array).conditionGroups().empty());

  const auto copy = ZELMFilter::filterWithFilter(filter.get());
  EXPECT_EQ(copy->asDictionary(), stored);
  copy->conditionGroups()[0]->conditions()[0]->setQualifier(kDateThisYear);
  copy->setName(std::nullopt);
  EXPECT_EQ(filter->asDictionary(), stored);
  EXPECT_EQ(ZELMFilter::filterWithFilter(nullptr), nullptr);
}

}  // namespace
}  // namespace folvant
