#pragma once

#include <cstdint>
#include <string>

namespace folvant::platform {

// The user's preferences that the model reads: number separators (from the default locale),
// the short date format (strftime style) and the default 8-bit text encoding (a
// string-encoding constant, see Encodings.h). Tests replace them with SetUserSettings.
struct UserSettings {
  std::string thousandsSeparator = ",";
  std::string decimalSeparator = ".";
  std::string shortDateFormat = "%m/%d/%y";
  std::uint32_t defaultCStringEncoding = 12;  // Windows-1252
};

// A copy of the current settings, so that another thread replacing them cannot pull them from
// under the caller. The first use reads the separators from ICU's default locale.
UserSettings CurrentUserSettings();

// Replaces the current settings for every thread and returns the previous ones.
UserSettings SetUserSettings(UserSettings settings);

}  // namespace folvant::platform
