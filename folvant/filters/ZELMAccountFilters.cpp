// The account's operations that need filters: its smart folders and the quick filters of the
// register and reconcile views. Declared with the account; defined here, beside the filters.

#include <algorithm>
#include <optional>
#include <utility>

#include "folvant/filters/ZELMFilter.h"
#include "folvant/kit/DateRangeForMnemonic.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Localized.h"

namespace folvant {
namespace {

// What the text field of a view filter searches, and the name the built filter gets.
struct FilterTypeRow {
  std::int32_t code;
  const char* nameKey;
  std::int32_t category;
};

constexpr FilterTypeRow kFilterTypes[] = {
    {10, "Description", ZELMFilterCondition::kCategoryDescription},
    {11, "To/From", ZELMFilterCondition::kCategoryToFrom},
    {12, "Type", ZELMFilterCondition::kCategoryType},
    {13, "Notes", ZELMFilterCondition::kCategoryNotes},
    {14, "Amount", ZELMFilterCondition::kCategoryAmountString},
    {15, "Check Number", ZELMFilterCondition::kCategoryCheckString},
    {16, "Category", ZELMFilterCondition::kCategoryCategory},
    {71, "Split Description", ZELMFilterCondition::kCategorySplitDescription},
    {72, "Split Category", ZELMFilterCondition::kCategorySplitCategory},
};
constexpr FilterTypeRow kGeneralFilterType = {0, "General", ZELMFilterCondition::kCategoryGeneral};

std::optional<DateRange> KitRange(std::int32_t code) { return DateRangeForMnemonic(code); }

std::shared_ptr<ZELMFilter> SmartFolder(const char* nameKey, std::int32_t qualifier) {
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  group->setLogic(ZELMFilterConditionGroup::kLogicNarrows);
  group->setQualifier(ZELMFilterConditionGroup::kQualifierAll);
  // The empty array is data enough: a date condition without any data passes everything.
  group->addConditionWithCategory(ZELMFilterCondition::kCategoryDate, 1, qualifier, plist::Array{});
  auto filter = std::make_shared<ZELMFilter>();
  filter->setName(Localized(nameKey));
  filter->addConditionGroup(std::move(group));
  return filter;
}

}  // namespace

ZELMAccount::FilterList ZELMAccount::defaultSmartFolders() {
  return {SmartFolder("This Year", ZELMFilterCondition::kQualifierDuringThisYear),
          SmartFolder("Last Year", ZELMFilterCondition::kQualifierDuringLastYear)};
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
  const ViewFilterSettings& settings = viewType == 2 ? reconcileFilter_ : entryFilter_;
  auto group = std::make_shared<ZELMFilterConditionGroup>();
  group->setLogic(ZELMFilterConditionGroup::kLogicNarrows);
  group->setQualifier(ZELMFilterConditionGroup::kQualifierAll);
  auto filter = std::make_shared<ZELMFilter>();

  // The search text. Empty text passes everything, so a view without a search shows all.
  const FilterTypeRow* row = &kGeneralFilterType;
  for (const FilterTypeRow& candidate : kFilterTypes) {
    if (candidate.code == settings.filterType) row = &candidate;
  }
  filter->setName(Localized(row->nameKey));
  group->addConditionWithCategory(
      row->category, 1, ZELMFilterCondition::kQualifierContains,
      settings.filterData.isNone() ? plist::Value(std::string()) : settings.filterData);

  // The date range, as the first and last day included.
  std::optional<DateRange> range;
  const std::int32_t type = settings.dateFilterType;
  switch (type) {
    case 20:
      if (const auto first = GetFirstEntry()) {
        range = DateRange{first->GetDate(), platform::Today()};
      } else {
        range = KitRange(kMnemonicToday);
      }
      break;
    case 21:
      range = KitRange(kMnemonicToday);
      break;
    case 22:
      range = KitRange(kMnemonicYesterday);
      break;
    case 30:
    case 31:
    case 32:
    case 33:
      range = KitRange(kMnemonicThisWeek + (type - 30));
      break;
    case 40:
    case 41:
    case 42:
    case 43:
      range = KitRange(kMnemonicLastWeek + (type - 40));
      break;
    case 50:
    case 51:
    case 52:
    case 53:
      range = KitRange(kMnemonicWeekToDate + (type - 50));
      break;
    case 60: {
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
    case 61:
      range = DateRange{settings.dateFilterStartDate, settings.dateFilterEndDate};
      break;
    default:
      break;
  }
  if (range) {
    // A strict "after the day before" and "before the day after" keep first <= d <= last:
    // stepping a date number by one never lands on another real day, as days 00 and 32 do not
    // occur.
    group->addConditionWithCategory(ZELMFilterCondition::kCategoryDate, 1,
                                    ZELMFilterCondition::kQualifierAfter,
                                    plist::Value(static_cast<std::int64_t>(range->start) - 1));
    group->addConditionWithCategory(ZELMFilterCondition::kCategoryDate, 1,
                                    ZELMFilterCondition::kQualifierBefore,
                                    plist::Value(static_cast<std::int64_t>(range->end) + 1));
  }

  // Resolved and tax-deductible: 80/90 only those set, 81/91 only those not set, others all.
  const auto add_flag = [&](std::int32_t category, std::int32_t setting, std::int32_t only) {
    if (setting == only || setting == only + 1) {
      group->addConditionWithCategory(category, 1, ZELMFilterCondition::kQualifierIsSet,
                                      plist::Value(setting == only));
    }
  };
  add_flag(ZELMFilterCondition::kCategoryCleared, settings.resolvedFilterType, 80);
  add_flag(ZELMFilterCondition::kCategoryTaxDeductible, settings.taxDeductibleFilterType, 90);

  filter->addConditionGroup(std::move(group));
  return filter;
}

std::shared_ptr<ZELMFilter> ZELMAccount::entryFilter() const { return filterForViewType(1); }

std::shared_ptr<ZELMFilter> ZELMAccount::reconcileFilter() const { return filterForViewType(2); }

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
  return FilteredEntriesForView(1);
}

ZELMAccount::EntryList ZELMAccount::reconcileFilteredEntries() const {
  return FilteredEntriesForView(2);
}

}  // namespace folvant
