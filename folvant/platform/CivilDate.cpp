#include "folvant/platform/CivilDate.h"

#include <charconv>
#include <chrono>
#include <cstdio>

namespace folvant::platform {

std::string FormatIsoDate(std::int32_t date) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
  return text;
}

bool ParseIsoDate(std::string_view text, std::int32_t& date) {
  char digits[8];
  std::size_t count = 0;
  for (char c : text) {
    if (c == '-') continue;
    if (count == sizeof digits) return false;
    digits[count++] = c;
  }
  if (count != sizeof digits) return false;
  int value = 0;
  const auto result = std::from_chars(digits, digits + count, value);
  if (result.ec != std::errc() || result.ptr != digits + count) return false;
  using namespace std::chrono;
  const year_month_day ymd{year{value / 10000}, month{static_cast<unsigned>(value / 100 % 100)},
                           day{static_cast<unsigned>(value % 100)}};
  if (!ymd.ok()) return false;
  date = value;
  return true;
}

}  // namespace folvant::platform
