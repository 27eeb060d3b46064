#include "folvant/values/ZELMUtilities.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Localized.h"

namespace folvant {
namespace {

// Truncation toward zero to a 64-bit integer, saturating, NaN → 0.
std::int64_t TruncateToInt64(double v) {
  if (std::isnan(v)) return 0;
  // 2^63 is exactly representable; every double below it in magnitude converts safely.
  constexpr double kLimit = 9223372036854775808.0;
  if (v >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (v < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(v);
}

std::string WithCommas(double x) {
  std::string text = FormatFixed2(std::fabs(x));
  // Insert before the last 6 characters ("ddd.dd"), then before the last 9, and so on.
  for (std::ptrdiff_t at = static_cast<std::ptrdiff_t>(text.size()) - 6; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), 1, ',');
  }
  return text;
}

template <typename T>
void BubbleSort(T* array, std::int32_t count) {
  if (array == nullptr) return;
  for (std::int32_t limit = count - 1; limit >= 1; --limit) {
    for (std::int32_t i = 0; i < limit; ++i) {
      // A comparison with NaN is false, so such a pair stays as it is.
      if (array[i] > array[i + 1]) std::swap(array[i], array[i + 1]);
    }
  }
}

}  // namespace

std::int32_t NSCalendarDateToDateNumber(std::optional<LocalTime> date) {
  if (!date) return kMissingDateNumber;
  const platform::CivilDate day = platform::DayOf(*date);
  // Years beyond what a date number can hold wrap, as the 32-bit arithmetic does.
  return static_cast<std::int32_t>(day.year * 10000 + day.month * 100 + day.day);
}

std::int32_t dateNumber(std::optional<LocalTime> date) { return NSCalendarDateToDateNumber(date); }

LocalTime DateNumberToNSCalendarDate(std::int32_t n) {
  return LocalTime{std::chrono::days{platform::DayFromDateNumber(n)}};
}

LocalTime dateWithDateNumber(std::int32_t n) { return DateNumberToNSCalendarDate(n); }

std::int32_t daysInMonth(LocalTime date) {
  const platform::CivilDate day = platform::DayOf(date);
  return platform::MonthLength(day.year, day.month);
}

std::int32_t quarterOfYear(LocalTime date) { return (platform::DayOf(date).month - 1) / 3; }

double RoundValue(double x) {
  const double shifted = x < 0 ? x - 0.005 : x + 0.005;
  return static_cast<double>(TruncateToInt64(shifted * 100)) * 0.01;
}

double TruncateValue(double x, std::int32_t digits) {
  const double scale = static_cast<double>(TruncateToInt64(std::pow(10.0, digits)));
  return static_cast<double>(TruncateToInt64(x * scale)) / scale;
}

double RoundAmount(double x) {
  if (!std::isfinite(x)) return x;
  if (x == 0) return 0.0;  // a decimal has no negative zero
  // From 1e15 on, the shortest decimal form of a double has at most one decimal.
  if (std::fabs(x) >= 1e15) return x;
  const std::string hundredths = RoundedDecimalDigits(x, 2) + "e-2";
  double result = 0;
  std::from_chars(hundredths.data(), hundredths.data() + hundredths.size(), result);
  return x < 0 && result != 0 ? -result : result;
}

std::string RoundedDecimalDigits(double x, int decimals) {
  if (decimals < 0) decimals = 0;
  // Shortest round-trip form in scientific notation: "d.ddde±XX" (or "de±XX").
  char buffer[64];
  const auto [end, ec] =
      std::to_chars(buffer, buffer + sizeof buffer, std::fabs(x), std::chars_format::scientific);
  if (ec != std::errc()) return "0";
  const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
  const std::size_t e = text.find('e');
  std::string digits;
  for (char c : text.substr(0, e)) {
    if (c != '.') digits.push_back(c);
  }
  int exponent = 0;
  std::string_view exponent_text = text.substr(e + 1);
  if (!exponent_text.empty() && exponent_text.front() == '+') exponent_text.remove_prefix(1);
  std::from_chars(exponent_text.data(), exponent_text.data() + exponent_text.size(), exponent);
  if (digits == "0") return digits;

  // |x| is d1.d2d3… × 10^exponent: the digits down to 10^-decimals are the first `keep`.
  const long long keep = static_cast<long long>(exponent) + 1 + decimals;
  if (keep >= static_cast<long long>(digits.size())) {
    digits.append(static_cast<std::size_t>(keep) - digits.size(), '0');
    return digits;
  }
  if (keep < 0) return "0";
  const bool up = digits[static_cast<std::size_t>(keep)] >= '5';
  digits.resize(static_cast<std::size_t>(keep));
  if (up) {
    std::size_t i = digits.size();
    while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
    if (i > 0) {
      ++digits[i - 1];
    } else {
      digits.insert(digits.begin(), '1');
    }
  }
  return digits.empty() ? "0" : digits;
}

std::string FormatFixed2(double x) {
  char buffer[400];  // enough for the largest double in fixed notation
  const auto [end, ec] =
      std::to_chars(buffer, buffer + sizeof buffer, x, std::chars_format::fixed, 2);
  if (ec != std::errc()) return {};
  return std::string(buffer, end);
}

std::string FloatToCommasAmountString(double x) {
  std::string text = WithCommas(x);
  if (x < 0) text.insert(0, "-");
  return text;
}

std::string FloatToDollarCommasAmountString(double x) {
  return (x < 0 ? "-$" : "$") + WithCommas(x);
}

std::string FloatToDollarAmountString(double x) {
  std::string text = FormatFixed2(x);
  if (x < 0) {
    text.insert(1, "$");
  } else {
    text.insert(0, "$");
  }
  return text;
}

std::string StringsToEnglishList(std::span<const std::string> items) {
  if (items.empty()) return {};
  std::string list = items.front();
  if (items.size() == 1) return list;
  for (std::size_t i = 1; i + 1 < items.size(); ++i) {
    list += ", ";
    list += items[i];
  }
  list += ' ';
  list += Localized("and");
  list += ' ';
  list += items.back();
  return list;
}

void BubbleSort_Long(std::int32_t* array, std::int32_t count) { BubbleSort(array, count); }
void BubbleSort_Float(float* array, std::int32_t count) { BubbleSort(array, count); }
void BubbleSort_Double(double* array, std::int32_t count) { BubbleSort(array, count); }

}  // namespace folvant
