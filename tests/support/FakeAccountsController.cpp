#include "tests/support/FakeAccountsController.h"

namespace folvant::testing {

std::shared_ptr<ZELMAccountEntryCategory> FakeAccountsController::AddCategory(
    std::string_view name, std::int32_t number,
    const std::shared_ptr<ZELMAccountEntryCategory>& parent) {
  auto category = std::make_shared<ZELMAccountEntryCategory>();
  category->setName(name);
  category->setNumber(number);
  if (parent) {
    parent->addChild(category);
  } else {
    topCategories_.push_back(category);
  }
  return category;
}

std::shared_ptr<LVCurrency> FakeAccountsController::currency() const {
  return currencies_.empty() ? nullptr : currencies_.front();
}

std::shared_ptr<LVCurrency> FakeAccountsController::currencyWithCode(std::string_view code) const {
  for (const auto& currency : currencies_) {
    if (currency->code() == code) return currency;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryCategory> FakeAccountsController::categoryWithNumber(
    std::int32_t number) const {
  for (const auto& category : allCategories()) {
    if (category->number() == number) return category;
  }
  return nullptr;
}

std::vector<std::shared_ptr<ZELMAccountEntryCategory>> FakeAccountsController::allCategories()
    const {
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> all;
  for (const auto& top : topCategories_) {
    all.push_back(top);
    for (auto& child : top->allChildren()) all.push_back(std::move(child));
  }
  return all;
}

std::shared_ptr<ZELMAccountEntryType> FakeAccountsController::accountEntryTypeForNumber(
    std::int32_t number) const {
  for (const auto& type : types_) {
    if (type->GetNumber() == number) return type;
  }
  return nullptr;
}

}  // namespace folvant::testing
