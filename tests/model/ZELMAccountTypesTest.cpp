#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"

namespace folvant {
namespace {

using Strings = std::vector<std::string>;

std::shared_ptr<ZELMAccountEntryType> Type(std::string_view name, int number, bool deposit) {
  auto type = std::make_shared<ZELMAccountEntryType>();
  type->SetName(name);
  type->SetNumber(number);
  type->SetIsDeposit(deposit);
  return type;
}

Strings Names(const ZELMAccount::TypeList& types) {
  Strings names;
  for (const auto& type : types) names.push_back(type->GetName());
  return names;
}

TEST(ZELMAccountTypes, DefaultTypes) {
  const ZELMAccount account;
  EXPECT_EQ(Names(account.types()),
            (Strings{"ATM", "Automatic Draft", "Cash", "Cashier's Check", "Check", "Debit Card",
                     "Deposit", "Direct Deposit", "Draft", "Money Order", "Online Payment",
                     "Transfer", "Transfer"}));
  EXPECT_EQ(Names(account.GetDepositTypes()), (Strings{"Deposit", "Direct Deposit", "Transfer"}));
  EXPECT_EQ(account.GetDebitTypes().size(), 10u);
  EXPECT_TRUE(account.accountEntryTypeForNumber(4)->GetIsCheck());
  EXPECT_FALSE(account.accountEntryTypeForNumber(3)->GetIsCheck());  // Cashier's Check
  EXPECT_EQ(account.debitEntryTypeForName("Transfer")->GetNumber(), 9);
  EXPECT_EQ(account.depositEntryTypeForName("Transfer")->GetNumber(), 12);
  EXPECT_EQ(account.debitEntryTypeForName("transfer"), nullptr);
  EXPECT_EQ(account.depositEntryTypeForName("ATM"), nullptr);
  EXPECT_EQ(account.accountEntryTypeForNumber(13), nullptr);
  EXPECT_EQ(account.GetDefaultDebitType(), nullptr);
  EXPECT_EQ(account.nextAvailableTypeNumber(), 13);
}

TEST(ZELMAccountTypes, DeactivatedTypesStillResolve) {
  ZELMAccount account;
  auto deposit = account.depositEntryTypeForName("Deposit");
  auto atm = account.debitEntryTypeForName("ATM");
  account.SetDefaultDebitType(atm);
  account.SetDefaultDepositType(deposit);
  account.deactivateType(deposit);
  account.deactivateType(nullptr);
  EXPECT_EQ(account.types().size(), 12u);
  EXPECT_EQ(account.inactiveTypes(), ZELMAccount::TypeList{deposit});
  EXPECT_EQ(account.GetDefaultDepositType(), nullptr);
  EXPECT_EQ(account.GetDefaultDebitType(), atm);
  EXPECT_EQ(account.accountEntryTypeForNumber(10), deposit);
  EXPECT_EQ(account.depositEntryTypeForName("Deposit"), deposit);
  EXPECT_EQ(account.nextAvailableTypeNumber(), 13);  // inactive types count
  // An active type wins over an inactive one with the same number.
  account.setTypes({Type("New", 10, true)});
  EXPECT_EQ(account.accountEntryTypeForNumber(10)->GetName(), "New");
  account.setTypes({Type("Neg", -4, false)});
  account.setInactiveTypes({});
  EXPECT_EQ(account.nextAvailableTypeNumber(), 0);
}

TEST(ZELMAccountTypes, ImportTypesPerDirection) {
  ZELMAccount source;
  source.setTypes({Type("Gift Card", 0, false), Type("gift card", 1, false),
                   Type("transfer", 2, false), Type("ATM", 3, true), Type("Deposit", 4, true)});
  ZELMAccount account;
  account.importTypesFromAccount(&source);  // locked source: nothing
  EXPECT_EQ(account.types().size(), 13u);

  source.SetPassword("");
  account.importTypesFromAccount(&source);
  // Two debit types of one name both come over; "transfer" matches our debit Transfer; the
  // deposit ATM does not match our debit ATM.
  ASSERT_EQ(account.types().size(), 16u);
  EXPECT_EQ(Names(account.types())[0], "ATM");
  EXPECT_EQ(Names(account.types())[1], "ATM");
  const auto imported_atm = account.depositEntryTypeForName("ATM");
  ASSERT_NE(imported_atm, nullptr);
  EXPECT_EQ(imported_atm->GetNumber(), 15);
  EXPECT_EQ(account.debitEntryTypeForName("Gift Card")->GetNumber(), 13);
  EXPECT_EQ(account.debitEntryTypeForName("gift card")->GetNumber(), 14);
  EXPECT_NE(account.debitEntryTypeForName("Gift Card"), source.debitEntryTypeForName("Gift Card"));
  account.importTypesFromAccount(nullptr);
  account.importTypesFromAccount(&source);  // everything is there now
  EXPECT_EQ(account.types().size(), 16u);
}

TEST(ZELMAccountTypes, ImportSuggestionLists) {
  ZELMAccount source;
  source.SetPassword("");
  source.SetPreferredDebitDescriptions(Strings{"Rent", "rent", "Fuel", "Food"});
  source.SetPreferredTos(Strings{"Shell"});
  ZELMAccount account;
  account.SetPassword("");
  account.SetPreferredDebitDescriptions(Strings{"FUEL"});
  account.importDescriptionsFromAccount(&source);
  EXPECT_EQ(account.preferredDebitDescriptions(), (Strings{"FUEL", "Rent", "Food"}));
  EXPECT_EQ(account.preferredDepositDescriptions(), Strings{});  // made, though the source has none
  EXPECT_EQ(account.preferredTos(), std::nullopt);
  account.importToFromsFromAccount(&source);
  EXPECT_EQ(account.preferredTos(), Strings{"Shell"});
  EXPECT_EQ(account.preferredFroms(), Strings{});
  account.importDescriptionsFromAccount(&account);  // from itself: nothing new
  EXPECT_EQ(account.preferredDebitDescriptions()->size(), 3u);

  ZELMAccount locked;
  locked.SetPreferredTos(Strings{"Bank"});
  account.importToFromsFromAccount(&locked);
  EXPECT_EQ(account.preferredTos(), Strings{"Shell"});
}

TEST(ZELMAccountTypes, OwnCategoriesWithoutController) {
  ZELMAccount account;
  EXPECT_TRUE(account.defaultCategories().empty());
  EXPECT_EQ(account.nextAvailableCategoryNumber(), 0);
  auto autos = std::make_shared<ZELMAccountEntryCategory>();
  autos->setName("Auto");
  autos->setNumber(3);
  auto fuel = std::make_shared<ZELMAccountEntryCategory>();
  fuel->setName("Fuel");
  fuel->setNumber(8);
  autos->addChild(fuel);
  auto food = std::make_shared<ZELMAccountEntryCategory>();
  food->setNumber(5);
  account.setCategories({autos, food});
  EXPECT_EQ(account.accountEntryCategoryForNumber(3), autos);
  EXPECT_EQ(account.accountEntryCategoryForNumber(8), nullptr);  // the top level only
  EXPECT_EQ(account.nextAvailableCategoryNumber(), 6);
  account.deactivateCategory(food);
  EXPECT_EQ(account.categories().size(), 1u);
  EXPECT_EQ(account.accountEntryCategoryForNumber(5), nullptr);
  EXPECT_EQ(account.nextAvailableCategoryNumber(), 6);  // inactive ones count
}

}  // namespace
}  // namespace folvant
