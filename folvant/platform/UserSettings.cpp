#include "folvant/platform/UserSettings.h"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>

#include <optional>
#include <utility>

namespace folvant::platform {
namespace {

UserSettings FromLocale() {
  UserSettings settings;
  UErrorCode status = U_ZERO_ERROR;
  icu::DecimalFormatSymbols symbols(icu::Locale::getDefault(), status);
  if (U_SUCCESS(status)) {
    std::string grouping, decimal;
    symbols.getSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol).toUTF8String(grouping);
    symbols.getSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol).toUTF8String(decimal);
    if (!decimal.empty()) {
      settings.thousandsSeparator = grouping;
      settings.decimalSeparator = decimal;
    }
  }
  return settings;
}

std::optional<UserSettings>& Current() {
  static std::optional<UserSettings> current;
  return current;
}

}  // namespace

const UserSettings& CurrentUserSettings() {
  auto& current = Current();
  if (!current) current = FromLocale();
  return *current;
}

UserSettings SetUserSettings(UserSettings settings) {
  UserSettings previous = CurrentUserSettings();
  Current() = std::move(settings);
  return previous;
}

}  // namespace folvant::platform
