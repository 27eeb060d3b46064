#pragma once

// What the in-memory benchmarks share: a fixed-seed random generator, so every run builds the
// same account, and an accounts controller holding a category tree of 8 top-level categories
// with 5 children each, numbered from 0.

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "bench/BenchRandom.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/values/LVCurrency.h"

namespace bench {

// With `typesAndCurrency`, also the default entry types and a US dollar base currency;
// without, neither (type and currency lookups find nothing).
class Controller final : public folvant::ZELMAccountsController {
 public:
  explicit Controller(bool typesAndCurrency) {
    static const char* const kTop[] = {"Auto",   "Food",      "Home",   "Health",
                                       "Travel", "Utilities", "Income", "Gifts"};
    static const char* const kChild[] = {"Fuel", "Repairs", "Supplies", "Fees", "Other"};
    std::int32_t number = 0;
    for (const char* top : kTop) {
      auto parent = std::make_shared<folvant::ZELMAccountEntryCategory>();
      parent->setName(top);
      parent->setNumber(number++);
      all_.push_back(parent);
      for (const char* child : kChild) {
        auto c = std::make_shared<folvant::ZELMAccountEntryCategory>();
        c->setName(child);
        c->setNumber(number++);
        parent->addChild(c);
        all_.push_back(c);
      }
    }
    if (!typesAndCurrency) return;
    for (const auto& type : folvant::ZELMAccount::defaultTypes()) types_.push_back(type);
    currencies_.push_back(std::make_shared<folvant::LVCurrency>("USD", "US Dollar", "$", true,
                                                                ",", ".", 1.0, 20080101));
  }
  std::shared_ptr<folvant::LVCurrency> currency() const override {
    return currencies_.empty() ? nullptr : currencies_.front();
  }
  std::shared_ptr<folvant::LVCurrency> currencyWithCode(std::string_view) const override {
    return nullptr;
  }
  std::vector<std::shared_ptr<folvant::LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<folvant::ZELMAccountEntryCategory> categoryWithNumber(
      std::int32_t n) const override {
    return n >= 0 && static_cast<std::size_t>(n) < all_.size() ? all_[n] : nullptr;
  }
  std::vector<std::shared_ptr<folvant::ZELMAccountEntryCategory>> allCategories() const override {
    return all_;
  }
  std::shared_ptr<folvant::ZELMAccountEntryType> accountEntryTypeForNumber(
      std::int32_t number) const override {
    for (const auto& type : types_) {
      if (type->GetNumber() == number) return type;
    }
    return nullptr;
  }
  std::uint32_t categoryCount() const { return static_cast<std::uint32_t>(all_.size()); }

 private:
  std::vector<std::shared_ptr<folvant::ZELMAccountEntryCategory>> all_;
  std::vector<std::shared_ptr<folvant::ZELMAccountEntryType>> types_;
  std::vector<std::shared_ptr<folvant::LVCurrency>> currencies_;
};

}  // namespace bench
