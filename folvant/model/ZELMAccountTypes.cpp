// The account's entry types, its own categories and its folder list.

#include <algorithm>
#include <utility>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountsController.h"
#include "folvant/platform/Localized.h"
#include "folvant/platform/Text.h"

namespace folvant {

namespace {

void SortByName(ZELMAccount::TypeList& types) {
  std::stable_sort(types.begin(), types.end(),
                   [](const auto& a, const auto& b) { return a->NameIsGreaterThan(*b) < 0; });
}

std::shared_ptr<ZELMAccountEntryType> FirstWith(const ZELMAccount::TypeList& active,
                                                const ZELMAccount::TypeList& inactive,
                                                const auto& matches) {
  for (const ZELMAccount::TypeList* list : {&active, &inactive}) {
    for (const auto& type : *list) {
      if (matches(*type)) return type;
    }
  }
  return nullptr;
}

ZELMAccount::TypeList WithDirection(const ZELMAccount::TypeList& types, bool deposits) {
  ZELMAccount::TypeList selected;
  for (const auto& type : types) {
    if (type->GetIsDeposit() == deposits) selected.push_back(type);
  }
  return selected;
}

}  // namespace

ZELMAccount::TypeList ZELMAccount::defaultTypes() {
  struct Default {
    const char* name;
    bool isCheck;
    bool isDeposit;
  };
  // Listed by number. Only "Check" is a check type ("Cashier's Check" is not), and the two
  // "Transfer" types differ by direction.
  static constexpr Default kDefaults[] = {
      {"ATM", false, false},
      {"Automatic Draft", false, false},
      {"Cash", false, false},
      {"Cashier's Check", false, false},
      {"Check", true, false},
      {"Debit Card", false, false},
      {"Draft", false, false},
      {"Money Order", false, false},
      {"Online Payment", false, false},
      {"Transfer", false, false},
      {"Deposit", false, true},
      {"Direct Deposit", false, true},
      {"Transfer", false, true},
  };
  TypeList types;
  types.reserve(std::size(kDefaults));
  std::int32_t number = 0;
  for (const Default& entry : kDefaults) {
    auto type = std::make_shared<ZELMAccountEntryType>();
    type->SetName(Localized(entry.name));
    type->SetNumber(number++);
    type->SetIsCheck(entry.isCheck);
    type->SetIsDeposit(entry.isDeposit);
    types.push_back(std::move(type));
  }
  SortByName(types);
  return types;
}

ZELMAccount::TypeList ZELMAccount::GetDebitTypes() const { return WithDirection(types_, false); }

ZELMAccount::TypeList ZELMAccount::GetDepositTypes() const { return WithDirection(types_, true); }

std::int32_t ZELMAccount::nextAvailableTypeNumber() const {
  std::int32_t highest = -1;
  for (const TypeList* list : {&types_, &inactiveTypes_}) {
    for (const auto& type : *list) highest = std::max(highest, type->GetNumber());
  }
  return highest + 1;
}

std::shared_ptr<ZELMAccountEntryType> ZELMAccount::accountEntryTypeForNumber(
    std::int32_t number) const {
  return FirstWith(types_, inactiveTypes_, [number](const ZELMAccountEntryType& type) {
    return type.GetNumber() == number;
  });
}

std::shared_ptr<ZELMAccountEntryType> ZELMAccount::debitEntryTypeForName(
    std::string_view name) const {
  return FirstWith(types_, inactiveTypes_, [name](const ZELMAccountEntryType& type) {
    return !type.GetIsDeposit() && type.GetName() == name;
  });
}

std::shared_ptr<ZELMAccountEntryType> ZELMAccount::depositEntryTypeForName(
    std::string_view name) const {
  return FirstWith(types_, inactiveTypes_, [name](const ZELMAccountEntryType& type) {
    return type.GetIsDeposit() && type.GetName() == name;
  });
}

void ZELMAccount::deactivateType(const std::shared_ptr<ZELMAccountEntryType>& type) {
  if (type == nullptr) return;
  if (type == defaultDebitType_) {
    defaultDebitType_.reset();
  } else if (type == defaultDepositType_) {
    defaultDepositType_.reset();
  }
  // Keep the type alive across the removal: `type` may refer into the active list.
  std::shared_ptr<ZELMAccountEntryType> held = type;
  inactiveTypes_.push_back(held);
  std::erase(types_, held);
}

void ZELMAccount::importTypesFromAccount(const ZELMAccount* source) {
  if (source == nullptr || !source->IsAuthenticated()) return;
  for (const bool deposits : {false, true}) {
    // Matched against the types held before the import, so two source types of one name both
    // come over; a debit type never matches a deposit type.
    const TypeList snapshot = WithDirection(types_, deposits);
    for (const auto& theirs : WithDirection(source->types(), deposits)) {
      const std::string name = theirs->GetName();
      const bool present = std::any_of(snapshot.begin(), snapshot.end(), [&](const auto& ours) {
        return platform::CaseInsensitiveEqual(ours->GetName(), name);
      });
      if (present) continue;
      const plist::Dictionary stored = theirs->asDictionary();
      auto copy = std::make_shared<ZELMAccountEntryType>(&stored);
      copy->SetNumber(nextAvailableTypeNumber());
      types_.push_back(std::move(copy));
    }
  }
  SortByName(types_);
}

std::int32_t ZELMAccount::nextAvailableCategoryNumber() const {
  std::int32_t highest = -1;
  for (const CategoryList* list : {&categories_, &inactiveCategories_}) {
    for (const auto& category : *list) highest = std::max(highest, category->number());
  }
  return highest + 1;
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccount::accountEntryCategoryForNumber(
    std::int32_t number) const {
  if (accountsController_ != nullptr) return accountsController_->categoryWithNumber(number);
  for (const auto& category : categories_) {
    if (category->number() == number) return category;
  }
  return nullptr;
}

void ZELMAccount::deactivateCategory(const std::shared_ptr<ZELMAccountEntryCategory>& category) {
  if (category == nullptr) return;
  std::shared_ptr<ZELMAccountEntryCategory> held = category;
  inactiveCategories_.push_back(held);
  std::erase(categories_, held);
}

// ---- Folders ----

void ZELMAccount::SetFolders(std::optional<FolderList> folders) {
  folders_ = folders ? std::move(*folders) : FolderList();
  for (const auto& folder : folders_) {
    for (const auto& entry : folder->entries()) entry->SetAccount(this);
  }
}

void ZELMAccount::addFolder(std::shared_ptr<ZELMAccountFolder> folder) {
  if (folder == nullptr || std::find(folders_.begin(), folders_.end(), folder) != folders_.end()) {
    return;
  }
  folders_.push_back(std::move(folder));
}

void ZELMAccount::removeFolder(const ZELMAccountFolder* folder) {
  std::erase_if(folders_, [folder](const auto& held) { return held.get() == folder; });
}

void ZELMAccount::removeFolderAtIndex(std::int32_t index) {
  if (index < 0 || index >= static_cast<std::int32_t>(folders_.size())) return;
  folders_.erase(folders_.begin() + index);
}

}  // namespace folvant
