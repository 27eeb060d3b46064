#include "folvant/kit/DaysInMonth.h"

#include <gtest/gtest.h>

#include <tuple>

namespace folvant {
namespace {

TEST(DaysInMonth, GregorianLengths) {
  // Month, year, days.
  const std::tuple<std::int32_t, std::int64_t, std::int32_t> rows[] = {
      {1, 2007, 31}, {2, 2007, 28}, {2, 2008, 29}, {2, 1900, 28}, {2, 2000, 29},
      {2, -4, 29},   {4, 2008, 30}, {0, 2008, 0},  {13, 2008, 0}};
  for (const auto& [month, year, days] : rows) {
    EXPECT_EQ(DaysInMonth(month, year), days) << month << "/" << year;
  }
}

}  // namespace
}  // namespace folvant
