// The account's operations that need filters: its smart folders and the quick filters of the
// register and reconcile views. Declared with the account; defined here, beside the filters.

#include <algorithm>
#include <optional>
#include <utility>

#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Localized.h"

namespace folvant {
namespace {

// What the text field of a view filter searches, and the name the built filter gets.
struct SearchRow {
  std::int32_t code;
  const char* nameKey;
  std::int32_t category;
};

constexpr SearchRow kSearches[] = {
    {kSearchDescription, "Description", kConditionDescription},
    {kSearchToFrom, "To/From", kConditionToFrom},
    {kSearchType, "Type", kConditionType},
    {kSearchNotes, "Notes", kConditionNotes},
    {kSearchAmount, "Amount", kConditionAmountString},
    {kSearchCheckNumber, "Check Number", kConditionCheckString},
    {kSearchCategory, "Category", kConditionCategory},
    {kSearchSplitDescription, "Split Description", kConditionSplitDescription},
    {kSearchSplitCategory, "Split Category", kConditionSplitCategory},
};
constexpr SearchRow kGeneralSearch = {kSearchGeneral, "General", kConditionGeneral};

// The view's date ranges that are named ranges counted from today.
struct NamedRangeRow {
  std::int32_t code;
  std::int32_t mnemonic;
};

constexpr NamedRangeRow kNamedRanges[] = {
    {kShowToday, kMnemonicToday},
    {kShowYesterday, kMnemonicYesterday},
    {kShowThisWeek, kMnemonicThisWeek},
    {kShowThisMonth, kMnemonicThisMonth},
    {kShowThisQuarter, kMnemonicThisQuarter},
    {kShowThisYear, kMnemonicThisYear},
    {kShowLastWeek, kMnemonicLastWeek},
    {kShowLastMonth, kMnemonicLastMonth},
    {kShowLastQuarter, kMnemonicLastQuarter},
    {kShowLastYear, kMnemonicLastYear},
    {kShowWeekToDate, kMnemonicWeekToDate},
    {kShowMonthToDate, kMnemonicMonthToDate},
    {kShowQuarterToDate, kMnemonicQuarterToDate},
    {kShowYearToDate, kMnemonicYearToDate},
};

std::optional<DateRange> KitRange(std::int32_t code) { return DateRangeForMnemonic(code); }

std::shared_ptr<ZELMFilter> SmartFolder(const char* nameKey, std::int32_t qualifier) {
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  group->setLogic(kGroupNarrows);
  group->setQualifier(kGroupMatchesAll);
  // The empty array is data enough: a date condition without any data passes everything.
  group->addConditionWithCategory(kConditionDate, kConditionKeepsMatches, qualifier,
                                  plist::Array{});
  auto filter = std::make_shared<ZELMFilter>();
  filter->setName(Localized(nameKey));
  filter->addConditionGroup(std::move(group));
  return filter;
}

}  // namespace

ZELMAccount::FilterList ZELMAccount::defaultSmartFolders() {
  return {SmartFolder("This Year", kDateThisYear), SmartFolder("Last Year", kDateLastYear)};
}

void ZELMAccount::LoadSmartFolders(const plist::Value& stored) {
  smartFolders_.clear();
  const plist::Array* array = stored.asArray();
  if (array == nullptr) return;
  for (const plist::Value& element : *array) {
    if (const plist::Dictionary* dict = element.asDictionary()) {
      addSmartFolder(ZELMFilter::filterWithDictionary(dict));
    }
  }
}

plist::Array ZELMAccount::SmartFoldersAsArray() const {
  plist::Array array;
  array.reserve(smartFolders_.size());
  for (const auto& smartFolder : smartFolders_) array.emplace_back(smartFolder->asDictionary());
  return array;
}

void ZELMAccount::addSmartFolder(std::shared_ptr<ZELMFilter> smartFolder) {
  if (!smartFolder) return;
  if (std::find(smartFolders_.begin(), smartFolders_.end(), smartFolder) != smartFolders_.end()) {
    return;
  }
  smartFolders_.push_back(std::move(smartFolder));
}

void ZELMAccount::removeSmartFolder(const ZELMFilter* smartFolder) {
  std::erase_if(smartFolders_, [&](const auto& f) { return f.get() == smartFolder; });
}

void ZELMAccount::removeSmartFolderAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= smartFolders_.size()) return;
  smartFolders_.erase(smartFolders_.begin() + index);
}

std::shared_ptr<ZELMFilter> ZELMAccount::filterForViewType(std::int32_t viewType) const {
  const ViewFilterSettings& settings = viewType == kViewReconcile ? reconcileFilter_ : entryFilter_;
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  group->setLogic(kGroupNarrows);
  group->setQualifier(kGroupMatchesAll);
  auto filter = std::make_shared<ZELMFilter>();

  // The search text. Empty text passes everything, so a view without a search shows all.
  const SearchRow* row = &kGeneralSearch;
  for (const SearchRow& candidate : kSearches) {
    if (candidate.code == settings.filterType) row = &candidate;
  }
  filter->setName(Localized(row->nameKey));
  group->addConditionWithCategory(
      row->category, kConditionKeepsMatches, kTextContains,
      settings.filterData.isNone() ? plist::Value(std::string()) : settings.filterData);

  // The date range, as the first and last day included.
  const std::optional<DateRange> range = viewDateRange(viewType);
  if (range) {
    // A strict "after the day before" and "before the day after" keep first <= d <= last:
    // stepping a date number by one never lands on another real day, as days 00 and 32 do not
    // occur.
    group->addConditionWithCategory(kConditionDate, kConditionKeepsMatches, kDateAfter,
                                    plist::Value(static_cast<std::int64_t>(range->start) - 1));
    group->addConditionWithCategory(kConditionDate, kConditionKeepsMatches, kDateBefore,
                                    plist::Value(static_cast<std::int64_t>(range->end) + 1));
  }

  // Resolved and tax-deductible: only those set, only those not set, or (no condition) all.
  const auto add_flag = [&](std::int32_t category, std::int32_t setting, std::int32_t only_set,
                            std::int32_t only_not_set) {
    if (setting == only_set || setting == only_not_set) {
      group->addConditionWithCategory(category, kConditionKeepsMatches, kFlagIsSet,
                                      plist::Value(setting == only_set));
    }
  };
  add_flag(kConditionCleared, settings.resolvedFilterType, kShowResolvedOnly, kShowUnresolvedOnly);
  add_flag(kConditionTaxDeductible, settings.taxDeductibleFilterType, kShowTaxDeductibleOnly,
           kShowNotTaxDeductibleOnly);

  filter->addConditionGroup(std::move(group));
  return filter;
}

std::optional<DateRange> ZELMAccount::viewDateRange(std::int32_t viewType) const {
  std::optional<DateRange> range;
  const ViewFilterSettings& settings = viewType == kViewReconcile ? reconcileFilter_ : entryFilter_;
  const std::int32_t type = settings.dateFilterType;
  switch (type) {
    case kShowThroughToday:
      if (const auto first = GetFirstEntry()) {
        range = DateRange{first->GetDate(), platform::Today()};
      } else {
        range = KitRange(kMnemonicToday);
      }
      break;
    case kShowAllDates: {
      const auto first = GetFirstEntry();
      const auto last = GetLastEntry();
      if (first && last) {
        range = DateRange{first->GetDate(), last->GetDate()};
      } else {
        const std::int32_t today = platform::Today();
        range = DateRange{today, today};
      }
      break;
    }
    case kShowCustomDates:
      range = DateRange{settings.dateFilterStartDate, settings.dateFilterEndDate};
      break;
    default:
      for (const NamedRangeRow& named : kNamedRanges) {
        if (named.code == type) range = KitRange(named.mnemonic);
      }
      break;
  }
  return range;
}

std::shared_ptr<ZELMFilter> ZELMAccount::entryFilter() const {
  return filterForViewType(kViewRegister);
}

std::shared_ptr<ZELMFilter> ZELMAccount::reconcileFilter() const {
  return filterForViewType(kViewReconcile);
}

ZELMAccount::EntryList ZELMAccount::FilteredEntriesForView(std::int32_t viewType) const {
  const std::shared_ptr<ZELMFilter> filter = filterForViewType(viewType);
  // A shown folder is all the view shows; the shown smart folder then plays no part.
  if (const std::shared_ptr<ZELMAccountFolder> shown = folder()) {
    return filter->filterEntries(shown->entries());
  }
  // Without folders all entries are the main list, which need not be copied first.
  EntryList entries = folders().empty() ? filter->filterEntries(GetEntries())
                                        : filter->filterEntries(GetAllEntries());
  if (const std::shared_ptr<ZELMFilter> smart = smartFolder()) {
    entries = smart->filterEntries(entries);
  }
  return entries;
}

ZELMAccount::EntryList ZELMAccount::entryFilteredEntries() const {
  return FilteredEntriesForView(kViewRegister);
}

ZELMAccount::EntryList ZELMAccount::reconcileFilteredEntries() const {
  return FilteredEntriesForView(kViewReconcile);
}

}  // namespace folvant
