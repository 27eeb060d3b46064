#pragma once

#include <cstdint>

namespace folvant {

// The number of days of a month (1-12) in a year of the Gregorian calendar: 28, 29, 30 or 31.
// February has 29 days in years divisible by 4, except centuries not divisible by 400
// (1900: 28, 2000: 29). A month outside 1-12 has 0 days.
std::int32_t DaysInMonth(std::int32_t month, std::int64_t year);

}  // namespace folvant
