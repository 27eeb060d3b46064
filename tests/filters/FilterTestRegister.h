#pragma once

#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountsController.h"

namespace folvant {

// Failure messages show an entry by its number, date and description.
inline void PrintTo(const ZELMAccountEntry& entry, std::ostream* os) {
  *os << "#" << entry.GetNumber() << " " << entry.GetDate() << " \"" << entry.GetDescription()
      << "\"";
}

}  // namespace folvant

namespace folvant::testing {

// A category tree for filter tests: Auto (1) with Fuel (2) under it, and Food (3).
class TestController final : public ZELMAccountsController {
 public:
  TestController() {
    auto fuel = std::make_shared<ZELMAccountEntryCategory>();
    fuel->setName("Fuel");
    fuel->setNumber(2);
    auto top = std::make_shared<ZELMAccountEntryCategory>();
    top->setName("Auto");
    top->setNumber(1);
    top->addChild(fuel);
    auto food = std::make_shared<ZELMAccountEntryCategory>();
    food->setName("Food");
    food->setNumber(3);
    roots_ = {top, food};
  }
  std::shared_ptr<LVCurrency> currency() const override { return nullptr; }
  std::shared_ptr<LVCurrency> currencyWithCode(std::string_view) const override { return nullptr; }
  std::vector<std::shared_ptr<LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const override {
    for (const auto& category : allCategories()) {
      if (category->number() == number) return category;
    }
    return nullptr;
  }
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const override {
    std::vector<std::shared_ptr<ZELMAccountEntryCategory>> all;
    for (const auto& root : roots_) {
      all.push_back(root);
      for (const auto& child : root->allChildren()) all.push_back(child);
    }
    return all;
  }
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(std::int32_t) const override {
    return nullptr;
  }

 private:
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> roots_;
  std::vector<std::shared_ptr<LVCurrency>> currencies_;
};

// An account with the default types (4 is "Check", 10 "Deposit") and the tree above.
struct TestRegister {
  TestController controller;
  ZELMAccount account;

  TestRegister() { account.setAccountsController(&controller); }

  // A new entry of the account's main list.
  std::shared_ptr<ZELMAccountEntry> Add(std::int32_t date, double amount = 0.0,
                                        std::string_view description = "") {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    entry->SetDate(date);
    entry->SetAmount(amount);
    entry->SetDescription(description);
    account.AddEntry(entry);
    return entry;
  }
};

}  // namespace folvant::testing
