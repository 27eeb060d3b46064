#include "folvant/kit/DaysInMonth.h"

namespace folvant {

std::int32_t DaysInMonth(std::int32_t month, std::int64_t year) {
  static constexpr std::int32_t kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  if (month == 2) {
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return leap ? 29 : 28;
  }
  return kDays[month - 1];
}

}  // namespace folvant
