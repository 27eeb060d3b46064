#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using testing::LogCapture;
using EntryPtr = std::shared_ptr<ZELMAccountEntry>;

plist::Dictionary GoodEntry() {
  const plist::Dictionary item{{"category", 7},
                               {"toFrom", "Shell"},
                               {"description", "Diesel"},
                               {"amount", -50.0},
                               {"exchangedAmount", -45.5}};
  return plist::Dictionary{
      {"date", 20080314},
      {"number", 12},
      {"checkNumber", 1001},
      {"entryFlags", ZELMAccountEntry::kFlagDebit | ZELMAccountEntry::kFlagLinked |
                         ZELMAccountEntry::kFlagCheck | ZELMAccountEntry::kFlagTaxDeductible},
      {"type", 4},
      {"category", 7},
      {"amount", -50.004},  // kept as read, not rounded
      {"description", "Fuel"},
      {"toFrom", "Shell"},
      {"cleared", true},
      {"notes", "receipt in the glovebox"},
      {"linkedEntry", 3},
      {"linkedAccount", 2},
      {"linkedExchangedAmount", -45.5},
      {"splitLineItems", plist::Array{item}},
  };
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

// ---- Comparators ----

struct EntryRow {
  std::int32_t number, date;
  std::int32_t check_number;  // -1: not a check
  const char* description;
  const char* to_from;
  double amount;
  std::uint8_t cleared;
  double balance;
};

// Several entries share each primary key, so every tie-break is reached.
std::vector<EntryPtr> Register() {
  const EntryRow rows[] = {
      {6, 20080302, -1, "apple", "SHELL", 10.0, 0, 100.0},
      {1, 20080301, 101, "apple", "Shell", -10.0, 1, 100.0},
      {4, 20080301, 100, "", "", 100.0, 0, 50.0},  // split: 2.00 + 3.00
      {2, 20080301, -1, "Apple", "shell", 10.0, 0, 90.0},
      {7, 20080301, 101, "APPLE", "b", -20.0, 1, 90.0},
      {3, 20080302, 100, "banana", "A", -10.0, 1, 100.0},
      {5, 20080228, -1, "Cherry", "b", -99.0, 1, 90.0},
  };
  std::vector<EntryPtr> entries;
  for (const EntryRow& s : rows) {
    auto e = std::make_shared<ZELMAccountEntry>();
    e->SetNumber(s.number);
    e->SetDate(s.date);
    if (s.check_number >= 0) {
      e->SetIsCheck(true);
      e->SetCheckNumber(s.check_number);
    }
    e->SetDescription(s.description);
    e->SetToFrom(s.to_from);
    e->SetAmount(s.amount);
    e->SetCleared(s.cleared);
    e->SetCachedRunningBalance(s.balance);
    if (s.number == 4) {
      e->addSplitLineItemWithCategory(1, "", "", 2.0);
      e->addSplitLineItemWithCategory(1, "", "", 3.0);
    }
    entries.push_back(e);
  }
  return entries;
}

using Comparator = int (ZELMAccountEntry::*)(const ZELMAccountEntry&) const;
struct ComparatorPair {
  const char* name;
  Comparator forward, reversed;
};

#define FOLVANT_PAIR(X) \
  { #X, &ZELMAccountEntry::X, &ZELMAccountEntry::X##_Reversed }
const ComparatorPair kComparators[] = {
    FOLVANT_PAIR(AccountIsGreaterThan),
    FOLVANT_PAIR(CheckNumberIsGreaterThan),
    FOLVANT_PAIR(DateIsGreaterThan),
    FOLVANT_PAIR(DatePrimaryCheckSecondaryIsGreaterThan),
    FOLVANT_PAIR(DescriptionIsGreaterThan),
    FOLVANT_PAIR(ToFromIsGreaterThan),
    FOLVANT_PAIR(TypePrimaryDateSecondaryIsGreaterThan),
    FOLVANT_PAIR(CategoryPrimaryDateSecondaryIsGreaterThan),
    FOLVANT_PAIR(AmountIsGreaterThan),
    FOLVANT_PAIR(BalanceIsGreaterThan),
    FOLVANT_PAIR(NumberIsGreaterThan),
    FOLVANT_PAIR(ClearedIsGreaterThan),
};
#undef FOLVANT_PAIR

std::vector<std::int32_t> SortedNumbers(std::vector<EntryPtr> entries, Comparator compare) {
  std::stable_sort(entries.begin(), entries.end(), [compare](const EntryPtr& a, const EntryPtr& b) {
    return ((*a).*compare)(*b) < 0;
  });
  std::vector<std::int32_t> numbers;
  for (const auto& e : entries) numbers.push_back(e->GetNumber());
  return numbers;
}

// Antisymmetry, reflexivity and transitivity make each comparator a strict order; the twin is
// the negation at every step, so it sorts into the exact reverse order.
void ExpectOrderProperties(const std::vector<EntryPtr>& entries) {
  for (const ComparatorPair& c : kComparators) {
    SCOPED_TRACE(c.name);
    for (const auto& a : entries) {
      EXPECT_EQ(((*a).*c.forward)(*a), 0);
      for (const auto& b : entries) {
        const int ab = ((*a).*c.forward)(*b);
        EXPECT_TRUE(ab == -1 || ab == 0 || ab == 1);
        EXPECT_EQ(ab, -((*b).*c.forward)(*a)) << a->GetNumber() << " vs " << b->GetNumber();
        EXPECT_EQ(((*a).*c.reversed)(*b), -ab);
        for (const auto& x : entries) {
          if (ab < 0 && ((*b).*c.forward)(*x) < 0) {
            EXPECT_LT(((*a).*c.forward)(*x), 0);
          }
        }
      }
    }
    std::vector<std::int32_t> ascending = SortedNumbers(entries, c.forward);
    std::reverse(ascending.begin(), ascending.end());
    EXPECT_EQ(SortedNumbers(entries, c.reversed), ascending);
  }
}

TEST(ZELMAccountEntryComparators, AreStrictOrdersWithExactReversedTwins) {
  ExpectOrderProperties(Register());
}

TEST(ZELMAccountEntryComparators, KeysAndTieBreaks) {
  const std::vector<EntryPtr> entries = Register();
  using Numbers = std::vector<std::int32_t>;
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::DatePrimaryCheckSecondaryIsGreaterThan),
            (Numbers{5, 4, 1, 7, 2, 3, 6}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::CheckNumberIsGreaterThan),
            (Numbers{3, 4, 1, 7, 2, 5, 6}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::DateIsGreaterThan),
            (Numbers{5, 1, 2, 4, 7, 3, 6}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::DescriptionIsGreaterThan),
            (Numbers{4, 1, 2, 6, 7, 3, 5}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::ToFromIsGreaterThan),
            (Numbers{4, 3, 5, 7, 1, 2, 6}));
  // Entry 4 stores 100.00 but reports its split total, 5.00.
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::AmountIsGreaterThan),
            (Numbers{5, 7, 1, 3, 4, 2, 6}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::BalanceIsGreaterThan),
            (Numbers{4, 2, 5, 7, 1, 3, 6}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::ClearedIsGreaterThan),
            (Numbers{2, 4, 6, 1, 3, 5, 7}));
}

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
};

TEST(ZELMAccountEntryComparators, NamesComeFromTheReceiversAccount) {
  TwoAccounts t;
  const std::vector<EntryPtr> entries = {
      t.Add(t.checking, 1, 20080302, 4, 2), t.Add(t.checking, 2, 20080301, 0, 3),
      t.Add(t.checking, 3, 20080301, -1, -1), t.Add(t.savings, 4, 20080301, 4, 1),
      t.Add(t.savings, 5, 20080228, 10, 2)};
  ExpectOrderProperties(entries);
  using Numbers = std::vector<std::int32_t>;
  // "" < ATM < Check < Deposit; "" < Auto < Auto:Fuel < Food; checking < Savings.
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::TypePrimaryDateSecondaryIsGreaterThan),
            (Numbers{3, 2, 4, 1, 5}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::CategoryPrimaryDateSecondaryIsGreaterThan),
            (Numbers{3, 4, 5, 1, 2}));
  EXPECT_EQ(SortedNumbers(entries, &ZELMAccountEntry::AccountIsGreaterThan),
            (Numbers{2, 3, 1, 5, 4}));

  // Both type numbers are named by the receiver's account: ATM < Check in checking, while in
  // savings, whose type 0 is renamed, Check < Zebra. Each entry sorts first from its own side.
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
  ZELMAccountEntry check;
  check.SetDate(20080314);
  check.SetIsDebit(true);
  check.SetIsCheck(true);
  check.SetCheckNumber(1001);
  check.SetAmount(-12.5);
  check.SetToFrom("Shell");
  check.SetDescription("Fuel");
  check.SetCleared(1);
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

}  // namespace
}  // namespace folvant
