#include <gtest/gtest.h>

#include <tuple>

#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "tests/filters/FilterTestRegister.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::TestRegister;
using EntryList = ZELMAccount::EntryList;

plist::Dictionary Condition(std::int32_t category, std::int32_t qualifier, plist::Value data) {
  return {{"category", category}, {"logic", 1}, {"qualifier", qualifier}, {"data", data}};
}

plist::Dictionary OneGroupFilter(const char* name, plist::Array conditions) {
  return {{"name", name},
          {"conditionGroups",
           plist::Array{plist::Dictionary{
               {"logic", 0}, {"qualifier", 1}, {"conditions", std::move(conditions)}}}}};
}

TEST(ZELMAccountSmartFolders, NewAccountsGetThisYearAndLastYearAndAStoredListReplacesThem) {
  EXPECT_EQ(
      *ZELMAccount().asDictionary().find("smartFolders"),
      plist::Value(plist::Array{OneGroupFilter("This Year", {Condition(1, 63, plist::Array{})}),
                                OneGroupFilter("Last Year", {Condition(1, 64, plist::Array{})})}));

  const plist::Dictionary mine = OneGroupFilter("Fuel", {Condition(8, 6, "fuel")});
  const plist::Dictionary stored{{"smartFolders", plist::Array{"junk", mine}}};
  testing::LogCapture log;  // the keys left out are reported; not the subject here
  EXPECT_EQ(*ZELMAccount(&stored).asDictionary().find("smartFolders"),
            plist::Value(plist::Array{mine}));
  const plist::Dictionary not_an_array{{"smartFolders", mine}};
  EXPECT_TRUE(ZELMAccount(&not_an_array).smartFolders().empty());
}

TEST(ZELMAccountSmartFolders, RemovingTheShownSmartFolderDoesNotClearIt) {
  ZELMAccount account;
  const auto extra = std::make_shared<ZELMFilter>();
  account.addSmartFolder(extra);
  account.addSmartFolder(extra);
  account.removeSmartFolderAtIndex(3);
  account.setSmartFolder(extra);
  account.removeSmartFolder(extra.get());
  account.removeSmartFolderAtIndex(0);
  ASSERT_EQ(account.smartFolders().size(), 1u);
  EXPECT_EQ(account.smartFolders()[0]->name(), "Last Year");
  EXPECT_EQ(account.smartFolder(), extra);
}

TEST(ZELMAccountViewFilters, NewAccountShowsEverythingBetweenTheFirstAndLastEntry) {
  testing::ScopedClockPin pin(20080615);
  TestRegister reg;
  EXPECT_EQ(reg.account.entryFilter()->asDictionary(),
            OneGroupFilter("General", {Condition(50, 6, ""), Condition(1, 2, 20080614),
                                       Condition(1, 0, 20080616)}));
  const EntryList entries = {reg.Add(20080310), reg.Add(20070101), reg.Add(20091231)};
  EXPECT_EQ(reg.account.entryFilteredEntries(), entries);
  EXPECT_EQ(reg.account.reconcileFilteredEntries(), entries);
}

TEST(ZELMAccountViewFilters, SettingsBecomeConditions) {
  testing::ScopedClockPin pin(20080615);
  TestRegister reg;
  ZELMAccount& account = reg.account;
  account.setReconcileFilterType(kSearchAmount);
  const plist::Value text("12.5");
  account.setReconcileFilterData(&text);
  account.setReconcileDateFilterType(kShowCustomDates);
  account.setReconcileDateFilterStartDate(20080301);
  account.setReconcileDateFilterEndDate(20080331);
  account.setReconcileResolvedFilterType(kShowUnresolvedOnly);
  account.setReconcileTaxDeductibleFilterType(kShowTaxDeductibleOnly);
  EXPECT_EQ(account.reconcileFilter()->asDictionary(),
            OneGroupFilter("Amount", {Condition(11, 6, "12.5"), Condition(1, 2, 20080300),
                                      Condition(1, 0, 20080332), Condition(6, 1, false),
                                      Condition(7, 1, true)}));
  const auto in_march = reg.Add(20080331, -12.5), in_april = reg.Add(20080401, -12.5);
  in_march->SetTaxDeductible(true);
  in_april->SetTaxDeductible(true);
  EXPECT_EQ(account.reconcileFilteredEntries(), EntryList{in_march});
  EXPECT_EQ(account.entryFilteredEntries(), (EntryList{in_march, in_april}));
}

TEST(ZELMAccountViewFilters, DateFilterTypesBecomeAnAfterAndBeforePair) {
  testing::ScopedClockPin pin(20080615);
  TestRegister reg;
  reg.Add(20080401);
  reg.Add(20080331);
  reg.account.setEntryDateFilterStartDate(20080301);
  reg.account.setEntryDateFilterEndDate(20080331);
  // Type, then the data of the "after" and "before" conditions.
  const std::tuple<std::int32_t, std::int32_t, std::int32_t> rows[] = {
      {20, 20080330, 20080616}, {21, 20080614, 20080616}, {22, 20080613, 20080615},
      {30, 20080614, 20080622}, {31, 20080600, 20080631}, {43, 20070100, 20071232},
      {53, 20080100, 20080616}, {60, 20080330, 20080402}, {61, 20080300, 20080332}};
  for (const auto& [type, after, before] : rows) {
    reg.account.setEntryDateFilterType(type);
    EXPECT_EQ(reg.account.entryFilter()->asDictionary(),
              OneGroupFilter("General", {Condition(50, 6, ""), Condition(1, 2, after),
                                         Condition(1, 0, before)}))
        << type;
  }
  reg.account.setEntryDateFilterType(99);  // no date conditions
  EXPECT_EQ(reg.account.entryFilter()->asDictionary(),
            OneGroupFilter("General", {Condition(50, 6, "")}));
}

TEST(ZELMAccountViewFilters, FilterTypesNameTheFilterAndChooseTheField) {
  const std::tuple<std::int32_t, const char*, std::int32_t> rows[] = {
      {10, "Description", 0}, {71, "Split Description", 21},
      {11, "To/From", 5},     {72, "Split Category", 20},
      {12, "Type", 3},        {15, "Check Number", 10},
      {13, "Notes", 30},      {16, "Category", 8},
      {14, "Amount", 11},     {0, "General", 50},
      {17, "General", 50}};
  ZELMAccount account;
  for (const auto& [type, name, category] : rows) {
    account.setReconcileFilterType(type);
    const auto filter = account.reconcileFilter();
    EXPECT_EQ(filter->name(), name);
    EXPECT_EQ(filter->conditionGroups()[0]->conditions()[0]->category(), category) << type;
  }
}

TEST(ZELMAccountViewFilters, AShownFolderOverridesTheShownSmartFolder) {
  TestRegister reg;
  const auto main = reg.Add(20080101, -1, "rent");
  const auto filed = std::make_shared<ZELMAccountEntry>();
  filed->SetDate(20080102);
  auto folder = std::make_shared<ZELMAccountFolder>();
  folder->setEntries(EntryList{filed});
  reg.account.addFolder(folder);
  const plist::Dictionary stored = OneGroupFilter("Rent", {Condition(0, 6, "rent")});
  const auto rent = ZELMFilter::filterWithDictionary(&stored);
  reg.account.addSmartFolder(rent);

  EXPECT_EQ(reg.account.entryFilteredEntries(), (EntryList{main, filed}));
  reg.account.setSmartFolder(rent);
  EXPECT_EQ(reg.account.entryFilteredEntries(), EntryList{main});
  reg.account.setFolder(folder);
  EXPECT_EQ(reg.account.entryFilteredEntries(), EntryList{filed});
  EXPECT_EQ(reg.account.reconcileFilteredEntries(), EntryList{filed});
}

}  // namespace
}  // namespace folvant
