#include "folvant/values/ZELMNumberFormatter.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

// `separators` holds the thousands separator, then the decimal separator.
ZELMNumberFormatter Make(std::string_view pattern, std::string_view separators = ",.") {
  ZELMNumberFormatter formatter;
  formatter.setFormat(pattern);
  formatter.setThousandSeparator(separators.substr(0, separators.size() - 1));
  formatter.setDecimalSeparator(separators.substr(separators.size() - 1));
  return formatter;
}

TEST(ZELMNumberFormatter, PrintsEachSectionOfThePattern) {
  constexpr const char* kDollar = "$ #,##0.00;$ 0.00;-$ #,##0.00";
  constexpr const char* kKrona = "#,##0.00 kr; 0.00 kr;-#,##0.00 kr";
  const std::tuple<const char*, const char*, double, const char*> rows[] = {
      {kDollar, ",.", 1234567.891, "$ 1,234,567.89"},
      {kDollar, ",.", -0.001, "-$ 0.00"},  // the section follows the sign of the value
      {kKrona, " ,", 0, " 0,00 kr"},
      {kKrona, ".,", -9876.545, "-9.876,55 kr"},
      {"###0.00", ",.", 1234.5, "1234.50"},
      {"###0.00", ",.", -1.005, "-1.01"},  // half away from zero on the decimal form
      {"0.00000", ",.", 1.0 / 3, "0.33333"},
      {"#,##0.##", ",.", 1234.5, "1,234.5"},
      {"#,##0.##", ",.", -0.999, "-1"},
      {"#,##0.00;(#,##0.00)", ",.", -42, "(42.00)"},
      {"#,###0", "'.", 123456789, "1'2345'6789"},
      {"Rs. #,##0.00", ",.", 5, "Rs. 5.00"},
      {"#.##", ",.", 0.5, ".5"},
      {"#.##", ",.", 0, "0"},
      {"###0.00", ",.", std::numeric_limits<double>::quiet_NaN(), "NaN"},
      {"###0.00", ",.", -std::numeric_limits<double>::infinity(), "-Infinity"},
  };
  for (const auto& [pattern, separators, value, text] : rows) {
    EXPECT_EQ(Make(pattern, separators).stringForNumber(value), text) << pattern << " " << value;
  }
}

TEST(ZELMNumberFormatter, ReadsTextOrFallsBackToTheDefault) {
  ZELMNumberFormatter formatter = Make("$ #,##0.00;$ 0.00;-$ #,##0.00");
  formatter.setCurrencySymbol("$");
  formatter.setDefaultObjectValue(7.0);
  // "$-12.25" is a bare signed number once the symbol is gone; every separator character
  // goes before reading ("1,2,3,4").
  const std::pair<const char*, double> rows[] = {
      {"$1,234.50", 1234.5}, {" -$ 12.25 ", -12.25}, {"-12.25", -12.25},
      {"$-12.25", -12.25},   {"1,2,3,4", 1234.0},    {".5", 0.5},
      {"-0", 0.0},           {"abc", 7.0},           {"", 7.0},
      {"1.2.3", 7.0},        {"1e5", 7.0},           {"--5", 7.0}};
  for (const auto& [text, value] : rows) EXPECT_EQ(formatter.getObjectValue(text), value) << text;
  EXPECT_EQ(formatter.getObjectValue("1" + std::string(400, '0')), 7.0);  // beyond a double
}

TEST(ZELMNumberFormatter, RemovesSeparatorCharactersAndSymbolIgnoringCase) {
  const std::string nbsp = "\xC2\xA0";
  ZELMNumberFormatter formatter = Make("#,##0.00 EUR;-#,##0.00 EUR", nbsp + ",");
  formatter.setCurrencySymbol("eur");
  EXPECT_EQ(formatter.getObjectValue("1" + nbsp + "234,5 Eur"), 1234.5);
  EXPECT_EQ(formatter.getObjectValue("EUR-2,5eur"), -2.5);
  // The base reading alone accepts the pattern's literal text and separators.
  EXPECT_EQ(formatter.numberFromString("-1" + nbsp + "234,50 EUR"), -1234.5);
  EXPECT_EQ(formatter.numberFromString("1,234.50"), std::nullopt);
  // Each character of a separator is removed on its own.
  EXPECT_EQ(Make("#,##0.00", nbsp + ".,").getObjectValue("1.234" + nbsp + "567,891"), 1234567.891);
}

TEST(ZELMNumberFormatter, LimitsRoundingAndDefaults) {
  ZELMNumberFormatter formatter = Make("###0.00");
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
  EXPECT_EQ(formatter.stringForObjectValue(AttributedText{"12", bold}), std::nullopt);
  EXPECT_EQ(formatter.editingStringForObjectValue(AttributedText{"1,234.5", bold}), "1,234.50");
  EXPECT_EQ(formatter.editingStringForObjectValue(AttributedText{"junk", bold}), "0.00");
  EXPECT_EQ(formatter.attributedStringForObjectValue(-2.5, bold), (AttributedText{"-2.50", bold}));
  EXPECT_EQ(formatter.attributedStringForObjectValue(std::monostate{}, bold), std::nullopt);
}

TEST(ZELMNumberFormatter, UsesTheUserSeparatorsByDefault) {
  testing::ScopedSettingsPin pin({.thousandsSeparator = ".", .decimalSeparator = ","});
  ZELMNumberFormatter formatter;
  EXPECT_EQ(formatter.stringForNumber(-1234567.5), "-1.234.567,5");
  EXPECT_EQ(formatter.getObjectValue("1.234,25"), 1234.25);
}

}  // namespace
}  // namespace folvant
