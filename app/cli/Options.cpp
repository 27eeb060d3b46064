#include "app/cli/Options.h"

#include <charconv>
#include <climits>

#include "folvant/platform/CivilDate.h"

namespace folvant::app {

std::string FormatDateNumber(std::int32_t date) { return platform::FormatIsoDate(date); }

bool ParseDateNumber(std::string_view text, std::int32_t& date) {
  return platform::ParseIsoDate(text, date);
}

CLI::Validator IsoDate() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        std::int32_t date = 0;
        return ParseDateNumber(value, date) ? std::string()
                                            : "\"" + value + "\" is not a date (YYYY-MM-DD)";
      },
      "");
}

CLI::Validator ZeroOrMore() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        long long n = 0;
        const auto result = std::from_chars(value.data(), value.data() + value.size(), n);
        if (result.ec == std::errc() && result.ptr == value.data() + value.size() && n >= 0 &&
            n <= INT32_MAX) {
          return {};
        }
        return "\"" + value + "\": must be a whole number, 0 or more";
      },
      "");
}

}  // namespace folvant::app
