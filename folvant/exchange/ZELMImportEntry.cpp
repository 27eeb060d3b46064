#include "folvant/exchange/ZELMImportEntry.h"

#include <charconv>

#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Localized.h"
#include "folvant/platform/Text.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

std::string Labelled(std::string_view label, std::string_view value) {
  return Localized(label) + ":  " + std::string(value) + " .  ";
}

std::string TypeName(const ZELMImportEntry& entry) {
  return entry.GetActualType() ? entry.GetActualType()->GetName() : std::string();
}

std::string CategoryName(const ZELMImportEntry& entry) {
  return entry.GetActualCategory() ? entry.GetActualCategory()->fullName() : std::string();
}

}  // namespace

void ZELMImportEntry::SetActualType(std::shared_ptr<ZELMAccountEntryType> type) {
  actualType_ = std::move(type);
  SetType(actualType_ ? actualType_->GetNumber() : -1);
}

void ZELMImportEntry::SetActualCategory(std::shared_ptr<ZELMAccountEntryCategory> category) {
  actualCategory_ = std::move(category);
  SetCategory(actualCategory_ ? actualCategory_->number() : -1);
}

int ZELMImportEntry::TypePrimaryDateSecondaryIsGreaterThan(const ZELMImportEntry& other) const {
  if (int c = platform::CaseInsensitiveCompare(TypeName(*this), TypeName(other))) return c;
  if (int c = platform::ThreeWay(GetDate(), other.GetDate())) return c;
  return platform::ThreeWay(GetNumber(), other.GetNumber());
}

int ZELMImportEntry::CategoryPrimaryDateSecondaryIsGreaterThan(const ZELMImportEntry& other) const {
  if (int c = platform::CaseInsensitiveCompare(CategoryName(*this), CategoryName(other))) return c;
  if (int c = platform::ThreeWay(GetDate(), other.GetDate())) return c;
  return platform::ThreeWay(GetNumber(), other.GetNumber());
}

int ZELMImportEntry::ImportIsGreaterThan(const ZELMImportEntry& other) const {
  if (int c = platform::ThreeWay(import_, other.import_)) return c;
  return platform::ThreeWay(GetNumber(), other.GetNumber());
}

int ZELMImportEntry::TypePrimaryDateSecondaryIsGreaterThan_Reversed(
    const ZELMImportEntry& other) const {
  return -TypePrimaryDateSecondaryIsGreaterThan(other);
}
int ZELMImportEntry::CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(
    const ZELMImportEntry& other) const {
  return -CategoryPrimaryDateSecondaryIsGreaterThan(other);
}
int ZELMImportEntry::ImportIsGreaterThan_Reversed(const ZELMImportEntry& other) const {
  return -ImportIsGreaterThan(other);
}

std::string ZELMImportEntry::asSpeakableString() const {
  std::string text = platform::FormatShortDate(DateNumberToNSCalendarDate(GetDate())) + ".  ";
  // The amount with six decimals, as "%f" prints it.
  char amount[400];  // room for the largest double
  const auto written = std::to_chars(amount, amount + sizeof amount, GetAmount(),
                                     std::chars_format::fixed, 6);
  const std::string_view amountText(amount, written.ptr - amount);
  if (IsDebit()) {
    text += Labelled("Debit in the Amount of", amountText);
  } else if (IsDeposit()) {
    text += Labelled("Deposit in the Amount of", amountText);
  }
  if (actualType_) text += Labelled("Type", actualType_->GetName());
  if (IsCheck()) text += Labelled("Check Number", std::to_string(GetCheckNumber()));
  if (!GetToFrom().empty()) {
    if (IsDebit()) {
      text += Labelled("To", GetToFrom());
    } else if (IsDeposit()) {
      text += Labelled("From", GetToFrom());
    }
  }
  if (!GetDescription().empty()) text += Labelled("Description", GetDescription());
  text += Localized(GetCleared() != 0 ? "Resolved" : "Unresolved") + " .  ";
  return text;
}

}  // namespace folvant
