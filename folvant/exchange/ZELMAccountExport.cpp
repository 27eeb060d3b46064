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

std::string ZELMAccount::asTabDelimitedStringWithOptions(
    const TabDelimitedExportOptions* options) const {
  const ZELMFilter* filter = options != nullptr ? options->exportFilter : nullptr;
  double balance = GetStartingBalance();
  auto date = [](std::int32_t number) {
    return platform::FormatShortDate(DateNumberToNSCalendarDate(number));
  };

  std::string text =
      "Date\tType\tDescription\tTo/From\tCategory\tResolved\tTax-Deductible\tAmount\tKind\tCheck "
      "#\tID\tBalance\n";
  if (filter == nullptr) {
    // The opening row ends with one tab more than the others.
    const std::string starting = FormatFixed2(GetStartingBalance());
    text += platform::FormatShortDate(OpeningDate(*this)) + "\t\t" + Localized("Starting Balance") +
            "\t\t\tYes\t\t" + starting + "\t\t\t\t" + starting + "\t\n";
  }
  for (const auto& entry : ExportedEntries(*this, filter)) {
    const auto type = accountEntryTypeForNumber(entry->GetType());
    balance += entry->GetAmount();
    text += date(entry->GetDate());
    text += '\t';
    text += type != nullptr ? type->GetName() : std::string();
    text += '\t' + entry->GetDescription() + '\t' + entry->GetToFrom() + '\t';
    text += CategoryName(*this, entry->GetCategory());
    text += entry->GetCleared() != 0 ? "\tYes" : "\tNo";
    text += entry->GetTaxDeductible() ? "\tYes\t" : "\tNo\t";
    text += FormatFixed2(entry->GetAmount());
    text += entry->IsDebit() ? "\tDebit\t" : entry->IsDeposit() ? "\tDeposit\t" : "\t\t";
    if (entry->GetCheckNumber() > -1) text += std::to_string(entry->GetCheckNumber());
    text += '\t' + std::to_string(entry->GetNumber()) + '\t' + FormatFixed2(balance) + '\n';
  }
  return text;
}

}  // namespace folvant
