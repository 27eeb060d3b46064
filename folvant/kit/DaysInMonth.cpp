#include "folvant/kit/DaysInMonth.h"

#include "folvant/platform/CivilDate.h"

namespace folvant {

std::int32_t DaysInMonth(std::int32_t month, std::int64_t year) {
  return platform::MonthLength(year, month);
}

}  // namespace folvant
