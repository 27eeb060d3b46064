#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/plist/Value.h"
#include "folvant/summaries/ZELMSummaryTables.h"

namespace folvant {

class LVCurrency;
class ZELMAccount;

// A saved report definition: a date range, which entries to take, how to cut the range into
// periods, and an optional text filter; with the entries and accounts it reports on and the
// last report it computed. Only the options are saved (optionsAsDictionary). Held by its
// account's list through std::shared_ptr. The entries are shared with their accounts; the
// accounts are not owned (the account that owns a summary is usually among them) and must
// outlive the summary's computations.
class ZELMAccountSummary {
 public:
  using EntryList = std::vector<std::shared_ptr<ZELMAccountEntry>>;
  using AccountList = std::vector<const ZELMAccount*>;
  using CategoryList = std::vector<std::shared_ptr<ZELMAccountEntryCategory>>;

  // "Untitled Summary", all entries (style 0) from today to today, debits and deposits of
  // every resolved, tax-deductible and check state, all four subtotals, monthly periods,
  // parents counting their subcategories, no text filter, no entries, no accounts, no report.
  ZELMAccountSummary();
  // The defaults; then, when `options` is given, the entries (none: an empty list) and the
  // options that `options` holds. Without options the entries are not taken.
  ZELMAccountSummary(const plist::Dictionary* options, std::optional<EntryList> entries);
  ZELMAccountSummary(const ZELMAccountSummary&) = delete;
  ZELMAccountSummary& operator=(const ZELMAccountSummary&) = delete;

  // The options as saved in the account file: "name", "dateRangeStyle", "startDate",
  // "endDate", "showStyle", "showDebits", "showDeposits", "showResolved", "showTaxDeductible",
  // "showChecks", "subtotalDescriptions", "subtotalTypes", "subtotalToFroms",
  // "subtotalCategories", "parentCategorySubtotalsIncludeSubcategorySubtotals",
  // "subtotalPeriodStyle", "filter", "filterType", "filterData".
  plist::Dictionary optionsAsDictionary() const;
  // Sets each option whose key is present from its value (integer, boolean or text); absent
  // keys leave the option as it is. nullptr does nothing.
  void setOptionsFromDictionary(const plist::Dictionary* options);

  // -1, 0 or 1 comparing the names without regard to case.
  int NameIsGreaterThan(const ZELMAccountSummary& other) const;

  // ---- Options ----
  const std::string& name() const { return name_; }
  // nullopt stores "".
  void setName(std::optional<std::string_view> name) { name_ = std::string(name.value_or("")); }
  // 0 all entries, 1 first entry through today, 2 today, 3-11 the named ranges 1-9 (yesterday,
  // last week/month/quarter/year, this week/month/quarter/year), 15-18 week, month, quarter and
  // year to date, 20 the stored dates. Other codes keep the stored dates.
  std::int32_t dateRangeStyle() const { return dateRangeStyle_; }
  void setDateRangeStyle(std::int32_t style) { dateRangeStyle_ = style; }
  // First and last day of the range (date numbers, both included).
  std::int32_t startDate() const { return startDate_; }
  void setStartDate(std::int32_t date) { startDate_ = date; }
  std::int32_t endDate() const { return endDate_; }
  void setEndDate(std::int32_t date) { endDate_ = date; }
  // How the report is shown; kept for the display only.
  std::int32_t showStyle() const { return showStyle_; }
  void setShowStyle(std::int32_t style) { showStyle_ = style; }
  bool showDebits() const { return showDebits_; }
  void setShowDebits(bool on) { showDebits_ = on; }
  bool showDeposits() const { return showDeposits_; }
  void setShowDeposits(bool on) { showDeposits_ = on; }
  // 0 only entries that are resolved (tax-deductible, checks), 1 only those that are not,
  // 2 all.
  std::int32_t showResolved() const { return showResolved_; }
  void setShowResolved(std::int32_t choice) { showResolved_ = choice; }
  std::int32_t showTaxDeductible() const { return showTaxDeductible_; }
  void setShowTaxDeductible(std::int32_t choice) { showTaxDeductible_ = choice; }
  std::int32_t showChecks() const { return showChecks_; }
  void setShowChecks(std::int32_t choice) { showChecks_ = choice; }
  // Which subtotals the display shows; all four are always computed.
  bool subtotalDescriptions() const { return subtotalDescriptions_; }
  void setSubtotalDescriptions(bool on) { subtotalDescriptions_ = on; }
  bool subtotalTypes() const { return subtotalTypes_; }
  void setSubtotalTypes(bool on) { subtotalTypes_ = on; }
  bool subtotalToFroms() const { return subtotalToFroms_; }
  void setSubtotalToFroms(bool on) { subtotalToFroms_ = on; }
  bool subtotalCategories() const { return subtotalCategories_; }
  void setSubtotalCategories(bool on) { subtotalCategories_ = on; }
  // 0 days, 1 weeks (Sunday to Saturday), 2 months, 3 blocks of three months counted from the
  // start month, 4 years, 5 the whole range as one period. Other codes make no periods.
  std::int32_t subtotalPeriodStyle() const { return subtotalPeriodStyle_; }
  void setSubtotalPeriodStyle(std::int32_t style) { subtotalPeriodStyle_ = style; }
  bool parentCategorySubtotalsIncludeSubcategorySubtotals() const {
    return parentCategorySubtotalsIncludeSubcategorySubtotals_;
  }
  void setParentCategorySubtotalsIncludeSubcategorySubtotals(bool on) {
    parentCategorySubtotalsIncludeSubcategorySubtotals_ = on;
  }
  // The text filter: whether it applies, the field it searches ("contains", ignoring case) and
  // the text. Field codes: 0 any text, 1 type, 2 description, 3 to/from or category,
  // 4 category, 10 split line description, 12 split line category, 20 notes; others search
  // nothing and let every entry through.
  bool filter() const { return filter_; }
  void setFilter(bool on) { filter_ = on; }
  std::int32_t filterType() const { return filterType_; }
  void setFilterType(std::int32_t type) { filterType_ = type; }
  const std::string& filterData() const { return filterData_; }
  // nullopt stores "".
  void setFilterData(std::optional<std::string_view> data) {
    filterData_ = std::string(data.value_or(""));
  }

  // ---- What it reports on ----
  const EntryList& entries() const { return entries_; }
  // A new list of the given entries; nullopt: an empty list.
  void setEntries(std::optional<EntryList> entries) {
    entries_ = entries ? std::move(*entries) : EntryList{};
  }
  const AccountList& accounts() const { return accounts_; }
  // Replaces the accounts (null pointers are left out).
  void setAccounts(const AccountList& accounts);
  // The last report computed by Refresh; nullopt before the first.
  const std::optional<ZELMSummaryReport>& summaryDictionary() const { return summaryDictionary_; }

  // ---- Date range ----
  // Recomputes startDate and endDate from dateRangeStyle (see there); the stored dates are
  // kept for style 20 and for codes without a range.
  void updateDateRange();

  // ---- Entries and balances ----
  // The currency of the report: with no accounts a new default currency, with one the
  // account's, with several the base currency of the first account's accounts controller (the
  // first account's own without a controller).
  std::shared_ptr<LVCurrency> currency() const;
  // The debits / deposits among the entries (void ones too), in entry order.
  EntryList GetDebits() const;
  EntryList GetDeposits() const;
  // The entry with the smallest / largest date; the earlier one in the list on equal dates;
  // nullptr without entries.
  std::shared_ptr<ZELMAccountEntry> GetFirstEntry() const;
  std::shared_ptr<ZELMAccountEntry> GetLastEntry() const;
  // Sums over the accounts, each converted into currency(): the starting balances; the
  // starting balances of the accounts whose first entry is dated before `date` (an account
  // without entries counts); the running balances before / through `date`.
  double GetStartingBalance() const;
  double GetStartingBalanceBeforeDate(std::int32_t date) const;
  double GetRunningBalanceBeforeDate(std::int32_t date) const;
  double GetRunningBalanceThroughDate(std::int32_t date) const;

  // ---- The report ----
  // Computes the report: updates the date range, takes the debits and deposits as shown,
  // keeps those within the range that pass the resolved, tax-deductible, check and text
  // tests, sorts them by date and subtotals them period by period and over the whole range.
  // Its cost is one sort and one pass over the entries, however many periods there are.
  ZELMSummaryReport Summary();
  // Replaces summaryDictionary with a fresh Summary().
  void Refresh();
  // The subtotals of one period: `entries` are the period's entries in date order, startDate
  // and endDate its first and last moment. The balances are read from the accounts.
  ZELMPeriodSubtotal SubtotalEntries(const EntryList& entries, platform::LocalTime startDate,
                                     platform::LocalTime endDate) const;

  // ---- Category subtotals ----
  // Every node, depth first, each before its children; nullptr: none.
  static std::vector<const ZELMCategorySubtotal*> allCategorySubtotalsForCategorySubtotals(
      const ZELMCategorySubtotals* categorySubtotals);
  // Adds each node's sums (and its children's, recursively) into the node of the same path
  // in `overallCategorySubtotals`, made when missing. A child's path is its parent's path, ":"
  // and its name; `parentName` is the path of the nodes given (nullopt at the top).
  static void processOverallSummaryCategorySubtotals(
      const ZELMCategorySubtotals& categorySubtotals, std::optional<std::string_view> parentName,
      ZELMCategorySubtotals& overallCategorySubtotals);

 private:
  class Computation;

  std::string name_;
  std::int32_t dateRangeStyle_ = 0;
  std::int32_t startDate_;
  std::int32_t endDate_;
  std::int32_t showStyle_ = 0;
  bool showDebits_ = true;
  bool showDeposits_ = true;
  std::int32_t showResolved_ = 2;
  std::int32_t showTaxDeductible_ = 2;
  std::int32_t showChecks_ = 2;
  bool subtotalDescriptions_ = true;
  bool subtotalTypes_ = true;
  bool subtotalToFroms_ = true;
  bool subtotalCategories_ = true;
  std::int32_t subtotalPeriodStyle_ = 2;
  bool parentCategorySubtotalsIncludeSubcategorySubtotals_ = true;
  bool filter_ = false;
  std::int32_t filterType_ = 0;
  std::string filterData_;
  EntryList entries_;
  AccountList accounts_;
  std::optional<ZELMSummaryReport> summaryDictionary_;
};

// The first category of the list with that number; nullptr for nullptr, an empty list or no
// match.
std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountSummary_CategoryWithNumber(
    const ZELMAccountSummary::CategoryList* categories, std::int32_t number);

// The node of a category path ("Auto:Fuel"), made with its missing ancestors when absent.
// Components are matched without regard to case. The reference stays valid until a node is
// added to the same tree.
ZELMCategorySubtotal& ZELMAccountSummary_AddCategorySubtotalWithName(
    ZELMCategorySubtotals& categorySubtotals, std::string_view name);

// The node of a category path, or nullptr when any component is missing; makes nothing.
const ZELMCategorySubtotal* ZELMAccountSummary_CategorySubtotalWithName(
    const ZELMCategorySubtotals& categorySubtotals, std::string_view name);

}  // namespace folvant
