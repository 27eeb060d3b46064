#include "folvant/values/ZELMNumberFormatter.h"

#include "folvant/values/NumberPattern.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "folvant/platform/Text.h"
#include "folvant/platform/UserSettings.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (!IsBlank(c)) out.push_back(c);
  }
  return out;
}

// Byte length of the UTF-8 sequence that starts with `lead` (1 for a stray byte).
std::size_t SequenceLength(unsigned char lead) {
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  return 1;
}

// The text split into characters (UTF-8 sequences).
std::vector<std::string_view> Characters(std::string_view text) {
  std::vector<std::string_view> out;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t n =
        std::min(SequenceLength(static_cast<unsigned char>(text[i])), text.size() - i);
    out.push_back(text.substr(i, n));
    i += n;
  }
  return out;
}

// Reads a decimal number made by the caller ("123.45") with the C locale's rules, which is
// what from_chars always uses.
std::optional<double> ReadPlainDecimal(const std::string& text) {
  double value = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

ZELMNumberFormatter::ZELMNumberFormatter()
    : thousandSeparator_(platform::CurrentUserSettings().thousandsSeparator),
      decimalSeparator_(platform::CurrentUserSettings().decimalSeparator) {
  setFormat("#,##0.##");
}

void ZELMNumberFormatter::setFormat(std::string_view pattern) {
  format_ = pattern;
  ParsePattern();
}

void ZELMNumberFormatter::setThousandSeparator(std::string_view separator) {
  thousandSeparator_ = separator;
}

void ZELMNumberFormatter::setDecimalSeparator(std::string_view separator) {
  decimalSeparator_ = separator;
}

void ZELMNumberFormatter::setCurrencySymbol(std::string_view symbol) { currencySymbol_ = symbol; }

void ZELMNumberFormatter::ParsePattern() {
  const std::array<NumberSection, 3> sections = ParseNumberPattern(format_);
  sections_.assign(sections.begin(), sections.end());
}

std::string ZELMNumberFormatter::Print(const Section& section, double magnitude) const {
  const auto max_fraction = static_cast<std::size_t>(section.maxFractionDigits);
  std::string digits = RoundedDecimalDigits(magnitude, section.maxFractionDigits);
  if (digits.size() < max_fraction + 1) digits.insert(0, max_fraction + 1 - digits.size(), '0');
  std::string integer = digits.substr(0, digits.size() - max_fraction);
  std::string fraction = digits.substr(digits.size() - max_fraction);
  while (fraction.size() > static_cast<std::size_t>(section.minFractionDigits) &&
         fraction.back() == '0') {
    fraction.pop_back();
  }
  const std::size_t first = integer.find_first_not_of('0');
  integer.erase(0, first == std::string::npos ? integer.size() : first);
  if (integer.size() < static_cast<std::size_t>(section.minIntegerDigits)) {
    integer.insert(0, static_cast<std::size_t>(section.minIntegerDigits) - integer.size(), '0');
  }
  if (integer.empty() && fraction.empty()) integer = "0";

  std::string text = section.prefix;
  if (section.groupingSize > 0) {
    const auto group = static_cast<std::size_t>(section.groupingSize);
    for (std::size_t i = 0; i < integer.size(); ++i) {
      if (i > 0 && (integer.size() - i) % group == 0) text += thousandSeparator_;
      text.push_back(integer[i]);
    }
  } else {
    text += integer;
  }
  if (!fraction.empty()) {
    text += decimalSeparator_;
    text += fraction;
  }
  text += section.suffix;
  return text;
}

std::string ZELMNumberFormatter::stringForNumber(double value) const {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  const Section& section = value < 0 ? sections_[2] : (value == 0 ? sections_[1] : sections_[0]);
  return Print(section, std::fabs(value));
}

std::string ZELMNumberFormatter::WithoutSymbol(std::string_view text) const {
  std::string out(text);
  if (currencySymbol_.empty()) return out;
  std::size_t from = 0;
  while (from < out.size()) {
    const std::size_t at =
        platform::CaseInsensitiveFind(std::string_view(out).substr(from), currencySymbol_);
    if (at == std::string::npos) break;
    const std::size_t pos = from + at;
    // Case folding can change the length of the match ("ß" against "SS"): find the end.
    std::size_t length = 0;
    const std::size_t limit = std::min(out.size() - pos, currencySymbol_.size() * 3 + 4);
    if (platform::CaseInsensitiveEqual(std::string_view(out).substr(pos, currencySymbol_.size()),
                                       currencySymbol_)) {
      length = currencySymbol_.size();
    } else {
      for (std::size_t n = 1; n <= limit && length == 0; ++n) {
        if (platform::CaseInsensitiveEqual(std::string_view(out).substr(pos, n), currencySymbol_)) {
          length = n;
        }
      }
    }
    if (length == 0) length = 1;  // cannot happen for a true match; move on regardless
    out.erase(pos, length);
    from = pos;
  }
  return out;
}

std::optional<double> ZELMNumberFormatter::ReadDigits(std::string_view text,
                                                      bool allow_sign) const {
  std::string plain;
  if (allow_sign && !text.empty() && (text.front() == '-' || text.front() == '+')) {
    if (text.front() == '-') plain.push_back('-');
    text.remove_prefix(1);
  }
  bool any_digit = false;
  bool in_fraction = false;
  while (!text.empty()) {
    if (IsDigit(text.front())) {
      plain.push_back(text.front());
      any_digit = true;
      text.remove_prefix(1);
    } else if (!in_fraction && !decimalSeparator_.empty() && text.starts_with(decimalSeparator_)) {
      plain.push_back('.');
      in_fraction = true;
      text.remove_prefix(decimalSeparator_.size());
    } else if (!in_fraction && !thousandSeparator_.empty() &&
               text.starts_with(thousandSeparator_)) {
      text.remove_prefix(thousandSeparator_.size());
    } else {
      return std::nullopt;
    }
  }
  if (!any_digit) return std::nullopt;
  return ReadPlainDecimal(plain);
}

std::optional<double> ZELMNumberFormatter::numberFromString(std::string_view text) const {
  const std::string compact = WithoutBlanks(WithoutSymbol(text));
  if (compact.empty()) return std::nullopt;

  std::optional<double> value;
  // Negative section first: its literal text is what tells a negative number apart.
  const bool negative_first[] = {true, false, false};
  const Section* order[] = {&sections_[2], &sections_[0], &sections_[1]};
  for (int i = 0; i < 3 && !value; ++i) {
    const std::string prefix = WithoutBlanks(WithoutSymbol(order[i]->prefix));
    const std::string suffix = WithoutBlanks(WithoutSymbol(order[i]->suffix));
    if (prefix.empty() && suffix.empty()) continue;
    if (compact.size() < prefix.size() + suffix.size() || !compact.starts_with(prefix) ||
        !compact.ends_with(suffix)) {
      continue;
    }
    const std::string_view core = std::string_view(compact).substr(
        prefix.size(), compact.size() - prefix.size() - suffix.size());
    value = ReadDigits(core, false);
    if (value && negative_first[i]) value = -*value;
  }
  if (!value) value = ReadDigits(compact, true);
  if (!value) return std::nullopt;

  if (roundingScale_) {
    const int scale = std::max(0, *roundingScale_);
    const std::string rounded = RoundedDecimalDigits(*value, scale) + "e-" + std::to_string(scale);
    const std::optional<double> magnitude = ReadPlainDecimal(rounded);
    if (!magnitude) return std::nullopt;
    value = *value < 0 ? -*magnitude : *magnitude;
  }
  if (*value == 0) value = 0.0;  // "-0" reads as zero
  if (minimum_ && *value < *minimum_) return std::nullopt;
  if (maximum_ && *value > *maximum_) return std::nullopt;
  return value;
}

std::optional<double> ZELMNumberFormatter::defaultObjectValue() const {
  return defaultObjectValue_ ? defaultObjectValue_ : minimum_;
}

void ZELMNumberFormatter::setDefaultObjectValue(std::optional<double> value) {
  if (value) defaultObjectValue_ = value;
}

std::optional<double> ZELMNumberFormatter::getObjectValue(std::string_view text) const {
  std::string cleaned(text);
  if (!cleaned.empty()) {
    if (!thousandSeparator_.empty()) {
      const std::vector<std::string_view> separators = Characters(thousandSeparator_);
      std::string kept;
      kept.reserve(cleaned.size());
      for (std::string_view c : Characters(cleaned)) {
        if (std::find(separators.begin(), separators.end(), c) == separators.end()) kept += c;
      }
      cleaned = std::move(kept);
    }
    cleaned = WithoutSymbol(cleaned);
  }
  if (std::optional<double> value = numberFromString(cleaned)) return value;
  return defaultObjectValue();
}

std::optional<std::string> ZELMNumberFormatter::stringForObjectValue(
    const FormatterValue& value) const {
  if (const double* number = std::get_if<double>(&value)) return stringForNumber(*number);
  return std::nullopt;
}

std::optional<std::string> ZELMNumberFormatter::editingStringForObjectValue(
    const FormatterValue& value) const {
  if (const auto* styled = std::get_if<AttributedText>(&value)) {
    const std::optional<double> number = getObjectValue(styled->text);
    if (!number) return std::nullopt;
    return stringForNumber(*number);
  }
  return stringForObjectValue(value);
}

std::optional<AttributedText> ZELMNumberFormatter::attributedStringForObjectValue(
    const FormatterValue& value, const plist::Dictionary& attributes) const {
  std::optional<std::string> text = stringForObjectValue(value);
  if (!text || text->empty()) return std::nullopt;
  return AttributedText{std::move(*text), attributes};
}

}  // namespace folvant
