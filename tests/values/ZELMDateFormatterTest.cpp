#include "folvant/values/ZELMDateFormatter.h"

#include <gtest/gtest.h>

#include "folvant/values/ZELMUtilities.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

TEST(ZELMDateFormatter, DefaultIsTodayAtMidnightInTheUserFormat) {
  testing::ScopedClockPin clock(20080229, 15, 45);
  platform::UserSettings settings;
  settings.shortDateFormat = "%d.%m.%Y";
  testing::ScopedSettingsPin pin(settings);
  const ZELMDateFormatter formatter;
  EXPECT_EQ(formatter.dateFormat(), "%d.%m.%Y");
  EXPECT_EQ(formatter.defaultObjectValue(), dateWithDateNumber(20080229));
  EXPECT_EQ(formatter.stringForObjectValue(dateWithDateNumber(20071231)), "31.12.2007");
  EXPECT_EQ(formatter.stringForObjectValue(std::nullopt), std::nullopt);
  EXPECT_EQ(ZELMDateFormatter("%Y-%m-%d", true).defaultObjectValue(), dateWithDateNumber(20080229));
}

TEST(ZELMDateFormatter, ReadsTheWholeTextOrGivesTheDefault) {
  testing::ScopedClockPin clock(20080314);
  ZELMDateFormatter formatter("%m/%d/%y", false);
  struct Row {
    const char* text;
    std::int32_t date;  // 20080314 is the default
  };
  const Row rows[] = {
      {"02/29/08", 20080229}, {"2/9/08", 20080209},    {" 12/31/69", 19691231},
      {"01/01/68", 20680101}, {"02/29/07", 20080314},  {"02/30/08", 20080314},
      {"13/01/08", 20080314}, {"12/31/08x", 20080314}, {"12/31", 20080314},
      {"", 20080314},         {"abc", 20080314},       {"12/31/08  ", 20081231},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    const auto date = formatter.getObjectValue(row.text);
    ASSERT_TRUE(date.has_value());
    EXPECT_EQ(dateNumber(*date), row.date);
  }
  formatter.setDefaultObjectValue(std::nullopt);
  EXPECT_EQ(formatter.getObjectValue("abc"), std::nullopt);
  EXPECT_EQ(formatter.getObjectValue("1/2/03"), dateWithDateNumber(20030102));
}

}  // namespace
}  // namespace folvant
