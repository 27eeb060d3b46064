// The account's list of summaries and its selection. Declared with the account; defined here,
// beside the summaries.

#include <algorithm>
#include <utility>

#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Localized.h"
#include "folvant/summaries/ZELMAccountSummary.h"

namespace folvant {
namespace {

// What a default summary changes from a new summary's options.
enum class Takes { kAll, kDebitsOnly, kDepositsOnly, kTaxDeductibleOnly };

struct DefaultSummary {
  const char* nameKey;
  std::int32_t dateRangeStyle;
  Takes takes;
};

// " Custom..." begins with a space so that it sorts first.
constexpr DefaultSummary kDefaultSummaries[] = {
    {" Custom...", 0, Takes::kAll},
    {"All Entries, Month To Date", 16, Takes::kAll},
    {"All Entries, Quarter To Date", 17, Takes::kAll},
    {"All Entries, Year To Date", 18, Takes::kAll},
    {"Expenses, Month To Date", 16, Takes::kDebitsOnly},
    {"Expenses, Quarter To Date", 17, Takes::kDebitsOnly},
    {"Expenses, Year To Date", 18, Takes::kDebitsOnly},
    {"Income, Month To Date", 16, Takes::kDepositsOnly},
    {"Income, Quarter To Date", 17, Takes::kDepositsOnly},
    {"Income, Year To Date", 18, Takes::kDepositsOnly},
    {"Tax-Deductible, Last Year", 7, Takes::kTaxDeductibleOnly},
    {"Tax-Deductible, This Year", 11, Takes::kTaxDeductibleOnly},
};

void SortByName(ZELMAccount::SummaryList& list) {
  std::stable_sort(list.begin(), list.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
}

}  // namespace

ZELMAccount::SummaryList ZELMAccount::defaultAccountSummaries() const {
  SummaryList list;
  list.reserve(std::size(kDefaultSummaries));
  const EntryList entries = GetAllEntries();
  for (const DefaultSummary& row : kDefaultSummaries) {
    auto summary = std::make_shared<ZELMAccountSummary>();
    summary->setName(Localized(row.nameKey));
    summary->setDateRangeStyle(row.dateRangeStyle);
    switch (row.takes) {
      case Takes::kDebitsOnly:
        summary->setShowDeposits(false);
        break;
      case Takes::kDepositsOnly:
        summary->setShowDebits(false);
        break;
      case Takes::kTaxDeductibleOnly:
        summary->setShowTaxDeductible(0);
        break;
      case Takes::kAll:
        break;
    }
    summary->setEntries(entries);
    list.push_back(std::move(summary));
  }
  SortByName(list);
  return list;
}

void ZELMAccount::SortAccountSummaries() { SortByName(accountSummaries_); }

void ZELMAccount::addAccountSummary(std::shared_ptr<ZELMAccountSummary> summary) {
  if (summary == nullptr) return;
  summary->setEntries(GetAllEntries());
  accountSummaries_.push_back(std::move(summary));
  SortAccountSummaries();
}

void ZELMAccount::removeAccountSummary(const ZELMAccountSummary* summary) {
  const auto it = std::find_if(accountSummaries_.begin(), accountSummaries_.end(),
                               [summary](const auto& s) { return s.get() == summary; });
  if (summary == nullptr || it == accountSummaries_.end()) return;
  accountSummaries_.erase(it);
}

void ZELMAccount::setSelectedAccountSummary(const std::shared_ptr<ZELMAccountSummary>& summary) {
  if (std::find(accountSummaries_.begin(), accountSummaries_.end(), summary) !=
      accountSummaries_.end()) {
    selectedAccountSummary_ = summary;
  }
}

void ZELMAccount::selectAccountSummaryAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= accountSummaries_.size()) return;
  selectedAccountSummary_ = accountSummaries_[static_cast<std::size_t>(index)];
}

std::shared_ptr<ZELMAccountSummary> ZELMAccount::selectedAccountSummary() const {
  if (selectedAccountSummary_ != nullptr) return selectedAccountSummary_;
  return accountSummaries_.empty() ? nullptr : accountSummaries_.front();
}

void ZELMAccount::setAccountSummaryOptions(const plist::Dictionary* options) {
  if (const auto selected = selectedAccountSummary()) selected->setOptionsFromDictionary(options);
  SortAccountSummaries();
}

plist::Array ZELMAccount::accountSummariesStoredForm() const {
  plist::Array array;
  array.reserve(accountSummaries_.size());
  for (const auto& summary : accountSummaries_) array.emplace_back(summary->optionsAsDictionary());
  return array;
}

std::int32_t ZELMAccount::selectedAccountSummaryIndex() const {
  const auto it =
      std::find(accountSummaries_.begin(), accountSummaries_.end(), selectedAccountSummary_);
  if (selectedAccountSummary_ == nullptr || it == accountSummaries_.end()) return 0;
  return static_cast<std::int32_t>(it - accountSummaries_.begin());
}

void ZELMAccount::LoadAccountSummaries(const plist::Value* stored, const plist::Value* selected) {
  const plist::Array* array = stored != nullptr ? stored->asArray() : nullptr;
  if (array != nullptr && !array->empty()) {
    accountSummaries_.clear();
    for (const plist::Value& element : *array) {
      if (const plist::Dictionary* options = element.asDictionary()) {
        accountSummaries_.push_back(std::make_shared<ZELMAccountSummary>(options, std::nullopt));
      }
    }
  }
  // Compared unsigned, so a negative index selects the first summary too.
  std::size_t index = 0;
  if (selected != nullptr) {
    const auto stored_index = static_cast<std::uint32_t>(selected->intValue());
    if (stored_index < accountSummaries_.size()) index = stored_index;
  }
  selectedAccountSummary_ = index < accountSummaries_.size() ? accountSummaries_[index] : nullptr;
}

}  // namespace folvant
