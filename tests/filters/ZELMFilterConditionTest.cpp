#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "folvant/filters/ZELMFilterCondition.h"
#include "folvant/platform/Text.h"
#include "tests/filters/FilterTestRegister.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::TestRegister;
using EntryList = ZELMFilterCondition::EntryList;

EntryList Kept(std::int32_t category, std::int32_t qualifier, std::int32_t logic, plist::Value data,
               const EntryList& entries) {
  return ZELMFilterCondition(category, qualifier, logic, std::move(data)).filterEntries(entries);
}

TEST(ZELMFilterCondition, TextQualifiersIgnoreCaseAndNothingElseInEveryTextField) {
  // Field, qualifier, logic, searched text, whether the entry is kept.
  const std::tuple<std::string, std::int32_t, std::int32_t, std::string, bool> rows[] = {
      {"food", 6, 1, "FOO", true},     {"food", 8, 1, "od", false},   {"food", 6, 0, "xyz", true},
      {"food", 6, 0, "OO", false},     {"food", 7, 1, "food", false}, {"food", 7, 0, "food", true},
      {"  food", 8, 1, "food", false}, {"STRASSE", 6, 1, "ß", true}};
  TestRegister reg;
  for (const auto& [field, qualifier, logic, data, kept] : rows) {
    const auto entry = reg.Add(20080101, 0, field);
    entry->SetToFrom(field);
    entry->SetNotes(field);
    entry->addSplitLineItemWithCategory(-1, field, "", 1);
    for (std::int32_t category : {kConditionDescription, kConditionToFrom, kConditionNotes,
                                  kConditionSplitDescription, kConditionGeneral}) {
      EXPECT_EQ(Kept(category, qualifier, logic, data, {entry}).size(), kept)
          << field << " / " << data << " / " << category;
    }
  }
}

// ASCII text is searched byte by byte and other text is folded first; both must answer as the
// platform's case-insensitive operations do for each text qualifier, at every length and
// offset of a machine word.
TEST(ZELMFilterCondition, TextSearchAgreesWithThePlatformOnGeneratedTexts) {
  const char* const alphabet[] = {
      "a", "B", "m", "M", "-", " ", "k", "s", "\u212A" /* Kelvin */, "\u017F" /* long s */,
      "ß", "é"};
  std::uint64_t state = 7;
  const auto next = [&](std::uint64_t n) {
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return (state >> 33) % n;
  };
  const auto text = [&](std::uint64_t max_length) {
    std::string t;
    const bool ascii = next(4) != 0;  // mostly ASCII, as registers are
    for (std::uint64_t i = next(max_length + 1); i > 0; --i) t += alphabet[next(ascii ? 8 : 12)];
    return t;
  };
  EntryList entries;
  for (int i = 0; i < 300; ++i) {
    entries.push_back(std::make_shared<ZELMAccountEntry>());
    entries.back()->SetDescription(text(19));
  }
  const std::pair<std::int32_t, bool (*)(std::string_view, std::string_view)> qualifiers[] = {
      {kTextContains, platform::CaseInsensitiveContains},
      {kTextStartsWith, platform::CaseInsensitiveHasPrefix},
      {kTextEndsWith, platform::CaseInsensitiveHasSuffix},
      {kTextIsEqualTo, platform::CaseInsensitiveEqual}};
  for (int i = 0; i < 60; ++i) {
    const std::string needle = alphabet[next(12)] + text(3);
    for (const auto& [qualifier, platform_answer] : qualifiers) {
      EntryList expected;
      for (const auto& e : entries) {
        if (platform_answer(e->GetDescription(), needle)) expected.push_back(e);
      }
      EXPECT_EQ(Kept(kConditionDescription, qualifier, kConditionKeepsMatches, needle, entries),
                expected)
          << needle << " " << qualifier;
    }
  }
}

TEST(ZELMFilterCondition, UnusableDataAndUnknownCategoriesPassEverything) {
  TestRegister reg;
  const EntryList entries = {reg.Add(20080101, 10, "food")};
  const std::pair<std::int32_t, plist::Value> rows[] = {
      {0, plist::Value()}, {0, ""},      {0, 5},       {5, plist::Array{}},
      {3, true},           {2, "10"},    {4, "1"},     {9, "YES"},
      {1, plist::Value()}, {22, "food"}, {23, "food"}, {99, 5}};
  for (const auto& [category, data] : rows) {
    for (std::int32_t logic : {0, 1}) {
      for (std::int32_t qualifier : {1, 6, 63, 77}) {
        EXPECT_EQ(Kept(category, qualifier, logic, data, entries), entries) << category;
      }
    }
  }
  EXPECT_EQ(ZELMFilterCondition().filterEntries(entries), entries);
}

TEST(ZELMFilterCondition, AmountsCompareWithAFixedToleranceOfFourTenths) {
  TestRegister reg;
  const auto low = reg.Add(1, 9.6), in_low = reg.Add(1, 9.61), in_high = reg.Add(1, 10.39),
             high = reg.Add(1, 10.4), split = reg.Add(1, -10);
  const EntryList all = {low, in_low, in_high, high, split};
  EXPECT_EQ(Kept(kConditionAmount, kAmountIs, kConditionKeepsMatches, 10, all),
            (EntryList{in_low, in_high}));
  EXPECT_EQ(Kept(kConditionAmount, kAmountIs, kConditionKeepsOthers, 10, all),
            (EntryList{low, high, split}));
  EXPECT_EQ(Kept(kConditionAmount, kAmountIsMoreThan, kConditionKeepsMatches, 10, all),
            EntryList{});
  EXPECT_EQ(Kept(kConditionAmount, kAmountIsLessThan, kConditionKeepsMatches, 10, all),
            EntryList{split});
  EXPECT_EQ(Kept(kConditionAmount, 2, kConditionKeepsMatches, 10, all), EntryList{});
  split->addSplitLineItemWithCategory(-1, "", "", 10.0);  // the split total counts
  EXPECT_EQ(Kept(kConditionAmount, kAmountIs, kConditionKeepsMatches, 10, all),
            (EntryList{in_low, in_high, split}));
}

TEST(ZELMFilterCondition, AmountAndCheckNumberArePrintedBeforeTheTextTest) {
  testing::ScopedSettingsPin pin({.thousandsSeparator = ",", .decimalSeparator = "."});
  TestRegister reg;
  const auto big = reg.Add(1, 1234.56), debit = reg.Add(1, -1234.56), cents = reg.Add(1, 0.05);
  const auto split = reg.Add(1);
  split->addSplitLineItemWithCategory(-1, "", "", 0.125);  // items keep unrounded amounts
  split->SetCheckNumber(1042);
  const EntryList all = {big, debit, cents, split};
  EXPECT_EQ(Kept(kConditionAmountString, kTextStartsWith, kConditionKeepsMatches, "1,234.5", all),
            EntryList{big});
  EXPECT_EQ(Kept(kConditionAmountString, kTextIsEqualTo, kConditionKeepsMatches, "-1234.56", all),
            EntryList{debit});
  EXPECT_EQ(Kept(kConditionAmountString, kTextIsEqualTo, kConditionKeepsMatches, "0.05", all),
            EntryList{cents});
  EXPECT_EQ(Kept(kConditionAmountString, kTextIsEqualTo, kConditionKeepsMatches, "0.13", all),
            EntryList{split});
  EXPECT_EQ(Kept(kConditionAmountString, kTextContains, kConditionKeepsMatches, ",,", all),
            EntryList{});  // nothing left to find
  EXPECT_EQ(Kept(kConditionCheckString, kTextIsEqualTo, kConditionKeepsMatches, "-1", all),
            (EntryList{big, debit, cents}));
  EXPECT_EQ(Kept(kConditionCheckString, kTextEndsWith, kConditionKeepsMatches, "42", all),
            EntryList{split});

  testing::ScopedSettingsPin european({.thousandsSeparator = ".", .decimalSeparator = ","});
  EXPECT_EQ(Kept(kConditionAmountString, kTextIsEqualTo, kConditionKeepsMatches, "1.234,56", all),
            EntryList{big});
  EXPECT_EQ(Kept(kConditionAmountString, kTextContains, kConditionKeepsMatches, "1234.56", all),
            EntryList{});
}

TEST(ZELMFilterCondition, NamesAreLookedUpAndUnknownNumbersAreDroppedWhateverTheLogic) {
  TestRegister reg;
  const auto known = reg.Add(1), unknown = reg.Add(1),
             orphan = std::make_shared<ZELMAccountEntry>();
  known->SetType(4);      // "Check"
  known->SetCategory(2);  // Auto:Fuel
  unknown->SetType(77);
  unknown->SetCategory(77);
  const EntryList all = {known, unknown, orphan};
  EXPECT_EQ(Kept(kConditionType, kTextIsEqualTo, kConditionKeepsMatches, "CHECK", all),
            EntryList{known});
  EXPECT_EQ(Kept(kConditionType, kTextContains, kConditionKeepsOthers, "xyz", all),
            EntryList{known});
  EXPECT_EQ(Kept(kConditionCategory, kTextStartsWith, kConditionKeepsMatches, "auto:f", all),
            EntryList{known});
  EXPECT_EQ(Kept(kConditionCategory, kTextIsEqualTo, kConditionKeepsOthers, "Fuel", all),
            EntryList{known});
  // General searches the names too; an unknown name is empty text and drops nothing.
  EXPECT_EQ(Kept(kConditionGeneral, kTextEndsWith, kConditionKeepsMatches, "fuel", all),
            EntryList{known});
  EXPECT_EQ(Kept(kConditionGeneral, kTextContains, kConditionKeepsOthers, "check", all),
            (EntryList{unknown, orphan}));
}

TEST(ZELMFilterCondition, SplitLinesPassOneAtATimeAndEntriesWithoutLinesAreDropped) {
  TestRegister reg;
  const auto plain = reg.Add(1), split = reg.Add(1), lost = reg.Add(1);
  split->addSplitLineItemWithCategory(2, "gas", "", -20);  // Fuel: its own name is tested
  split->addSplitLineItemWithCategory(3, "lunch", "", -5);
  lost->addSplitLineItemWithCategory(99, "gas", "", -1);  // not in the tree: skipped
  const EntryList all = {plain, split, lost};
  EXPECT_EQ(Kept(kConditionSplitCategory, kTextIsEqualTo, kConditionKeepsMatches, "fuel", all),
            EntryList{split});
  EXPECT_EQ(Kept(kConditionSplitCategory, kTextStartsWith, kConditionKeepsMatches, "auto", all),
            EntryList{});
  EXPECT_EQ(Kept(kConditionSplitCategory, kTextIsEqualTo, kConditionKeepsOthers, "fuel", all),
            EntryList{split});
  EXPECT_EQ(Kept(kConditionSplitCategory, kTextContains, kConditionKeepsOthers, "F", all),
            EntryList{});
  EXPECT_EQ(Kept(kConditionSplitDescription, kTextIsEqualTo, kConditionKeepsMatches, "GAS", all),
            (EntryList{split, lost}));
  EXPECT_EQ(Kept(kConditionSplitDescription, kTextIsEqualTo, kConditionKeepsOthers, "gas", all),
            EntryList{split});
}

TEST(ZELMFilterCondition, BooleansCompareTheFlagWithTheDataUnderQualifierOneOnly) {
  TestRegister reg;
  const auto set = reg.Add(1), clear = reg.Add(1);
  set->SetIsCheck(true);
  set->SetCleared(1);
  set->SetTaxDeductible(true);
  set->SetVoid(true);
  const EntryList all = {set, clear};
  for (std::int32_t category :
       {kConditionCheck, kConditionCleared, kConditionTaxDeductible, kConditionVoid}) {
    SCOPED_TRACE(category);
    EXPECT_EQ(Kept(category, kFlagIsSet, kConditionKeepsMatches, true, all), EntryList{set});
    EXPECT_EQ(Kept(category, kFlagIsSet, kConditionKeepsOthers, 0, all), EntryList{set});
    EXPECT_EQ(Kept(category, 2, kConditionKeepsOthers, true, all), all);
  }
}

TEST(ZELMFilterCondition, StoredFormReadsOnlyTheKeysPresentAndWritesDataWhenThere) {
  const plist::Dictionary full{
      {"category", 1}, {"logic", 0}, {"qualifier", 70}, {"data", plist::Array{20080101, 20081231}}};
  EXPECT_EQ(ZELMFilterCondition(&full).asDictionary(), full);
  const plist::Dictionary partial{{"qualifier", "8"}};
  EXPECT_EQ(ZELMFilterCondition(&partial).asDictionary(),
            (plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 8}, {"data", ""}}));
  EXPECT_EQ(ZELMFilterCondition(0, 6, 1, plist::Value()).asDictionary(),
            (plist::Dictionary{{"category", 0}, {"logic", 1}, {"qualifier", 6}}));
}

}  // namespace
}  // namespace folvant
