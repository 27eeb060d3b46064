// Reading QIF text, and writing an account as QIF and as tab-separated text.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "folvant/exchange/ExportOptions.h"
#include "folvant/exchange/ZELMQIFImport.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/platform/UserSettings.h"
#include "tests/support/FakeAccountsController.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

ImportRecords Read(std::string_view text) { return ZELMQIFImport(text).parse().entries; }

TEST(QIFImport, FieldsOfARecord) {
  const ImportRecords records = Read(
      "!Type:Bank\nD12/01/2005\nT-1,234.50\nPShell\nMFuel\nCX\nLAuto:Fuel\nN1001\n^\n"
      "D12/02/05\nT0.00\nC\nNATM\n^\n"
      "D12/03/05\nT5\nCc\nN2147483647\n^\ntrailing text without a caret");
  ASSERT_EQ(records.size(), 3u);
  const ImportRecord& first = records[0];
  EXPECT_EQ(first.date, 20051201);
  EXPECT_EQ(first.amount, -1234.50);
  EXPECT_EQ(first.isDeposit, false);
  EXPECT_EQ(first.toFrom, "Shell");
  EXPECT_EQ(first.description, "Fuel");
  EXPECT_EQ(first.category, "Auto:Fuel");
  EXPECT_EQ(first.cleared, true);
  EXPECT_EQ(first.number, 1001);
  EXPECT_EQ(records[1].isDeposit, true);  // a zero amount is a deposit by default
  EXPECT_EQ(records[1].cleared, false);   // a bare "C"
  EXPECT_EQ(records[1].number, 0);        // "ATM"
  EXPECT_EQ(records[1].toFrom, std::nullopt);
  EXPECT_EQ(records[2].cleared, true);
  EXPECT_EQ(records[2].number, std::nullopt);
}

TEST(QIFImport, SwappedFields) {
  ZELMQIFImport reader("!Type:Bank\nPShell\nMFuel\nLCar\n^\n");
  reader.SetSwapOptions_ToFrom(ZELMQIFImport::kToDescription);
  reader.SetSwapOptions_Description(7);  // dropped
  reader.SetSwapOptions_Category(ZELMQIFImport::kToToFrom);
  const ImportRecord record = reader.parse().entries.at(0);
  EXPECT_EQ(record.description, "Shell");
  EXPECT_EQ(record.toFrom, "Car");
  EXPECT_EQ(record.category, std::nullopt);
}

TEST(QIFImport, Splits) {
  auto splitsOf = [](std::string_view lines) {
    return Read("!Type:Bank\nT-100.00\n" + std::string(lines) + "^\n").at(0).splits;
  };
  auto matching = splitsOf("SFood\nEBread\n$60.00\nSHome\nESoap\n$40.00\n");
  ASSERT_TRUE(matching);
  ASSERT_EQ(matching->size(), 2u);
  EXPECT_EQ((*matching)[0].amount, -60.0);  // written with the opposite sign, accepted
  EXPECT_EQ((*matching)[1].category, "Home");
  EXPECT_EQ((*matching)[1].description, "Soap");
  EXPECT_FALSE(splitsOf("SFood\n$60.00\nSHome\n$30.00\n"));  // neither sign adds up
  auto noMemos = splitsOf("SFood\n$-60.00\nSHome\n$-40.00\n");
  ASSERT_TRUE(noMemos);
  EXPECT_EQ((*noMemos)[0].description, "");
  EXPECT_EQ((*noMemos)[0].amount, -60.0);
  EXPECT_FALSE(splitsOf("SFood\nE\n$-100.00\nSHome\n"));  // lists of different lengths

  ZELMQIFImport reader("!Type:Bank\nT-100.00\nSFood\n$-100.00\n^\n");
  reader.SetImportSplitLineItems(false);
  EXPECT_FALSE(reader.parse().entries.at(0).splits);
}

TEST(QIFImport, SectionsAndAccounts) {
  // Bare records, no header.
  EXPECT_EQ(Read("D1/2/05\nT-1\n^\nD1/3/05\nT-2\n^\n").size(), 2u);
  EXPECT_TRUE(Read("").empty());

  const std::string file =
      "!Type:Cat\nNFood\nE\n^\nNSalary\nI\n^\n"
      "!Account\nNChecking\nTBank\n^\n!Type:Bank\nD1/2/05\nT-1\nLfood\n^\n"
      "!Account\nNBrokerage\nTInvst\n^\n!Type:Invst\nD1/2/05\nT-1\n^\n"
      "!Account\nNCard\nTCCard\n^\n!Type:CCard \nD1/3/05\nT-2\nLFuel\n^\n";
  ZELMQIFImport reader(file);
  EXPECT_EQ(reader.dataString().find("Brokerage"), std::string::npos);
  const ZELMQIFImport::Result result = reader.parse();
  EXPECT_EQ(result.entries.size(), 2u);
  ASSERT_EQ(result.accounts.size(), 2u);
  EXPECT_EQ(result.accounts[0].name, "Checking");
  EXPECT_EQ(result.accounts[0].entries.size(), 1u);
  EXPECT_EQ(result.accounts[1].entries.at(0).amount, -2.0);
  EXPECT_EQ(result.categories, (std::vector<std::string>{"Food", "Salary", "Fuel"}));
  EXPECT_EQ(reader.EntryCategoryListStringToEntryCategories(
                "\rNFood\r^\rNSalary\rI\r^")[1],
            (ImportType{"Salary", true}));
  // A name is matched as a prefix.
  EXPECT_EQ(reader.EntriesForAccountWithName("Check").size(), 1u);
  EXPECT_TRUE(reader.EntriesForAccountWithName("Savings").empty());
}

TEST(QIFImport, UnclosedAutoSwitch) {
  testing::LogCapture log;
  ZELMQIFImport reader("!Option:AutoSwitch\n!Account\nNChecking\nTBank\n^\n!Type:Bank\nT-1\n^\n");
  EXPECT_EQ(reader.error(), ZELMImporter::kUnclosedAutoSwitch);
  EXPECT_TRUE(reader.parse().entries.empty());
  EXPECT_EQ(log.messages(), (std::vector<std::string>{
                                "No end to !Option:AutoSwitch tag in [ZELMQIFImport SetDataString:]."}));
  ZELMQIFImport closed(
      "!Option:AutoSwitch\n!Account\nNChecking\nTBank\n^\n!Clear:AutoSwitch\n!Type:Bank\nT-1\n^\n");
  EXPECT_EQ(closed.error(), ZELMImporter::kNoError);
  EXPECT_EQ(closed.parse().entries.size(), 1u);
  EXPECT_EQ(ZELMQIFImport(std::nullopt).error(), ZELMImporter::kNoText);
}

class Export : public ::testing::Test {
 protected:
  Export() {
    controller_.AddCurrency(std::make_shared<LVCurrency>());
    controller_.AddCategory("Food", 3);
    account_ = std::make_shared<ZELMAccount>(nullptr, &controller_);
    account_->SetName("Checking");
    account_->SetStartingBalance(100.0);
    account_->Authenticate("");
  }
  std::shared_ptr<ZELMAccountEntry> Add(std::int32_t date, double amount) {
    auto entry = std::make_shared<ZELMAccountEntry>();
    entry->SetNumber(account_->NextAvailableNumber());
    entry->SetDate(date);
    entry->SetAmount(amount);
    if (amount < 0) entry->SetIsDebit(true); else if (amount > 0) entry->SetIsDeposit(true);
    account_->AddEntry(entry);
    return entry;
  }
  testing::ScopedClockPin pin_{20260715};
  testing::ScopedSettingsPin settings_{[] {
    platform::UserSettings s = platform::CurrentUserSettings();
    s.shortDateFormat = "%m/%d/%y";
    return s;
  }()};
  testing::FakeAccountsController controller_;
  std::shared_ptr<ZELMAccount> account_;
};

TEST_F(Export, QIF) {
  auto check = Add(20260102, -12.5);
  check->SetCheckNumber(101);
  check->SetToFrom("Shop");
  check->SetCategory(3);
  check->SetCleared(1);
  auto split = Add(20260101, -30);
  split->addSplitLineItemWithCategory(3, "Bread", std::nullopt, -10);
  split->addSplitLineItemWithCategory(-1, "Other", std::nullopt, -20);
  EXPECT_EQ(account_->asQIFStringWithOptions(nullptr),
            "!Account\nNChecking\nTBank\nB57.50\n^\n!Type:Bank\n"
            "D01/01/2026\nMStarting Balance\nT100.00\nC*\n^\n"
            "D01/01/2026\nP\nM\nT-30.00\nL\nSFood\nEBread\n$-10.00\nS\nEOther\n$-20.00\n^\n"
            "D01/02/2026\nN101\nPShop\nM\nT-12.50\nC*\nLFood\n^\n");
  QIFExportOptions options;
  options.lineEnding = "\r\n";
  options.resolvedMeansReconciled = true;
  options.dateFormat = "%d.%m.%y";
  const std::string text = account_->asQIFStringWithOptions(&options);
  EXPECT_NE(text.find("D02.01.26\r\nN101\r\nPShop\r\nM\r\nT-12.50\r\nCX\r\n"), std::string::npos);

  // What is written reads back.
  const ImportRecords records = Read(account_->asQIFStringWithOptions(nullptr));
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[2].number, 101);
  EXPECT_EQ(records[1].splits->at(1).amount, -20.0);
}

TEST_F(Export, TabDelimited) {
  EXPECT_EQ(account_->asTabDelimitedStringWithOptions(nullptr),
            "Date\tType\tDescription\tTo/From\tCategory\tResolved\tTax-Deductible\tAmount\tKind\t"
            "Check #\tID\tBalance\n07/15/26\t\tStarting Balance\t\t\tYes\t\t100.00\t\t\t\t100.00\t\n");
  auto voided = Add(20260103, -50);
  voided->SetVoid(true);
  voided->SetCategory(3);
  auto plain = Add(20260104, 0);
  plain->SetTaxDeductible(true);
  const std::string text = account_->asTabDelimitedStringWithOptions(nullptr);
  EXPECT_NE(text.find("\n01/03/26\t\t\t\tFood\tNo\tNo\t-50.00\tDebit\t\t1\t50.00\n"
                      "01/04/26\t\t\t\t\tNo\tYes\t0.00\t\t\t2\t50.00\n"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace folvant
