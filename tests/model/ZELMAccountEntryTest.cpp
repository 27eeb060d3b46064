#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntrySplit.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::LogCapture;
using EntryPtr = std::shared_ptr<ZELMAccountEntry>;
using Messages = std::vector<std::string>;

plist::Dictionary GoodEntry() {
  const plist::Dictionary item{{"category", 7},
                               {"toFrom", "Shell"},
                               {"description", "Diesel"},
                               {"amount", -50.0},
                               {"exchangedAmount", -45.5}};
  // The amount is kept as read, not rounded.
  return plist::Dictionary{
      {"date", 20080314},
      {"number", 12},
      {"checkNumber", 1001},
      {"entryFlags", ZELMAccountEntry::kFlagDebit | ZELMAccountEntry::kFlagLinked |
                         ZELMAccountEntry::kFlagCheck | ZELMAccountEntry::kFlagTaxDeductible},
      {"type", 4},
      {"category", 7},
      {"amount", -50.004},
      {"description", "Fuel"},
      {"toFrom", "Shell"},
      {"cleared", true},
      {"notes", "receipt in the glovebox"},
      {"linkedEntry", 3},
      {"linkedAccount", 2},
      {"linkedExchangedAmount", -45.5},
      {"splitLineItems", plist::Array{item}}};
}

TEST(ZELMAccountEntryStoredForm, RoundTripsThroughLoadsAndCopies) {
  LogCapture log;
  const plist::Dictionary good = GoodEntry();
  ZELMAccountEntry entry(&good);
  entry.SetCachedRunningBalance(123.0);
  EntryPtr copy = ZELMAccountEntry::entryWithEntry(entry);
  EXPECT_TRUE(log.messages().empty());
  EXPECT_EQ(entry.asDictionary(), good);
  EXPECT_EQ(entry.GetAmount(), -50.0);  // the split total
  EXPECT_EQ(copy->asDictionary(), good);
  EXPECT_EQ(copy->GetCachedRunningBalance(), 0.0);                  // never stored
  EXPECT_NE(copy->splitLineItems()[0], entry.splitLineItems()[0]);  // items are not shared
  EXPECT_EQ(ZELMAccountEntry(nullptr).asDictionary(), ZELMAccountEntry().asDictionary());
}

// One row per key: remove it, or give it a value of the wrong kind, and check that the fresh
// value was kept and exactly the expected message was logged.
TEST(ZELMAccountEntryStoredForm, DamagedKeysKeepFreshValuesWithFixedMessages) {
  const std::string where = " in -[ZELMAccountEntry initWithDictionary:]";
  struct Row {
    const char* key;
    bool logs_missing;
    const char* wrong;  // the start of the wrong-kind message; nullptr: silent
    plist::Value wrong_value;
    plist::Value fresh;  // none: the key is not written for the fresh value
  };
  const Row rows[] = {
      {"date", true, "date is", "20080314", 0},
      {"number", true, "number is", "12", -1},
      {"checkNumber", true, "checkNumber is", plist::Array{}, -1},
      {"entryFlags", true, "entryFlags is", "85", 0},
      {"linkedEntry", false, "linkedEntry is", "3", -1},
      {"linkedAccount", false, "linkedAccount is", "2", -1},
      {"linkedExchangedAmount", false, "linkedExchangedAmount is", "x", 0.0},
      {"description", true, "description is", 5, ""},
      {"type", true, "type is", "4", -1},
      {"category", false, "category is", "7", -1},
      {"amount", true, "amount is", "-50", 0.0},
      {"toFrom", true, "toFrom is", true, ""},
      {"cleared", true, "cleared is", "YES", false},
      {"notes", false, "notes are", plist::Dictionary{}, plist::Value()},
      {"splitLineItems", false, nullptr, plist::Dictionary{}, plist::Value()},
  };
  for (const Row& row : rows) {
    for (bool remove : {true, false}) {
      SCOPED_TRACE(std::string(row.key) + (remove ? " removed" : " of the wrong kind"));
      plist::Dictionary damaged = GoodEntry();
      plist::Dictionary expected = GoodEntry();
      if (remove) damaged.erase(row.key);
      if (!remove) damaged.set(row.key, row.wrong_value);
      if (row.fresh.isNone()) expected.erase(row.key);
      if (!row.fresh.isNone()) expected.set(row.key, row.fresh);
      if (std::string(row.key) == "entryFlags") {
        // Without the linked bit the link keys are neither read nor written.
        for (const char* key : {"linkedEntry", "linkedAccount", "linkedExchangedAmount"}) {
          expected.erase(key);
        }
      }
      std::vector<std::string> messages;
      if (remove && row.logs_missing) {
        messages.push_back("No " + std::string(row.key) + " defined for theDictionary" + where);
      } else if (!remove && row.wrong != nullptr) {
        messages.push_back(row.wrong + std::string(" in the wrong format") + where);
      }
      LogCapture log;
      ZELMAccountEntry entry(&damaged);
      EXPECT_EQ(log.messages(), messages);
      EXPECT_EQ(entry.asDictionary(), expected);
    }
  }
}

TEST(ZELMAccountEntryStoredForm, LinkKeysOfAnUnlinkedEntryAreNeitherReadNorWritten) {
  plist::Dictionary stored = GoodEntry();
  stored.set("entryFlags", ZELMAccountEntry::kFlagDeposit);
  stored.set("linkedEntry", "wrong kind, but never read");
  stored.set("splitLineItems", plist::Array{17, plist::Dictionary{{"amount", 2.5}}});
  LogCapture log;
  ZELMAccountEntry entry(&stored);
  EXPECT_TRUE(log.messages().empty());
  EXPECT_FALSE(entry.asDictionary().contains("linkedEntry"));
  EXPECT_EQ(entry.GetAmount(), 2.5);  // the element that is not a dictionary is skipped
}

TEST(ZELMAccountEntry, SetterRules) {
  ZELMAccountEntry e;
  e.SetIsDeposit(true);
  e.SetIsDebit(false);  // clearing one leaves the other
  EXPECT_TRUE(e.IsDeposit());
  e.SetIsDebit(true);  // setting one clears the other
  EXPECT_EQ(e.GetEntryFlags(), ZELMAccountEntry::kFlagDebit);
  e.SetLinkedEntry(5);
  e.SetIsLinked(true);
  e.SetIsLinked(false);  // clearing the link forgets its target
  EXPECT_EQ(e.GetLinkedEntry(), -1);
  EXPECT_EQ(e.GetEntryFlags(), ZELMAccountEntry::kFlagDebit);

  e.SetDate(20080314);
  e.SetDate(-1);
  e.SetDescription("Fuel");
  e.SetDescription(std::nullopt);
  EXPECT_EQ(e.GetDate(), 20080314);
  EXPECT_EQ(e.GetDescription(), "Fuel");

  const double amounts[][2] = {{-12.345678, -12.35}, {0.004, 0.0}, {1.005, 1.01}, {-2.675, -2.68}};
  for (const auto& row : amounts) {
    e.SetAmount(row[0]);
    EXPECT_EQ(e.GetAmount(), row[1]) << row[0];
  }
}

TEST(ZELMAccountEntry, LineItemsAndTheSplitTotal) {
  ZELMAccountEntry e;
  e.addSplitLineItemWithCategory(3, "Food", std::nullopt, 10.00);
  e.addSplitLineItemWithCategory(4, std::nullopt, "Pharmacy", 5.25);
  EXPECT_EQ(e.GetAmount(), 15.25);
  EXPECT_EQ(e.asDictionary().find("amount")->asReal(), 0.0);  // the stored amount
  EXPECT_EQ(e.splitLineItems()[1]->exchangedAmount(), 5.25);

  auto extra = std::make_shared<ZELMAccountEntrySplitLineItem>(5, "x", "y", 1.0, 1.0);
  e.insertSplitLineItem(extra, 3);   // beyond the count: ignored
  e.insertSplitLineItem(extra, -1);  // ignored
  e.insertSplitLineItem(extra, 2);   // the count appends
  e.insertSplitLineItem(extra, 0);
  EXPECT_EQ(e.splitLineItems().size(), 4u);
  EXPECT_EQ(e.splitLineItems().front(), extra);
  e.removeSplitLineItem(extra.get());  // every occurrence
  e.removeSplitLineItemAtIndex(2);     // ignored
  e.removeSplitLineItemAtIndex(0);
  ASSERT_EQ(e.splitLineItems().size(), 1u);
  EXPECT_EQ(e.splitLineItems().front()->category(), 4);
}

// The entry keeps its split total between calls; every way of changing an item or the list
// must show in the next one.
TEST(ZELMAccountEntry, TheSplitTotalFollowsEveryChange) {
  ZELMAccountEntry e, other;
  auto shared = std::make_shared<ZELMAccountEntrySplitLineItem>(1, "", "", 2.0, 2.0);
  e.addSplitLineItemWithCategory(3, "Food", std::nullopt, 10.00);
  e.addSplitLineItem(shared);
  other.addSplitLineItem(shared);
  EXPECT_EQ(e.GetAmount(), 12.0);
  EXPECT_EQ(other.GetAmount(), 2.0);
  shared->setAmount(4.0);  // one item in two entries
  EXPECT_EQ(e.GetAmount(), 14.0);
  EXPECT_EQ(other.GetAmount(), 4.0);
  *e.splitLineItems().front() = ZELMAccountEntrySplitLineItem(3, "", "", 1.0, 1.0);
  EXPECT_EQ(e.GetAmount(), 5.0);
  e.removeSplitLineItemAtIndex(0);
  EXPECT_EQ(e.GetAmount(), 4.0);
  const ZELMAccountEntry copy(e);
  shared->setAmount(7.0);
  EXPECT_EQ(copy.GetAmount(), 4.0);  // a copy has items of its own
  EXPECT_EQ(e.GetAmount(), 7.0);
  e.removeAllSplitLineItems();
  EXPECT_EQ(e.GetAmount(), 0.0);  // the entry's own amount again
}

// ---- Comparators ----

// Two accounts with the default types and the categories Auto (1) > Fuel (2) and Food (3).
// Fuel is in the accounts' own lists at the top level, where accounts without a controller
// look, while it still names Auto as its parent.
struct TwoAccounts {
  ZELMAccount checking, savings;
  std::shared_ptr<ZELMAccountEntryCategory> autos = Named("Auto", 1), fuel = Named("Fuel", 2);
  TwoAccounts() {
    checking.SetName("checking");
    checking.SetNumber(1);
    savings.SetName("Savings");
    savings.SetNumber(2);
    autos->addChild(fuel);
    checking.setCategories({autos, fuel, Named("Food", 3)});
    savings.setCategories(checking.categories());
  }
  static std::shared_ptr<ZELMAccountEntryCategory> Named(const char* name, std::int32_t number) {
    auto category = std::make_shared<ZELMAccountEntryCategory>();
    category->setName(name);
    category->setNumber(number);
    return category;
  }
  static EntryPtr Add(ZELMAccount& account, std::int32_t number, std::int32_t date,
                      std::int32_t type, std::int32_t category) {
    auto e = std::make_shared<ZELMAccountEntry>();
    e->SetAccount(&account);
    e->SetNumber(number);
    e->SetDate(date);
    e->SetType(type);
    e->SetCategory(category);
    return e;
  }

  // Entries 1 to 7; several share each primary key, so every tie-break is reached.
  std::vector<EntryPtr> Register() {
    struct Row {
      bool in_savings;
      std::int32_t date, type, category;
      std::int32_t check_number;  // -1: not a check
      const char* description;
      const char* to_from;
      double amount;
      std::uint8_t cleared;
      double balance;
    };
    const Row rows[] = {
        {false, 20080301, 4, 2, 101, "apple", "Shell", -10.0, 1, 100.0},
        {false, 20080301, 0, 3, -1, "Apple", "shell", 10.0, 0, 90.0},
        {false, 20080302, -1, -1, 100, "banana", "A", -10.0, 1, 100.0},
        {true, 20080301, 4, 1, 100, "", "", 100.0, 0, 50.0},  // split: 2.00 + 3.00
        {true, 20080228, 10, 2, -1, "Cherry", "b", -99.0, 1, 90.0},
        {false, 20080302, 4, 1, -1, "apple", "SHELL", 10.0, 0, 100.0},
        {false, 20080301, -1, 3, 101, "APPLE", "b", -20.0, 1, 90.0},
    };
    std::vector<EntryPtr> entries;
    for (const Row& s : rows) {
      auto e = Add(s.in_savings ? savings : checking, static_cast<std::int32_t>(entries.size()) + 1,
                   s.date, s.type, s.category);
      if (s.check_number >= 0) {
        e->SetIsCheck(true);
        e->SetCheckNumber(s.check_number);
      }
      e->SetDescription(s.description);
      e->SetToFrom(s.to_from);
      e->SetAmount(s.amount);
      e->SetCleared(s.cleared);
      e->SetCachedRunningBalance(s.balance);
      entries.push_back(e);
    }
    entries[3]->addSplitLineItemWithCategory(1, "", "", 2.0);
    entries[3]->addSplitLineItemWithCategory(1, "", "", 3.0);
    return entries;
  }
};

// Each comparator with the register's entry numbers in its order: every pair must compare as
// that order says, and the reversed twin exactly the other way.
TEST(ZELMAccountEntryComparators, OrderTheRegisterAndTheirTwinsReverseIt) {
  using Comparator = int (ZELMAccountEntry::*)(const ZELMAccountEntry&) const;
  struct Row {
    const char* name;
    Comparator forward, reversed;
    std::vector<std::size_t> order;
  };
#define FOLVANT_ROW(X, ...) \
  Row(#X, &ZELMAccountEntry::X, &ZELMAccountEntry::X##_Reversed, {__VA_ARGS__})
  const Row rows[] = {
      // checking < Savings, whatever the case.
      FOLVANT_ROW(AccountIsGreaterThan, 1, 2, 7, 3, 6, 5, 4),
      FOLVANT_ROW(CheckNumberIsGreaterThan, 3, 4, 1, 7, 2, 5, 6),
      FOLVANT_ROW(DateIsGreaterThan, 5, 1, 2, 4, 7, 3, 6),
      FOLVANT_ROW(DatePrimaryCheckSecondaryIsGreaterThan, 5, 4, 1, 7, 2, 3, 6),
      FOLVANT_ROW(DescriptionIsGreaterThan, 4, 1, 2, 6, 7, 3, 5),
      FOLVANT_ROW(ToFromIsGreaterThan, 4, 3, 5, 7, 1, 2, 6),
      // "" < ATM < Check < Deposit.
      FOLVANT_ROW(TypePrimaryDateSecondaryIsGreaterThan, 7, 3, 2, 1, 4, 6, 5),
      // "" < Auto < Auto:Fuel < Food.
      FOLVANT_ROW(CategoryPrimaryDateSecondaryIsGreaterThan, 3, 4, 6, 5, 1, 2, 7),
      // Entry 4 stores 100.00 but reports its split total, 5.00.
      FOLVANT_ROW(AmountIsGreaterThan, 5, 7, 1, 3, 4, 2, 6),
      FOLVANT_ROW(BalanceIsGreaterThan, 4, 2, 5, 7, 1, 3, 6),
      FOLVANT_ROW(NumberIsGreaterThan, 1, 2, 3, 4, 5, 6, 7),
      FOLVANT_ROW(ClearedIsGreaterThan, 2, 4, 6, 1, 3, 5, 7),
  };
#undef FOLVANT_ROW
  TwoAccounts t;
  const std::vector<EntryPtr> entries = t.Register();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<const ZELMAccountEntry*> ordered;
    for (const std::size_t number : row.order) ordered.push_back(entries[number - 1].get());
    folvant::testing::ExpectOrder(
        ordered, [&row](const auto& a, const auto& b) { return (a.*row.forward)(b); },
        [&row](const auto& a, const auto& b) { return (a.*row.reversed)(b); });
  }
}

// Both type numbers are named by the receiver's account: ATM < Check in checking, while in
// savings, whose type 0 is renamed, Check < Zebra. Each entry sorts first from its own side.
TEST(ZELMAccountEntryComparators, TypeNamesComeFromTheReceiversAccount) {
  TwoAccounts t;
  t.savings.accountEntryTypeForNumber(0)->SetName("Zebra");
  const EntryPtr atm = t.Add(t.checking, 6, 20080301, 0, -1);
  const EntryPtr check = t.Add(t.savings, 7, 20080301, 4, -1);
  EXPECT_EQ(atm->TypePrimaryDateSecondaryIsGreaterThan(*check), -1);
  EXPECT_EQ(check->TypePrimaryDateSecondaryIsGreaterThan(*atm), -1);
}

TEST(ZELMAccountEntry, SpeakableString) {
  testing::ScopedSettingsPin settings(platform::UserSettings{});
  TwoAccounts t;
  EntryPtr e = t.Add(t.checking, 1, 20080314, 10, 2);
  e->SetIsDeposit(true);
  e->SetAmount(2480.16);
  e->SetToFrom("Acme");
  EXPECT_EQ(e->asSpeakableString(),
            "03/14/08.  Deposit in the Amount of:  2480.16 .  Type:  Deposit .  Category:  Fuel .  "
            "From:  Acme .  Unresolved .  ");
  EXPECT_EQ(ZELMAccountEntry::entryWithEntry(*e)->asSpeakableString(), e->asSpeakableString());

  // Without an account: no type or category names.
  plist::Dictionary stored = GoodEntry();
  stored.set("entryFlags", ZELMAccountEntry::kFlagDebit | ZELMAccountEntry::kFlagCheck);
  stored.set("amount", -12.5);
  stored.erase("splitLineItems");
  const ZELMAccountEntry check(&stored);
  EXPECT_EQ(check.asSpeakableString(),
            "03/14/08.  Debit in the Amount of:  -12.50 .  Check Number:  1001 .  To:  Shell .  "
            "Description:  Fuel .  Resolved .  ");
  // Neither debit nor deposit: no amount and no payee.
  ZELMAccountEntry plain;
  plain.SetDate(20071231);
  plain.SetToFrom("Nobody");
  EXPECT_EQ(plain.asSpeakableString(), "12/31/07.  Unresolved .  ");
}

TEST(ZELMAccountEntry, SyncToEntryNegatesIntoTheCounterpart) {
  TwoAccounts t;
  EntryPtr sent = t.Add(t.checking, 12, 20080314, 9, 2);
  sent->SetIsDebit(true);
  sent->SetIsCheck(true);
  sent->SetVoid(true);
  sent->SetDescription("Monthly savings");
  sent->SetAmount(-50.0);
  sent->SetLinkedExchangedAmount(-45.5);
  sent->addSplitLineItem(
      std::make_shared<ZELMAccountEntrySplitLineItem>(3, "a", "b", -30.0, -27.25));
  EntryPtr received = t.Add(t.savings, 40, 20070101, 12, -1);
  received->SetCheckNumber(7);
  received->SetCleared(1);
  received->SetTaxDeductible(true);
  received->SetNotes("kept");
  received->SetLinkedExchangedAmount(99.0);

  t.savings.setCurrency(t.checking.currency());
  sent->syncToEntry(*received);
  const plist::Dictionary item{{"category", 3},
                               {"toFrom", "b"},
                               {"description", "a"},
                               {"amount", 30.0},
                               {"exchangedAmount", 27.25}};
  // Number, check number and check bit, type, resolved mark, tax bit and notes stay.
  const plist::Dictionary expected{{"date", 20080314},
                                   {"number", 40},
                                   {"checkNumber", 7},
                                   {"entryFlags", 2 | 4 | 64 | 128},
                                   {"type", 12},
                                   {"category", 2},
                                   {"amount", 50.0},
                                   {"description", "Monthly savings"},
                                   {"toFrom", "checking"},
                                   {"cleared", true},
                                   {"notes", "kept"},
                                   {"linkedEntry", 12},
                                   {"linkedAccount", 1},
                                   {"linkedExchangedAmount", 99.0},
                                   {"splitLineItems", plist::Array{item}}};
  EXPECT_EQ(received->asDictionary(), expected);

  // Another currency object: the exchanged amounts become the counterpart's own.
  t.savings.setCurrency(std::make_shared<LVCurrency>());
  sent->SetIsDeposit(true);
  sent->syncToEntry(*received);
  EXPECT_TRUE(received->IsDebit());
  EXPECT_EQ(received->GetLinkedExchangedAmount(), 50.0);
  EXPECT_EQ(received->splitLineItems()[0]->amount(), 27.25);
  EXPECT_EQ(received->splitLineItems()[0]->exchangedAmount(), 30.0);
  EXPECT_EQ(received->asDictionary().find("amount")->asReal(), 45.5);
  EXPECT_EQ(received->GetAmount(), 27.25);  // the split total
}

// ---- Line items and legacy splits ----

TEST(ZELMAccountEntrySplitLineItem, LoadsWhatIsPresentAndKeepsAmountsUnrounded) {
  LogCapture log;
  const plist::Dictionary only_amount{{"amount", -12.345}};
  ZELMAccountEntrySplitLineItem item(&only_amount);
  item.setToFrom(std::nullopt);  // still written, as ""
  const plist::Dictionary expected{{"category", -1},
                                   {"toFrom", ""},
                                   {"description", ""},
                                   {"amount", -12.345},
                                   {"exchangedAmount", 0.0}};
  EXPECT_EQ(item.asDictionary(), expected);
  EXPECT_TRUE(log.messages().empty());
}

plist::Dictionary GoodLegacySplit() {
  plist::Array descriptions, to_froms, amounts;
  for (int i = 0; i < 10; ++i) {
    descriptions.emplace_back("d" + std::to_string(i));
    to_froms.emplace_back("t" + std::to_string(i));
    amounts.emplace_back(i + 0.5);
  }
  return {{"descriptions", descriptions}, {"toFrom", to_froms}, {"amounts", amounts}};
}

TEST(ZELMAccountEntrySplit, DamagedKeysAreLoggedAndLeaveTheirSlots) {
  const char* kWrong =
      "theValue is in the wrong format in ZELMAccountEntrySplit:initWithDictionary";
  const char* rows[][2] = {
      {"descriptions", "No description defined for theDictionary in "},
      {"toFrom", "No toFroms defined for theDictionary in "},
      {"amounts", "No amounts defined for theDictionary in "},
  };
  const plist::Dictionary fresh = ZELMAccountEntrySplit().asDictionary();
  for (const auto& row : rows) {
    for (bool remove : {true, false}) {
      SCOPED_TRACE(std::string(row[0]) + (remove ? " removed" : " of the wrong kind"));
      plist::Dictionary damaged = GoodLegacySplit();
      plist::Dictionary expected = damaged;
      expected.set(row[0], *fresh.find(row[0]));
      if (remove) damaged.erase(row[0]);
      if (!remove) damaged.set(row[0], "not an array");
      LogCapture log;
      ZELMAccountEntrySplit split(&damaged);
      const std::string missing = std::string(row[1]) + "ZELMAccountEntrySplit:initWithDictionary";
      EXPECT_EQ(log.messages(), Messages{remove ? missing : kWrong});
      EXPECT_EQ(split.asDictionary(), expected);
    }
  }
}

TEST(ZELMAccountEntrySplit, ShortAndLongArrays) {
  LogCapture log;
  const plist::Dictionary good = GoodLegacySplit();
  EXPECT_EQ(ZELMAccountEntrySplit(&good).asDictionary(), good);
  const plist::Dictionary three{{"descriptions", plist::Array{}},
                                {"toFrom", plist::Array{}},
                                {"amounts", plist::Array{1.0, 2.0, 3.004}}};
  ZELMAccountEntrySplit short_split(&three);
  EXPECT_TRUE(log.messages().empty());
  EXPECT_EQ(short_split.GetAmount(2), 3.0);  // rounded on the way in
  EXPECT_EQ(short_split.GetTotal(), 6.0);    // slots 3-9 stay 0.0

  // Amounts beyond the tenth slot are refused one message each; texts are dropped silently.
  const plist::Array texts(11, plist::Value("x"));
  const plist::Dictionary eleven{
      {"descriptions", texts}, {"toFrom", texts}, {"amounts", plist::Array(11, 1.0)}};
  ZELMAccountEntrySplit long_split(&eleven);
  EXPECT_EQ(log.messages(),
            Messages{"Split index out of range of split array in ZELMAccountEntrySplit:SetAmount"});
  EXPECT_EQ(long_split.GetTotal(), 10.0);
}

TEST(ZELMAccountEntrySplit, RoundingAndCopies) {
  ZELMAccountEntrySplit split;
  split.SetAmount(-12.345678, 0);
  split.SetAmount(1.005, 9);
  split.SetEnabled(true, 9);
  EXPECT_EQ(split.GetAmount(0), -12.35);
  EXPECT_EQ(split.GetAmount(9), 1.01);
  EXPECT_DOUBLE_EQ(split.GetTotal(), -11.34);

  // Copies go through the stored form: slots survive, enabled marks do not.
  auto copy = ZELMAccountEntrySplit::splitWithSplit(&split);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->asDictionary(), split.asDictionary());
  EXPECT_FALSE(copy->GetEnabled(9));
  EXPECT_EQ(ZELMAccountEntrySplit::splitWithSplit(nullptr), nullptr);
}

}  // namespace
}  // namespace folvant
