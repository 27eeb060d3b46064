#include "folvant/values/LVCurrency.h"

#include <gtest/gtest.h>

#include <cmath>

#include "folvant/values/LVEditingCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

std::shared_ptr<LVCurrency> Currency(std::string_view code, double rate,
                                     std::string_view symbol = "$", bool precedes = true) {
  return std::make_shared<LVCurrency>(code, "", symbol, precedes, ",", ".", rate, 20080101);
}

TEST(LVCurrency, StoredFormRoundTripsAndKeepsDefaultsForMissingKeys) {
  testing::ScopedClockPin clock(20080314);
  const LVCurrency fresh;
  EXPECT_EQ(fresh.asDictionary(), (plist::Dictionary{{"code", "BXD"},
                                                     {"description", "Brindle Software Dollar"},
                                                     {"symbol", "$"},
                                                     {"symbolPrecedesAmounts", true},
                                                     {"thousandsSeparator", ","},
                                                     {"decimalSeparator", "."},
                                                     {"rate", 1.0},
                                                     {"lastUpdate", 20080314}}));

  const LVCurrency euro("EUR", "Euro", "\xE2\x82\xAC", false, ".", ",", 1.4567, 20071224);
  const plist::Dictionary stored = euro.asDictionary();
  EXPECT_EQ(LVCurrency(&stored).asDictionary(), stored);

  const plist::Dictionary partial{{"code", "CHF"}, {"rate", "0.9"}, {"symbol", 5}};
  const LVCurrency franc(&partial);
  EXPECT_EQ(franc.code(), "CHF");
  EXPECT_EQ(franc.rate(), 0.9);    // numeric text reads as a number
  EXPECT_EQ(franc.symbol(), "$");  // a number is no symbol: the default stays
  EXPECT_EQ(LVCurrency(nullptr).asDictionary(), fresh.asDictionary());
}

TEST(LVCurrency, ConvertsThroughTheBaseCurrency) {
  const auto two = Currency("TWO", 2.0);
  const auto half = Currency("HLF", 0.5);
  const auto zero = Currency("ZRO", 0.0);
  EXPECT_EQ(two->convertAmount(10, half.get()), 40.0);
  EXPECT_EQ(two->convertAmount(10, nullptr), 10.0);
  EXPECT_TRUE(std::isinf(two->convertAmount(10, zero.get())));
}

TEST(LVCurrency, FormatStringAndFormatters) {
  const auto dollar = Currency("USD", 1.0);
  EXPECT_EQ(dollar->formatString(), "$ #,##0.00;$ 0.00;-$ #,##0.00");
  const auto krona = Currency("SEK", 0.15, "kr", false);
  EXPECT_EQ(krona->formatString(), "#,##0.00 kr; 0.00 kr;-#,##0.00 kr");
  EXPECT_EQ(krona->formatter()->stringForNumber(0), " 0.00 kr");
  EXPECT_EQ(krona->formatter()->stringForNumber(-1234.565), "-1,234.57 kr");

  EXPECT_EQ(dollar->formatter()->getObjectValue("$1,234.505"), 1234.51);
  EXPECT_EQ(dollar->formatter()->getObjectValue("abc"), 0.0);
  EXPECT_EQ(dollar->negativeFormatter()->getObjectValue("12.50"), 0.0);
  EXPECT_EQ(dollar->positiveFormatter()->getObjectValue("-$ 12.50"), 0.0);
  EXPECT_EQ(krona->formatter()->getObjectValue("-1,5 kr"), -15.0);  // "," groups: dropped
  EXPECT_EQ(krona->formatter()->getObjectValue("-1.5 kr"), -1.5);
}

TEST(LVCurrency, ChangingTheWrittenFormDiscardsTheCachedFormatters) {
  const auto currency = Currency("USD", 1.0);
  const auto first = currency->formatter();
  EXPECT_EQ(currency->formatter(), first);  // cached

  currency->setDecimalSeparator(",");
  currency->setThousandsSeparator(".");
  const auto second = currency->formatter();
  EXPECT_NE(second, first);
  EXPECT_EQ(second->stringForNumber(1234.5), "$ 1.234,50");
  EXPECT_EQ(first->stringForNumber(1234.5), "$ 1,234.50");  // the old one is unchanged

  const auto negative = currency->negativeFormatter();
  currency->setSymbolPrecedesAmounts(false);
  EXPECT_NE(currency->negativeFormatter(), negative);
  EXPECT_EQ(currency->negativeFormatter()->stringForNumber(-2), "-2,00 $");
  currency->setSymbol(std::nullopt);
  EXPECT_EQ(currency->symbol(), "");
  EXPECT_EQ(currency->positiveFormatter()->stringForNumber(2), "2,00 ");

  // Neither the rate nor the code is part of the written form.
  const auto kept = currency->formatter();
  currency->setRate(3.0);
  currency->setCode("XYZ");
  EXPECT_EQ(currency->formatter(), kept);
}

TEST(LVCurrency, CodesCompareIgnoringCaseAndTheEditorRefusesClashes) {
  const auto lower = Currency("eur", 1.0);
  const auto upper = Currency("EUR", 1.0);
  const auto other = Currency("USD", 1.0);
  EXPECT_EQ(lower->codeIsGreaterThan(*upper), 0);
  EXPECT_EQ(lower->codeIsGreaterThan(*other), -1);
  EXPECT_EQ(other->codeIsGreaterThan(*upper), 1);

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
