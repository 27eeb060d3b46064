#include "folvant/platform/UserSettings.h"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>

#include <mutex>
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

// The settings of the process. The first use makes them, once, whichever thread gets there
// first.
struct Shared {
  std::mutex mutex;
  UserSettings settings = FromLocale();
};

Shared& Current() {
  static Shared shared;
  return shared;
}

}  // namespace

UserSettings CurrentUserSettings() {
  Shared& shared = Current();
  const std::lock_guard lock(shared.mutex);
  return shared.settings;
}

UserSettings SetUserSettings(UserSettings settings) {
  Shared& shared = Current();
  const std::lock_guard lock(shared.mutex);
  return std::exchange(shared.settings, std::move(settings));
}

}  // namespace folvant::platform
