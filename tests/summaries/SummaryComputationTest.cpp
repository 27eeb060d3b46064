// Summary reports: period bounds, totals, rows, category trees, currencies, balances, and the
// fast computation against a plain one that scans every entry for every period.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/plist/Value.h"
#include "folvant/summaries/ZELMAccountSummary.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"
#include "tests/support/FakeAccountsController.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using EntryList = ZELMAccountSummary::EntryList;
using platform::LocalTime;
using testing::FakeAccountsController;

LocalTime At(std::int32_t date, int hour = 0, int minute = 0, int second = 0) {
  return DateNumberToNSCalendarDate(date) + std::chrono::hours(hour) +
         std::chrono::minutes(minute) + std::chrono::seconds(second);
}

// Categories Auto (1) > Fuel (2), Food (3), FOOD (4, the same name in other case), type 7.
struct Ledger {
  FakeAccountsController controller;
  ZELMAccount account;
  ZELMAccountSummary summary;

  Ledger() {
    const auto automobile = controller.AddCategory("Auto", 1);
    controller.AddCategory("Fuel", 2, automobile);
    controller.AddCategory("Food", 3);
    controller.AddCategory("FOOD", 4);
    auto type = std::make_shared<ZELMAccountEntryType>();
    type->SetName("Gasoline");
    type->SetNumber(7);
    controller.AddType(type);
    controller.AddCurrency(
        std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".", 1.0, 20080101));
    account.setAccountsController(&controller);
    account.setCurrency(controller.currency());
    account.SetStartingBalance(100.0);
    summary.setDateRangeStyle(20);
    summary.setAccounts({&account});
  }

  std::shared_ptr<ZELMAccountEntry> Add(std::int32_t date, double amount, std::int32_t category,
                                        std::string_view description = "",
                                        std::string_view toFrom = "") {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(date);
    entry->SetAmount(amount);
    entry->SetIsDebit(amount < 0);
    entry->SetIsDeposit(amount >= 0);
    entry->SetCategory(category);
    entry->SetDescription(description);
    entry->SetToFrom(toFrom);
    account.AddEntry(entry);
    return entry;
  }

  ZELMSummaryReport Report(std::int32_t start, std::int32_t end, std::int32_t periods) {
    summary.setEntries(account.GetAllEntries());
    summary.setStartDate(start);
    summary.setEndDate(end);
    summary.setSubtotalPeriodStyle(periods);
    return summary.Summary();
  }
};

std::vector<std::pair<LocalTime, LocalTime>> Bounds(const ZELMSummaryReport& report) {
  std::vector<std::pair<LocalTime, LocalTime>> bounds;
  for (const auto& period : report.subtotals) bounds.emplace_back(period.startDate, period.endDate);
  return bounds;
}

TEST(SummaryComputation, PeriodBounds) {
  Ledger ledger;
  // 1 March 2010 is a Monday: a short first week, and a last one cut back to 31 March.
  EXPECT_EQ(
      Bounds(ledger.Report(20100301, 20100331, 1)),
      (std::vector<std::pair<LocalTime, LocalTime>>{{At(20100301), At(20100306, 23, 59, 59)},
                                                    {At(20100307), At(20100313, 23, 59, 59)},
                                                    {At(20100314), At(20100320, 23, 59, 59)},
                                                    {At(20100321), At(20100327, 23, 59, 59)},
                                                    {At(20100328), At(20100331, 23, 59, 59)}}));
  // Three-month blocks count from the start month, not from calendar quarters.
  EXPECT_EQ(
      Bounds(ledger.Report(20080215, 20081231, 3)),
      (std::vector<std::pair<LocalTime, LocalTime>>{{At(20080215), At(20080430, 23, 59, 59)},
                                                    {At(20080501), At(20080731, 23, 59, 59)},
                                                    {At(20080801), At(20081031, 23, 59, 59)},
                                                    {At(20081101), At(20081231, 23, 59, 59)}}));
  EXPECT_EQ(ledger.Report(20080131, 20080301, 2).subtotals.size(), 3u);
  EXPECT_EQ(ledger.Report(20080131, 20080302, 0).subtotals.size(), 32u);
  EXPECT_EQ(Bounds(ledger.Report(20071115, 20090110, 4)).back(),
            std::make_pair(At(20090101), At(20090110, 23, 59, 59)));
  EXPECT_EQ(
      Bounds(ledger.Report(20071115, 20090110, 5)),
      (std::vector<std::pair<LocalTime, LocalTime>>{{At(20071115), At(20090110, 23, 59, 59)}}));
  EXPECT_TRUE(ledger.Report(20080102, 20080101, 2).subtotals.empty());
  EXPECT_TRUE(ledger.Report(20080101, 20080301, 6).subtotals.empty());
}

TEST(SummaryComputation, TotalsRowsAndCategories) {
  Ledger ledger;
  const auto fuel = ledger.Add(20080105, -10, 2, "Gas", "Shell");
  fuel->SetType(7);
  fuel->SetCleared(1);
  ledger.Add(20080110, -20, 3, "Food", "Market")->SetTaxDeductible(true);
  ledger.Add(20080112, -5, 4, "Food", "Market");
  // A deposit split into a refund and a negative part that takes the entry's texts.
  const auto split = ledger.Add(20080203, 0, -1, "Split", "Bank");
  split->addSplitLineItemWithCategory(1, "Refund", "", 30);
  split->addSplitLineItemWithCategory(3, "", std::nullopt, -12.5);
  ledger.Add(20080204, -99, 3, "Voided")->SetVoid(true);
  ledger.Add(20080301, -7, 3, "Outside");

  const ZELMSummaryReport report = ledger.Report(20080101, 20080229, 2);
  ASSERT_EQ(report.subtotals.size(), 2u);
  const ZELMPeriodSubtotal& january = report.subtotals[0];
  const ZELMPeriodSubtotal& february = report.subtotals[1];
  EXPECT_EQ(january.entryCount, 3);
  EXPECT_EQ(january.total, -35);
  EXPECT_EQ(january.runningTotal, -35);
  EXPECT_EQ(january.debitsTotal, -35);
  EXPECT_EQ(january.depositsTotal, 0);
  EXPECT_EQ(january.resolvedTotal, -10);
  EXPECT_EQ(january.unresolvedTotal, -25);
  EXPECT_EQ(january.taxDeductibleTotal, -20);
  EXPECT_EQ(january.taxableTotal, -15);
  EXPECT_EQ(january.startBalance, 100);
  EXPECT_EQ(january.endBalance, 65);
  EXPECT_EQ(january.typesSubtotals,
            (ZELMSummaryRows{{"", {-25, -25, 0}}, {"Gasoline", {-10, -10, 0}}}));
  // "Food" and "FOOD" share one node; the parent counts its subcategory.
  EXPECT_EQ(january.categoriesSubtotals,
            (ZELMCategorySubtotals{{"Auto", -10, -10, 0, {{"Fuel", -10, -10, 0, {}}}},
                                   {"Food", -25, -25, 0, {}}}));

  // The void entry is listed and counted, and in no total.
  EXPECT_EQ(february.entryCount, 2);
  EXPECT_EQ(february.entries.size(), 2u);
  EXPECT_EQ(february.total, 17.5);
  EXPECT_EQ(february.depositsTotal, 17.5);
  EXPECT_EQ(february.debitsTotal, 0);
  EXPECT_EQ(february.endBalance, 82.5);
  // Each line item goes by its own sign and texts (the entry's when its own are empty).
  EXPECT_EQ(february.descriptionsSubtotals,
            (ZELMSummaryRows{{"Refund", {30, 0, 30}}, {"Split", {-12.5, -12.5, 0}}}));
  EXPECT_EQ(february.toFromSubtotals, (ZELMSummaryRows{{"Bank", {17.5, -12.5, 30}}}));
  EXPECT_EQ(february.typesSubtotals, (ZELMSummaryRows{{"", {17.5, 0, 17.5}}}));

  // The whole range merges the periods.
  EXPECT_EQ(report.entryCount, 5);
  EXPECT_EQ(report.total, -17.5);
  EXPECT_EQ(report.startDate, At(20080101));
  EXPECT_EQ(report.endDate, At(20080229));
  EXPECT_EQ(report.startBalance, 100);
  EXPECT_EQ(report.endBalance, 82.5);
  EXPECT_EQ(report.categoriesSubtotals,
            (ZELMCategorySubtotals{{"Auto", 20, -10, 30, {{"Fuel", -10, -10, 0, {}}}},
                                   {"Food", -37.5, -37.5, 0, {}}}));
  EXPECT_EQ(report.descriptionsSubtotals.at("Food"), (ZELMSummaryRow{-25, -25, 0}));
  const auto all =
      ZELMAccountSummary::allCategorySubtotalsForCategorySubtotals(&report.categoriesSubtotals);
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[1]->subtotalName, "Fuel");
  EXPECT_EQ(ZELMAccountSummary_CategorySubtotalWithName(report.categoriesSubtotals, "auto:FUEL"),
            all[1]);
  EXPECT_EQ(ZELMAccountSummary_CategorySubtotalWithName(report.categoriesSubtotals, "Auto:Oil"),
            nullptr);

  // Without parents counting their subcategories the parent node stays at 0.
  ledger.summary.setParentCategorySubtotalsIncludeSubcategorySubtotals(false);
  EXPECT_EQ(ledger.Report(20080101, 20080131, 5).categoriesSubtotals.front(),
            (ZELMCategorySubtotal{"Auto", 0, 0, 0, {{"Fuel", -10, -10, 0, {}}}}));

  // Selection: deposits only; a text filter; only resolved entries.
  ledger.summary.setShowDebits(false);
  EXPECT_EQ(ledger.Report(20080101, 20080229, 5).entryCount, 1);
  ledger.summary.setShowDebits(true);
  ledger.summary.setFilter(true);
  ledger.summary.setFilterType(2);
  ledger.summary.setFilterData("foo");
  EXPECT_EQ(ledger.Report(20080101, 20080229, 5).total, -25);
  ledger.summary.setFilter(false);
  ledger.summary.setShowResolved(0);
  EXPECT_EQ(ledger.Report(20080101, 20080229, 5).total, -10);
}

TEST(SummaryComputation, NearZeroSumsAreStoredAsZero) {
  Ledger ledger;
  ledger.account.SetStartingBalance(0);
  const auto entry = ledger.Add(20080110, 0, -1, "Tiny");
  entry->addSplitLineItemWithCategory(3, "", "", 0.0004);
  const ZELMSummaryReport report = ledger.Report(20080101, 20080131, 2);
  const ZELMPeriodSubtotal& period = report.subtotals.at(0);
  EXPECT_EQ(entry->GetAmount(), 0.0004);
  EXPECT_EQ(period.total, 0.0);
  EXPECT_EQ(period.endBalance, 0.0);
  EXPECT_EQ(period.descriptionsSubtotals.at("Tiny").amount, 0.0);
  EXPECT_EQ(period.categoriesSubtotals.at(0).amount, 0.0);
  EXPECT_EQ(report.total, 0.0);
}

TEST(SummaryComputation, AccountsInOtherCurrencies) {
  Ledger ledger;
  auto euro = std::make_shared<LVCurrency>("EUR", "Euro", "€", false, ".", ",", 0.5, 20080101);
  ZELMAccount euros;
  euros.setAccountsController(&ledger.controller);
  euros.setCurrency(euro);
  euros.SetStartingBalance(10);
  auto entry = std::make_shared<ZELMAccountEntry>();
  entry->SetDate(20080105);
  entry->SetAmount(-40);
  entry->SetIsDebit(true);
  euros.AddEntry(entry);
  ledger.Add(20080106, -1, 3);

  // One account: its currency. Several: the controller's base currency. None: a new default.
  EXPECT_EQ(ledger.summary.currency(), ledger.account.currency());
  ZELMAccountSummary lone;
  EXPECT_EQ(lone.currency()->code(), LVCurrency().code());
  lone.setAccounts({&euros});
  EXPECT_EQ(lone.currency(), euro);
  ledger.summary.setAccounts({&euros, &ledger.account});
  EXPECT_EQ(ledger.summary.currency(), ledger.controller.currency());

  EXPECT_EQ(ledger.summary.GetStartingBalance(), 105);
  // Only the accounts with an entry before the date, and those without entries.
  EXPECT_EQ(ledger.summary.GetStartingBalanceBeforeDate(20080106), 5);
  EXPECT_EQ(ledger.summary.GetRunningBalanceThroughDate(20080105), 85);

  EntryList entries = ledger.account.GetAllEntries();
  entries.push_back(entry);
  ledger.summary.setEntries(entries);
  ledger.summary.setStartDate(20080101);
  ledger.summary.setEndDate(20080131);
  const ZELMSummaryReport report = ledger.summary.Summary();
  EXPECT_EQ(report.total, -21);
  EXPECT_EQ(report.startBalance, 105);
  EXPECT_EQ(report.endBalance, 84);
  EXPECT_EQ(report.categoriesSubtotals.front().subtotalName, "");  // no category
  EXPECT_EQ(report.categoriesSubtotals.front().amount, -20);

  ledger.summary.Refresh();
  ASSERT_TRUE(ledger.summary.summaryDictionary().has_value());
  EXPECT_EQ(*ledger.summary.summaryDictionary(), report);
}

// The periods as plain calendar rules, day by day: a period ends on the range's last day, on
// a day whose next day begins a new week, month, three-month block or year, or every day.
std::vector<std::pair<std::int32_t, std::int32_t>> PlainPeriods(std::int32_t style,
                                                                std::int32_t first,
                                                                std::int32_t last) {
  std::vector<std::pair<std::int32_t, std::int32_t>> periods;
  const platform::Day end = platform::DayFromDateNumber(last);
  const platform::CivilDate start = platform::CivilFromDay(platform::DayFromDateNumber(first));
  platform::Day from = platform::DayFromDateNumber(first);
  for (platform::Day day = from; day <= end; ++day) {
    const platform::CivilDate next = platform::CivilFromDay(day + 1);
    const std::int64_t months = (next.year - start.year) * 12 + next.month - start.month;
    const bool ends = day == end || style == 0 || (style == 1 && platform::Weekday(day + 1) == 0) ||
                      (style == 2 && next.day == 1) ||
                      (style == 3 && next.day == 1 && months % 3 == 0) ||
                      (style == 4 && next.day == 1 && next.month == 1);
    if (ends) {
      periods.emplace_back(platform::DateNumberFromDay(from), platform::DateNumberFromDay(day));
      from = day + 1;
    }
  }
  return periods;
}

TEST(SummaryComputation, FastComputationMatchesAPlainScanOfEveryPeriod) {
  std::mt19937 random(20080615);
  const auto below = [&random](int n) { return static_cast<int>(random() % n); };
  for (int round = 0; round < 6; ++round) {
    SCOPED_TRACE(round);
    Ledger ledger;
    // Names that match only once case-folded beyond ASCII, under numbers past the usual ones.
    ledger.controller.AddCategory("\u00c9pices", 5000);
    ledger.controller.AddCategory("\u00e9PICES", 5001);
    const std::int32_t categories[] = {-1, 0, 1, 2, 3, 4, 5000, 5001};
    // A second account in another currency whose entries the summary also reports.
    ZELMAccount other;
    other.setAccountsController(&ledger.controller);
    other.setCurrency(
        std::make_shared<LVCurrency>("EUR", "Euro", "€", false, ".", ",", 0.64, 20080101));
    other.SetStartingBalance(below(1000));
    const char* const texts[] = {"", "Rent", "rent", "Gas", "Market"};
    std::int32_t number = 0;  // unique over both accounts, so that the date order is total
    for (int i = 0; i < 300; ++i) {
      const std::int32_t date =
          platform::DateNumberFromDay(platform::DayFromDateNumber(20071020) + below(500));
      auto entry = std::make_shared<ZELMAccountEntry>();
      ZELMAccount& owner = below(4) == 0 ? other : ledger.account;
      entry->SetNumber(++number);
      entry->SetDate(date);
      entry->SetAmount((below(40001) - 20000) / 100.0);
      const int kind = below(12);
      entry->SetIsDebit(kind < 5);
      entry->SetIsDeposit(kind >= 5 && kind < 9);  // 9, 10: neither; 11: both, below
      entry->SetCategory(categories[below(8)]);
      entry->SetDescription(texts[below(5)]);
      entry->SetToFrom(texts[below(5)]);
      entry->SetCleared(below(2));
      entry->SetTaxDeductible(below(3) == 0);
      entry->SetVoid(below(8) == 0);
      if (below(5) == 0) {
        for (int item = below(3) + 1; item > 0; --item) {
          entry->addSplitLineItemWithCategory(categories[below(8)], texts[below(5)],
                                              texts[below(5)], (below(20001) - 10000) / 100.0);
        }
      }
      if (kind == 11) {  // both debit and deposit: only a stored entry can say so
        plist::Dictionary stored = entry->asDictionary();
        stored.set("entryFlags",
                   plist::Value(entry->GetEntryFlags() | ZELMAccountEntry::kFlagDebit |
                                ZELMAccountEntry::kFlagDeposit));
        entry = std::make_shared<ZELMAccountEntry>(&stored);
      }
      owner.AddEntry(entry);
    }
    if (round % 2 == 1) {  // dates then spread too far for the balances to count them out
      auto old = std::make_shared<ZELMAccountEntry>();
      old->SetNumber(++number);
      old->SetDate(19500101);
      old->SetAmount(12.5);
      old->SetIsDeposit(true);
      other.AddEntry(old);
    }
    EntryList entries = ledger.account.GetAllEntries();
    for (const auto& entry : other.GetAllEntries()) entries.push_back(entry);
    ledger.summary.setEntries(entries);
    ledger.summary.setAccounts({&ledger.account, &other});
    ledger.summary.setParentCategorySubtotalsIncludeSubcategorySubtotals(round % 2 == 0);
    const std::int32_t first =
        platform::DateNumberFromDay(platform::DayFromDateNumber(20071101) + below(60));
    const std::int32_t last =
        platform::DateNumberFromDay(platform::DayFromDateNumber(20080901) + below(60));
    ledger.summary.setStartDate(first);
    ledger.summary.setEndDate(last);
    const bool resolvedOnly = round % 3 == 2;
    ledger.summary.setShowResolved(resolvedOnly ? 0 : 2);

    // The selection the plain way: every debit and every deposit in the range (an entry that
    // is both, twice), resolved ones only when asked, by date and number.
    EntryList selected;
    for (const auto& entry : entries) {
      if (entry->GetDate() < first || entry->GetDate() > last) continue;
      if (resolvedOnly && entry->GetCleared() == 0) continue;
      if (entry->IsDebit()) selected.push_back(entry);
      if (entry->IsDeposit()) selected.push_back(entry);
    }
    std::sort(selected.begin(), selected.end(), [](const auto& a, const auto& b) {
      return a->GetDate() != b->GetDate() ? a->GetDate() < b->GetDate()
                                          : a->GetNumber() < b->GetNumber();
    });
    const auto target = ledger.summary.currency();

    for (std::int32_t style = 0; style <= 5; ++style) {
      SCOPED_TRACE(style);
      ledger.summary.setSubtotalPeriodStyle(style);
      const ZELMSummaryReport report = ledger.summary.Summary();
      const auto periods = PlainPeriods(style, first, last);
      ASSERT_EQ(report.subtotals.size(), periods.size());
      std::int64_t count = 0;
      for (std::size_t p = 0; p < periods.size(); ++p) {
        const auto [from, to] = periods[p];
        EntryList inside;
        double total = 0.0, debits = 0.0;
        for (const auto& entry : selected) {
          if (entry->GetDate() < from || entry->GetDate() > to) continue;
          inside.push_back(entry);
          if (entry->GetVoid()) continue;
          const double amount =
              entry->GetAccount()->currency()->convertAmount(entry->GetAmount(), target.get());
          total = RoundNearZeroValue(total + amount);
          if (entry->IsDebit()) debits = RoundNearZeroValue(debits + amount);
        }
        const ZELMPeriodSubtotal& fast = report.subtotals[p];
        const ZELMPeriodSubtotal plain =
            ledger.summary.SubtotalEntries(inside, At(from), At(to, 23, 59, 59));
        EXPECT_EQ(fast.startDate, At(from));
        EXPECT_EQ(fast.endDate, At(to, 23, 59, 59));
        EXPECT_EQ(fast.entries, inside);
        EXPECT_EQ(fast.total, total);
        EXPECT_EQ(fast.debitsTotal, debits);
        // Balances: the same sums formed in another order.
        EXPECT_NEAR(fast.startBalance, plain.startBalance, 1e-6);
        EXPECT_NEAR(fast.endBalance, plain.endBalance, 1e-6);
        ZELMPeriodSubtotal rest = fast;
        rest.startBalance = plain.startBalance;
        rest.endBalance = plain.endBalance;
        EXPECT_EQ(rest, plain);
        count += fast.entryCount;
      }
      EXPECT_EQ(count, static_cast<std::int64_t>(selected.size()));
      EXPECT_EQ(report.entryCount, count);
    }
  }
}

}  // namespace
}  // namespace folvant
