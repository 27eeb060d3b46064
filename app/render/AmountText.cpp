#include "app/render/AmountText.h"

#include "folvant/values/NumberPattern.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"

namespace folvant::render {
namespace {

// Decimals the integer path keeps: 1e15 in thousandths still fits in 64 bits.
constexpr int kMaxDecimals = 3;
constexpr double kPowersOfTen[] = {1.0, 10.0, 100.0, 1000.0};
// Digits of the largest count of units, 1e18.
constexpr std::size_t kMaxUnitDigits = 19;

// The magnitude (0 to kLargestAmount) in units of 10^-decimals, rounded half away from zero
// from its shortest decimal form.
std::uint64_t RoundedUnits(double magnitude, int decimals) {
  // Fast path. The scaled double is off from the scaled shortest decimal form by at most
  // 2.2e-16 of its size (half an ulp for the shortest form, half an ulp for the product),
  // under 2e-6 below 2^33. Unless it lies that close to a half unit, both round alike.
  const double scaled = magnitude * kPowersOfTen[decimals];
  if (scaled < 0x1p33) {
    const double whole = std::floor(scaled);
    const double fraction = scaled - whole;
    if (std::fabs(fraction - 0.5) > 1e-5) {
      return static_cast<std::uint64_t>(whole) + (fraction > 0.5 ? 1 : 0);
    }
  }
  // Near a half unit, or too large for the fast path: round the shortest form's digits.
  char text[32];
  const auto result =
      std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
  const char* const end = result.ptr;
  const char* e = std::find(static_cast<const char*>(text), end, 'e');
  char digits[20];
  int count = 0;
  for (const char* p = text; p < e; ++p) {
    if (*p != '.' && count < 20) digits[count++] = *p;
  }
  int exponent = 0;
  const char* exponent_start = e + 1;
  if (exponent_start < end && *exponent_start == '+') ++exponent_start;
  std::from_chars(exponent_start, end, exponent);
  // |magnitude| is d1.d2d3… × 10^exponent: the digits down to 10^-decimals are the first `keep`.
  const int keep = exponent + 1 + decimals;
  if (keep < 0) return 0;
  std::uint64_t units = 0;
  for (int i = 0; i < std::min(keep, count); ++i) {
    units = units * 10 + static_cast<std::uint64_t>(digits[i] - '0');
  }
  for (int i = count; i < keep; ++i) units *= 10;
  if (keep < count && digits[keep] >= '5') ++units;
  return units;
}

// Writes `units` in decimal, at least one digit; returns the end.
char* WriteDigits(std::uint64_t units, char* out) {
  return std::to_chars(out, out + kMaxUnitDigits + 1, units).ptr;
}

char* Copy(std::string_view text, char* out) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

}  // namespace

AmountWriter::AmountWriter(const LVCurrency& currency)
    : thousandsSeparator_(currency.thousandsSeparator()),
      decimalSeparator_(currency.decimalSeparator()) {
  sections_ = ParseNumberPattern(currency.formatString());
  std::size_t longest = std::string_view(kNoAmount).size();
  bool fits = true;
  for (const NumberSection& section : sections_) {
    fits = fits && section.maxFractionDigits <= kMaxDecimals;
    const std::size_t integer =
        std::max<std::size_t>(kMaxUnitDigits, static_cast<std::size_t>(section.minIntegerDigits));
    longest = std::max(longest, section.prefix.size() + section.suffix.size() +
                                    integer * (1 + thousandsSeparator_.size()) +
                                    decimalSeparator_.size() +
                                    static_cast<std::size_t>(section.maxFractionDigits));
  }
  maxSize_ = longest;
  if (!fits) fallback_ = currency.formatter();
}


std::size_t AmountWriter::Write(double amount, char* buffer) const {
  if (!std::isfinite(amount) || std::fabs(amount) > kLargestAmount) {
    return static_cast<std::size_t>(Copy(kNoAmount, buffer) - buffer);
  }
  if (fallback_) {
    const std::string text = fallback_->stringForNumber(amount);
    const std::size_t size = std::min(text.size(), maxSize_);
    std::memcpy(buffer, text.data(), size);
    return size;
  }
  const NumberSection& section = amount < 0 ? sections_[2] : (amount == 0 ? sections_[1] : sections_[0]);
  const auto decimals = static_cast<std::size_t>(section.maxFractionDigits);

  // The rounded digits, with at least one integer digit ahead of the decimals.
  char digits[kMaxUnitDigits + 1 + kMaxDecimals];
  std::size_t size = static_cast<std::size_t>(
      WriteDigits(RoundedUnits(std::fabs(amount), section.maxFractionDigits), digits) - digits);
  if (size < decimals + 1) {
    const std::size_t zeros = decimals + 1 - size;
    std::memmove(digits + zeros, digits, size);
    std::memset(digits, '0', zeros);
    size += zeros;
  }
  std::string_view integer(digits, size - decimals);
  std::string_view fraction(digits + size - decimals, decimals);
  while (fraction.size() > static_cast<std::size_t>(section.minFractionDigits) &&
         fraction.back() == '0') {
    fraction.remove_suffix(1);
  }
  while (!integer.empty() && integer.front() == '0') integer.remove_prefix(1);
  std::size_t leading_zeros = 0;
  if (integer.size() < static_cast<std::size_t>(section.minIntegerDigits)) {
    leading_zeros = static_cast<std::size_t>(section.minIntegerDigits) - integer.size();
  }
  if (integer.empty() && fraction.empty()) leading_zeros = 1;

  char* out = Copy(section.prefix, buffer);
  const std::size_t length = leading_zeros + integer.size();
  for (std::size_t i = 0; i < length; ++i) {
    if (section.groupingSize > 0 && i > 0 && (length - i) % static_cast<std::size_t>(section.groupingSize) == 0) {
      out = Copy(thousandsSeparator_, out);
    }
    *out++ = i < leading_zeros ? '0' : integer[i - leading_zeros];
  }
  if (!fraction.empty()) {
    out = Copy(decimalSeparator_, out);
    out = Copy(fraction, out);
  }
  out = Copy(section.suffix, out);
  return static_cast<std::size_t>(out - buffer);
}

void AmountWriter::Append(std::string& out, double amount) const {
  const std::size_t at = out.size();
  out.resize(at + maxSize_);
  out.resize(at + Write(amount, out.data() + at));
}

std::string AmountWriter::Text(double amount) const {
  std::string text;
  Append(text, amount);
  return text;
}

std::size_t WritePlainAmount(double amount, char* buffer) {
  if (!std::isfinite(amount) || std::fabs(amount) > kLargestAmount) return 0;
  const std::uint64_t cents = RoundedUnits(std::fabs(amount), 2);
  char* out = buffer;
  if (amount < 0 && cents != 0) *out++ = '-';
  out = WriteDigits(cents / 100, out);
  *out++ = '.';
  *out++ = static_cast<char>('0' + cents % 100 / 10);
  *out++ = static_cast<char>('0' + cents % 10);
  return static_cast<std::size_t>(out - buffer);
}

std::string PlainAmount(double amount) {
  char buffer[kPlainAmountSize];
  const std::size_t size = WritePlainAmount(amount, buffer);
  return size == 0 ? std::string(kNoAmount) : std::string(buffer, size);
}

}  // namespace folvant::render
