#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/model/ZELMAccountUpgrade.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/platform/plist/Value.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;
using Messages = std::vector<std::string>;

const std::string kNoInactiveTypes =
    "No inactiveTypes found while upgrading account Checking. This could cause inconsistent "
    "behavior.";
const std::string kNoEntriesOnLoad =
    "Account does not have entries in -[ZELMAccount initWithDictionary:]";
const std::string kBadEntriesOnLoad =
    "Account entries are in the wrong format in -[ZELMAccount initWithDictionary:]";
const std::string kNoEntriesInUpgrade =
    "Account does not have entries in ZELMAccount:UpdateAccountDictionary:FromVersion";
const std::string kBadEntriesInUpgrade =
    "Account entries are in the wrong format in ZELMAccount:UpdateAccountDictionary:FromVersion";

// Points the upgrade at a preferences file for the life of a test (an empty path: none).
class ScopedPreferences {
 public:
  explicit ScopedPreferences(std::filesystem::path path)
      : previous_(SetUpgradePreferencesPath(std::move(path))) {}
  ~ScopedPreferences() { SetUpgradePreferencesPath(previous_); }
  ScopedPreferences(const ScopedPreferences&) = delete;
  ScopedPreferences& operator=(const ScopedPreferences&) = delete;

 private:
  std::optional<std::filesystem::path> previous_;
};

std::filesystem::path DataFile(const char* name) {
  return std::filesystem::path(FOLVANT_TEST_DATA_DIR) / "upgrade" / name;
}

struct Upgraded {
  Dictionary dict;
  Messages messages;
};

Upgraded Upgrade(Dictionary dict) {
  testing::LogCapture log;
  ZELMAccount::UpdateAccountDictionary(dict);
  return {std::move(dict), log.messages()};
}

Dictionary Account(std::int32_t version, Array entries) {
  return Dictionary{{"name", "Checking"}, {"version", version}, {"entries", std::move(entries)}};
}

const Dictionary& EntryAt(const Dictionary& account, std::size_t i) {
  return *account.find("entries")->asArray()->at(i).asDictionary();
}

std::vector<std::int32_t> Numbers(const Dictionary& account) {
  std::vector<std::int32_t> numbers;
  for (const Value& entry : *account.find("entries")->asArray()) {
    numbers.push_back(entry.asDictionary()->find("number")->intValue());
  }
  return numbers;
}

std::int32_t Int(const Dictionary& dict, const char* key) {
  const Value* value = dict.find(key);
  EXPECT_NE(value, nullptr) << key;
  return value == nullptr ? 0 : value->intValue();
}

// ---- Versions ------------------------------------------------------------------------------

// Without a version only the version and the number change; from version 8 on only the version.
TEST(AccountUpgrade, WithoutAVersionOrFromVersionEightNoStepRuns) {
  for (const Value& version : {Value(), Value(0), Value("none"), Value(8), Value(9), Value(100)}) {
    const bool unversioned = version.intValue() == 0;
    SCOPED_TRACE(::testing::Message() << "unversioned " << unversioned);
    // Shapes every step would touch: duplicates, old booleans, seconds, a transfer, a split.
    Dictionary dict{
        {"number", 5},
        {"entries",
         Array{Dictionary{{"number", 1}, {"isDebit", true}}, Dictionary{{"number", 1}, {"date", 0}},
               Dictionary{{"entryFlags", 12}, {"amount", 1.005}, {"split", Dictionary{}}}}}};
    if (!version.isNone()) dict.set("version", version);
    Dictionary expected = dict;
    expected.set("version", 8);
    if (unversioned) expected.set("number", -1);
    EXPECT_EQ(Upgrade(dict).dict, expected);
    EXPECT_EQ(Upgrade(dict).messages, Messages{});
  }
}

TEST(AccountUpgrade, MessagesForMissingAndIllTypedEntriesByVersion) {
  ScopedPreferences no_preferences{""};
  struct Row {
    std::int32_t version;
    bool present;  // "entries" present, as a string
    Messages expected;
  };
  const Row rows[] = {
      {1, false, {kNoEntriesOnLoad, kNoInactiveTypes, kNoEntriesInUpgrade, kNoEntriesOnLoad}},
      {2, false, {kNoInactiveTypes, kNoEntriesInUpgrade, kNoEntriesOnLoad}},
      {3, false, {kNoEntriesOnLoad}},
      {4, false, {}},
      {7, false, {}},
      {1,
       true,
       {kBadEntriesOnLoad, kNoInactiveTypes, kBadEntriesInUpgrade, kBadEntriesOnLoad,
        kBadEntriesOnLoad}},
      {3, true, {kBadEntriesOnLoad, kBadEntriesOnLoad}},
      {5, true, {kBadEntriesOnLoad}},
      {7, true, {kBadEntriesOnLoad}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::Message() << "version " << row.version << " present " << row.present);
    Dictionary dict{{"name", "Checking"}, {"version", row.version}};
    if (row.present) dict.set("entries", "none");
    const Upgraded up = Upgrade(dict);
    EXPECT_EQ(up.messages, row.expected);
    EXPECT_EQ(Int(up.dict, "version"), 8);
  }
}

// ---- Version 1: duplicate numbers ----------------------------------------------------------

TEST(AccountUpgrade, VersionOneNumbersRepeatsOfEarlierHighestNumbersAboveTheHighest) {
  ScopedPreferences no_preferences{""};
  Array entries;
  for (std::int32_t number : {1, 2, 2, 5, 3, 5, 3})
    entries.push_back(Dictionary{{"number", number}});
  const Upgraded up = Upgrade(Account(1, entries));
  // 2 and 5 were highest when first met, so their repeats become 6 and 7; 3 never was, so its
  // repeat survives the first step and is renumbered by the later number repair.
  EXPECT_EQ(Numbers(up.dict), (std::vector<std::int32_t>{1, 2, 6, 5, 3, 7, 8}));
  EXPECT_EQ(Int(up.dict, "numberCount"), 8);
}

// ---- Version 2: types and flags ------------------------------------------------------------

TEST(AccountUpgrade, VersionTwoTurnsTheOldBooleansIntoFlags) {
  ScopedPreferences no_preferences{""};
  struct Row {
    Value isDebit;
    Value isCheck;
    std::int32_t flags;
  };
  const Row rows[] = {
      {true, false, 1},      {false, false, 2}, {false, true, 18}, {true, true, 17},
      {Value(), Value(), 2}, {"YES", 1, 17},    {"no", 0.0, 2},
  };
  Array entries;
  for (const Row& row : rows) {
    Dictionary entry{{"number", static_cast<int>(entries.size()) + 1}};
    if (!row.isDebit.isNone()) entry.set("isDebit", row.isDebit);
    if (!row.isCheck.isNone()) entry.set("isCheck", row.isCheck);
    entries.push_back(entry);
  }
  const Upgraded up = Upgrade(Account(2, entries));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(Int(EntryAt(up.dict, i), "entryFlags"), rows[i].flags);
  }
  EXPECT_EQ(Int(up.dict, "numberCount"), static_cast<int>(std::size(rows)));
  EXPECT_EQ(up.messages, Messages{kNoInactiveTypes});
}

TEST(AccountUpgrade, VersionTwoTakesMissingTypesFromTheSharedPreferences) {
  ScopedPreferences preferences{DataFile("Folvant Preferences.plist")};
  const Upgraded up = Upgrade(Account(2, Array{}));
  ASSERT_NE(up.dict.find("types"), nullptr);
  ASSERT_NE(up.dict.find("inactiveTypes"), nullptr);
  const Array& types = *up.dict.find("types")->asArray();
  ASSERT_EQ(types.size(), 2u);
  EXPECT_EQ(*types[1].asDictionary()->find("name")->asString(), "Paycheck");
  EXPECT_EQ(up.dict.find("inactiveTypes")->asArray()->size(), 1u);
  EXPECT_EQ(up.messages, Messages{});

  // The account's own lists win.
  Dictionary own = Account(2, Array{});
  own.set("types", Array{});
  own.set("inactiveTypes", Array{});
  const Upgraded kept = Upgrade(own);
  EXPECT_TRUE(kept.dict.find("types")->asArray()->empty());
  EXPECT_TRUE(kept.dict.find("inactiveTypes")->asArray()->empty());

  // Without the file the account keeps no types, and the message names it.
  ScopedPreferences missing{DataFile("no such file")};
  EXPECT_EQ(Upgrade(Account(2, Array{})).dict.find("types"), nullptr);
  EXPECT_EQ(Upgrade(Dictionary{{"version", 2}, {"entries", Array{}}}).messages,
            Messages{"No inactiveTypes found while upgrading account (null). This could cause "
                     "inconsistent behavior."});
}

// ---- Version 3: number repair --------------------------------------------------------------

// The repair as one pass over every pair of entries, which the upgrade does by grouping.
std::vector<std::int32_t> PairwiseRepair(std::vector<std::int32_t> numbers,
                                         const std::vector<bool>& linked, std::int64_t& maximum) {
  for (std::int32_t n : numbers) maximum = std::max<std::int64_t>(maximum, n);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (linked[i]) continue;
    for (std::size_t j = 0; j < numbers.size(); ++j) {
      if (j != i && numbers[j] == numbers[i]) numbers[j] = static_cast<std::int32_t>(++maximum);
    }
  }
  return numbers;
}

TEST(AccountUpgrade, VersionThreeRepairMatchesThePairwiseRule) {
  ScopedPreferences no_preferences{""};
  std::mt19937 next(12345);  // fixed: the cases are the same on every run
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    const std::size_t count = next() % 12;
    std::vector<std::int32_t> numbers;
    std::vector<bool> linked;
    Array entries;
    for (std::size_t i = 0; i < count; ++i) {
      numbers.push_back(static_cast<std::int32_t>(next() % 5));
      linked.push_back(next() % 3 == 0);
      entries.push_back(
          Dictionary{{"number", numbers.back()}, {"entryFlags", linked.back() ? 4 : 2}});
    }
    Dictionary dict = Account(3, entries);
    const std::int32_t count_before = static_cast<std::int32_t>(next() % 6);
    dict.set("numberCount", count_before);
    std::int64_t maximum = count_before;
    const std::vector<std::int32_t> expected = PairwiseRepair(numbers, linked, maximum);
    const Upgraded up = Upgrade(dict);
    EXPECT_EQ(Numbers(up.dict), expected);
    EXPECT_EQ(Int(up.dict, "numberCount"), maximum);
  }
}

// ---- Version 4: rounding -------------------------------------------------------------------

TEST(AccountUpgrade, VersionFourRoundsAmountsToCentsAsReals) {
  Dictionary dict =
      Account(4, Array{Dictionary{{"amount", -2.675}},
                       Dictionary{{"amount", 7},
                                  {"split", Dictionary{{"amounts", Array{1.005, 2, "3.333"}}}}}});
  dict.set("startingBalance", 10.005);
  const Upgraded up = Upgrade(dict);
  EXPECT_EQ(*up.dict.find("startingBalance"), Value(10.01));
  EXPECT_EQ(*EntryAt(up.dict, 0).find("amount"), Value(-2.68));
  EXPECT_EQ(*EntryAt(up.dict, 1).find("amount"), Value(7.0));
  const Array& amounts =
      *EntryAt(up.dict, 1).find("split")->asDictionary()->find("amounts")->asArray();
  EXPECT_EQ(amounts, (Array{1.01, 2.0, 3.33}));
}

// ---- Version 6: dates ----------------------------------------------------------------------

// Entries, schedules and summaries alike.
TEST(AccountUpgrade, VersionSixTurnsSecondsIntoLocalDateNumbers) {
  // The tests run in America/New_York: midnight UTC is the evening before.
  struct Row {
    Value seconds;
    std::int32_t date;
  };
  const Row rows[] = {
      {0, 19691231},
      {18000, 19700101},       // 1970-01-01 05:00 UTC is local midnight
      {1204261199, 20080228},  // one second before local midnight of 29 February 2008
      {1204261200, 20080229},
      {1204286400.75, 20080229},  // fractions do not matter
      {"1204286400", 20080229},   // numbers stored as text convert as Foundation reads them
      {1215057600, 20080703},     // daylight-saving time
  };
  Array entries;
  for (const Row& row : rows) entries.push_back(Dictionary{{"date", row.seconds}});
  entries.push_back(Dictionary{{"number", 1}});  // no date: left without one
  Dictionary dict = Account(6, entries);
  dict.set("schedules", Array{Dictionary{{"date", 1204286400},
                                         {"committedDates", Array{1204286400, 1206964800}},
                                         {"repeatUntilType", 3},
                                         {"repeatUntil", 1209556800}},
                              Dictionary{{"date", 1204286400}, {"repeatUntil", 3}}});
  dict.set("accountSummaries",
           Array{Dictionary{{"startDate", 1199145600}, {"endDate", 1230767999}}});
  const Upgraded up = Upgrade(dict);
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(*EntryAt(up.dict, i).find("date"), Value(rows[i].date));
  }
  EXPECT_EQ(EntryAt(up.dict, std::size(rows)).find("date"), nullptr);
  const Array& schedules = *up.dict.find("schedules")->asArray();
  const Dictionary& first = *schedules[0].asDictionary();
  EXPECT_EQ(Int(first, "date"), 20080229);
  EXPECT_EQ(*first.find("committedDates"), Value(Array{20080229, 20080331}));
  // The until date is converted only when "repeatUntil" itself reads 3.
  EXPECT_EQ(Int(first, "repeatUntil"), 1209556800);
  EXPECT_EQ(Int(*schedules[1].asDictionary(), "repeatUntil"), 19691231);
  const Dictionary& summary = *up.dict.find("accountSummaries")->asArray()->at(0).asDictionary();
  EXPECT_EQ(Int(summary, "startDate"), 20071231);
  EXPECT_EQ(Int(summary, "endDate"), 20081231);
  EXPECT_EQ(up.messages, Messages{});

  Dictionary bad = Account(6, Array{});
  bad.set("schedules", 3);
  bad.set("accountSummaries", "x");
  EXPECT_EQ(Upgrade(bad).messages,
            (Messages{"Account schedules are in the wrong format in -[ZELMAccount "
                      "initWithDictionary:]",
                      "Account Summaries are in the wrong format in -[ZELMAccount "
                      "initWithDictionary:]",
                      "Schedules are in the wrong format in -[ZELMAccount initWithDictionary:]"}));
}

// ---- Version 7: transfers and splits -------------------------------------------------------

TEST(AccountUpgrade, VersionSevenGivesTransfersTheirDirection) {
  struct Row {
    std::int32_t flags;
    std::int32_t expected;
  };
  const Row rows[] = {
      {4 + 8, 13},        // sending side: debit, bit 3 left as it was
      {4, 6},             // receiving side: deposit
      {4 + 8 + 2, 13},    // the deposit bit is cleared
      {4 + 1, 6},         // the debit bit is cleared
      {4 + 16 + 64, 86},  // other bits stay
      {1, 1},             // not a transfer: untouched
  };
  Array entries;
  for (const Row& row : rows) {
    entries.push_back(Dictionary{
        {"entryFlags", row.flags}, {"type", 3}, {"transferEntry", 41}, {"transferAccount", 2}});
  }
  Dictionary dict = Account(7, entries);
  dict.set("schedules",
           Array{Dictionary{
               {"entryFlags", 4 + 8}, {"type", 3}, {"transferEntry", 41}, {"transferAccount", 2}}});
  const Upgraded up = Upgrade(dict);
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(rows[i].flags);
    Dictionary expected = *entries[i].asDictionary();
    expected.set("entryFlags", rows[i].expected);
    if ((rows[i].flags & 4) != 0) {  // a transfer: no type, and its partner under the new keys
      expected.set("type", -1);
      expected.set("linkedEntry", 41);
      expected.set("linkedAccount", 2);
    }
    EXPECT_EQ(EntryAt(up.dict, i), expected);
  }
  // A schedule carries over only the account of its transfer.
  EXPECT_EQ(*up.dict.find("schedules")->asArray()->at(0).asDictionary(),
            (Dictionary{{"entryFlags", 13},
                        {"type", -1},
                        {"transferEntry", 41},
                        {"transferAccount", 2},
                        {"linkedAccount", 2}}));
  EXPECT_EQ(up.messages, Messages{});
}

Dictionary LegacySplit(Array descriptions, Array to_froms, Array amounts) {
  return Dictionary{{"descriptions", std::move(descriptions)},
                    {"toFrom", std::move(to_froms)},
                    {"amounts", std::move(amounts)}};
}

TEST(AccountUpgrade, VersionSevenTurnsLegacySplitsIntoLineItems) {
  Dictionary dict = Account(
      7,
      Array{
          Dictionary{{"entryFlags", 1},  // a debit: items become negative
                     {"split", LegacySplit(Array{"Food", ""}, Array{}, Array{10, 0})}},
          Dictionary{{"entryFlags", 2},
                     {"split", LegacySplit(Array{"a", "", "c"}, Array{"", "x"}, Array{5, -3, 0})}},
          Dictionary{{"entryFlags", 1 + 16}, {"split", LegacySplit(Array{}, Array{}, Array{-7.5})}},
          Dictionary{{"entryFlags", 4 + 8},  // a sending transfer is a debit by now
                     {"split", LegacySplit(Array{}, Array{}, Array{4})}}});
  dict.set("schedules", Array{Dictionary{{"entryFlags", 2},
                                         {"split", LegacySplit(Array{}, Array{"Shop"}, Array{})}}});
  const Upgraded up = Upgrade(dict);
  const auto items = [](const Dictionary& entry) { return *entry.find("splitLineItems"); };
  EXPECT_EQ(items(EntryAt(up.dict, 0)),
            Value(Array{Dictionary{{"description", "Food"}, {"amount", -10.0}}}));
  EXPECT_EQ(items(EntryAt(up.dict, 1)),
            Value(Array{Dictionary{{"description", "a"}, {"amount", 5.0}},
                        Dictionary{{"toFrom", "x"}, {"amount", -3.0}},
                        Dictionary{{"description", "c"}, {"amount", 0.0}}}));
  EXPECT_EQ(items(EntryAt(up.dict, 2)), Value(Array{Dictionary{{"amount", -7.5}}}));
  EXPECT_EQ(items(EntryAt(up.dict, 3)), Value(Array{Dictionary{{"amount", -4.0}}}));
  EXPECT_EQ(items(*up.dict.find("schedules")->asArray()->at(0).asDictionary()),
            Value(Array{Dictionary{{"toFrom", "Shop"}, {"amount", 0.0}}}));
  EXPECT_EQ(up.messages, Messages{});
}

// ---- Old files load as accounts -----------------------------------------------------------

// One account as each old version stored it: a check, a deposit with a legacy split, the
// sending side of a transfer (a plain debit before transfers existed) and a monthly schedule.
// Dates were seconds since 1970 up to version 6, amounts unrounded up to version 4, and the
// flags the booleans "isDebit" and "isCheck" up to version 2.
Dictionary OldAccount(std::int32_t version) {
  const auto date = [version](std::int32_t number, std::int64_t seconds) {
    return version <= 6 ? Value(seconds) : Value(number);
  };
  const auto entry = [version](Dictionary e, bool debit, bool check, std::int32_t flags) {
    if (version > 2) e.set("entryFlags", flags);
    if (version <= 2) e.set("isDebit", debit);
    if (version <= 2) e.set("isCheck", check);
    return Value(std::move(e));
  };
  const Array entries{
      entry({{"number", 1},
             {"date", date(20080229, 1204261200)},
             {"checkNumber", 101},
             {"amount", version <= 4 ? -12.345 : -12.35},
             {"type", 1}},
            true, true, 1 + 16),
      entry({{"number", 2},
             {"date", date(20080301, 1204347600)},
             {"amount", 1500.0},
             {"split", LegacySplit(Array{"Salary", ""}, Array{"", "Bonus"}, Array{1000.0, 500.0})}},
            false, false, 2),
      // Version 1 gave it the number of the entry before: the duplicate the upgrade repairs.
      entry({{"number", version <= 1 ? 2 : 3},
             {"date", date(20080302, 1204434000)},
             {"amount", -200.0},
             {"type", 5},
             {"transferEntry", 9},
             {"transferAccount", 2}},
            true, false, 4 + 8)};
  const Dictionary rent{
      {"date", date(20080131, 1201755600)},
      {"amount", -950.0},
      {"entryFlags", 1},
      {"repeatIntervalType", 4},
      {"committedDates", Array{date(20080131, 1201755600), date(20080331, 1206936000)}}};
  Dictionary account{{"name", "Checking"},
                     {"version", version},
                     {"startingBalance", version <= 4 ? 100.005 : 100.01},
                     {"entries", entries},
                     {"schedules", Array{rent}}};
  if (version >= 3) account.set("numberCount", 3);
  return account;
}

// Version 7's account as loaded is the reference: its own steps are checked above, here only
// what the loaded account resolves. Every older version loads as the same account with the
// same messages (the fixture leaves out many keys, which the load names).
TEST(AccountUpgrade, EveryOldVersionLoadsAsTheSameAccount) {
  ScopedPreferences no_preferences{""};
  testing::ScopedClockPin pin(20080314);  // the new account's dates are today's
  Dictionary reference;
  Messages reference_messages;
  for (std::int32_t version = 7; version >= 1; --version) {
    SCOPED_TRACE(::testing::Message() << "version " << version);
    const Upgraded up = Upgrade(OldAccount(version));
    EXPECT_EQ(up.messages, version <= 2 ? Messages{kNoInactiveTypes} : Messages{});
    testing::LogCapture log;
    const ZELMAccount account(&up.dict);
    ASSERT_EQ(account.GetEntries().size(), 3u);
    ASSERT_EQ(account.GetSchedules().size(), 1u);
    const auto& e = account.GetEntries();
    if (version == 7) {
      reference = account.asDictionary();
      reference_messages = log.messages();
      EXPECT_EQ(account.GetVersion(), 8);
      EXPECT_EQ(account.GetNumberCount(), 3);
      EXPECT_EQ(account.GetStartingBalance(), 100.01);
      EXPECT_EQ(account.GetSchedules()[0]->NextEntryDate(), 20080531);
      EXPECT_EQ(std::vector<std::int32_t>({e[0]->GetDate(), e[1]->GetDate(), e[2]->GetDate()}),
                (std::vector<std::int32_t>{20080229, 20080301, 20080302}));
      EXPECT_EQ(e[1]->GetAmount(), 1500.0);  // the line items' total
      EXPECT_EQ(e[2]->GetLinkedEntry(), 9);
    }
    EXPECT_EQ(log.messages(), reference_messages);
    Dictionary written = account.asDictionary();
    if (version <= 2) {
      // Before transfers existed the booleans made the transfer a plain debit.
      EXPECT_EQ(e[2]->GetEntryFlags(), 1);
      EXPECT_EQ(e[2]->GetType(), 5);
      EXPECT_EQ(e[2]->GetNumber(), 3);
      written.find("entries")->asArray()->back() = reference.find("entries")->asArray()->back();
    }
    EXPECT_EQ(written, reference);
  }
}

}  // namespace
}  // namespace folvant
