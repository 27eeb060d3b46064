#include "folvant/filters/ZELMFilterCondition.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/filters/FilterTestRegister.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::TestRegister;
using EntryList = ZELMFilterCondition::EntryList;

bool Keeps(const ZELMFilterCondition& condition, const std::shared_ptr<ZELMAccountEntry>& entry) {
  return condition.filterEntries({entry}).size() == 1;
}

TEST(ZELMFilterCondition, NewConditionPassesEveryEntryAndStoresItsValues) {
  TestRegister reg;
  const EntryList entries = {reg.Add(20080101, -5, "food"), reg.Add(20080102, 7)};
  const ZELMFilterCondition condition;
  EXPECT_EQ(condition.filterEntries(entries), entries);
  EXPECT_EQ(condition.asDictionary(),
            (plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 6}, {"data", ""}}));
}

TEST(ZELMFilterCondition, TextQualifiersIgnoreCaseAndNothingElse) {
  struct Row {
    std::string field;
    std::int32_t qualifier;
    std::int32_t logic;
    std::string data;
    bool kept;
  };
  const Row rows[] = {
      {"food", 6, 1, "FOO", true},       {"food", 9, 1, "od", true},
      {"food", 1, 1, "FOOD", true},      {"food", 8, 1, "Fo", true},
      {"food", 8, 1, "od", false},       {"food", 9, 1, "fo", false},
      {"food", 1, 1, "foo", false},      {"food", 6, 0, "xyz", true},
      {"food", 6, 0, "OO", false},       {"food", 7, 1, "food", false},
      {"food", 7, 0, "food", true},      {"fo", 6, 1, "food", false},
      {"Café au lait", 6, 1, "CAFÉ", true},
      {"Café", 1, 1, "cafe", false},     {"STRASSE", 6, 1, "ß", true},
      {"Ärger", 8, 1, "ä", true},        {"  food", 8, 1, "food", false},
  };
  TestRegister reg;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.field + " / " + std::to_string(row.qualifier) + " / " + row.data);
    const auto entry = reg.Add(20080101, 0, row.field);
    entry->SetToFrom(row.field);
    entry->SetNotes(row.field);
    for (std::int32_t category : {0, 5, 30, 21, 50}) {
      SCOPED_TRACE(category);
      if (category == 21) {
        entry->removeAllSplitLineItems();
        entry->addSplitLineItemWithCategory(-1, row.field, "", 1);
      }
      EXPECT_EQ(Keeps(ZELMFilterCondition(category, row.qualifier, row.logic, row.data), entry),
                row.kept);
    }
  }
}

TEST(ZELMFilterCondition, AbsentOrWrongKindOfDataAndUnknownCategoriesPassEverything) {
  TestRegister reg;
  const auto entry = reg.Add(20080101, 10, "food");
  const struct {
    std::int32_t category;
    plist::Value data;
  } rows[] = {
      {0, plist::Value()},        {0, ""},      {0, 5},      {5, plist::Array{}}, {3, true},
      {2, "10"},                  {2, plist::Value()},       {4, "YES"},          {9, "1"},
      {1, plist::Value()},        {22, "food"}, {23, "food"}, {99, 5},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.category);
    for (std::int32_t logic : {0, 1}) {
      for (std::int32_t qualifier : {1, 6, 63, 77}) {
        EXPECT_TRUE(Keeps(ZELMFilterCondition(row.category, qualifier, logic, row.data), entry));
      }
    }
  }
}

TEST(ZELMFilterCondition, AmountComparesWithAToleranceOfFourTenths) {
  TestRegister reg;
  const EntryList entries = {reg.Add(1, 9.6), reg.Add(1, 9.61), reg.Add(1, 10.39),
                             reg.Add(1, 10.4), reg.Add(1, -10)};
  const auto amounts = [&](std::int32_t qualifier, std::int32_t logic) {
    std::vector<double> kept;
    for (const auto& e : ZELMFilterCondition(2, qualifier, logic, 10).filterEntries(entries)) {
      kept.push_back(e->GetAmount());
    }
    return kept;
  };
  EXPECT_EQ(amounts(1, 1), (std::vector<double>{9.61, 10.39}));
  EXPECT_EQ(amounts(1, 0), (std::vector<double>{9.6, 10.4, -10}));
  EXPECT_EQ(amounts(3, 1), (std::vector<double>{}));
  EXPECT_EQ(amounts(4, 1), (std::vector<double>{-10}));
  EXPECT_EQ(amounts(2, 1), (std::vector<double>{}));
  entries[4]->addSplitLineItemWithCategory(-1, "", "", 5.0);
  entries[4]->addSplitLineItemWithCategory(-1, "", "", 5.0);
  EXPECT_EQ(amounts(1, 1), (std::vector<double>{9.61, 10.39, 10}));  // the split total
}

TEST(ZELMFilterCondition, AmountTextUsesTheUserSeparatorsAndASignedTwoDecimalForm) {
  testing::ScopedSettingsPin pin({.thousandsSeparator = ",", .decimalSeparator = "."});
  TestRegister reg;
  const auto big = reg.Add(1, 1234.56), debit = reg.Add(1, -1234.56), small = reg.Add(1, 0.05);
  const auto split = reg.Add(1);
  split->addSplitLineItemWithCategory(-1, "", "", 0.125);  // items keep unrounded amounts
  EXPECT_TRUE(Keeps(ZELMFilterCondition(11, 8, 1, "1,234.5"), big));
  EXPECT_FALSE(Keeps(ZELMFilterCondition(11, 8, 1, "1,234.5"), debit));
  EXPECT_TRUE(Keeps(ZELMFilterCondition(11, 1, 1, "-1234.56"), debit));
  EXPECT_TRUE(Keeps(ZELMFilterCondition(11, 1, 1, "0.05"), small));
  EXPECT_TRUE(Keeps(ZELMFilterCondition(11, 1, 1, "0.13"), split));
  // Only separators: nothing is left to find, which matches nothing.
  EXPECT_FALSE(Keeps(ZELMFilterCondition(11, 6, 1, ",,"), big));

  testing::ScopedSettingsPin european({.thousandsSeparator = ".", .decimalSeparator = ","});
  EXPECT_TRUE(Keeps(ZELMFilterCondition(11, 1, 1, "1.234,56"), big));
  EXPECT_FALSE(Keeps(ZELMFilterCondition(11, 6, 1, "1234.56"), big));
}

TEST(ZELMFilterCondition, CheckNumberIsPrintedAsAnInteger) {
  TestRegister reg;
  const auto none = reg.Add(1), check = reg.Add(1);
  check->SetCheckNumber(1042);
  EXPECT_TRUE(Keeps(ZELMFilterCondition(10, 1, 1, "-1"), none));
  EXPECT_TRUE(Keeps(ZELMFilterCondition(10, 9, 1, "42"), check));
  EXPECT_FALSE(Keeps(ZELMFilterCondition(10, 9, 1, "42"), none));
}

TEST(ZELMFilterCondition, TypeAndCategoryNamesAreLookedUpAndUnknownNumbersAreDropped) {
  TestRegister reg;
  const auto check = reg.Add(1), unknown = reg.Add(1), orphan = std::make_shared<ZELMAccountEntry>();
  check->SetType(4);  // "Check"
  check->SetCategory(2);  // Auto:Fuel
  unknown->SetType(77);
  unknown->SetCategory(77);
  const EntryList entries = {check, unknown, orphan};
  EXPECT_EQ(ZELMFilterCondition(3, 1, 1, "CHECK").filterEntries(entries), EntryList{check});
  EXPECT_EQ(ZELMFilterCondition(3, 6, 0, "xyz").filterEntries(entries), EntryList{check});
  EXPECT_EQ(ZELMFilterCondition(3, 6, 0, "Check").filterEntries(entries), EntryList{});
  EXPECT_EQ(ZELMFilterCondition(8, 8, 1, "auto:f").filterEntries(entries), EntryList{check});
  EXPECT_EQ(ZELMFilterCondition(8, 1, 0, "Fuel").filterEntries(entries), EntryList{check});
  // General searches the names too, and an unknown one counts as empty text.
  EXPECT_EQ(ZELMFilterCondition(50, 9, 1, "fuel").filterEntries(entries), EntryList{check});
  EXPECT_EQ(ZELMFilterCondition(50, 6, 0, "check").filterEntries(entries),
            (EntryList{unknown, orphan}));
}

TEST(ZELMFilterCondition, SplitLinesPassOneAtATimeAndEntriesWithoutLinesAreDropped) {
  TestRegister reg;
  const auto plain = reg.Add(1), split = reg.Add(1), lost = reg.Add(1);
  split->addSplitLineItemWithCategory(2, "gas", "", -20);  // Fuel: its own name, not Auto:Fuel
  split->addSplitLineItemWithCategory(3, "lunch", "", -5);  // Food
  lost->addSplitLineItemWithCategory(99, "gas", "", -1);     // not in the tree: skipped
  const EntryList entries = {plain, split, lost};
  EXPECT_EQ(ZELMFilterCondition(20, 1, 1, "fuel").filterEntries(entries), EntryList{split});
  EXPECT_EQ(ZELMFilterCondition(20, 8, 1, "auto").filterEntries(entries), EntryList{});
  EXPECT_EQ(ZELMFilterCondition(20, 1, 0, "fuel").filterEntries(entries), EntryList{split});
  EXPECT_EQ(ZELMFilterCondition(20, 6, 0, "F").filterEntries(entries), EntryList{});
  EXPECT_EQ(ZELMFilterCondition(21, 1, 1, "GAS").filterEntries(entries), (EntryList{split, lost}));
  EXPECT_EQ(ZELMFilterCondition(21, 1, 0, "gas").filterEntries(entries), EntryList{split});
}

TEST(ZELMFilterCondition, BooleansCompareTheFlagWithTheDataUnderQualifierOne) {
  TestRegister reg;
  const auto set = reg.Add(1), clear = reg.Add(1);
  set->SetIsCheck(true);
  set->SetCleared(1);
  set->SetTaxDeductible(true);
  set->SetVoid(true);
  const EntryList entries = {set, clear};
  for (std::int32_t category : {4, 6, 7, 9}) {
    SCOPED_TRACE(category);
    EXPECT_EQ(ZELMFilterCondition(category, 1, 1, true).filterEntries(entries), EntryList{set});
    EXPECT_EQ(ZELMFilterCondition(category, 1, 1, 0).filterEntries(entries), EntryList{clear});
    EXPECT_EQ(ZELMFilterCondition(category, 1, 0, true).filterEntries(entries), EntryList{clear});
    EXPECT_EQ(ZELMFilterCondition(category, 2, 1, true).filterEntries(entries), EntryList{});
    EXPECT_EQ(ZELMFilterCondition(category, 2, 0, true).filterEntries(entries), entries);
  }
}

TEST(ZELMFilterCondition, StoredFormReadsOnlyTheKeysPresent) {
  const plist::Dictionary full{{"category", 1}, {"logic", 0}, {"qualifier", 70},
                               {"data", plist::Array{20080101, 20081231}}};
  EXPECT_EQ(ZELMFilterCondition(&full).asDictionary(), full);
  const plist::Dictionary partial{{"qualifier", "8"}};
  EXPECT_EQ(ZELMFilterCondition(&partial).asDictionary(),
            (plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 8}, {"data", ""}}));
  EXPECT_EQ(ZELMFilterCondition(0, 6, 1, plist::Value()).asDictionary(),
            (plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 6}}));
}

TEST(ZELMFilterCondition, EachEvaluationMethodTestsItsOwnField) {
  TestRegister reg;
  const auto entry = reg.Add(20080315, 0, "food");
  const ZELMFilterCondition condition(0, 1, 1, "food");
  EXPECT_EQ(condition.filter_Description({entry}).size(), 1u);
  EXPECT_EQ(condition.filter_Notes({entry}).size(), 0u);
  EXPECT_EQ(condition.filter_Date({entry}).size(), 0u);    // "food" reads as the date 0
  EXPECT_EQ(condition.filter_Amount({entry}).size(), 1u);  // a text is no amount: transparent
}

}  // namespace
}  // namespace folvant
