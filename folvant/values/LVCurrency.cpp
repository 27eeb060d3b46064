#include "folvant/values/LVCurrency.h"

#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

void ReadText(const plist::Dictionary& dict, std::string_view key, std::string& field) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) return;
  if (const std::string* text = value->asString()) field = *text;
}

// Numbers and numeric text convert as the platform converts them; other kinds are ignored.
const plist::Value* ScalarValue(const plist::Dictionary& dict, std::string_view key) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr || !(value->isNumber() || value->isString())) return nullptr;
  return value;
}

}  // namespace

LVCurrency::LVCurrency() : lastUpdate_(platform::Today()) {}

LVCurrency::LVCurrency(const plist::Dictionary* dict) : LVCurrency() {
  if (dict == nullptr) return;
  ReadText(*dict, "code", code_);
  ReadText(*dict, "description", description_);
  ReadText(*dict, "symbol", symbol_);
  if (const plist::Value* value = ScalarValue(*dict, "symbolPrecedesAmounts")) {
    symbolPrecedesAmounts_ = value->boolValue();
  }
  ReadText(*dict, "thousandsSeparator", thousandsSeparator_);
  ReadText(*dict, "decimalSeparator", decimalSeparator_);
  if (const plist::Value* value = ScalarValue(*dict, "rate")) rate_ = value->doubleValue();
  if (const plist::Value* value = ScalarValue(*dict, "lastUpdate")) {
    lastUpdate_ = value->intValue();
  }
}

LVCurrency::LVCurrency(std::string_view code, std::string_view description, std::string_view symbol,
                       bool symbolPrecedesAmounts, std::string_view thousandsSeparator,
                       std::string_view decimalSeparator, double rate, std::int32_t lastUpdate)
    : LVCurrency() {
  code_ = code;
  description_ = description;
  symbol_ = symbol;
  symbolPrecedesAmounts_ = symbolPrecedesAmounts;
  thousandsSeparator_ = thousandsSeparator;
  decimalSeparator_ = decimalSeparator;
  rate_ = rate;
  lastUpdate_ = lastUpdate;
}

plist::Dictionary LVCurrency::asDictionary() const {
  return plist::Dictionary{
      {"code", code_},
      {"description", description_},
      {"symbol", symbol_},
      {"symbolPrecedesAmounts", symbolPrecedesAmounts_},
      {"thousandsSeparator", thousandsSeparator_},
      {"decimalSeparator", decimalSeparator_},
      {"rate", rate_},
      {"lastUpdate", lastUpdate_},
  };
}

void LVCurrency::setCode(std::optional<std::string_view> code) { code_ = code.value_or(""); }

void LVCurrency::setDescription(std::optional<std::string_view> description) {
  description_ = description.value_or("");
}

void LVCurrency::setSymbol(std::optional<std::string_view> symbol) {
  symbol_ = symbol.value_or("");
  DiscardFormatters();
}

void LVCurrency::setSymbolPrecedesAmounts(bool precedes) {
  symbolPrecedesAmounts_ = precedes;
  DiscardFormatters();
}

void LVCurrency::setThousandsSeparator(std::optional<std::string_view> separator) {
  thousandsSeparator_ = separator.value_or("");
  DiscardFormatters();
}

void LVCurrency::setDecimalSeparator(std::optional<std::string_view> separator) {
  decimalSeparator_ = separator.value_or("");
  DiscardFormatters();
}

double LVCurrency::convertAmount(double amount, const LVCurrency* target) const {
  if (target == nullptr) return amount;
  return amount * rate_ / target->rate_;
}

int LVCurrency::codeIsGreaterThan(const LVCurrency& other) const {
  return platform::CaseInsensitiveCompare(code_, other.code_);
}

std::string LVCurrency::formatString() const {
  const std::string_view pattern = symbolPrecedesAmounts_ ? "%@ #,##0.00;%@ 0.00;-%@ #,##0.00"
                                                          : "#,##0.00 %@; 0.00 %@;-#,##0.00 %@";
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern.compare(i, 2, "%@") == 0) {
      text += symbol_;
      ++i;
    } else {
      text.push_back(pattern[i]);
    }
  }
  return text;
}

std::shared_ptr<ZELMNumberFormatter> LVCurrency::MakeFormatter() const {
  auto formatter = std::make_shared<ZELMNumberFormatter>();
  formatter->setFormat(formatString());
  formatter->setThousandSeparator(thousandsSeparator_);
  formatter->setDecimalSeparator(decimalSeparator_);
  formatter->setRoundingScale(2);
  formatter->setDefaultObjectValue(0.0);
  return formatter;
}

std::shared_ptr<ZELMNumberFormatter> LVCurrency::formatter() const {
  if (!formatter_) formatter_ = MakeFormatter();
  return formatter_;
}

std::shared_ptr<ZELMNumberFormatter> LVCurrency::negativeFormatter() const {
  if (!negativeFormatter_) {
    negativeFormatter_ = MakeFormatter();
    negativeFormatter_->setMaximum(0.0);
  }
  return negativeFormatter_;
}

std::shared_ptr<ZELMNumberFormatter> LVCurrency::positiveFormatter() const {
  if (!positiveFormatter_) {
    positiveFormatter_ = MakeFormatter();
    positiveFormatter_->setMinimum(0.0);
  }
  return positiveFormatter_;
}

void LVCurrency::DiscardFormatters() {
  formatter_.reset();
  negativeFormatter_.reset();
  positiveFormatter_.reset();
}

}  // namespace folvant
