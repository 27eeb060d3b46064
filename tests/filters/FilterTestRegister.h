#pragma once

#include <memory>
#include <ostream>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "tests/support/FakeAccountsController.h"

namespace folvant {

// Failure messages show an entry by its number, date and description.
inline void PrintTo(const ZELMAccountEntry& entry, std::ostream* os) {
  *os << "#" << entry.GetNumber() << " " << entry.GetDate() << " \"" << entry.GetDescription()
      << "\"";
}

namespace testing {

// The category tree Auto (1) > Fuel (2), and Food (3); nothing else.
inline void AddTestCategories(FakeAccountsController& controller) {
  const auto automobile = controller.AddCategory("Auto", 1);
  controller.AddCategory("Fuel", 2, automobile);
  controller.AddCategory("Food", 3);
}

// An account with the default types (4 is "Check") and the tree above.
struct TestRegister {
  FakeAccountsController controller;
  ZELMAccount account;

  TestRegister() {
    AddTestCategories(controller);
    account.setAccountsController(&controller);
  }

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
