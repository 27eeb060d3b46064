#include "folvant/values/LVCurrency.h"

#include <gtest/gtest.h>

#include <cmath>

#include "folvant/values/LVEditingCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

std::shared_ptr<LVCurrency> Currency(std::string_view code, double rate = 1.0,
                                     std::string_view symbol = "$", bool precedes = true) {
  return std::make_shared<LVCurrency>(code, "", symbol, precedes, ",", ".", rate, 20080101);
}

TEST(LVCurrency, StoredFormRoundTripsAndKeepsDefaultsForMissingKeys) {
  testing::ScopedClockPin clock(20080314);
  plist::Dictionary defaults{{"code", "BXD"},
                             {"description", "Brindle Software Dollar"},
                             {"symbol", "$"},
                             {"symbolPrecedesAmounts", true},
                             {"thousandsSeparator", ","},
                             {"decimalSeparator", "."},
                             {"rate", 1.0},
                             {"lastUpdate", 20080314}};
  EXPECT_EQ(LVCurrency().asDictionary(), defaults);
  EXPECT_EQ(LVCurrency(nullptr).asDictionary(), defaults);

  const LVCurrency euro("EUR", "Euro", "\xE2\x82\xAC", false, ".", ",", 1.4567, 20071224);
  const plist::Dictionary stored = euro.asDictionary();
  EXPECT_EQ(LVCurrency(&stored).asDictionary(), stored);

  // Numeric text reads as a number; a number is no symbol, so the default stays.
  const plist::Dictionary partial{{"code", "CHF"}, {"rate", "0.9"}, {"symbol", 5}};
  defaults.set("code", "CHF");
  defaults.set("rate", 0.9);
  EXPECT_EQ(LVCurrency(&partial).asDictionary(), defaults);
}

TEST(LVCurrency, ConvertsThroughTheBaseCurrency) {
  const auto two = Currency("TWO", 2.0);
  EXPECT_EQ(two->convertAmount(10, Currency("HLF", 0.5).get()), 40.0);
  EXPECT_EQ(two->convertAmount(10, nullptr), 10.0);
  EXPECT_TRUE(std::isinf(two->convertAmount(10, Currency("ZRO", 0.0).get())));
}

TEST(LVCurrency, FormattersFollowTheSymbolAndReadWholeCents) {
  const auto dollar = Currency("USD");
  EXPECT_EQ(dollar->formatString(), "$ #,##0.00;$ 0.00;-$ #,##0.00");
  const auto krona = Currency("SEK", 0.15, "kr", false);
  EXPECT_EQ(krona->formatString(), "#,##0.00 kr; 0.00 kr;-#,##0.00 kr");
  EXPECT_EQ(krona->formatter()->stringForNumber(-1234.565), "-1,234.57 kr");
  // Unreadable text and amounts of the wrong sign read as zero.
  EXPECT_EQ(dollar->formatter()->getObjectValue("$1,234.505"), 1234.51);
  EXPECT_EQ(dollar->formatter()->getObjectValue("abc"), 0.0);
  EXPECT_EQ(dollar->negativeFormatter()->getObjectValue("12.50"), 0.0);
  EXPECT_EQ(dollar->positiveFormatter()->getObjectValue("-$ 12.50"), 0.0);
}

TEST(LVCurrency, ChangingTheWrittenFormDiscardsTheCachedFormatters) {
  const auto currency = Currency("USD");
  const auto first = currency->formatter();
  EXPECT_EQ(currency->formatter(), first);  // cached
  currency->setThousandsSeparator(".");
  EXPECT_EQ(currency->formatter()->stringForNumber(1234.5), "$ 1.234.50");
  EXPECT_EQ(first->stringForNumber(1234.5), "$ 1,234.50");  // the old one is unchanged
  currency->setDecimalSeparator(",");
  EXPECT_EQ(currency->negativeFormatter()->stringForNumber(-1234.5), "-$ 1.234,50");
  currency->setSymbolPrecedesAmounts(false);
  EXPECT_EQ(currency->negativeFormatter()->stringForNumber(-2), "-2,00 $");
  currency->setSymbol(std::nullopt);
  EXPECT_EQ(currency->negativeFormatter()->stringForNumber(-2), "-2,00 ");
  // Neither the rate nor the code is part of the written form.
  const auto kept = currency->formatter();
  currency->setRate(3.0);
  currency->setCode("XYZ");
  EXPECT_EQ(currency->formatter(), kept);
}

TEST(LVCurrency, CodesCompareIgnoringCaseAndTheEditorRefusesClashes) {
  const auto lower = Currency("eur"), other = Currency("USD");
  EXPECT_EQ(lower->codeIsGreaterThan(*Currency("EUR")), 0);
  EXPECT_EQ(lower->codeIsGreaterThan(*other), -1);
  EXPECT_EQ(other->codeIsGreaterThan(*lower), 1);

  const CurrencyCodeProblem length{"The entered Currency code is not the correct length.",
                                   "Please enter a 3-character code for this Currency.", "OK"};
  const CurrencyCodeProblem in_use{"The entered Currency code is already in use.",
                                   "Please enter another code for this Currency.", "OK"};
  const std::vector<std::shared_ptr<LVCurrency>> list = {lower, other};
  EXPECT_EQ(ValidateCurrencyCode("EUR", list, nullptr), in_use);
  EXPECT_EQ(ValidateCurrencyCode("EUR", list, lower.get()), std::nullopt);  // itself
  EXPECT_EQ(ValidateCurrencyCode("usd", list, lower.get()), in_use);
  EXPECT_EQ(ValidateCurrencyCode("EU", list, nullptr), length);
  EXPECT_EQ(ValidateCurrencyCode("\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC", list, nullptr),
            std::nullopt);  // three characters, nine bytes
}

}  // namespace
}  // namespace folvant
