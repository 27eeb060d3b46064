#include "folvant/kit/DateRangeForMnemonic.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

// Today, code, first and last day. Saturday 1 March 2008 (after a leap day) with every code,
// Sunday 6 January 2008 (a week across the new year), Sunday 1 April 2007 (a quarter's first
// day), Thursday 1 January 2009 and Wednesday 31 December 2008 (a week across the new year
// seen from both sides), then quarters seen from their middle.
constexpr std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t> kRows[] = {
    {20080301, 0, 20080301, 20080301},  {20080301, 1, 20080229, 20080229},
    {20080301, 2, 20080217, 20080223},  {20080301, 3, 20080201, 20080229},
    {20080301, 4, 20071001, 20071231},  {20080301, 5, 20070101, 20071231},
    {20080301, 6, 20080224, 20080301},  {20080301, 7, 20080301, 20080331},
    {20080301, 8, 20080101, 20080331},  {20080301, 9, 20080101, 20081231},
    {20080301, 10, 20080224, 20080301}, {20080301, 11, 20080301, 20080301},
    {20080301, 12, 20080101, 20080301}, {20080301, 13, 20080101, 20080301},

    {20080106, 2, 20071230, 20080105},  {20080106, 3, 20071201, 20071231},
    {20080106, 6, 20080106, 20080112},  {20080106, 10, 20080106, 20080106},
    {20070401, 4, 20070101, 20070331},  {20070401, 8, 20070401, 20070630},
    {20070401, 12, 20070401, 20070401}, {20090101, 1, 20081231, 20081231},
    {20090101, 5, 20080101, 20081231},  {20090101, 6, 20081228, 20090103},
    {20090101, 10, 20081228, 20090101}, {20090101, 13, 20090101, 20090101},
    {20081231, 4, 20080701, 20080930},  {20081231, 6, 20081228, 20090103},
    {20081231, 8, 20081001, 20081231},  {20081231, 11, 20081201, 20081231},
    {20080531, 3, 20080401, 20080430},  {20080531, 4, 20080101, 20080331},
    {20080815, 4, 20080401, 20080630},  {20080815, 8, 20080701, 20080930},
};

TEST(DateRangeForMnemonic, RangesAroundBoundaries) {
  for (const auto& [today, code, start, end] : kRows) {
    SCOPED_TRACE(::testing::Message() << "today " << today << " code " << code);
    EXPECT_EQ(DateRangeForMnemonic(code, today), (DateRange{start, end}));
  }
}

TEST(DateRangeForMnemonic, CountsFromThePinnedTodayAndRefusesUnknownInput) {
  testing::ScopedClockPin clock(20080301, 23, 59, 59);
  EXPECT_EQ(DateRangeForMnemonic(kMnemonicLastMonth), (DateRange{20080201, 20080229}));
  for (std::int32_t code : {-1, 14, 1000}) EXPECT_EQ(DateRangeForMnemonic(code), std::nullopt);
  EXPECT_EQ(DateRangeForMnemonic(0, 20070229), std::nullopt);
  EXPECT_EQ(DateRangeForMnemonic(0, -20080101), std::nullopt);
}

}  // namespace
}  // namespace folvant
