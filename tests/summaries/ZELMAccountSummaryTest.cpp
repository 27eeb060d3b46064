// Summary definitions: options and their stored form, date ranges, and the account's list.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/summaries/ZELMAccountSummary.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;
using testing::ScopedClockPin;

std::vector<std::string> Keys(const Dictionary& dict) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : dict) keys.push_back(key.str());
  return keys;
}

std::vector<std::string> Names(const ZELMAccount::SummaryList& list) {
  std::vector<std::string> names;
  for (const auto& summary : list) names.push_back(summary->name());
  return names;
}

std::shared_ptr<ZELMAccountEntry> Dated(std::int32_t date) {
  auto entry = std::make_shared<ZELMAccountEntry>();
  entry->SetDate(date);
  return entry;
}

TEST(ZELMAccountSummary, OptionsRoundTripAndPartialUpdates) {
  ScopedClockPin pin(20080305);
  ZELMAccountSummary summary;
  const Dictionary defaults = summary.optionsAsDictionary();
  EXPECT_EQ(Keys(defaults),
            (std::vector<std::string>{
                "name", "dateRangeStyle", "startDate", "endDate", "showStyle", "showDebits",
                "showDeposits", "showResolved", "showTaxDeductible", "showChecks",
                "subtotalDescriptions", "subtotalTypes", "subtotalToFroms", "subtotalCategories",
                "parentCategorySubtotalsIncludeSubcategorySubtotals", "subtotalPeriodStyle",
                "filter", "filterType", "filterData"}));
  EXPECT_EQ(*defaults.find("name"), Value("Untitled Summary"));
  EXPECT_EQ(*defaults.find("startDate"), Value(20080305));
  EXPECT_EQ(*defaults.find("endDate"), Value(20080305));
  EXPECT_EQ(*defaults.find("showResolved"), Value(2));
  EXPECT_EQ(*defaults.find("subtotalPeriodStyle"), Value(2));
  EXPECT_EQ(*defaults.find("showDebits"), Value(true));
  EXPECT_EQ(*defaults.find("filter"), Value(false));
  EXPECT_EQ(*defaults.find("filterData"), Value(""));

  // Every option changed comes back through a new summary.
  const Dictionary changed{{"name", "Trips"},
                           {"dateRangeStyle", 20},
                           {"startDate", 20070101},
                           {"endDate", 20071231},
                           {"showStyle", 3},
                           {"showDebits", false},
                           {"showDeposits", false},
                           {"showResolved", 0},
                           {"showTaxDeductible", 1},
                           {"showChecks", 0},
                           {"subtotalDescriptions", false},
                           {"subtotalTypes", false},
                           {"subtotalToFroms", false},
                           {"subtotalCategories", false},
                           {"parentCategorySubtotalsIncludeSubcategorySubtotals", false},
                           {"subtotalPeriodStyle", 4},
                           {"filter", true},
                           {"filterType", 12},
                           {"filterData", "Fuel"}};
  ZELMAccountSummary loaded(&changed, ZELMAccountSummary::EntryList{Dated(20070505)});
  EXPECT_EQ(loaded.optionsAsDictionary(), changed);
  EXPECT_EQ(loaded.entries().size(), 1u);
  // Without options the entries are not taken.
  EXPECT_TRUE(
      ZELMAccountSummary(nullptr, ZELMAccountSummary::EntryList{Dated(1)}).entries().empty());

  // Only the keys present change.
  const Dictionary renamed{{"name", "Renamed"}};
  loaded.setOptionsFromDictionary(&renamed);
  Dictionary expected = changed;
  expected.set("name", "Renamed");
  EXPECT_EQ(loaded.optionsAsDictionary(), expected);
  loaded.setOptionsFromDictionary(nullptr);
  EXPECT_EQ(loaded.optionsAsDictionary(), expected);

  // Names compare without regard to case.
  ZELMAccountSummary a, b;
  a.setName("apples");
  b.setName("Bananas");
  EXPECT_EQ(a.NameIsGreaterThan(b), -1);
  EXPECT_EQ(b.NameIsGreaterThan(a), 1);
  b.setName("APPLES");
  EXPECT_EQ(a.NameIsGreaterThan(b), 0);
  a.setName(std::nullopt);
  EXPECT_EQ(a.name(), "");
}

TEST(ZELMAccountSummary, DateRangeByStyle) {
  ScopedClockPin pin(20080305);  // a Wednesday
  struct Row {
    std::int32_t style;
    std::int32_t start, end;
  };
  // The stored dates are 20010101-20010202; the entries span 20070301-20071115.
  for (const Row& row : {Row{0, 20070301, 20071115}, Row{1, 20070301, 20080305},
                         Row{2, 20080305, 20080305}, Row{3, 20080304, 20080304},  // yesterday
                         Row{4, 20080224, 20080301},                              // last week
                         Row{7, 20070101, 20071231},                              // last year
                         Row{8, 20080302, 20080308},                              // this week
                         Row{11, 20080101, 20081231},                             // this year
                         Row{15, 20080302, 20080305},                             // week to date
                         Row{16, 20080301, 20080305}, Row{17, 20080101, 20080305},
                         Row{18, 20080101, 20080305}, Row{20, 20010101, 20010202},
                         Row{12, 20010101, 20010202},  // no range: the stored dates stay
                         Row{19, 20010101, 20010202}, Row{21, 20010101, 20010202}}) {
    SCOPED_TRACE(row.style);
    ZELMAccountSummary summary;
    summary.setEntries(
        ZELMAccountSummary::EntryList{Dated(20070601), Dated(20071115), Dated(20070301)});
    summary.setDateRangeStyle(row.style);
    summary.setStartDate(20010101);
    summary.setEndDate(20010202);
    summary.updateDateRange();
    EXPECT_EQ(summary.startDate(), row.start);
    EXPECT_EQ(summary.endDate(), row.end);
  }
  // Without entries the first two styles take today; custom dates pass through the calendar.
  ZELMAccountSummary empty;
  for (std::int32_t style : {0, 1}) {
    empty.setDateRangeStyle(style);
    empty.setStartDate(20010101);
    empty.updateDateRange();
    EXPECT_EQ(empty.startDate(), 20080305);
    EXPECT_EQ(empty.endDate(), 20080305);
  }
  empty.setDateRangeStyle(20);
  empty.setStartDate(20080100);
  empty.setEndDate(20080230);
  empty.updateDateRange();
  EXPECT_EQ(empty.startDate(), 20071231);
  EXPECT_EQ(empty.endDate(), 20080301);
}

TEST(ZELMAccountSummary, FirstAndLastEntryAndSelection) {
  ZELMAccountSummary summary;
  EXPECT_EQ(summary.GetFirstEntry(), nullptr);
  const auto a = Dated(20080102), b = Dated(20080101), c = Dated(20080101), d = Dated(20080102);
  a->SetIsDebit(true);
  b->SetIsDeposit(true);
  d->SetIsDebit(true);
  summary.setEntries(ZELMAccountSummary::EntryList{a, b, c, d});
  EXPECT_EQ(summary.GetFirstEntry(), b);  // the earlier of equal dates
  EXPECT_EQ(summary.GetLastEntry(), a);
  EXPECT_EQ(summary.GetDebits(), (ZELMAccountSummary::EntryList{a, d}));
  EXPECT_EQ(summary.GetDeposits(), (ZELMAccountSummary::EntryList{b}));
}

const std::vector<std::string> kDefaultNames = {
    " Custom...",
    "All Entries, Month To Date",
    "All Entries, Quarter To Date",
    "All Entries, Year To Date",
    "Expenses, Month To Date",
    "Expenses, Quarter To Date",
    "Expenses, Year To Date",
    "Income, Month To Date",
    "Income, Quarter To Date",
    "Income, Year To Date",
    "Tax-Deductible, Last Year",
    "Tax-Deductible, This Year",
};

TEST(ZELMAccountSummaries, NewAndLoadedAccountsHaveTheDefaults) {
  ScopedClockPin pin(20080305);
  ZELMAccount account;
  EXPECT_EQ(Names(account.accountSummaries()), kDefaultNames);
  EXPECT_EQ(account.selectedAccountSummary(), account.accountSummaries().front());
  const auto& list = account.accountSummaries();
  EXPECT_EQ(list[1]->dateRangeStyle(), 16);
  EXPECT_EQ(list[6]->dateRangeStyle(), 18);
  EXPECT_FALSE(list[6]->showDeposits());
  EXPECT_TRUE(list[6]->showDebits());
  EXPECT_FALSE(list[8]->showDebits());
  EXPECT_EQ(list[10]->dateRangeStyle(), 7);
  EXPECT_EQ(list[10]->showTaxDeductible(), 0);
  EXPECT_EQ(list[11]->dateRangeStyle(), 11);
  EXPECT_EQ(list[0]->showTaxDeductible(), 2);

  // A file with an empty or no stored list gets the defaults; a stored list replaces them.
  Dictionary stored = account.asDictionary();
  EXPECT_EQ(stored.find("accountSummaries")->asArray()->size(), 12u);
  for (const bool remove : {false, true}) {
    if (remove) {
      stored.erase("accountSummaries");
    } else {
      stored.set("accountSummaries", Array{});
    }
    EXPECT_EQ(Names(ZELMAccount(&stored).accountSummaries()), kDefaultNames);
  }
  stored.set("accountSummaries", Array{Dictionary{{"name", "Mine"}, {"showDebits", false}},
                                       Value(3), Dictionary{{"name", "Another"}}});
  stored.set("selectedAccountSummary", 1);
  const ZELMAccount loaded(&stored);
  EXPECT_EQ(Names(loaded.accountSummaries()), (std::vector<std::string>{"Mine", "Another"}));
  EXPECT_FALSE(loaded.accountSummaries()[0]->showDebits());
  EXPECT_EQ(loaded.selectedAccountSummary()->name(), "Another");
  EXPECT_EQ(*loaded.asDictionary().find("selectedAccountSummary"), Value(1));
}

TEST(ZELMAccountSummaries, ListOperationsAndSelection) {
  ZELMAccount account;
  auto entry = std::make_shared<ZELMAccountEntry>();
  account.AddEntry(entry);
  auto added = std::make_shared<ZELMAccountSummary>();
  added->setName("b-second");
  account.addAccountSummary(added);
  account.addAccountSummary(nullptr);
  EXPECT_EQ(account.accountSummaries().size(), 13u);
  EXPECT_EQ(account.accountSummaries()[4], added);  // after "All Entries, Year To Date"
  EXPECT_EQ(added->entries(), ZELMAccount::EntryList{entry});

  account.selectAccountSummaryAtIndex(13);  // out of range: ignored
  EXPECT_EQ(account.selectedAccountSummary(), account.accountSummaries()[0]);
  account.selectAccountSummaryAtIndex(4);
  EXPECT_EQ(account.selectedAccountSummary(), added);
  EXPECT_EQ(account.selectedAccountSummaryIndex(), 4);

  // Renaming the selected summary sorts the list again.
  const Dictionary rename{{"name", "zz last"}};
  account.setAccountSummaryOptions(&rename);
  EXPECT_EQ(account.accountSummaries().back(), added);
  EXPECT_EQ(account.selectedAccountSummaryIndex(), 12);

  // Removing the selected summary leaves it selected; it is stored as index 0.
  account.removeAccountSummary(added.get());
  account.removeAccountSummary(added.get());
  EXPECT_EQ(account.accountSummaries().size(), 12u);
  EXPECT_EQ(account.selectedAccountSummary(), added);
  EXPECT_EQ(account.selectedAccountSummaryIndex(), 0);

  // Only a summary of the list can be set as the selection; any can be selected unchecked.
  const auto outsider = std::make_shared<ZELMAccountSummary>();
  account.setSelectedAccountSummary(outsider);
  EXPECT_EQ(account.selectedAccountSummary(), added);
  account.setSelectedAccountSummary(account.accountSummaries()[2]);
  EXPECT_EQ(account.selectedAccountSummary(), account.accountSummaries()[2]);
  account.selectAccountSummary(outsider);
  EXPECT_EQ(account.selectedAccountSummary(), outsider);
}

}  // namespace
}  // namespace folvant
