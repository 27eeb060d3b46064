#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/plist/Value.h"
#include "folvant/values/ZELMNumberFormatter.h"

namespace folvant {

// One currency: code, name, symbol and separators, how amounts are written, and its rate
// against the base currency (the one whose rate is 1). Held by std::shared_ptr: the accounts
// controller's list and every account that uses the currency share it. Its three amount
// formatters are built on first request and rebuilt after the written form changes.
class LVCurrency {
 public:
  // Code "BXD", "Brindle Software Dollar", symbol "$" before amounts, "," and ".", rate 1,
  // last updated today.
  LVCurrency();
  // The defaults, then every key present in the stored form; a value of the wrong kind is
  // ignored. nullptr: the defaults.
  explicit LVCurrency(const plist::Dictionary* dict);
  LVCurrency(std::string_view code, std::string_view description, std::string_view symbol,
             bool symbolPrecedesAmounts, std::string_view thousandsSeparator,
             std::string_view decimalSeparator, double rate, std::int32_t lastUpdate);
  virtual ~LVCurrency() = default;
  LVCurrency(const LVCurrency&) = delete;  // copies go through the stored form
  LVCurrency& operator=(const LVCurrency&) = delete;

  // "code", "description", "symbol", "symbolPrecedesAmounts" (boolean), "thousandsSeparator",
  // "decimalSeparator", "rate" (real) and "lastUpdate" (integer date number).
  plist::Dictionary asDictionary() const;

  // Text setters store "" when given nullopt. Changing the symbol, its position or a separator
  // discards the cached formatters.
  const std::string& code() const { return code_; }
  void setCode(std::optional<std::string_view> code);
  const std::string& description() const { return description_; }
  void setDescription(std::optional<std::string_view> description);
  const std::string& symbol() const { return symbol_; }
  void setSymbol(std::optional<std::string_view> symbol);
  bool symbolPrecedesAmounts() const { return symbolPrecedesAmounts_; }
  void setSymbolPrecedesAmounts(bool precedes);
  const std::string& thousandsSeparator() const { return thousandsSeparator_; }
  void setThousandsSeparator(std::optional<std::string_view> separator);
  const std::string& decimalSeparator() const { return decimalSeparator_; }
  void setDecimalSeparator(std::optional<std::string_view> separator);
  double rate() const { return rate_; }
  void setRate(double rate) { rate_ = rate; }
  std::int32_t lastUpdate() const { return lastUpdate_; }
  void setLastUpdate(std::int32_t dateNumber) { lastUpdate_ = dateNumber; }
  // A working flag of the editor: the written form was changed. Not stored.
  bool formatChanged() const { return formatChanged_; }
  void setFormatChanged(bool changed) { formatChanged_ = changed; }

  // amount × rate ÷ target's rate, unrounded; the amount itself when there is no target. A
  // target rate of 0 gives an infinity or NaN.
  double convertAmount(double amount, const LVCurrency* target) const;

  // -1, 0 or 1 comparing the codes without regard to case.
  int codeIsGreaterThan(const LVCurrency& other) const;

  // The amount pattern with the symbol in each section: "$ #,##0.00;$ 0.00;-$ #,##0.00", or
  // "#,##0.00 kr; 0.00 kr;-#,##0.00 kr" when the symbol follows amounts (the zero section
  // then starts with a space).
  std::string formatString() const;

  // Cached formatters: two decimals rounded half away from zero, this currency's separators,
  // default 0. The negative one refuses values above 0, the positive one values below 0.
  std::shared_ptr<ZELMNumberFormatter> formatter() const;
  std::shared_ptr<ZELMNumberFormatter> negativeFormatter() const;
  std::shared_ptr<ZELMNumberFormatter> positiveFormatter() const;

 private:
  std::shared_ptr<ZELMNumberFormatter> MakeFormatter() const;
  void DiscardFormatters();

  std::string code_ = "BXD";
  std::string description_ = "Brindle Software Dollar";
  std::string symbol_ = "$";
  bool symbolPrecedesAmounts_ = true;
  std::string thousandsSeparator_ = ",";
  std::string decimalSeparator_ = ".";
  double rate_ = 1.0;
  std::int32_t lastUpdate_;
  mutable std::shared_ptr<ZELMNumberFormatter> formatter_;
  mutable std::shared_ptr<ZELMNumberFormatter> negativeFormatter_;
  mutable std::shared_ptr<ZELMNumberFormatter> positiveFormatter_;
  bool formatChanged_ = false;
};

}  // namespace folvant
