#include "app/cli/Options.h"

#include <charconv>
#include <climits>
#include <optional>

#include "folvant/platform/CivilDate.h"
#include "folvant/values/AmountInput.h"

namespace folvant::app {

CLI::Validator AmountValue() {
  return CLI::Validator(
      [](std::string& value) -> std::string {
        std::string problem;
        const std::optional<double> amount = ReadAmount(value, &problem);
        if (!amount) return "\"" + value + "\" " + problem;
        char text[64];
        const auto end = std::to_chars(text, text + sizeof text, *amount).ptr;
        value.assign(text, end);
        return {};
      },
      "AMOUNT");
}

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

std::optional<SplitFields> ReadSplit(const std::string& text, std::string* problem) {
  const auto equals = text.find('=');
  if (equals == std::string::npos) {
    *problem = "\"" + text + "\" is not CATEGORY=AMOUNT[:DESCRIPTION]";
    return std::nullopt;
  }
  SplitFields split;
  split.category = text.substr(0, equals);
  std::string amount = text.substr(equals + 1);
  if (const auto colon = amount.find(':'); colon != std::string::npos) {
    split.description = amount.substr(colon + 1);
    amount.resize(colon);
  }
  std::string why;
  const auto value = ReadAmount(amount, &why);
  if (!value) {
    *problem = "\"" + text + "\": \"" + amount + "\" " + why;
    return std::nullopt;
  }
  split.amount = *value;
  return split;
}

CLI::Validator SplitValue() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        std::string problem;
        return ReadSplit(value, &problem) ? std::string() : problem;
      },
      "CATEGORY=AMOUNT[:DESCRIPTION]");
}

}  // namespace folvant::app
