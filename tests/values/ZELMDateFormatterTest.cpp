#include "folvant/values/ZELMDateFormatter.h"

#include <gtest/gtest.h>

#include <utility>

#include "folvant/values/ZELMUtilities.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

TEST(ZELMDateFormatter, UsesTheUserFormatAndTodayAtMidnightAsTheDefault) {
  testing::ScopedClockPin clock(20080229, 15, 45);
  testing::ScopedSettingsPin pin({.shortDateFormat = "%d.%m.%Y"});
  const ZELMDateFormatter formatter;
  EXPECT_EQ(formatter.defaultObjectValue(), dateWithDateNumber(20080229));
  EXPECT_EQ(formatter.stringForObjectValue(dateWithDateNumber(20071231)), "31.12.2007");
  EXPECT_EQ(formatter.getObjectValue("1.2.2003"), dateWithDateNumber(20030201));
  EXPECT_EQ(formatter.stringForObjectValue(std::nullopt), std::nullopt);
}

TEST(ZELMDateFormatter, ReadsTheWholeTextOrGivesTheDefault) {
  testing::ScopedClockPin clock(20080314);
  ZELMDateFormatter formatter("%m/%d/%y", false);
  // 20080314, today, is the default.
  const std::pair<const char*, std::int32_t> rows[] = {
      {"02/29/08", 20080229}, {"2/9/08", 20080209},    {" 12/31/69", 19691231},
      {"01/01/68", 20680101}, {"12/31/08x", 20080314}, {"12/31", 20080314},
      {"", 20080314},         {"12/31/08  ", 20081231}};
  for (const auto& [text, date] : rows) {
    EXPECT_EQ(formatter.getObjectValue(text), dateWithDateNumber(date)) << text;
  }
  formatter.setDefaultObjectValue(std::nullopt);
  EXPECT_EQ(formatter.getObjectValue("abc"), std::nullopt);
}

}  // namespace
}  // namespace folvant
