#include "folvant/kit/DaysInMonth.h"

#include <gtest/gtest.h>

namespace folvant {
namespace {

TEST(DaysInMonth, GregorianLengths) {
  struct Row {
    std::int32_t month;
    std::int64_t year;
    std::int32_t days;
  };
  const Row rows[] = {{1, 2007, 31}, {2, 2007, 28}, {2, 2008, 29},  {2, 1900, 28}, {2, 2000, 29},
                      {2, -4, 29},   {4, 2008, 30}, {12, 2008, 31}, {0, 2008, 0},  {13, 2008, 0}};
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << row.month << "/" << row.year);
    EXPECT_EQ(DaysInMonth(row.month, row.year), row.days);
  }
}

}  // namespace
}  // namespace folvant
