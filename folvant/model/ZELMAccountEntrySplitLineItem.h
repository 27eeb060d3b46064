#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// One part of a split entry: its own category, payee or payer, memo and amount, and the same
// amount in the currency of a transfer's other account. Owned by its entry's line-item list
// through std::shared_ptr; copies of an entry copy their items through the stored form.
class ZELMAccountEntrySplitLineItem {
 public:
  ZELMAccountEntrySplitLineItem() = default;
  ZELMAccountEntrySplitLineItem(std::int32_t category, std::optional<std::string_view> description,
                                std::optional<std::string_view> toFrom, double amount,
                                double exchangedAmount);
  // Fresh values, then every key present; nothing is checked or logged. nullptr: fresh values.
  explicit ZELMAccountEntrySplitLineItem(const plist::Dictionary* dict);

  // "category", "toFrom", "description", "amount" and "exchangedAmount", all always written.
  plist::Dictionary asDictionary() const;

  std::int32_t category() const { return category_; }
  void setCategory(std::int32_t category) { category_ = category; }
  // Text setters store "" when given nullopt, so the stored form always has both texts.
  const std::string& toFrom() const { return toFrom_; }
  void setToFrom(std::optional<std::string_view> toFrom);
  const std::string& description() const { return description_; }
  void setDescription(std::optional<std::string_view> description);
  // Amounts are kept exactly as given; only the entry rounds its own amount.
  double amount() const { return amount_; }
  void setAmount(double amount) { amount_ = amount; }
  double exchangedAmount() const { return exchangedAmount_; }
  void setExchangedAmount(double amount) { exchangedAmount_ = amount; }

 private:
  std::int32_t category_ = -1;
  std::string toFrom_;
  std::string description_;
  double amount_ = 0.0;
  double exchangedAmount_ = 0.0;
};

}  // namespace folvant
