#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/plist/Value.h"

namespace folvant {

namespace detail {
// Counts the changes made to the amount of any line item, so that an entry can keep the
// total of its items for as long as none of them changes.
inline std::atomic<std::uint64_t> lineItemAmountChanges{1};

// A line item's amount: assigning it (setAmount, or assigning a whole item) counts a change.
class LineItemAmount {
 public:
  LineItemAmount(double value = 0.0) : value_(value) {}  // NOLINT: implicit by design
  LineItemAmount(const LineItemAmount&) = default;
  LineItemAmount& operator=(const LineItemAmount& other) { return *this = other.value_; }
  LineItemAmount& operator=(double value) {
    value_ = value;
    lineItemAmountChanges.fetch_add(1, std::memory_order_relaxed);
    return *this;
  }
  operator double() const { return value_; }  // NOLINT: implicit by design

 private:
  double value_;
};
}  // namespace detail

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
  // The amount first: a balance over a large register reads only that.
  detail::LineItemAmount amount_;
  double exchangedAmount_ = 0.0;
  std::int32_t category_ = -1;
  std::string toFrom_;
  std::string description_;
};

}  // namespace folvant
