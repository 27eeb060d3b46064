#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::LogCapture;
using EntryPtr = std::shared_ptr<ZELMAccountEntry>;
using Strings = std::vector<std::string>;

struct Line {
  int number;
  int date;
  double amount;
  int check = -1;  // a check number makes the entry a check
  std::string description = {};
  std::string toFrom = {};
  bool isVoid = false;
  bool cleared = false;
};

EntryPtr Make(const Line& line) {
  auto entry = std::make_shared<ZELMAccountEntry>();
  entry->SetNumber(line.number);
  entry->SetDate(line.date);
  entry->SetAmount(line.amount);
  if (line.amount < 0) {
    entry->SetIsDebit(true);
  } else {
    entry->SetIsDeposit(true);
  }
  if (line.check >= 0) {
    entry->SetIsCheck(true);
    entry->SetCheckNumber(line.check);
  }
  entry->SetDescription(line.description);
  entry->SetToFrom(line.toFrom);
  entry->SetVoid(line.isVoid);
  entry->SetCleared(line.cleared ? 1 : 0);
  return entry;
}

// An unlocked account holding these lines in its main list.
std::unique_ptr<ZELMAccount> Account(const std::vector<Line>& lines, double starting = 0.0) {
  auto account = std::make_unique<ZELMAccount>();
  account->SetPassword("");
  account->SetStartingBalance(starting);
  for (const Line& line : lines) account->AddEntry(Make(line));
  return account;
}

std::vector<int> Numbers(const std::vector<EntryPtr>& entries) {
  std::vector<int> numbers;
  for (const auto& entry : entries) numbers.push_back(entry->GetNumber());
  return numbers;
}

TEST(ZELMAccountLedger, CheckNumbering) {
  ZELMAccount fresh;
  fresh.SetStartingCheckNumber(1001);
  EXPECT_EQ(fresh.HighestCheckNumber(), 1000);
  EXPECT_EQ(fresh.NextAvailableCheckNumber(), 1001);
  EXPECT_EQ(fresh.NextAvailableCheckNumberAfterEntry(nullptr), 1001);

  auto account = Account(
      {{1, 20080301, -1, 100}, {2, 20080302, -1, 103}, {3, 20080303, -1, 101}, {4, 20080304, 5.0}});
  // A linked deposit's check number belongs to the sending account.
  auto received = Make({5, 20080305, 9.0, 900});
  received->SetIsLinked(true);
  account->AddEntry(received);
  const auto& entries = account->GetEntries();
  EXPECT_EQ(account->HighestCheckNumber(), 103);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 104);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entries[0].get()), 102);  // after 100
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entries[2].get()), 102);  // after 101
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entries[1].get()), 104);  // the highest
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(received.get()), 900);    // never walks
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(100), 101);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(101), 103);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(103), 103);
  EXPECT_EQ(account->NextCheckNumberAfterCheckNumber(500), 103);
  // A starting number above every check raises the floor.
  account->SetStartingCheckNumber(2000);
  EXPECT_EQ(account->HighestCheckNumber(), 1999);
  EXPECT_EQ(account->NextAvailableCheckNumber(), 2000);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), 2000);
}

TEST(ZELMAccountLedger, EntryNumbersAreNeverReused) {
  ZELMAccount account;
  for (int i = 1; i <= 5; ++i) {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account.NextAvailableNumber());
    EXPECT_EQ(entry->GetNumber(), i);
    account.AddEntry(entry);
  }
  account.RemoveEntry(account.GetEntryWithNumber(5).get());
  EXPECT_EQ(account.GetEntryWithNumber(5), nullptr);
  EXPECT_EQ(account.NextAvailableNumber(), 6);
  const plist::Dictionary stored = account.asDictionary();
  EXPECT_EQ(ZELMAccount(&stored).GetNumberCount(), 6);
}

TEST(ZELMAccountLedger, NumbersAfterTheLargestWrap) {
  constexpr std::int32_t kTop = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kBottom = std::numeric_limits<std::int32_t>::min();
  auto account =
      Account({{1, 20080301, -1, kTop - 1}, {2, 20080302, -1, kTop}, {3, 20080303, -1, kTop}});
  const auto& entries = account->GetEntries();
  EXPECT_EQ(account->NextAvailableCheckNumber(), kBottom);
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(nullptr), 1);  // wrapped below 1
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entries[0].get()), kBottom);  // walks
  EXPECT_EQ(account->NextAvailableCheckNumberAfterEntry(entries[1].get()), kBottom);
  account->SetNumberCount(kTop);
  EXPECT_EQ(account->NextAvailableNumber(), kBottom);
  EXPECT_EQ(account->NextAvailableNumber(), kBottom + 1);
}

TEST(ZELMAccountLedger, RunningBalancesOnOneDay) {
  auto account = Account({{7, 20080310, 100.0},
                          {9, 20080310, -20.0, 205},
                          {8, 20080310, -10.0, 204},
                          {3, 20080309, -1.0},
                          {4, 20080311, -2.0}},
                         50.0);
  account->CacheRunningBalances();
  // 49 after the day before; then check 204, check 205, the deposit; then the next day.
  const double expected[] = {119.0, 19.0, 39.0, 49.0, 117.0};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    const auto& entry = account->GetEntries()[i];
    SCOPED_TRACE(entry->GetNumber());
    EXPECT_EQ(entry->GetCachedRunningBalance(), expected[i]);
    EXPECT_EQ(account->GetRunningBalanceAtEntry(entry.get()), expected[i]);
  }
  EXPECT_EQ(account->GetRunningBalanceAtEntry(nullptr), 0.0);
  EXPECT_EQ(account->GetRunningBalanceBeforeDate(20080310), 49.0);
  EXPECT_EQ(account->GetRunningBalanceThroughDate(20080310), 119.0);
}

TEST(ZELMAccountLedger, VoidEntriesNeverCount) {
  auto account = Account({{1, 20080301, -10.0, -1, "", "", false, true},
                          {2, 20080302, -500.0, -1, "", "", true},
                          {3, 20080303, 40.0}},
                         100.0);
  account->CacheRunningBalances();
  const auto& e = account->GetEntries();
  EXPECT_EQ(e[1]->GetCachedRunningBalance(), e[0]->GetCachedRunningBalance());
  EXPECT_EQ(account->GetRunningBalanceAtEntry(e[1].get()), 90.0);
  EXPECT_EQ(account->GetBalance(), 130.0);
  EXPECT_EQ(account->GetResolvedBalance(), 90.0);
  EXPECT_EQ(account->GetUnresolvedBalance(), 40.0);
  EXPECT_EQ(account->GetDebitsTotal(), -10.0);
  EXPECT_EQ(account->GetDepositsTotal(), 40.0);
  EXPECT_EQ(Numbers(account->GetDebits()), (std::vector<int>{1, 2}));  // void ones listed
}

TEST(ZELMAccountLedger, LockedAccountShowsZeroBalanceOnly) {
  testing::ScopedClockPin pin(20080315);
  ZELMAccount open;
  open.SetPassword("");
  open.SetStartingBalance(100.0);
  EXPECT_EQ(open.GetUnresolvedBalance(), 0.0);

  auto locked = Account({{1, 20080301, -30.0}, {2, 20080401, -5.0}}, 100.0);
  locked->SetPassword("pw");
  const plist::Dictionary stored = locked->asDictionary();
  ZELMAccount reloaded(&stored);
  ASSERT_FALSE(reloaded.IsAuthenticated());
  EXPECT_EQ(reloaded.GetBalance(), 0.0);
  EXPECT_EQ(reloaded.GetTodaysBalance(), 70.0);  // the entry of April is after today
  EXPECT_EQ(reloaded.GetResolvedBalance(), 100.0);
  EXPECT_EQ(reloaded.GetUnresolvedBalance(), -100.0);
  EXPECT_EQ(reloaded.BalanceIsGreaterThan(open), -1);  // sorts as zero, below 100
}

TEST(ZELMAccountLedger, SuggestionLists) {
  auto account = Account({{1, 20080301, -1.0, -1, "Rent", "Landlord"},
                          {2, 20080302, -1.0, -1, "fuel", "Shell"},
                          {3, 20080303, -1.0, -1, "Fuel", "shell"},
                          {4, 20080304, -1.0, -1, "", "Bank"},
                          {5, 20080305, -1.0, -1, "Books"},
                          {6, 20080306, -1.0, -1, "Apples"},
                          {7, 20080307, -1.0, -1, "Coffee"},
                          {8, 20080308, 9.0, -1, "Salary", "Employer"}});
  EXPECT_EQ(account->DebitDescriptions_All(),
            (Strings{"Apples", "Books", "Coffee", "fuel", "Rent"}));
  EXPECT_EQ(account->Tos_All(), (Strings{"Bank", "Landlord", "Shell"}));
  EXPECT_EQ(account->Froms_All(), (Strings{"Employer"}));
  // Most recent first, stopping after the addition made with the count already reached.
  EXPECT_EQ(account->DebitDescriptions_Some(2), (Strings{"Coffee", "Apples", "Books"}));
  EXPECT_EQ(account->DebitDescriptions_Some(0), (Strings{"Coffee"}));
  EXPECT_EQ(account->DebitDescriptions_Some(10).size(), 5u);
  EXPECT_EQ(account->Tos_Some(1), (Strings{"Bank", "shell"}));

  account->SetPreferredDebitDescriptions(Strings{"Mine"});
  account->Set_Preference_Descriptions_SomeSelection(1);
  const std::vector<std::pair<int, std::optional<Strings>>> styles = {
      {0, account->DebitDescriptions_All()},
      {1, Strings{"Coffee", "Apples"}},
      {2, Strings{"Mine"}},
      {3, std::nullopt}};
  for (const auto& [style, expected] : styles) {
    account->Set_Preference_Descriptions_Style(style);
    EXPECT_EQ(account->GetPreferredDebitDescriptions(), expected) << style;
  }
  EXPECT_EQ(account->GetPreferredFroms(), (Strings{"Employer"}));  // to/from style 1, count 50

  ZELMAccount locked;
  locked.AddEntry(Make({1, 20080301, -1.0, -1, "Rent"}));
  EXPECT_TRUE(locked.DebitDescriptions_All().empty());
  EXPECT_TRUE(locked.DebitDescriptions_Some(5).empty());
}

TEST(ZELMAccountLedger, StoreAndFolders) {
  auto account = Account({{1, 20080305, -1.0, 11}, {2, 20080301, 5.0}, {3, 20080305, -2.0, 10}});
  auto folder = std::make_shared<ZELMAccountFolder>();
  EXPECT_EQ(folder->name(), "Untitled");
  account->addFolder(folder);
  account->addFolder(folder);
  ASSERT_EQ(account->folders().size(), 1u);
  account->setFolder(folder);
  auto filed = Make({4, 20080301, -3.0, 12, "Taxes"});
  account->AddEntry(filed);
  EXPECT_EQ(filed->GetAccount(), account.get());
  EXPECT_EQ(Numbers(account->GetEntries()), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(Numbers(account->GetAllEntries()), (std::vector<int>{1, 2, 3, 4}));
  EXPECT_EQ(account->GetFirstEntry()->GetNumber(), 2);  // first met among equal dates
  EXPECT_EQ(account->GetLastEntry()->GetNumber(), 1);
  EXPECT_EQ(account->GetLastEnteredEntry(), filed);
  EXPECT_EQ(account->GetLastEnteredCheck(), filed);
  EXPECT_EQ(account->GetEntryWithNumber(4), filed);
  EXPECT_EQ(account->HighestCheckNumber(), 12);  // folders count
  EXPECT_EQ(folder->total(), -3.0);

  // Sorting works on the shown list only (every key's order is checked below).
  account->SortBy(1, false);
  EXPECT_EQ(Numbers(account->GetEntries()), (std::vector<int>{1, 2, 3}));

  account->RemoveEntry(filed.get());
  EXPECT_TRUE(folder->entries().empty());
  account->removeFolderAtIndex(1);
  account->removeFolder(folder.get());
  EXPECT_TRUE(account->folders().empty());
  account->RemoveEntry(nullptr);
  account->AddEntry(nullptr);
  EXPECT_EQ(account->GetAllEntries().size(), 3u);
  ZELMAccount empty;
  EXPECT_EQ(empty.GetFirstEntry(), nullptr);
  EXPECT_EQ(empty.GetLastEnteredCheck(), nullptr);
}

// SortBy and CacheRunningBalances order a register as sorting by number and then stably by the
// key's comparator does (an unknown key: number order), ties, texts that differ only by case,
// non-ASCII texts, unknown types and repeated entry numbers included.
TEST(ZELMAccountLedger, SortingMatchesTheComparators) {
  using Comparator = int (ZELMAccountEntry::*)(const ZELMAccountEntry&) const;
#define FOLVANT_PAIR(X) \
  std::pair<Comparator, Comparator>(&ZELMAccountEntry::X, &ZELMAccountEntry::X##_Reversed)
  const std::pair<Comparator, Comparator> comparators[] = {
      FOLVANT_PAIR(CheckNumberIsGreaterThan),
      FOLVANT_PAIR(DatePrimaryCheckSecondaryIsGreaterThan),
      FOLVANT_PAIR(TypePrimaryDateSecondaryIsGreaterThan),
      FOLVANT_PAIR(DescriptionIsGreaterThan),
      FOLVANT_PAIR(AmountIsGreaterThan),
      FOLVANT_PAIR(ClearedIsGreaterThan),
      FOLVANT_PAIR(ToFromIsGreaterThan)};
#undef FOLVANT_PAIR
  const Strings texts = {"",       "rent",   "Rent",    "RENT", "Éclair", "éclair",
                         "Eclair", "straße", "STRASSE", "Zoo",  "apple"};
  std::mt19937 random(42);
  auto account = Account({});
  for (int i = 0; i < 300; ++i) {
    const int check = random() % 3 == 0 ? static_cast<int>(100 + random() % 20) : -1;
    auto entry =
        Make({static_cast<int>(random() % 150), static_cast<int>(20080301 + random() % 4),
              static_cast<double>(random() % 7) - 3.0, check, texts[random() % texts.size()],
              texts[random() % texts.size()], false, random() % 2 == 0});
    entry->SetType(static_cast<int>(random() % 16) - 1);  // -1 and 13, 14: no such type
    account->AddEntry(entry);
  }
  const std::vector<EntryPtr> original = account->GetEntries();
  auto stable = [](std::vector<EntryPtr> list, Comparator comparator) {
    std::stable_sort(list.begin(), list.end(), [&](const EntryPtr& a, const EntryPtr& b) {
      return ((*a).*comparator)(*b) < 0;
    });
    return list;
  };
  for (int key = -1; key <= 7; ++key) {
    for (bool descending : {false, true}) {
      SCOPED_TRACE(::testing::Message() << "key " << key << (descending ? " descending" : ""));
      account->SetEntries(original);
      account->SortBy(key, descending);
      std::vector<EntryPtr> expected = stable(original, &ZELMAccountEntry::NumberIsGreaterThan);
      if (key >= 0 && key < 7) {
        const auto& [up, down] = comparators[static_cast<std::size_t>(key)];
        expected = stable(expected, descending ? down : up);
      }
      EXPECT_TRUE(account->GetEntries() == expected);
    }
  }
  account->SetEntries(original);
  account->CacheRunningBalances();
  double balance = 0.0;
  for (const auto& entry :
       stable(original, &ZELMAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan)) {
    balance += entry->GetAmount();
    ASSERT_EQ(entry->GetCachedRunningBalance(), balance);
  }
}

TEST(ZELMAccountLedger, InitEntriesSkipsWhatIsNotAnEntry) {
  ZELMAccount account;
  LogCapture log;
  EXPECT_EQ(account.InitEntries(nullptr), nullptr);
  const plist::Value not_array("x");
  EXPECT_EQ(account.InitEntries(&not_array), nullptr);
  const plist::Value mixed(plist::Array{Make({4, 20080301, 1.0})->asDictionary(), 5});
  const auto* entries = account.InitEntries(&mixed);
  ASSERT_EQ(entries, &account.GetEntries());
  ASSERT_EQ(entries->size(), 1u);
  EXPECT_EQ((*entries)[0]->GetAccount(), &account);
  EXPECT_EQ(log.messages(),
            (Strings{"Invalid theArray supplied to -[ZELMAccount InitEntries]",
                     "Invalid theValue encountered in -[ZELMAccount InitEntries]"}));
}

TEST(ZELMAccountLedger, AccountComparators) {
  ZELMAccount a, b;
  a.SetName("checking");
  b.SetName("Savings");
  a.SetNumber(2);
  b.SetNumber(1);
  EXPECT_EQ(a.NameIsGreaterThan(b), -1);
  EXPECT_EQ(a.NameIsGreaterThan_Reversed(b), 1);
  EXPECT_EQ(a.NumberIsGreaterThan(b), 1);
  b.SetName("CHECKING");
  EXPECT_EQ(a.NameIsGreaterThan(b), 0);
  a.SetPassword("");
  b.SetPassword("");
  a.SetStartingBalance(5.0);
  EXPECT_EQ(a.BalanceIsGreaterThan(b), 1);
  EXPECT_EQ(a.BalanceIsGreaterThan_Reversed(b), -1);
}

// ---- Types, categories and suggestion lists of an account ----

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
  std::shared_ptr<ZELMAccountEntryCategory> autos, fuel, food;
  for (auto [category, number] : {std::pair{&autos, 3}, {&fuel, 8}, {&food, 5}}) {
    *category = std::make_shared<ZELMAccountEntryCategory>();
    (*category)->setNumber(number);
  }
  autos->addChild(fuel);
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
