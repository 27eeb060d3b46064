#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountSchedule.h"
#include "folvant/platform/Resources.h"
#include "folvant/values/LVCurrency.h"
#include "tests/support/FakeAccountsController.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using plist::Array;
using plist::Dictionary;
using plist::Value;
using testing::FakeAccountsController;
using testing::LogCapture;
using testing::ScopedClockPin;
using Messages = std::vector<std::string>;

constexpr int kToday = 20080314;

// A base currency (USD) and a registered euro.
void AddDollarAndEuro(FakeAccountsController& controller) {
  controller.AddCurrency(
      std::make_shared<LVCurrency>("USD", "US Dollar", "$", true, ",", ".", 1.0, 20080101));
  controller.AddCurrency(
      std::make_shared<LVCurrency>("EUR", "Euro", "€", false, ".", ",", 0.64, 20080101));
}

Dictionary StoredEntry(int number, int date, double amount, std::string_view description) {
  ZELMAccountEntry entry;
  entry.SetNumber(number);
  entry.SetDate(date);
  entry.SetAmount(amount);
  entry.SetIsDebit(amount < 0);
  entry.SetIsDeposit(amount >= 0);
  entry.SetDescription(description);
  return entry.asDictionary();
}

Dictionary StoredType(std::string_view name, int number, bool deposit) {
  ZELMAccountEntryType type;
  type.SetName(name);
  type.SetNumber(number);
  type.SetIsDeposit(deposit);
  return type.asDictionary();
}

Array Strings(std::vector<std::string> texts) {
  Array array;
  for (auto& text : texts) array.emplace_back(std::move(text));
  return array;
}

// A summary's whole stored options (those of a new account's first summary), renamed.
Dictionary StoredSummary(std::string_view name) {
  Dictionary options = *ZELMAccount().accountSummariesStoredForm().front().asDictionary();
  options.set("name", name);
  options.set("subtotalPeriodStyle", 4);
  return options;
}

// Every stored key with a value other than the new-account one, in the written order.
Dictionary FullAccount() {
  const LVCurrency krona("SEK", "Swedish Krona", "kr", false, " ", ",", 0.15, 20080301);
  Dictionary d{{"name", "Checking"},
               {"currency", krona.asDictionary()},
               {"icon", plist::Data{'I', 'I', '*', 0, 1, 2, 0xff}},
               {"highResolutionIcon", plist::Data{'M', 'M', 0, '*', 9}},
               {"number", 3},
               {"version", 8},
               {"entries", Array{StoredEntry(1, 20080301, -12.5, "Fuel"),
                                 StoredEntry(2, 20080302, 800.0, "Salary")}},
               {"schedules", Array{ZELMAccountSchedule().asDictionary()}},
               {"startingCheckNumber", 1001},
               {"numberCount", 4},
               {"startingBalance", 250.25},
               {"password", ""},
               {"types", Array{StoredType("Card", 1, false), StoredType("Pay", 0, true)}},
               {"inactiveTypes", Array{StoredType("Old", 2, false)}},
               {"defaultDebitType", 1},
               {"defaultDepositType", 0},
               {"preference_Descriptions_Style", 2},
               {"preference_ToFrom_Style", 0},
               {"preference_Descriptions_SomeSelection", 10},
               {"preference_ToFrom_SomeSelection", 20},
               {"preferredDebitDescriptions", Strings({"Fuel", "Rent"})},
               {"preferredDepositDescriptions", Strings({"Salary"})},
               {"preferredTos", Strings({"Shell"})},
               {"preferredFroms", Strings({"Employer"})},
               {"statementBalance", 1037.75},
               {"accountSummaries", Array{StoredSummary("Spending"), StoredSummary("B")}},
               {"selectedAccountSummary", 1}};
  for (const std::string view : {"entry", "reconcile"}) {
    d.append(view + "FilterType", 10);
    d.append(view + "FilterData", "gas");
    d.append(view + "ResolvedFilterType", 80);
    d.append(view + "TaxDeductibleFilterType", 91);
    d.append(view + "DateFilterType", 61);
    d.append(view + "DateFilterStartDate", 20080301);
    d.append(view + "DateFilterEndDate", 20080331);
  }
  const Dictionary rest{
      {"OFXImportZeroAmountsAsDeposits", false},
      {"OFXImport_SwapOptions_Name", 1},
      {"OFXImport_SwapOptions_Memo", 2},
      {"OFXImport_SwapOptions_Payee", 3},
      {"OFXImport_SwapOptions_TransactionType", 4},
      {"OFXImport_SwapOptions_ReferenceNumber", 0},
      {"QIFImportEncoding", 5},
      {"QIFImportDateFormat", 2},
      {"QIFImportDecimalSeparator", ","},
      {"QIFImportThousandsSeparator", "."},
      {"QIFImportZeroAmountsAsDeposits", false},
      {"QIFImportAllCategories", true},
      {"QIFImportSplitLineItems", false},
      {"QIFImport_SwapOptions_ToFrom", 2},
      {"QIFImport_SwapOptions_Category", 1},
      {"QIFImport_SwapOptions_Description", 0},
      {"textImportEncoding", 4},
      {"textImportDataLayout", "3,1,2"},
      {"textImportDataFormat", 1},
      {"textImportSkipFirstRow", true},
      {"textImportDateFormat", 3},
      {"textImportDecimalSeparator", ","},
      {"textImportThousandsSeparator", " "},
      {"textImportZeroAmountsAsDeposits", false},
      {"textExport_ExportType", 2},
      {"textExport_Encoding", 10},
      {"lastFromAccount", 7},
      {"lastToAccount", true},
      // One of the default smart folders: a list unlike the new account's.
      {"smartFolders", Array{ZELMAccount().asDictionary().find("smartFolders")->asArray()->at(0)}},
      {"folders", Array{Dictionary{{"entries", Array{StoredEntry(3, 20080303, -5.0, "Tax")}},
                                   {"name", "Taxes 2008"}}}}};
  for (const auto& [key, value] : rest) d.append(key, value);
  return d;
}

// The keys whose values differ between two dictionaries (either side missing included).
std::vector<std::string> DifferentKeys(const Dictionary& a, const Dictionary& b) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : a) {
    const Value* theirs = b.find(key);
    if (theirs == nullptr || !(*theirs == value)) keys.emplace_back(key);
  }
  for (const auto& [key, value] : b) {
    if (!a.contains(key)) keys.emplace_back(key);
  }
  return keys;
}

TEST(ZELMAccountStoredForm, FullAccountRoundTripsInWrittenOrder) {
  ScopedClockPin pin(kToday);
  LogCapture log;
  const Dictionary stored = FullAccount();
  const ZELMAccount account(&stored);
  EXPECT_EQ(log.messages(), Messages{});
  const Dictionary written = account.asDictionary();
  EXPECT_EQ(DifferentKeys(written, stored), std::vector<std::string>{});
  std::vector<std::string> order, expected;
  for (const auto& [key, value] : written) order.emplace_back(key);
  for (const auto& [key, value] : stored) expected.emplace_back(key);
  EXPECT_EQ(order, expected);

  // What the load resolved, beyond the bytes.
  EXPECT_TRUE(account.IsAuthenticated());  // the empty password
  EXPECT_EQ(account.GetDefaultDebitType()->GetName(), "Card");
  EXPECT_EQ(account.GetDefaultDepositType()->GetName(), "Pay");
  EXPECT_EQ(account.lastToAccount(), 1);
  EXPECT_EQ(account.GetTextImportDataLayout(), (std::vector<std::int32_t>{3, 1, 2}));
  ASSERT_EQ(account.GetAllEntries().size(), 3u);
  for (const auto& entry : account.GetAllEntries()) EXPECT_EQ(entry->GetAccount(), &account);
}

TEST(ZELMAccountStoredForm, EmptyDictionaryGivesNewAccountWithBaseCurrency) {
  ScopedClockPin pin(kToday);
  FakeAccountsController controller;
  AddDollarAndEuro(controller);
  LogCapture log;
  const Dictionary empty;
  const ZELMAccount loaded(&empty, &controller);
  const Messages expected = {
      "Account does not have a name in -[ZELMAccount initWithDictionary:]",
      "Account does not have an icon in -[ZELMAccount initWithDictionary:]",
      "Account does not have a highResolutionIcon in -[ZELMAccount initWithDictionary:]",
      "Account does not have an identification number in -[ZELMAccount initWithDictionary:]",
      "Account does not have a version in -[ZELMAccount initWithDictionary:]",
      "Account does not have entries in -[ZELMAccount initWithDictionary:]",
      "Account does not have schedules in -[ZELMAccount initWithDictionary:]",
      "Account does not have a starting check number in -[ZELMAccount initWithDictionary:]",
      "No defaultDebitType defined for ZELMAccount.",
      "No defaultDepositType defined for ZELMAccount.",
      "No preference_Descriptions_Style defined for ZELMAccount.",
      "No preference_ToFrom_Style defined for ZELMAccount.",
      "No preference_Descriptions_SomeSelection defined for ZELMAccount.",
      "No preference_ToFrom_SomeSelection defined for ZELMAccount.",
      "No preferredDebitDescriptions defined for ZELMAccount.",
      "No preferredDepositDescriptions defined for ZELMAccount.",
      "No preferredTos defined for ZELMAccount.",
      "No preferredFroms defined for ZELMAccount.",
      "No numberCount defined for ZELMAccount.",
      "Account does not have a statementBalance in -[ZELMAccount initWithDictionary:]",
      "Account does not have any account summaries in -[ZELMAccount initWithDictionary:]",
      "No OFXImportZeroAmountsAsDeposits defined for ZELMAccount.",
      "No QIFImportEncoding defined for ZELMAccount.",
      "No QIFImportDateFormat defined for ZELMAccount.",
      "No QIFImportDecimalSeparator defined in -[ZELMAccount initWithDictionary:]",
      "No QIFImportThousandsSeparator defined in -[ZELMAccount initWithDictionary:]",
      "No QIFImportZeroAmountsAsDeposits defined for ZELMAccount.",
      "No QIFImportAllCategories defined for ZELMAccount.",
      "No QIFImportSplitLineItems defined for ZELMAccount.",
      "No QIFImport_SwapOptions_ToFrom defined for ZELMAccount.",
      "No QIFImport_SwapOptions_Category defined for ZELMAccount.",
      "No QIFImport_SwapOptions_Description defined for ZELMAccount.",
      "No textImportEncoding defined for ZELMAccount.",
      "No textImportDataLayout defined for ZELMAccount.",
      "No textImportSkipFirstRow defined for ZELMAccount.",
      "No textImportDataFormat defined for ZELMAccount.",
      "No textImportDateFormat defined for ZELMAccount.",
      "No textImportDecimalSeparator defined in ZELMAccount:initWithDictionary",
      "No textImportThousandsSeparator defined in ZELMAccount:initWithDictionary",
      "No textImportZeroAmountsAsDeposits defined for ZELMAccount.",
      "No textExport_ExportType defined for ZELMAccount.",
      "No textExport_Encoding defined for ZELMAccount.",
  };
  EXPECT_EQ(log.messages(), expected);
  EXPECT_EQ(loaded.currency(), controller.currency());

  ZELMAccount fresh;
  fresh.setCurrency(controller.currency());
  EXPECT_EQ(loaded.asDictionary(), fresh.asDictionary());
  EXPECT_FALSE(loaded.IsAuthenticated());

  // A few of the new account's own values; the stored-form comparison above covers the rest.
  const ZELMAccount account;
  EXPECT_EQ(account.currency()->code(), "USD");
  EXPECT_EQ(account.currency()->lastUpdate(), kToday);
  EXPECT_EQ(account.entryDateFilterStartDate(), kToday);
  EXPECT_EQ(account.entryResolvedFilterType(), 82);
  EXPECT_EQ(account.textExport_ExportType(), -5);
}

// Every missing key's message (or its silence) is pinned by the empty-dictionary test above. A
// value of the wrong kind gives the fixed message, and the field keeps its new-account value.
TEST(ZELMAccountStoredForm, WrongKindsKeepDefaults) {
  ScopedClockPin pin(kToday);
  const std::string in_init = " in -[ZELMAccount initWithDictionary:]";
  const auto wrong = [](const std::string& key) {
    return key + " is in wrong format for ZELMAccount.";
  };
  const std::vector<std::tuple<std::string, Value, std::string>> rows = {
      {"name", 5, "Account name is in the wrong format" + in_init},
      {"currency", "SEK", "Currency is in the wrong format" + in_init},
      {"icon", "II*", "Account icon is in the wrong format" + in_init},
      {"highResolutionIcon", Array{},
       "Account highResolutionIcon is in the wrong format" + in_init},
      {"entries", Dictionary{}, "Account entries are in the wrong format" + in_init},
      {"schedules", "x", "Account schedules are in the wrong format" + in_init},
      {"numberCount", "9", "numberCount is in wrong format for ZELMAccount."},
      {"password", 0, "Account password is in the wrong format" + in_init},
      {"types", "ATM", "types are in the wrong format for ZELMAccount."},
      {"inactiveTypes", 1, "inactiveTypes are in the wrong format for ZELMAccount."},
      {"defaultDebitType", "1", wrong("defaultDebitType")},
      {"preference_ToFrom_Style", "0", wrong("preference_ToFrom_Style")},
      {"preferredTos", "Shell", wrong("preferredTos")},
      {"OFXImportZeroAmountsAsDeposits", "NO", wrong("OFXImportZeroAmountsAsDeposits")},
      {"OFXImport_SwapOptions_Payee", "3", wrong("OFXImport_SwapOptions_Payee")},
      {"QIFImportDateFormat", "2", wrong("QIFImportDateFormat")},
      {"QIFImportThousandsSeparator", 1,
       "QIFImportThousandsSeparator is in the wrong format" + in_init},
      {"QIFImportAllCategories", "YES", wrong("QIFImportAllCategories")},
      {"QIFImport_SwapOptions_Description", "0", wrong("QIFImport_SwapOptions_Description")},
      {"textImportDataLayout", Array{3, 1}, wrong("textImportDataLayout")},
      {"textImportSkipFirstRow", "YES", wrong("textImportSkipFirstRow")},
      {"textImportDecimalSeparator", 0,
       "textImportDecimalSeparator is in the wrong format in ZELMAccount:initWithDictionary"},
      {"textImportZeroAmountsAsDeposits", "NO", wrong("textImportZeroAmountsAsDeposits")},
      {"textExport_Encoding", "4", wrong("textExport_Encoding")},
      {"lastFromAccount", "7", wrong("lastFromAccount")},
      {"lastToAccount", "0", wrong("lastToAccount")},
  };
  const Dictionary defaults = ZELMAccount().asDictionary();
  for (const auto& [key, value, message] : rows) {
    SCOPED_TRACE(key);
    Dictionary damaged = FullAccount();
    // The default types are what the defaults resolve in; keep them for the type keys.
    if (key.starts_with("default")) damaged.erase("types");
    damaged.set(key, value);
    LogCapture log;
    const ZELMAccount account(&damaged);
    EXPECT_EQ(log.messages(), Messages{message});
    EXPECT_EQ(*account.asDictionary().find(key), *defaults.find(key));
  }
}

TEST(ZELMAccountStoredForm, KeysWithoutKindCheckConvert) {
  Dictionary stored = FullAccount();
  stored.set("number", "42");
  stored.set("startingCheckNumber", 500.7);
  stored.set("statementBalance", "10.005");
  stored.set("entryDateFilterType", "21");
  LogCapture log;
  const ZELMAccount account(&stored);
  EXPECT_EQ(log.messages(), Messages{});
  EXPECT_EQ(account.GetNumber(), 42);
  EXPECT_EQ(account.GetStartingCheckNumber(), 500);
  EXPECT_EQ(account.statementBalance(), 10.01);  // through the rounding setter
  EXPECT_EQ(account.entryDateFilterType(), 21);
}

TEST(ZELMAccountStoredForm, LastToAccountIsSavedThroughItsLowByte) {
  for (const auto& [value, saved, loaded] :
       {std::tuple{256, false, 0}, {3, true, 1}, {-1, true, 1}, {0, false, 0}, {0x1ff, true, 1}}) {
    SCOPED_TRACE(value);
    ZELMAccount account;
    account.setLastToAccount(value);
    account.setLastFromAccount(value);
    const Dictionary stored = account.asDictionary();
    EXPECT_EQ(*stored.find("lastToAccount"), Value(saved));
    EXPECT_EQ(*stored.find("lastFromAccount"), Value(value));  // its twin is kept as it is
    EXPECT_EQ(ZELMAccount(&stored).lastToAccount(), loaded);
  }
}

TEST(ZELMAccountStoredForm, SelectionTypesAndLayoutEdges) {
  Dictionary stored = FullAccount();
  stored.set("accountSummaries", Array{Dictionary{}, Dictionary{}, Dictionary{}});
  for (const auto& [index, selected] : {std::pair{7, 0}, {2, 2}, {-1, 0}}) {
    stored.set("selectedAccountSummary", index);
    EXPECT_EQ(ZELMAccount(&stored).selectedAccountSummaryIndex(), selected) << index;
  }
  // An empty summary list keeps the defaults; an empty type list leaves no active types.
  stored.set("accountSummaries", Array{});
  stored.set("types", Array{});
  stored.set("defaultDebitType", -1);
  stored.set("defaultDepositType", 2);  // resolves through the inactive list
  stored.set("textImportDataLayout", "");
  const ZELMAccount account(&stored);
  EXPECT_EQ(account.accountSummariesStoredForm(), ZELMAccount().accountSummariesStoredForm());
  EXPECT_TRUE(account.types().empty());
  EXPECT_EQ(account.GetDefaultDebitType(), nullptr);
  EXPECT_EQ(account.GetDefaultDepositType()->GetName(), "Old");
  EXPECT_EQ(*account.asDictionary().find("textImportDataLayout"), Value(""));
  // Loaded types are sorted by name whatever their stored order.
  stored.set("types", Array{StoredType("b", 0, false), StoredType("A", 1, false)});
  EXPECT_EQ(ZELMAccount(&stored).types()[0]->GetName(), "A");
}

TEST(ZELMAccountStoredForm, CurrencyResolvesAgainstTheController) {
  FakeAccountsController controller;
  AddDollarAndEuro(controller);
  Dictionary stored = FullAccount();
  // A registered code shares the registered object.
  stored.set("currency", controller.currencies()[1]->asDictionary());
  EXPECT_EQ(ZELMAccount(&stored, &controller).currency(), controller.currencies()[1]);
  // An unknown code makes a new currency and registers it.
  stored.set("currency", *FullAccount().find("currency"));
  const ZELMAccount krona(&stored, &controller);
  ASSERT_EQ(controller.currencies().size(), 3u);
  EXPECT_EQ(krona.currency(), controller.currencies()[2]);
  EXPECT_EQ(krona.currency()->code(), "SEK");
  EXPECT_EQ(ZELMAccount(&stored, &controller).currency(), krona.currency());
  // Missing: the base currency, silently.
  stored.erase("currency");
  LogCapture log;
  EXPECT_EQ(ZELMAccount(&stored, &controller).currency(), controller.currency());
  EXPECT_EQ(log.messages(), Messages{});
}

TEST(ZELMAccountStoredForm, PasswordSurvivesButAuthenticationDoesNot) {
  ZELMAccount account;
  EXPECT_FALSE(account.IsAuthenticated());
  EXPECT_TRUE(account.Authenticate("anything"));  // no password
  account.SetPassword("Secret");
  account.SetPassword(std::nullopt);
  EXPECT_TRUE(account.HasPassword());
  EXPECT_EQ(account.GetPassword(), "Secret");

  const Dictionary stored = account.asDictionary();
  ZELMAccount loaded(&stored);
  EXPECT_FALSE(loaded.IsAuthenticated());
  EXPECT_FALSE(loaded.Authenticate("secret"));  // exact comparison
  EXPECT_TRUE(loaded.Authenticate("Secret"));
  EXPECT_TRUE(loaded.Authenticate("wrong"));  // a wrong password leaves the state
  EXPECT_FALSE(loaded.Authenticate(std::nullopt));
  EXPECT_EQ(loaded.GetPassword(), "Secret");
  loaded.SetPassword("");
  EXPECT_TRUE(loaded.IsAuthenticated());
  EXPECT_FALSE(loaded.HasPassword());
}

TEST(ZELMAccountStoredForm, DefaultIconsAreTheEmbeddedTiffs) {
  const ZELMAccount account;
  for (const auto& [icon, name] : {std::pair{&account.icon(), "accounticon_default"},
                                   {&account.highResolutionIcon(), "accounticon_default_128"}}) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(icon->has_value());
    const auto resource = platform::Resource(name);
    EXPECT_EQ(**icon, plist::Data(resource.begin(), resource.end()));
    ASSERT_GT((*icon)->size(), 8u);
    EXPECT_EQ(std::string((*icon)->begin(), (*icon)->begin() + 4), std::string("II*\0", 4));
  }
  // No icon: the key is not written, and a load without it keeps the default.
  ZELMAccount bare;
  bare.setIcon(std::nullopt);
  EXPECT_FALSE(bare.asDictionary().contains("icon"));
}

}  // namespace
}  // namespace folvant
