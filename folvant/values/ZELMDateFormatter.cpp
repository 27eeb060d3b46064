#include "folvant/values/ZELMDateFormatter.h"

#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/UserSettings.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {

ZELMDateFormatter::ZELMDateFormatter()
    : ZELMDateFormatter(platform::CurrentUserSettings().shortDateFormat, false) {}

ZELMDateFormatter::ZELMDateFormatter(std::string_view dateFormat, bool allowNaturalLanguage)
    : dateFormat_(dateFormat),
      allowsNaturalLanguage_(allowNaturalLanguage),
      defaultObjectValue_(dateWithDateNumber(platform::Today())) {}

std::optional<platform::LocalTime> ZELMDateFormatter::getObjectValue(std::string_view text) const {
  if (auto date = platform::ParseLocalTime(text, dateFormat_)) return date;
  return defaultObjectValue_;
}

std::optional<std::string> ZELMDateFormatter::stringForObjectValue(
    std::optional<platform::LocalTime> value) const {
  if (!value) return std::nullopt;
  return platform::FormatLocalTime(*value, dateFormat_);
}

}  // namespace folvant
