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

namespace testing {

// The category tree Auto (1) > Fuel (2), and Food (3); nothing else.
class TestController final : public ZELMAccountsController {
 public:
  TestController() {
    for (auto [name, number] : {std::pair{"Auto", 1}, {"Fuel", 2}, {"Food", 3}}) {
      categories_.push_back(std::make_shared<ZELMAccountEntryCategory>());
      categories_.back()->setName(name);
      categories_.back()->setNumber(number);
    }
    categories_[0]->addChild(categories_[1]);
  }
  std::shared_ptr<LVCurrency> currency() const override { return nullptr; }
  std::shared_ptr<LVCurrency> currencyWithCode(std::string_view) const override { return nullptr; }
  std::vector<std::shared_ptr<LVCurrency>>& currencies() override { return currencies_; }
  std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const override {
    return number >= 1 && number <= 3 ? categories_[number - 1] : nullptr;
  }
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const override {
    return categories_;
  }
  std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(std::int32_t) const override {
    return nullptr;
  }

 private:
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories_;
  std::vector<std::shared_ptr<LVCurrency>> currencies_;
};

// An account with the default types (4 is "Check") and the tree above.
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

}  // namespace testing
}  // namespace folvant
