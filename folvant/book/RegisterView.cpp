#include "folvant/book/RegisterView.h"

#include <algorithm>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;

// The seven stored settings of the register view, to tell whether a query changed them.
struct ViewSettings {
  std::int32_t filterType, resolved, taxDeductible, dateType, start, end;
  plist::Value data;
  bool operator==(const ViewSettings&) const = default;
};

ViewSettings ReadSettings(const ZELMAccount& account) {
  return {account.entryFilterType(),          account.entryResolvedFilterType(),
          account.entryTaxDeductibleFilterType(), account.entryDateFilterType(),
          account.entryDateFilterStartDate(), account.entryDateFilterEndDate(),
          account.entryFilterData()};
}

void Apply(ZELMAccount& account, const RegisterFilterChange& change) {
  if (change.reset) {
    const plist::Value empty{std::string()};
    account.setEntryFilterType(kSearchGeneral);
    account.setEntryFilterData(&empty);
    account.setEntryResolvedFilterType(kShowResolvedAndUnresolved);
    account.setEntryTaxDeductibleFilterType(kShowTaxDeductibleAndNot);
    account.setEntryDateFilterType(kShowAllDates);
    account.setEntryDateFilterStartDate(platform::Today());
    account.setEntryDateFilterEndDate(platform::Today());
  }
  if (change.search) {
    const plist::Value data{*change.search};
    account.setEntryFilterData(&data);
  }
  if (change.field) account.setEntryFilterType(*change.field);
  if (change.dates) account.setEntryDateFilterType(*change.dates);
  if (change.from) account.setEntryDateFilterStartDate(*change.from);
  if (change.to) account.setEntryDateFilterEndDate(*change.to);
  if (change.resolved) account.setEntryResolvedFilterType(*change.resolved);
  if (change.taxDeductible) account.setEntryTaxDeductibleFilterType(*change.taxDeductible);
}

const char* WordOf(const std::vector<RegisterWord>& words, std::int32_t code) {
  for (const RegisterWord& w : words) {
    if (w.code == code) return w.word;
  }
  return nullptr;
}

RegisterFilterWords Describe(const ZELMAccount& account, const ZELMAccountFolder* folder,
                             const ZELMFilter* smart_folder) {
  RegisterFilterWords d;
  std::vector<std::string> parts;
  if (const char* w = WordOf(RegisterSearchFields(), account.entryFilterType())) d.field = w;
  if (const std::string* text = account.entryFilterData().asString()) d.search = *text;
  if (!d.search.empty()) parts.push_back(d.field + " contains \"" + d.search + "\"");
  const std::int32_t date_type = account.entryDateFilterType();
  const std::optional<DateRange> range = account.viewDateRange(kViewRegister);
  if (range && date_type != kShowAllDates) {
    d.from = range->start;
    d.to = range->end;
  }
  const std::string days =
      d.from ? platform::FormatIsoDate(*d.from) + ".." + platform::FormatIsoDate(*d.to) : "";
  if (date_type == kShowCustomDates) {
    d.dates = days;
  } else if (const char* w = WordOf(RegisterDateRanges(), date_type)) {
    d.dates = w;
  }
  if (date_type != kShowAllDates && d.dates != "none") {
    parts.push_back("dates " + d.dates + (date_type == kShowCustomDates || days.empty()
                                              ? std::string()
                                              : " (" + days + ")"));
  }
  if (account.entryResolvedFilterType() == kShowResolvedOnly) d.resolved = "resolved";
  if (account.entryResolvedFilterType() == kShowUnresolvedOnly) d.resolved = "unresolved";
  if (d.resolved != "all") parts.push_back(d.resolved + " only");
  if (account.entryTaxDeductibleFilterType() == kShowTaxDeductibleOnly) d.taxDeductible = "yes";
  if (account.entryTaxDeductibleFilterType() == kShowNotTaxDeductibleOnly) d.taxDeductible = "no";
  if (d.taxDeductible == "yes") parts.push_back("tax-deductible only");
  if (d.taxDeductible == "no") parts.push_back("not tax-deductible only");
  if (folder != nullptr) {
    d.folder = folder->name();
    parts.push_back("folder \"" + d.folder + "\"");
  }
  if (smart_folder != nullptr) {
    d.smartFolder = smart_folder->name();
    parts.push_back("smart folder \"" + d.smartFolder + "\"");
  }
  d.active = !parts.empty();
  for (std::size_t i = 0; i < parts.size(); ++i) d.line += (i > 0 ? ", " : "") + parts[i];
  return d;
}

const std::string kSplit = "(split)";

// The full name of the entry's category; "(split)" for a split entry whose category is not
// one of the book's.
const std::string& CategoryName(const RegisterView& view, const ZELMAccountEntry& e) {
  const std::int32_t number = e.GetCategory();
  if (!e.splitLineItems().empty() && !view.categoryKnown.at(number)) return kSplit;
  return view.categoryNames.at(number);
}

}  // namespace

RegisterRow RegisterView::row(std::size_t i) const {
  const ZELMAccountEntry& e = *entries[i];
  return {&e,
          e.GetNumber(),
          e.GetDate(),
          e.IsCheck() ? std::optional<std::int32_t>(e.GetCheckNumber()) : std::nullopt,
          typeNames.at(e.GetType()),
          e.GetToFrom(),
          e.GetDescription(),
          CategoryName(*this, e),
          e.GetAmount(),
          e.GetCachedRunningBalance(),
          e.GetCleared() != 0,
          e.GetVoid()};
}

const std::vector<RegisterWord>& RegisterSearchFields() {
  static const std::vector<RegisterWord> words = {
      {"general", kSearchGeneral},
      {"description", kSearchDescription},
      {"payee", kSearchToFrom},
      {"type", kSearchType},
      {"notes", kSearchNotes},
      {"amount", kSearchAmount},
      {"check", kSearchCheckNumber},
      {"category", kSearchCategory},
      {"split-description", kSearchSplitDescription},
      {"split-category", kSearchSplitCategory},
  };
  return words;
}

const std::vector<RegisterWord>& RegisterDateRanges() {
  static const std::vector<RegisterWord> words = {
      {"all", kShowAllDates},         {"through-today", kShowThroughToday},
      {"today", kShowToday},          {"yesterday", kShowYesterday},
      {"this-week", kShowThisWeek},   {"this-month", kShowThisMonth},
      {"this-quarter", kShowThisQuarter}, {"this-year", kShowThisYear},
      {"last-week", kShowLastWeek},   {"last-month", kShowLastMonth},
      {"last-quarter", kShowLastQuarter}, {"last-year", kShowLastYear},
      {"week-to-date", kShowWeekToDate}, {"month-to-date", kShowMonthToDate},
      {"quarter-to-date", kShowQuarterToDate}, {"year-to-date", kShowYearToDate},
  };
  return words;
}

const std::vector<RegisterWord>& RegisterSortWords() {
  static const std::vector<RegisterWord> words = {
      {"date", static_cast<std::int32_t>(RegisterSort::kDate)},
      {"check", static_cast<std::int32_t>(RegisterSort::kCheckNumber)},
      {"amount", static_cast<std::int32_t>(RegisterSort::kAmount)},
      {"description", static_cast<std::int32_t>(RegisterSort::kDescription)},
      {"to-from", static_cast<std::int32_t>(RegisterSort::kToFrom)},
      {"category", static_cast<std::int32_t>(RegisterSort::kCategory)},
      {"type", static_cast<std::int32_t>(RegisterSort::kType)},
      {"resolved", static_cast<std::int32_t>(RegisterSort::kResolved)},
  };
  return words;
}

BookResult<RegisterView> ShowRegister(Book& book, const RegisterQuery& query) {
  auto found = book.FindAccount(query.account);
  if (!found) return Unexpected{found.error()};
  std::shared_ptr<ZELMAccount> account = *found;
  RegisterView view;
  view.account = account;

  // The shown folder and smart folder apply to this view only.
  std::shared_ptr<ZELMAccountFolder> folder;
  std::shared_ptr<ZELMFilter> smart_folder;
  if (!query.folder.empty() && !(folder = FindNamed(account->folders(), query.folder))) {
    return Unexpected{BookError::Of(Kind::kNotFound, "no folder named \"" + query.folder +
                                                         "\" in \"" + account->GetName() + "\"")};
  }
  if (!query.smartFolder.empty() &&
      !(smart_folder = FindNamed(account->smartFolders(), query.smartFolder))) {
    return Unexpected{BookError::Of(Kind::kNotFound, "no smart folder named \"" +
                                                         query.smartFolder + "\" in \"" +
                                                         account->GetName() + "\"")};
  }

  if (query.filter.any()) {
    const ViewSettings before = ReadSettings(*account);
    Apply(*account, query.filter);
    if (!(ReadSettings(*account) == before)) {
      if (auto refused = book.Changed(*account)) return Unexpected{*refused};
      if (auto failed = book.Save()) return Unexpected{*failed};
      view.filterChanged = true;
    }
  }

  ZELMAccount::EntryList in_date_order;
  account->CacheRunningBalances(&in_date_order);
  const std::shared_ptr<ZELMAccountFolder> shown_folder = account->folder();
  const std::shared_ptr<ZELMFilter> shown_smart_folder = account->smartFolder();
  account->setFolder(folder);
  account->setSmartFolder(smart_folder);
  ZELMAccount::EntryList shown = account->entryFilteredEntries();
  account->setFolder(shown_folder);
  account->setSmartFolder(shown_smart_folder);

  // Every name a row will need, once per number.
  for (const auto& entry : shown) {
    if (auto [at, added] = view.typeNames.try_emplace(entry->GetType()); added) {
      if (auto type = account->accountEntryTypeForNumber(entry->GetType())) {
        at->second = type->GetName();
      }
    }
    if (auto [at, added] = view.categoryNames.try_emplace(entry->GetCategory()); added) {
      auto category = account->accountEntryCategoryForNumber(entry->GetCategory());
      if (category) at->second = category->fullName();
      view.categoryKnown[entry->GetCategory()] = category != nullptr;
    }
  }
  if (query.sort == RegisterSort::kCategory) {
    std::vector<std::pair<std::string, std::shared_ptr<ZELMAccountEntry>>> keyed;
    keyed.reserve(shown.size());
    std::unordered_map<const std::string*, std::string> folded;
    for (auto& entry : shown) {
      const std::string& name = CategoryName(view, *entry);
      auto [at, added] = folded.try_emplace(&name);
      if (added) at->second = platform::CaseFold(name);
      keyed.emplace_back(at->second, std::move(entry));
    }
    auto less = [](const auto& a, const auto& b) {
      if (int c = a.first.compare(b.first)) return c < 0;
      if (a.second->GetDate() != b.second->GetDate()) return a.second->GetDate() < b.second->GetDate();
      return a.second->GetNumber() < b.second->GetNumber();
    };
    if (query.descending) {
      std::stable_sort(keyed.begin(), keyed.end(), [&](const auto& a, const auto& b) { return less(b, a); });
    } else {
      std::stable_sort(keyed.begin(), keyed.end(), less);
    }
    shown.clear();
    for (auto& k : keyed) shown.push_back(std::move(k.second));
  } else if (query.sort == RegisterSort::kDate && !query.descending &&
             shown.size() == in_date_order.size()) {
    // Every entry is shown, in the order the running balances were just computed in.
    shown.swap(in_date_order);
  } else {
    account->SortEntries(shown, static_cast<std::int32_t>(query.sort), query.descending);
  }
  in_date_order = {};

  for (const auto& entry : shown) {
    if (!entry->GetVoid()) view.shownTotal += entry->GetAmount();
  }
  view.entries = std::move(shown);
  view.currency = account->currency() ? account->currency()->code() : std::string();
  view.allEntries = account->GetAllEntries().size();
  view.balance = account->GetBalance();
  view.todaysBalance = account->GetTodaysBalance();
  view.resolvedBalance = account->GetResolvedBalance();
  view.filter = Describe(*account, folder.get(), smart_folder.get());
  return view;
}

std::shared_ptr<ZELMFilter> FilterForChange(ZELMAccount& account,
                                            const RegisterFilterChange& change) {
  const ViewSettings before = ReadSettings(account);
  Apply(account, change);
  std::shared_ptr<ZELMFilter> filter = account.filterForViewType(0);
  account.setEntryFilterType(before.filterType);
  account.setEntryFilterData(&before.data);
  account.setEntryResolvedFilterType(before.resolved);
  account.setEntryTaxDeductibleFilterType(before.taxDeductible);
  account.setEntryDateFilterType(before.dateType);
  account.setEntryDateFilterStartDate(before.start);
  account.setEntryDateFilterEndDate(before.end);
  return filter;
}

}  // namespace folvant
