#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "folvant/values/AmountInput.h"
#include "folvant/values/NumberPattern.h"

namespace folvant {
class LVCurrency;
class ZELMNumberFormatter;
}  // namespace folvant

namespace folvant::render {

// The largest amount written as a number; anything beyond it, NaN and the infinities are
// written as kNoAmount. A register never holds such amounts, and past 1e15 a double no longer
// has cents to show, so a marker says plainly that there is nothing sensible to print.
using folvant::kLargestAmount;
inline constexpr const char* kNoAmount = "n/a";

// Writes amounts in a currency's form ("$ 1,234.50", "-1.234,50 €") with the very text the
// currency's formatter prints, but without allocating: built once per currency, then one call
// per amount. The amount is rounded half away from zero from its shortest decimal form, so
// 1.005 is written "1.01"; its sign chooses the section (-0.001 is "-$ 0.00", -0.0 is zero).
class AmountWriter {
 public:
  explicit AmountWriter(const LVCurrency& currency);

  // The longest text Write produces: a buffer of this size is always enough.
  std::size_t maxSize() const { return maxSize_; }
  // Writes the text into `buffer` (at least maxSize() bytes) and returns its length.
  std::size_t Write(double amount, char* buffer) const;
  void Append(std::string& out, double amount) const;
  std::string Text(double amount) const;

 private:
  std::array<NumberSection, 3> sections_;  // positive, zero, negative
  std::string thousandsSeparator_;
  std::string decimalSeparator_;
  // A symbol made of pattern characters can ask for more decimals than the integer path
  // keeps; such a currency writes through its formatter instead.
  std::shared_ptr<ZELMNumberFormatter> fallback_;
  std::size_t maxSize_ = 0;
};

// Locale-free text of an amount with two decimals ("-1234.50"), rounded as AmountWriter
// rounds; a zero has no sign. Returns the length written into `buffer` (kPlainAmountSize
// bytes), or 0 for an amount beyond kLargestAmount or not finite.
inline constexpr std::size_t kPlainAmountSize = 24;
std::size_t WritePlainAmount(double amount, char* buffer);
// The same as a string; kNoAmount when WritePlainAmount writes nothing.
std::string PlainAmount(double amount);

}  // namespace folvant::render
