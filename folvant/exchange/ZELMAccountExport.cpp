// The account's QIF and tab-separated exports.

#include <algorithm>

#include "folvant/exchange/ExportOptions.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Localized.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

// The entries to write, sorted by date and then check number: the filter's selection from the
// main list, or the whole main list.
ZELMAccount::EntryList ExportedEntries(const ZELMAccount& account, const ZELMFilter* filter) {
  ZELMAccount::EntryList entries =
      filter != nullptr ? filter->filterEntries(account.GetEntries()) : account.GetEntries();
  std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
    return a->DatePrimaryCheckSecondaryIsGreaterThan(*b) < 0;
  });
  return entries;
}

std::string CategoryName(const ZELMAccount& account, std::int32_t number) {
  if (number < 0) return {};
  const auto category = account.accountEntryCategoryForNumber(number);
  return category != nullptr ? category->name() : std::string();
}

// The date of the first entry, or today for an empty account.
platform::LocalTime OpeningDate(const ZELMAccount& account) {
  const auto first = account.GetFirstEntry();
  return DateNumberToNSCalendarDate(first != nullptr ? first->GetDate() : platform::Today());
}

}  // namespace

std::string ZELMAccount::asQIFStringWithOptions(const QIFExportOptions* options) const {
  const QIFExportOptions defaults;
  const QIFExportOptions& o = options != nullptr ? *options : defaults;
  const std::string& le = o.lineEnding;
  const std::string resolved = o.resolvedMeansReconciled ? "X" : "*";
  auto date = [&o](std::int32_t number) {
    return platform::FormatLocalTime(DateNumberToNSCalendarDate(number), o.dateFormat);
  };

  std::string text;
  text += "!Account" + le + "N" + GetName() + le + "TBank" + le + "B" + FormatFixed2(GetBalance()) +
          le + "^" + le + "!Type:Bank" + le;
  if (o.exportFilter == nullptr) {
    text += "D" + platform::FormatLocalTime(OpeningDate(*this), o.dateFormat) + le;
    text += "M" + Localized("Starting Balance") + le;
    text += "T" + FormatFixed2(GetStartingBalance()) + le;
    text += "C" + resolved + le + "^" + le;
  }
  for (const auto& entry : ExportedEntries(*this, o.exportFilter)) {
    text += "D" + date(entry->GetDate()) + le;
    if (entry->GetCheckNumber() >= 0) text += "N" + std::to_string(entry->GetCheckNumber()) + le;
    text += "P" + entry->GetToFrom() + le;
    text += "M" + entry->GetDescription() + le;
    text += "T" + FormatFixed2(entry->GetAmount()) + le;
    if (entry->GetCleared() != 0) text += "C" + resolved + le;
    text += "L" + CategoryName(*this, entry->GetCategory()) + le;
    for (const auto& item : entry->splitLineItems()) {
      text += "S" + CategoryName(*this, item->category()) + le;
      text += "E" + item->description() + le;
      text += "$" + FormatFixed2(item->amount()) + le;
    }
    text += "^" + le;
  }
  return text;
}

std::vector<std::vector<std::string>> DelimitedExportRows(const ZELMAccount& account,
                                                         const ZELMFilter* filter) {
  double balance = account.GetStartingBalance();
  auto date = [](std::int32_t number) {
    return platform::FormatShortDate(DateNumberToNSCalendarDate(number));
  };
  std::vector<std::vector<std::string>> rows;
  rows.push_back({"Date", "Type", "Description", "To/From", "Category", "Resolved",
                  "Tax-Deductible", "Amount", "Kind", "Check #", "ID", "Balance"});
  if (filter == nullptr) {
    // The opening row has one field more than the others, an empty one at the end.
    const std::string starting = FormatFixed2(account.GetStartingBalance());
    rows.push_back({platform::FormatShortDate(OpeningDate(account)), "",
                    Localized("Starting Balance"), "", "", "Yes", "", starting, "", "", "",
                    starting, ""});
  }
  const ZELMAccount::EntryList entries = ExportedEntries(account, filter);
  rows.reserve(rows.size() + entries.size());
  for (const auto& entry : entries) {
    const auto type = account.accountEntryTypeForNumber(entry->GetType());
    balance += entry->GetAmount();
    rows.push_back({date(entry->GetDate()), type != nullptr ? type->GetName() : std::string(),
                    entry->GetDescription(), entry->GetToFrom(),
                    CategoryName(account, entry->GetCategory()),
                    entry->GetCleared() != 0 ? "Yes" : "No",
                    entry->GetTaxDeductible() ? "Yes" : "No", FormatFixed2(entry->GetAmount()),
                    entry->IsDebit() ? "Debit" : entry->IsDeposit() ? "Deposit" : "",
                    entry->GetCheckNumber() > -1 ? std::to_string(entry->GetCheckNumber()) : "",
                    std::to_string(entry->GetNumber()), FormatFixed2(balance)});
  }
  return rows;
}

std::string ZELMAccount::asTabDelimitedStringWithOptions(
    const TabDelimitedExportOptions* options) const {
  std::string text;
  for (const auto& row :
       DelimitedExportRows(*this, options != nullptr ? options->exportFilter : nullptr)) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i > 0) text += '\t';
      text += row[i];
    }
    text += '\n';
  }
  return text;
}

}  // namespace folvant
