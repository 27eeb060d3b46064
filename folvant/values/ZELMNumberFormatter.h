#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "folvant/values/NumberPattern.h"
#include <string_view>
#include <variant>
#include <vector>

#include "folvant/platform/plist/Value.h"
#include "folvant/values/AttributedText.h"

namespace folvant {

// What an editing field hands its formatter: nothing, a number, or styled text.
using FormatterValue = std::variant<std::monostate, double, AttributedText>;

// The number formatter of the amount and rate fields. It prints and reads numbers with a
// pattern of up to three sections "positive;zero;negative" ("positive;negative" with two; with
// one, negatives print as "-" and the positive section, and zero as the positive section).
// A section is literal text around one number placeholder made of 0 # , and . :
//   "$ #,##0.00"  literal "$ ", groups of 3, at least one integer digit, exactly 2 decimals;
//   "###0.00"     no grouping;  "0.00000" five decimals;  "#,##0.##" up to 2 decimals.
// The placeholder is the first run of those characters holding a 0 or #; every other
// character is literal (so a symbol such as "Rs." stays text). In the printed number ","
// and "." stand for the formatter's own thousands and decimal separators.
//
// Printing rounds half away from zero at the pattern's decimals, from the shortest decimal
// form of the double (1.005 prints "1.01"); the section follows the sign of the value, so
// -0.001 prints in the negative section. NaN prints "NaN", infinities "Infinity"/"-Infinity".
//
// Reading (numberFromString) accepts, after trimming blanks, the literal text of the negative
// section around a number (a negative value), that of the positive or zero section, or a bare
// number with an optional sign. Literal text is compared without blanks and without the
// currency symbol, so "-$ 5", "-$5" and "-5" all read -5 under "$ #,##0.00;-$ #,##0.00". The
// number is ASCII digits with thousands separators in the integer part and one decimal
// separator; no exponent. When a rounding scale is set the value is rounded there (half away
// from zero). A value below the minimum or above the maximum is refused.
//
// A value type; currencies share their cached formatters through std::shared_ptr.
class ZELMNumberFormatter {
 public:
  // Pattern "#,##0.##", the user's separators, no symbol, no limits, no rounding scale, and no
  // default value.
  ZELMNumberFormatter();

  const std::string& format() const { return format_; }
  void setFormat(std::string_view pattern);
  const std::string& thousandSeparator() const { return thousandSeparator_; }
  void setThousandSeparator(std::string_view separator);
  const std::string& decimalSeparator() const { return decimalSeparator_; }
  void setDecimalSeparator(std::string_view separator);
  const std::string& currencySymbol() const { return currencySymbol_; }
  void setCurrencySymbol(std::string_view symbol);
  const std::optional<double>& minimum() const { return minimum_; }
  void setMinimum(std::optional<double> minimum) { minimum_ = minimum; }
  const std::optional<double>& maximum() const { return maximum_; }
  void setMaximum(std::optional<double> maximum) { maximum_ = maximum; }
  // Decimals kept by reading; nullopt keeps every digit read.
  const std::optional<int>& roundingScale() const { return roundingScale_; }
  void setRoundingScale(std::optional<int> scale) { roundingScale_ = scale; }

  // The stored default, else the minimum (which may be empty too).
  std::optional<double> defaultObjectValue() const;
  // Stores the value; nullopt is ignored and the earlier default stays.
  void setDefaultObjectValue(std::optional<double> value);

  // The number a field's text stands for. Removes every character of the thousands separator
  // and every occurrence of the currency symbol (ignoring case), then reads the rest; text
  // that does not read as an acceptable number gives defaultObjectValue(). Never an error:
  // getObjectValue("abc") is the default, getObjectValue("$1,234.50") is 1234.5 with symbol
  // "$" and separator ",".
  std::optional<double> getObjectValue(std::string_view text) const;

  // The pattern's reading of a text, without the separator and symbol removal and without the
  // default: nullopt when it does not read.
  std::optional<double> numberFromString(std::string_view text) const;

  // The printed text of a number; nullopt for any other value.
  std::optional<std::string> stringForObjectValue(const FormatterValue& value) const;
  std::string stringForNumber(double value) const;

  // The text shown while editing: styled text is first read as a number (or the default),
  // then printed as stringForObjectValue prints.
  std::optional<std::string> editingStringForObjectValue(const FormatterValue& value) const;

  // The printed text with the given attributes; nullopt for an empty value or no text.
  std::optional<AttributedText> attributedStringForObjectValue(
      const FormatterValue& value, const plist::Dictionary& attributes) const;

 private:
  using Section = NumberSection;

  void ParsePattern();
  std::string Print(const Section& section, double magnitude) const;
  std::optional<double> ReadDigits(std::string_view text, bool allow_sign) const;
  std::string WithoutSymbol(std::string_view text) const;

  std::string format_;
  std::string thousandSeparator_;
  std::string decimalSeparator_;
  std::string currencySymbol_;
  std::optional<double> minimum_;
  std::optional<double> maximum_;
  std::optional<int> roundingScale_;
  std::optional<double> defaultObjectValue_;

  // The pattern's sections: positive, zero, negative (always three once parsed).
  std::vector<Section> sections_;
};

}  // namespace folvant
