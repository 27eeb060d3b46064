#include "folvant/values/AmountInput.h"

#include <gtest/gtest.h>

#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

struct Case {
  const char* text;
  std::optional<double> value;
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    std::string problem;
    EXPECT_EQ(ReadAmount(c.text, &problem), c.value) << '"' << c.text << '"';
    EXPECT_EQ(problem.empty(), c.value.has_value()) << '"' << c.text << "\": " << problem;
  }
}

TEST(ReadAmount, ReadsWhatPeopleTypeWithTheirSeparators) {
  {
    platform::UserSettings us;
    us.decimalSeparator = ".";
    us.thousandsSeparator = ",";
    testing::ScopedSettingsPin pin(us);
    Check({{"12.50", 12.5},
           {" -1,234.5 ", -1234.5},
           {"+1234", 1234.0},
           {".75", 0.75},
           {"-0", 0.0},
           {"1,234,567.891", 1234567.891},
           {"999999999999999", 999999999999999.0},
           {"12,50", std::nullopt},  // a decimal comma where "." is the mark
           {"1,23,456", std::nullopt},
           {"1234,567", std::nullopt},
           {",123", std::nullopt},
           {"", std::nullopt},
           {"-", std::nullopt},
           {".", std::nullopt},
           {"abc", std::nullopt},
           {"12.5.0", std::nullopt},
           {"nan", std::nullopt},
           {"inf", std::nullopt},
           {"1e300", std::nullopt},
           {"1e3", std::nullopt},
           {"1000000000000001", std::nullopt},
           {"$12", std::nullopt}});
  }
  {
    platform::UserSettings eu;
    eu.decimalSeparator = ",";
    eu.thousandsSeparator = ".";
    testing::ScopedSettingsPin pin(eu);
    Check({{"12,50", 12.5}, {"-1.234,56", -1234.56}, {"1.234", 1234.0}, {"12.50", std::nullopt}});
  }
}

}  // namespace
}  // namespace folvant
