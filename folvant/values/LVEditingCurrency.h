#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/values/LVCurrency.h"

namespace folvant {

// The working copy of a currency while the user edits the list of currencies: whether an
// account uses it, and the currency it was copied from (none for a new one), which it keeps
// alive. The editor's list holds these through std::shared_ptr.
class LVEditingCurrency : public LVCurrency {
 public:
  LVEditingCurrency() = default;
  explicit LVEditingCurrency(const plist::Dictionary* dict) : LVCurrency(dict) {}

  bool inUse() const { return inUse_; }
  void setInUse(bool inUse) { inUse_ = inUse; }
  const std::shared_ptr<LVCurrency>& original() const { return original_; }
  void setOriginal(std::shared_ptr<LVCurrency> original) { original_ = std::move(original); }

 private:
  bool inUse_ = false;
  std::shared_ptr<LVCurrency> original_;
};

// Why the editor refuses a currency code: the alert's statement, message and its one button.
struct CurrencyCodeProblem {
  std::string statement;
  std::string message;
  std::string button;
  bool operator==(const CurrencyCodeProblem&) const = default;
};

// Checks a code typed into the currency editor: it must be exactly 3 characters long, and no
// other currency of the list (`editing` itself is skipped, by identity) may have the same code
// ignoring case. nullopt when the code is accepted; the texts are localized.
std::optional<CurrencyCodeProblem> ValidateCurrencyCode(
    std::string_view code, const std::vector<std::shared_ptr<LVCurrency>>& list,
    const LVCurrency* editing);

}  // namespace folvant
