#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::testing {

// An accounts controller that holds what a test gives it: currencies (the first one added is
// the base currency), a category tree and types. Empty when made.
class FakeAccountsController final : public ZELMAccountsController {
 public:
  void AddCurrency(std::shared_ptr<LVCurrency> currency) {
    currencies_.push_back(std::move(currency));
  }
  // A new category at the top of the tree, or under `parent` (one the controller holds).
  std::shared_ptr<ZELMAccountEntryCategory> AddCategory(
      std::string_view name, std::int32_t number,
      const std::shared_ptr<ZELMAccountEntryCategory>& parent = nullptr);
  void AddType(std::shared_ptr<ZELMAccountEntryType> type) { types_.push_back(std::move(type)); }

  std::shared_ptr<LVCurrency> currency() const override;
  std::shared_ptr<LVCurrency> currencyWithCode(std::string_view code) const override;
  std::vector<std::shared_ptr<LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const override;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const override;
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(
      std::int32_t number) const override;

 private:
  std::vector<std::shared_ptr<LVCurrency>> currencies_;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> topCategories_;
  std::vector<std::shared_ptr<ZELMAccountEntryType>> types_;
};

}  // namespace folvant::testing
