#include "folvant/values/AmountInput.h"

#include <charconv>
#include <cmath>

#include "folvant/platform/UserSettings.h"

namespace folvant {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::optional<double> Refuse(std::string* problem, std::string reason) {
  if (problem != nullptr) *problem = std::move(reason);
  return std::nullopt;
}

}  // namespace

std::optional<double> ReadAmount(std::string_view text, std::string* problem) {
  const platform::UserSettings settings = platform::CurrentUserSettings();
  const std::string& decimal = settings.decimalSeparator;
  const std::string& thousands = settings.thousandsSeparator;
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  if (text.empty()) return Refuse(problem, "an amount is needed");
  const std::string example = "1" + thousands + "234" + decimal + "50";
  const std::string not_amount = "is not an amount (write it as " + example + " or -12" +
                                 decimal + "50)";

  std::string plain;  // sign, digits, '.', digits
  if (text.front() == '-' || text.front() == '+') {
    if (text.front() == '-') plain.push_back('-');
    text.remove_prefix(1);
  }
  // The whole part, with thousands separators only between groups of three.
  std::size_t group = 0;
  bool grouped = false, digits = false;
  while (!text.empty()) {
    if (IsDigit(text.front())) {
      plain.push_back(text.front());
      text.remove_prefix(1);
      ++group;
      digits = true;
      continue;
    }
    if (!thousands.empty() && text.starts_with(thousands) && !text.starts_with(decimal)) {
      if (group == 0 || group > 3 || (grouped && group != 3)) return Refuse(problem, not_amount);
      grouped = true;
      group = 0;
      text.remove_prefix(thousands.size());
      continue;
    }
    break;
  }
  if (grouped && group != 3) return Refuse(problem, not_amount);
  if (!decimal.empty() && text.starts_with(decimal)) {
    text.remove_prefix(decimal.size());
    plain.push_back('.');
    bool fraction = false;
    while (!text.empty() && IsDigit(text.front())) {
      plain.push_back(text.front());
      text.remove_prefix(1);
      fraction = true;
    }
    digits = digits || fraction;
  }
  if (!text.empty() || !digits) return Refuse(problem, not_amount);
  double value = 0.0;
  const char* begin = plain.data();
  const auto result = std::from_chars(begin, begin + plain.size(), value);
  if (result.ec != std::errc() || !std::isfinite(value) || std::fabs(value) > kLargestAmount) {
    return Refuse(problem, "is beyond what a register holds");
  }
  return value == 0.0 ? 0.0 : value;  // no negative zero
}

}  // namespace folvant
