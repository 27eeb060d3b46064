#include "folvant/values/ZELMNumberFormatter.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

ZELMNumberFormatter Make(std::string_view pattern, std::string_view thousands = ",",
                         std::string_view decimal = ".") {
  ZELMNumberFormatter formatter;
  formatter.setFormat(pattern);
  formatter.setThousandSeparator(thousands);
  formatter.setDecimalSeparator(decimal);
  return formatter;
}

TEST(ZELMNumberFormatter, PrintsEachSectionOfThePattern) {
  struct Row {
    const char* pattern;
    const char* thousands;
    const char* decimal;
    double value;
    const char* text;
  };
  const Row rows[] = {
      {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", 1234567.891, "$ 1,234,567.89"},
      {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", -1234.5, "-$ 1,234.50"},
      {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", -0.001, "-$ 0.00"},  // sign of the value
      {"#,##0.00 kr; 0.00 kr;-#,##0.00 kr", " ", ",", 0, " 0,00 kr"},
      {"#,##0.00 kr; 0.00 kr;-#,##0.00 kr", ".", ",", -9876.545, "-9.876,55 kr"},
      {"###0.00", ",", ".", 1234.5, "1234.50"},
      {"###0.00", ",", ".", -1.005, "-1.01"},  // half away from zero on the decimal form
      {"0.00000; 0.00000;-0.00000", ",", ".", 1.0 / 3, "0.33333"},
      {"0.00000; 0.00000;-0.00000", ",", ".", 0, " 0.00000"},
      {"#,##0.##", ",", ".", 1234.5, "1,234.5"},
      {"#,##0.##", ",", ".", -0.999, "-1"},
      {"#,##0.00;(#,##0.00)", ",", ".", -42, "(42.00)"},
      {"#,###0", "'", ".", 123456789, "1'2345'6789"},
      {"Rs. #,##0.00", ",", ".", 5, "Rs. 5.00"},
      {"#.##", ",", ".", 0.5, ".5"},
      {"#.##", ",", ".", 0, "0"},
      {"###0.00", ",", ".", std::numeric_limits<double>::quiet_NaN(), "NaN"},
      {"###0.00", ",", ".", -std::numeric_limits<double>::infinity(), "-Infinity"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.pattern) + " " + std::to_string(row.value));
    EXPECT_EQ(Make(row.pattern, row.thousands, row.decimal).stringForNumber(row.value), row.text);
  }
}

TEST(ZELMNumberFormatter, ReadsTextOrFallsBackToTheDefault) {
  struct Row {
    std::string text;
    std::optional<double> value;
  };
  ZELMNumberFormatter formatter = Make("$ #,##0.00;$ 0.00;-$ #,##0.00");
  formatter.setCurrencySymbol("$");
  formatter.setDefaultObjectValue(7.0);
  const Row rows[] = {
      {"$1,234.50", 1234.5},
      {"  -$ 12.25 ", -12.25},
      {"-12.25", -12.25},
      {"$-12.25", -12.25},  // the symbol is removed first, leaving a bare signed number
      {"1,2,3,4", 1234.0},  // every separator character goes before reading
      {".5", 0.5},
      {"-0", 0.0},
      {"abc", 7.0},
      {"", 7.0},
      {"$", 7.0},
      {"1.2.3", 7.0},
      {"1e5", 7.0},
      {"--5", 7.0},
      {"1" + std::string(400, '0'), 7.0},  // beyond a double
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(formatter.getObjectValue(row.text), row.value);
  }
}

TEST(ZELMNumberFormatter, RemovesSeparatorCharactersAndSymbolIgnoringCase) {
  ZELMNumberFormatter formatter = Make("#,##0.00 EUR;-#,##0.00 EUR", "\xC2\xA0", ",");
  formatter.setCurrencySymbol("eur");
  EXPECT_EQ(formatter.getObjectValue("1\xC2\xA0"
                                     "234,5 Eur"),
            1234.5);
  EXPECT_EQ(formatter.getObjectValue("-2,5 EUR"), -2.5);
  EXPECT_EQ(formatter.getObjectValue("EUR-2,5eur"), -2.5);
  // The base reading alone accepts the pattern's literal text and separators.
  EXPECT_EQ(formatter.numberFromString("-1\xC2\xA0"
                                       "234,50 EUR"),
            -1234.5);
  EXPECT_EQ(formatter.numberFromString("1,234.50"), std::nullopt);

  // Each character of a separator is removed on its own.
  ZELMNumberFormatter two = Make("#,##0.00", "\xC2\xA0.", ",");
  EXPECT_EQ(two.getObjectValue("1.234\xC2\xA0"
                               "567,891"),
            1234567.891);
}

TEST(ZELMNumberFormatter, LimitsRoundingAndDefaults) {
  ZELMNumberFormatter formatter = Make("###0.00");
  EXPECT_EQ(formatter.defaultObjectValue(), std::nullopt);
  EXPECT_EQ(formatter.getObjectValue("abc"), std::nullopt);
  formatter.setMinimum(-10.0);
  EXPECT_EQ(formatter.defaultObjectValue(), -10.0);  // no default yet: the minimum
  formatter.setDefaultObjectValue(3.0);
  formatter.setDefaultObjectValue(std::nullopt);  // ignored
  EXPECT_EQ(formatter.defaultObjectValue(), 3.0);

  formatter.setMaximum(0.0);
  EXPECT_EQ(formatter.getObjectValue("-10"), -10.0);
  EXPECT_EQ(formatter.getObjectValue("-10.01"), 3.0);
  EXPECT_EQ(formatter.getObjectValue("0.01"), 3.0);
  EXPECT_EQ(formatter.getObjectValue("-1.23456"), -1.23456);
  formatter.setRoundingScale(2);
  EXPECT_EQ(formatter.getObjectValue("-1.005"), -1.01);
  EXPECT_EQ(formatter.getObjectValue("-10.004"), -10.0);  // rounded, then within the limit
}

TEST(ZELMNumberFormatter, EditingAndAttributedText) {
  ZELMNumberFormatter formatter = Make("#,##0.00");
  formatter.setDefaultObjectValue(0.0);
  const plist::Dictionary bold{{"font", "Bold"}};
  EXPECT_EQ(formatter.stringForObjectValue(1234.5), "1,234.50");
  EXPECT_EQ(formatter.stringForObjectValue(std::monostate{}), std::nullopt);
  EXPECT_EQ(formatter.stringForObjectValue(AttributedText{"12", bold}), std::nullopt);
  EXPECT_EQ(formatter.editingStringForObjectValue(AttributedText{"1,234.5", bold}), "1,234.50");
  EXPECT_EQ(formatter.editingStringForObjectValue(AttributedText{"junk", bold}), "0.00");
  EXPECT_EQ(formatter.attributedStringForObjectValue(-2.5, bold), (AttributedText{"-2.50", bold}));
  EXPECT_EQ(formatter.attributedStringForObjectValue(std::monostate{}, bold), std::nullopt);
}

TEST(ZELMNumberFormatter, UsesTheUserSeparatorsByDefault) {
  platform::UserSettings settings;
  settings.thousandsSeparator = ".";
  settings.decimalSeparator = ",";
  testing::ScopedSettingsPin pin(settings);
  ZELMNumberFormatter formatter;
  EXPECT_EQ(formatter.stringForNumber(-1234567.5), "-1.234.567,5");
  EXPECT_EQ(formatter.getObjectValue("1.234,25"), 1234.25);
}

}  // namespace
}  // namespace folvant
