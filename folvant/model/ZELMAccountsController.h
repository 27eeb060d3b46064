#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace folvant {

class LVCurrency;
class ZELMAccountEntryCategory;
class ZELMAccountEntryType;

// What the library asks of the application object that owns the accounts, the registered
// currencies (the base currency first) and the shared category tree. Accounts hold it as a
// plain pointer; it must outlive them.
class ZELMAccountsController {
 public:
  virtual ~ZELMAccountsController() = default;

  // The base currency (rate 1).
  virtual std::shared_ptr<LVCurrency> currency() const = 0;
  // The registered currency with this code (exact match), or nullptr.
  virtual std::shared_ptr<LVCurrency> currencyWithCode(std::string_view code) const = 0;
  // The registered currencies; the account may add to them.
  virtual std::vector<std::shared_ptr<LVCurrency>>& currencies() = 0;
  // The category with this number at any depth of the tree, or nullptr.
  virtual std::shared_ptr<ZELMAccountEntryCategory> categoryWithNumber(std::int32_t number) const = 0;
  // Every category of the tree, depth first, each followed by its descendants.
  virtual std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allCategories() const = 0;
  // A type with this number, looked up across the controller's accounts, or nullptr.
  virtual std::shared_ptr<ZELMAccountEntryType> accountEntryTypeForNumber(std::int32_t number) const = 0;
};

}  // namespace folvant
