// Summary definitions, their date ranges and the computation of their reports.

#include "folvant/summaries/ZELMAccountSummary.h"

#include <algorithm>
#include <chrono>
#include <unordered_map>
#include <utility>

#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntrySplitLineItem.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

using EntryList = ZELMAccountSummary::EntryList;
using platform::Day;
using platform::LocalTime;

constexpr std::chrono::seconds kDay{86400};

LocalTime MidnightOf(Day day) { return LocalTime{std::chrono::days{day}}; }
// A calendar date and back: invalid numbers come back as the day the calendar makes of them.
std::int32_t Normalized(std::int32_t date) {
  return NSCalendarDateToDateNumber(DateNumberToNSCalendarDate(date));
}

// Every stored sum goes through RoundNearZeroValue, so cancelled sums are exactly 0.
void AddTo(double& field, double amount) { field = RoundNearZeroValue(field + amount); }

template <typename Node>
void AddParts(Node& node, double amount, bool debit) {
  AddTo(node.amount, amount);
  AddTo(debit ? node.debits : node.deposits, amount);
}

// The components of a category path: "A:B" gives "A" and "B", "" gives one empty component.
std::vector<std::string_view> Components(std::string_view path) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (true) {
    const std::size_t colon = path.find(':', start);
    if (colon == std::string_view::npos) {
      parts.push_back(path.substr(start));
      return parts;
    }
    parts.push_back(path.substr(start, colon - start));
    start = colon + 1;
  }
}

// The positions of the nodes along a path, each within its parent's children, made when
// missing. Nodes are only ever appended, so positions stay valid while the tree grows.
std::vector<std::uint32_t> NodePositions(ZELMCategorySubtotals& tree, std::string_view path) {
  std::vector<std::uint32_t> positions;
  ZELMCategorySubtotals* level = &tree;
  for (const std::string_view component : Components(path)) {
    std::size_t i = 0;
    while (i < level->size() &&
           !platform::CaseInsensitiveEqual((*level)[i].subtotalName, component)) {
      ++i;
    }
    if (i == level->size()) {
      ZELMCategorySubtotal node;
      node.subtotalName = std::string(component);
      level->push_back(std::move(node));
    }
    positions.push_back(static_cast<std::uint32_t>(i));
    level = &(*level)[i].children;
  }
  return positions;
}

ZELMSummaryRow& RowFor(ZELMSummaryRows& rows, std::string_view key) {
  auto it = rows.find(key);
  if (it == rows.end()) it = rows.emplace(std::string(key), ZELMSummaryRow{}).first;
  return it->second;
}

void MergeRows(const ZELMSummaryRows& from, ZELMSummaryRows& into) {
  for (const auto& [key, row] : from) {
    ZELMSummaryRow& merged = RowFor(into, key);
    AddTo(merged.amount, row.amount);
    AddTo(merged.debits, row.debits);
    AddTo(merged.deposits, row.deposits);
  }
}

// Balances of many dates over the same accounts: each account's non-void amounts sorted by
// date with their running sums, so that a balance is a binary search rather than a walk over
// the register. Sums are formed in date order, so they may differ from the accounts' own
// (formed in register order) in the last bits.
class BalanceIndex {
 public:
  BalanceIndex(const ZELMAccountSummary::AccountList& accounts, const LVCurrency* target)
      : target_(target) {
    ledgers_.reserve(accounts.size());
    for (const ZELMAccount* account : accounts) {
      Ledger ledger;
      ledger.account = account;
      std::vector<std::pair<std::int32_t, double>> amounts;
      for (const auto& entry : account->GetAllEntries()) {
        if (!entry->GetVoid()) amounts.emplace_back(entry->GetDate(), entry->GetAmount());
      }
      std::stable_sort(amounts.begin(), amounts.end(),
                       [](const auto& a, const auto& b) { return a.first < b.first; });
      ledger.dates.reserve(amounts.size());
      ledger.sums.reserve(amounts.size() + 1);
      ledger.sums.push_back(0.0);
      for (const auto& [date, amount] : amounts) {
        ledger.dates.push_back(date);
        ledger.sums.push_back(ledger.sums.back() + amount);
      }
      ledgers_.push_back(std::move(ledger));
    }
  }

  double BeforeDate(std::int32_t date) const { return Sum(date, false); }
  double ThroughDate(std::int32_t date) const { return Sum(date, true); }

 private:
  struct Ledger {
    const ZELMAccount* account;
    std::vector<std::int32_t> dates;
    std::vector<double> sums;  // sums[i]: the first i amounts
  };

  double Sum(std::int32_t date, bool through) const {
    double balance = 0.0;
    for (const Ledger& ledger : ledgers_) {
      const auto end = through ? std::upper_bound(ledger.dates.begin(), ledger.dates.end(), date)
                               : std::lower_bound(ledger.dates.begin(), ledger.dates.end(), date);
      const double own = ledger.account->GetStartingBalance() +
                         ledger.sums[static_cast<std::size_t>(end - ledger.dates.begin())];
      balance += ledger.account->currency()->convertAmount(own, target_);
    }
    return balance;
  }

  const LVCurrency* target_;
  std::vector<Ledger> ledgers_;
};

// The entries in the order of a stable sort by DateIsGreaterThan (date, then entry number).
// The keys are sorted apart from the entries, so that comparing does not chase pointers; the
// position breaks ties, which keeps the sort stable.
EntryList SortedByDate(EntryList entries) {
  struct Key {
    std::int32_t date;
    std::int32_t number;
    std::uint32_t position;
  };
  std::vector<Key> keys;
  keys.reserve(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    keys.push_back({entries[i]->GetDate(), entries[i]->GetNumber(), static_cast<std::uint32_t>(i)});
  }
  std::sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) {
    if (a.date != b.date) return a.date < b.date;
    if (a.number != b.number) return a.number < b.number;
    return a.position < b.position;
  });
  EntryList sorted;
  sorted.reserve(entries.size());
  for (const Key& key : keys) sorted.push_back(std::move(entries[key.position]));
  return sorted;
}

// The periods of a range as first and last days, both included.
std::vector<std::pair<Day, Day>> Periods(std::int32_t style, std::int32_t startDate,
                                         std::int32_t endDate) {
  std::vector<std::pair<Day, Day>> periods;
  if (style < 0 || style > 5) return periods;
  const Day last = platform::DayFromDateNumber(endDate);
  Day start = platform::DayFromDateNumber(startDate);
  // The range ends at 23:59:59 of its last day, so it is later than any start up to that day.
  while (start <= last) {
    Day end;  // the day whose 23:59:59 ends the period
    const platform::CivilDate civil = platform::CivilFromDay(start);
    switch (style) {
      case 0:
        end = start;
        break;
      case 1:  // through Saturday
        end = start + (6 - platform::Weekday(start));
        break;
      case 2:
        end = platform::DayFromCivil(civil.year, civil.month + 1, 1) - 1;
        break;
      case 3:  // three months from the start month, not calendar quarters
        end = platform::DayFromCivil(civil.year, civil.month + 3, 1) - 1;
        break;
      case 4:
        end = platform::DayFromCivil(civil.year + 1, 1, 1) - 1;
        break;
      default:
        end = last;
        break;
    }
    end = std::min(end, last);
    periods.emplace_back(start, end);
    start = end + 1;
  }
  return periods;
}

}  // namespace

// What one computation looks up again and again: the target currency, and the type names and
// category paths of the numbers met so far, per accounts controller (or per account, for an
// account without one).
class ZELMAccountSummary::Computation {
 public:
  explicit Computation(const ZELMAccountSummary& summary)
      : currency_(summary.currency()),
        parents_(summary.parentCategorySubtotalsIncludeSubcategorySubtotals_) {}

  const LVCurrency* target() const { return currency_.get(); }

  // The totals, rows and category tree of a period's entries (balances are the caller's).
  ZELMPeriodSubtotal Subtotal(const std::shared_ptr<ZELMAccountEntry>* first,
                              const std::shared_ptr<ZELMAccountEntry>* last, LocalTime startDate,
                              LocalTime endDate) {
    ZELMPeriodSubtotal period;
    period.entries.assign(first, last);
    period.entryCount = static_cast<std::int64_t>(last - first);
    period.startDate = startDate;
    period.endDate = endDate;
    positions_.clear();
    descriptions_.clear();
    types_.clear();
    toFroms_.clear();
    for (const auto* it = first; it != last; ++it) Add(period, **it);
    period.runningTotal = period.total;
    return period;
  }

 private:
  struct Source {
    const void* key = nullptr;
    std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories;
    std::unordered_map<std::int32_t, std::string> categoryPaths;
    std::unordered_map<std::int32_t, std::string> typeNames;
  };

  double Convert(const ZELMAccountEntry& entry, double amount) const {
    const ZELMAccount* account = entry.GetAccount();
    if (account == nullptr) return amount;
    return account->currency()->convertAmount(amount, currency_.get());
  }

  Source& SourceOf(const ZELMAccountEntry& entry) {
    const ZELMAccount* account = entry.GetAccount();
    const ZELMAccountsController* controller =
        account != nullptr ? account->accountsController() : nullptr;
    const void* key = controller != nullptr ? static_cast<const void*>(controller)
                                            : static_cast<const void*>(account);
    if (last_ != nullptr && last_->key == key) return *last_;
    for (const auto& source : sources_) {
      if (source->key == key) return *(last_ = source.get());
    }
    // Held by pointer: the caches' strings must keep their addresses (see AddCategory).
    Source& source = *sources_.emplace_back(std::make_unique<Source>());
    source.key = key;
    if (controller != nullptr) source.categories = controller->allCategories();
    return *(last_ = &source);
  }

  const std::string& TypeName(const ZELMAccountEntry& entry) {
    Source& source = SourceOf(entry);
    const std::int32_t number = entry.GetType();
    auto it = source.typeNames.find(number);
    if (it != source.typeNames.end()) return it->second;
    const ZELMAccount* account = entry.GetAccount();
    std::shared_ptr<ZELMAccountEntryType> type;
    if (account != nullptr) {
      type = account->accountsController() != nullptr
                 ? account->accountsController()->accountEntryTypeForNumber(number)
                 : account->accountEntryTypeForNumber(number);
    }
    return source.typeNames.emplace(number, type ? type->GetName() : std::string()).first->second;
  }

  const std::string& CategoryPath(const ZELMAccountEntry& entry, std::int32_t number) {
    Source& source = SourceOf(entry);
    auto it = source.categoryPaths.find(number);
    if (it != source.categoryPaths.end()) return it->second;
    std::shared_ptr<ZELMAccountEntryCategory> category;
    const ZELMAccount* account = entry.GetAccount();
    if (account != nullptr && account->accountsController() != nullptr) {
      category = ZELMAccountSummary_CategoryWithNumber(&source.categories, number);
    } else if (account != nullptr) {
      category = account->accountEntryCategoryForNumber(number);
    }
    return source.categoryPaths.emplace(number, category ? category->fullName() : std::string())
        .first->second;
  }

  // The period's row of a text: looked up by hash, the rows' own keys serving as the index's
  // keys (a map's keys do not move).
  using RowIndex = std::unordered_map<std::string_view, ZELMSummaryRow*>;
  static ZELMSummaryRow& Row(RowIndex& index, ZELMSummaryRows& rows, std::string_view text) {
    const auto it = index.find(text);
    if (it != index.end()) return *it->second;
    const auto row = rows.emplace(std::string(text), ZELMSummaryRow{}).first;
    index.emplace(row->first, &row->second);
    return row->second;
  }

  void AddCategory(ZELMCategorySubtotals& tree, const std::string& path, double amount,
                   bool debit) {
    // The path strings live in the caches for the whole computation, so their addresses
    // identify them.
    auto it = positions_.find(&path);
    if (it == positions_.end()) it = positions_.emplace(&path, NodePositions(tree, path)).first;
    const std::vector<std::uint32_t>& positions = it->second;
    ZELMCategorySubtotals* level = &tree;
    for (std::size_t depth = 0; depth < positions.size(); ++depth) {
      ZELMCategorySubtotal& node = (*level)[positions[depth]];
      // The node of the whole path always; the nodes of its leading parts when parents count
      // their subcategories.
      if (parents_ || depth + 1 == positions.size()) AddParts(node, amount, debit);
      level = &node.children;
    }
  }

  void Add(ZELMPeriodSubtotal& period, const ZELMAccountEntry& entry) {
    if (entry.GetVoid()) return;
    const double amount = Convert(entry, entry.GetAmount());
    const bool debit = entry.IsDebit();
    AddTo(period.total, amount);
    if (entry.IsDeposit()) AddTo(period.depositsTotal, amount);
    if (debit) AddTo(period.debitsTotal, amount);
    AddTo(entry.GetCleared() != 0 ? period.resolvedTotal : period.unresolvedTotal, amount);
    AddTo(entry.GetTaxDeductible() ? period.taxDeductibleTotal : period.taxableTotal, amount);
    AddParts(Row(types_, period.typesSubtotals, TypeName(entry)), amount, debit);

    const auto& items = entry.splitLineItems();
    if (items.empty()) {
      AddParts(Row(descriptions_, period.descriptionsSubtotals, entry.GetDescription()), amount,
               debit);
      AddParts(Row(toFroms_, period.toFromSubtotals, entry.GetToFrom()), amount, debit);
      AddCategory(period.categoriesSubtotals, CategoryPath(entry, entry.GetCategory()), amount,
                  debit);
      return;
    }
    for (const auto& item : items) {
      const double part = Convert(entry, item->amount());
      const bool debitPart = part < 0.0;
      const std::string& description =
          item->description().empty() ? entry.GetDescription() : item->description();
      const std::string& toFrom = item->toFrom().empty() ? entry.GetToFrom() : item->toFrom();
      AddParts(Row(descriptions_, period.descriptionsSubtotals, description), part, debitPart);
      AddParts(Row(toFroms_, period.toFromSubtotals, toFrom), part, debitPart);
      AddCategory(period.categoriesSubtotals, CategoryPath(entry, item->category()), part,
                  debitPart);
    }
  }

  std::shared_ptr<LVCurrency> currency_;
  bool parents_;
  std::vector<std::unique_ptr<Source>> sources_;
  Source* last_ = nullptr;
  std::unordered_map<const std::string*, std::vector<std::uint32_t>> positions_;
  RowIndex descriptions_, types_, toFroms_;
};

// ---- Definition ----

ZELMAccountSummary::ZELMAccountSummary()
    : name_("Untitled Summary"), startDate_(platform::Today()), endDate_(platform::Today()) {}

ZELMAccountSummary::ZELMAccountSummary(const plist::Dictionary* options,
                                       std::optional<EntryList> entries)
    : ZELMAccountSummary() {
  if (options == nullptr) return;
  setEntries(std::move(entries));
  setOptionsFromDictionary(options);
}

plist::Dictionary ZELMAccountSummary::optionsAsDictionary() const {
  plist::Dictionary dict;
  dict.reserve(19);
  dict.append("name", name_);
  dict.append("dateRangeStyle", dateRangeStyle_);
  dict.append("startDate", startDate_);
  dict.append("endDate", endDate_);
  dict.append("showStyle", showStyle_);
  dict.append("showDebits", showDebits_);
  dict.append("showDeposits", showDeposits_);
  dict.append("showResolved", showResolved_);
  dict.append("showTaxDeductible", showTaxDeductible_);
  dict.append("showChecks", showChecks_);
  dict.append("subtotalDescriptions", subtotalDescriptions_);
  dict.append("subtotalTypes", subtotalTypes_);
  dict.append("subtotalToFroms", subtotalToFroms_);
  dict.append("subtotalCategories", subtotalCategories_);
  dict.append("parentCategorySubtotalsIncludeSubcategorySubtotals",
              parentCategorySubtotalsIncludeSubcategorySubtotals_);
  dict.append("subtotalPeriodStyle", subtotalPeriodStyle_);
  dict.append("filter", filter_);
  dict.append("filterType", filterType_);
  dict.append("filterData", filterData_);
  return dict;
}

void ZELMAccountSummary::setOptionsFromDictionary(const plist::Dictionary* options) {
  if (options == nullptr) return;
  const auto text = [&](std::string_view key, std::string& field) {
    if (const plist::Value* value = options->find(key)) {
      const std::string* string = value->asString();
      field = string != nullptr ? *string : std::string();
    }
  };
  const auto integer = [&](std::string_view key, std::int32_t& field) {
    if (const plist::Value* value = options->find(key)) field = value->intValue();
  };
  const auto boolean = [&](std::string_view key, bool& field) {
    if (const plist::Value* value = options->find(key)) field = value->boolValue();
  };
  text("name", name_);
  integer("dateRangeStyle", dateRangeStyle_);
  integer("startDate", startDate_);
  integer("endDate", endDate_);
  integer("showStyle", showStyle_);
  boolean("showDebits", showDebits_);
  boolean("showDeposits", showDeposits_);
  integer("showResolved", showResolved_);
  integer("showTaxDeductible", showTaxDeductible_);
  integer("showChecks", showChecks_);
  boolean("subtotalDescriptions", subtotalDescriptions_);
  boolean("subtotalTypes", subtotalTypes_);
  boolean("subtotalToFroms", subtotalToFroms_);
  boolean("subtotalCategories", subtotalCategories_);
  boolean("parentCategorySubtotalsIncludeSubcategorySubtotals",
          parentCategorySubtotalsIncludeSubcategorySubtotals_);
  integer("subtotalPeriodStyle", subtotalPeriodStyle_);
  boolean("filter", filter_);
  integer("filterType", filterType_);
  text("filterData", filterData_);
}

int ZELMAccountSummary::NameIsGreaterThan(const ZELMAccountSummary& other) const {
  const int c = platform::CaseInsensitiveCompare(name_, other.name_);
  return (c > 0) - (c < 0);
}

void ZELMAccountSummary::setAccounts(const AccountList& accounts) {
  accounts_.clear();
  for (const ZELMAccount* account : accounts) {
    if (account != nullptr) accounts_.push_back(account);
  }
}

void ZELMAccountSummary::updateDateRange() {
  std::optional<DateRange> range;
  const std::int32_t style = dateRangeStyle_;
  if (style == 0 || style == 1) {
    const auto first = GetFirstEntry();
    if (first == nullptr) {
      range = DateRangeForMnemonic(kMnemonicToday);
    } else if (style == 0) {
      range = DateRange{first->GetDate(), GetLastEntry()->GetDate()};
    } else {
      range = DateRange{first->GetDate(), platform::Today()};
    }
  } else if (style == 2) {
    range = DateRangeForMnemonic(kMnemonicToday);
  } else if (style >= 3 && style <= 11) {
    range = DateRangeForMnemonic(style - 2);
  } else if (style >= 15 && style <= 18) {
    range = DateRangeForMnemonic(style - 5);
  } else if (style == 20) {
    range = DateRange{startDate_, endDate_};
  }
  if (!range) return;
  // Through calendar dates, as the range is stored: a number the calendar reads as another
  // day is stored as that day.
  startDate_ = Normalized(range->start);
  endDate_ = Normalized(range->end);
}

// ---- Entries and balances ----

std::shared_ptr<LVCurrency> ZELMAccountSummary::currency() const {
  if (accounts_.empty()) return std::make_shared<LVCurrency>();
  const ZELMAccount* first = accounts_.front();
  if (accounts_.size() > 1 && first->accountsController() != nullptr) {
    if (auto base = first->accountsController()->currency()) return base;
  }
  return first->currency();
}

ZELMAccountSummary::EntryList ZELMAccountSummary::GetDebits() const {
  EntryList debits;
  for (const auto& entry : entries_) {
    if (entry->IsDebit()) debits.push_back(entry);
  }
  return debits;
}

ZELMAccountSummary::EntryList ZELMAccountSummary::GetDeposits() const {
  EntryList deposits;
  for (const auto& entry : entries_) {
    if (entry->IsDeposit()) deposits.push_back(entry);
  }
  return deposits;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSummary::GetFirstEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* first = nullptr;
  for (const auto& entry : entries_) {
    if (first == nullptr || entry->GetDate() < (*first)->GetDate()) first = &entry;
  }
  return first != nullptr ? *first : nullptr;
}

std::shared_ptr<ZELMAccountEntry> ZELMAccountSummary::GetLastEntry() const {
  const std::shared_ptr<ZELMAccountEntry>* last = nullptr;
  for (const auto& entry : entries_) {
    if (last == nullptr || entry->GetDate() > (*last)->GetDate()) last = &entry;
  }
  return last != nullptr ? *last : nullptr;
}

double ZELMAccountSummary::GetStartingBalance() const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetStartingBalance(), target.get());
  }
  return balance;
}

double ZELMAccountSummary::GetStartingBalanceBeforeDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    const auto first = account->GetFirstEntry();
    if ((first != nullptr ? first->GetDate() : 0) < date) {
      balance += account->currency()->convertAmount(account->GetStartingBalance(), target.get());
    }
  }
  return balance;
}

double ZELMAccountSummary::GetRunningBalanceBeforeDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetRunningBalanceBeforeDate(date),
                                                  target.get());
  }
  return balance;
}

double ZELMAccountSummary::GetRunningBalanceThroughDate(std::int32_t date) const {
  const auto target = currency();
  double balance = 0.0;
  for (const ZELMAccount* account : accounts_) {
    balance += account->currency()->convertAmount(account->GetRunningBalanceThroughDate(date),
                                                  target.get());
  }
  return balance;
}

// ---- The report ----

ZELMPeriodSubtotal ZELMAccountSummary::SubtotalEntries(const EntryList& entries,
                                                       LocalTime startDate,
                                                       LocalTime endDate) const {
  Computation computation(*this);
  ZELMPeriodSubtotal period =
      computation.Subtotal(entries.data(), entries.data() + entries.size(), startDate, endDate);
  period.startBalance =
      RoundNearZeroValue(GetRunningBalanceBeforeDate(NSCalendarDateToDateNumber(startDate)));
  period.endBalance =
      RoundNearZeroValue(GetRunningBalanceThroughDate(NSCalendarDateToDateNumber(endDate)));
  return period;
}

ZELMSummaryReport ZELMAccountSummary::Summary() {
  ZELMSummaryReport report;
  updateDateRange();

  EntryList candidates;
  if (showDebits_) candidates = GetDebits();
  if (showDeposits_) {
    EntryList deposits = GetDeposits();
    candidates.insert(candidates.end(), deposits.begin(), deposits.end());
  }

  // One group that keeps what passes every condition. The day before the first and the day
  // after the last make the strict "after" and "before" keep both end days; stepping a date
  // number by one never lands on another real day, as days 00 and 32 do not occur.
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  const auto add = [&](std::int32_t category, std::int32_t qualifier, plist::Value data) {
    group->addConditionWithCategory(category, kConditionKeepsMatches, qualifier, std::move(data));
  };
  add(kConditionDate, kDateAfter, plist::Value(static_cast<std::int64_t>(startDate_) - 1));
  add(kConditionDate, kDateBefore, plist::Value(static_cast<std::int64_t>(endDate_) + 1));
  const std::pair<std::int32_t, std::int32_t> flags[] = {
      {kConditionCleared, showResolved_},
      {kConditionTaxDeductible, showTaxDeductible_},
      {kConditionCheck, showChecks_}};
  for (const auto& [category, choice] : flags) {
    if (choice == 0 || choice == 1) add(category, kFlagIsSet, plist::Value(choice == 0));
  }
  if (filter_) {
    const plist::Value text(filterData_);
    switch (filterType_) {
      case 0:
        add(kConditionGeneral, kTextContains, text);
        break;
      case 1:
        add(kConditionType, kTextContains, text);
        break;
      case 2:
        add(kConditionDescription, kTextContains, text);
        break;
      case 3:
        add(kConditionToFrom, kTextContains, text);
        add(kConditionCategory, kTextContains, text);
        break;
      case 4:
        add(kConditionCategory, kTextContains, text);
        break;
      case 10:
        add(kConditionSplitDescription, kTextContains, text);
        break;
      case 12:
        add(kConditionSplitCategory, kTextContains, text);
        break;
      case 20:
        add(kConditionNotes, kTextContains, text);
        break;
      default:
        break;
    }
  }
  ZELMFilter filter;
  filter.addConditionGroup(std::move(group));
  const EntryList selected = SortedByDate(filter.filterEntries(candidates));
  candidates.clear();

  // The entries of a period are a run of the sorted list: find its ends by binary search
  // instead of scanning the whole list for every period.
  Computation computation(*this);
  const BalanceIndex balances(accounts_, computation.target());
  const auto* begin = selected.data();
  const auto* end = selected.data() + selected.size();
  for (const auto& [firstDay, lastDay] : Periods(subtotalPeriodStyle_, startDate_, endDate_)) {
    const std::int32_t first = platform::DateNumberFromDay(firstDay);
    const std::int32_t last = platform::DateNumberFromDay(lastDay);
    const auto* from = std::partition_point(
        begin, end, [first](const auto& entry) { return entry->GetDate() < first; });
    const auto* to = std::partition_point(
        from, end, [last](const auto& entry) { return entry->GetDate() <= last; });
    ZELMPeriodSubtotal period = computation.Subtotal(
        from, to, MidnightOf(firstDay), MidnightOf(lastDay) + kDay - std::chrono::seconds(1));
    period.startBalance = RoundNearZeroValue(balances.BeforeDate(first));
    period.endBalance = RoundNearZeroValue(balances.ThroughDate(last));
    report.subtotals.push_back(std::move(period));
  }

  for (const ZELMPeriodSubtotal& period : report.subtotals) {
    AddTo(report.total, period.total);
    report.entryCount += period.entryCount;
    AddTo(report.debitsTotal, period.debitsTotal);
    AddTo(report.depositsTotal, period.depositsTotal);
    AddTo(report.resolvedTotal, period.resolvedTotal);
    AddTo(report.unresolvedTotal, period.unresolvedTotal);
    AddTo(report.taxableTotal, period.taxableTotal);
    AddTo(report.taxDeductibleTotal, period.taxDeductibleTotal);
    MergeRows(period.descriptionsSubtotals, report.descriptionsSubtotals);
    MergeRows(period.typesSubtotals, report.typesSubtotals);
    MergeRows(period.toFromSubtotals, report.toFromSubtotals);
    processOverallSummaryCategorySubtotals(period.categoriesSubtotals, std::nullopt,
                                           report.categoriesSubtotals);
  }
  report.startDate = DateNumberToNSCalendarDate(startDate_);
  report.endDate = DateNumberToNSCalendarDate(endDate_);
  report.startBalance = RoundNearZeroValue(GetRunningBalanceBeforeDate(startDate_));
  report.endBalance = RoundNearZeroValue(GetRunningBalanceThroughDate(endDate_));
  return report;
}

void ZELMAccountSummary::Refresh() {
  summaryDictionary_.reset();
  summaryDictionary_ = Summary();
}

// ---- Category subtotals ----

std::vector<const ZELMCategorySubtotal*>
ZELMAccountSummary::allCategorySubtotalsForCategorySubtotals(
    const ZELMCategorySubtotals* categorySubtotals) {
  std::vector<const ZELMCategorySubtotal*> all;
  if (categorySubtotals == nullptr) return all;
  const auto visit = [&all](const auto& self, const ZELMCategorySubtotals& nodes) -> void {
    for (const ZELMCategorySubtotal& node : nodes) {
      all.push_back(&node);
      self(self, node.children);
    }
  };
  visit(visit, *categorySubtotals);
  return all;
}

void ZELMAccountSummary::processOverallSummaryCategorySubtotals(
    const ZELMCategorySubtotals& categorySubtotals, std::optional<std::string_view> parentName,
    ZELMCategorySubtotals& overallCategorySubtotals) {
  for (const ZELMCategorySubtotal& node : categorySubtotals) {
    std::string path =
        parentName ? std::string(*parentName) + ":" + node.subtotalName : node.subtotalName;
    ZELMCategorySubtotal& overall =
        ZELMAccountSummary_AddCategorySubtotalWithName(overallCategorySubtotals, path);
    AddTo(overall.amount, node.amount);
    AddTo(overall.debits, node.debits);
    AddTo(overall.deposits, node.deposits);
    processOverallSummaryCategorySubtotals(node.children, path, overallCategorySubtotals);
  }
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountSummary_CategoryWithNumber(
    const ZELMAccountSummary::CategoryList* categories, std::int32_t number) {
  if (categories == nullptr) return nullptr;
  for (const auto& category : *categories) {
    if (category != nullptr && category->number() == number) return category;
  }
  return nullptr;
}

ZELMCategorySubtotal& ZELMAccountSummary_AddCategorySubtotalWithName(
    ZELMCategorySubtotals& categorySubtotals, std::string_view name) {
  ZELMCategorySubtotals* level = &categorySubtotals;
  ZELMCategorySubtotal* node = nullptr;
  for (const std::uint32_t position : NodePositions(categorySubtotals, name)) {
    node = &(*level)[position];
    level = &node->children;
  }
  return *node;  // a path has at least one component
}

const ZELMCategorySubtotal* ZELMAccountSummary_CategorySubtotalWithName(
    const ZELMCategorySubtotals& categorySubtotals, std::string_view name) {
  const ZELMCategorySubtotals* level = &categorySubtotals;
  const ZELMCategorySubtotal* node = nullptr;
  for (const std::string_view component : Components(name)) {
    const auto it = std::find_if(level->begin(), level->end(), [&](const auto& candidate) {
      return platform::CaseInsensitiveEqual(candidate.subtotalName, component);
    });
    if (it == level->end()) return nullptr;
    node = &*it;
    level = &node->children;
  }
  return node;
}

}  // namespace folvant
