#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/Clock.h"

namespace folvant {

// The date formatter of the date fields: a strftime-style pattern ("%m/%d/%y") for printing
// and reading local calendar dates, and a default date that replaces any text that does not
// read as a date. A plain value type owned by its field.
class ZELMDateFormatter {
 public:
  // The user's short date format; the default value is today at 00:00:00.
  ZELMDateFormatter();
  ZELMDateFormatter(std::string_view dateFormat, bool allowNaturalLanguage);

  const std::string& dateFormat() const { return dateFormat_; }
  // Kept for callers that ask; reading never interprets natural language.
  bool allowsNaturalLanguage() const { return allowsNaturalLanguage_; }

  const std::optional<platform::LocalTime>& defaultObjectValue() const {
    return defaultObjectValue_;
  }
  // Stores the date; nullopt clears the default.
  void setDefaultObjectValue(std::optional<platform::LocalTime> value) {
    defaultObjectValue_ = value;
  }

  // The date the text stands for under the pattern (the whole text must match; a day past
  // the end of its month does not), else the default (which may be empty). Never an error.
  std::optional<platform::LocalTime> getObjectValue(std::string_view text) const;

  // The printed date; nullopt for no date.
  std::optional<std::string> stringForObjectValue(std::optional<platform::LocalTime> value) const;

 private:
  std::string dateFormat_;
  bool allowsNaturalLanguage_ = false;
  std::optional<platform::LocalTime> defaultObjectValue_;
};

}  // namespace folvant
