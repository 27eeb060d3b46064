// The date and amount rules every reader shares, and the review entry.

#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "folvant/exchange/ZELMImportEntry.h"
#include "folvant/exchange/ZELMImporter.h"
#include "tests/support/TestSupport.h"

namespace folvant {
namespace {

using Components = std::array<std::int32_t, 3>;

class Reader : public ZELMImporter {};

TEST(ImportParsing, DateComponents) {
  testing::ScopedClockPin pin(20260715);
  Reader reader;
  EXPECT_EQ(reader.DateStringComponents("120105"), (Components{12, 1, 5}));
  EXPECT_EQ(reader.DateStringComponents("12/01/2005"), (Components{12, 1, 2005}));
  EXPECT_EQ(reader.DateStringComponents("  3-7"), (Components{3, 7, 0}));
  // Eight digits follow where the format puts the year.
  reader.SetDateFormat("%Y/%m/%d");
  EXPECT_EQ(reader.DateStringComponents("20051201"), (Components{2005, 12, 1}));
  reader.SetDateFormat("%d/%Y/%m");
  EXPECT_EQ(reader.DateStringComponents("01200512"), (Components{1, 2005, 12}));
  reader.SetDateFormat("%d/%m/%Y");
  EXPECT_EQ(reader.DateStringComponents("01122005"), (Components{1, 12, 2005}));
  // Another length without separators stands for today.
  EXPECT_EQ(reader.DateStringComponents("1205"), (Components{15, 7, 2026}));
  EXPECT_EQ(reader.TweakDateString("15.07.2026"), "15/7/2026");
}

TEST(ImportParsing, DateOfARecord) {
  Reader reader;
  EXPECT_EQ(reader.DateOfDateString("120105"), 20051201);
  EXPECT_EQ(reader.DateOfDateString("12/01/2005"), 20051201);  // reduced to 12/1/5
  EXPECT_EQ(reader.DateOfDateString("12/01/1969"), 19691201);
  EXPECT_EQ(reader.DateOfDateString("12/01/68"), 20681201);
  EXPECT_EQ(reader.DateOfDateString("2/30/05"), std::nullopt);
  EXPECT_EQ(reader.DateOfDateString("13/45/05"), std::nullopt);
  reader.SetDateFormat("%d/%m/%Y");
  EXPECT_EQ(reader.DateOfDateString("31.12.2005"), 20051231);
  EXPECT_EQ(reader.DateOfDateString("31.12.05"), 51231);  // year 5, as a four-digit format reads it
}

TEST(ImportParsing, Amounts) {
  Reader reader;
  EXPECT_EQ(reader.TweakAmountString(" (1,234.50)\t"), "-1234.50");
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("(1,234.50)"), -1234.50);
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("$ -12.5 USD"), -12.5);
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("ATM"), 0.0);
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("1.2.3"), 1.2);
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString(std::string(400, '9')), 0.0);
  reader.SetDecimalSeparator(",");
  reader.SetThousandsSeparator(".");
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("1.234,50"), 1234.50);
  reader.SetThousandsSeparator("");
  EXPECT_DOUBLE_EQ(reader.AmountOfAmountString("-7,25"), -7.25);
}

TEST(ImportParsing, ZeroAmountRule) {
  Reader reader;
  ImportRecord record = reader.NewRecord();
  EXPECT_EQ(record.isDeposit, true);
  reader.SetImportZeroAmountsAsDeposits(false);
  reader.SetRecordAmount(record, 0.0);
  EXPECT_EQ(record.isDeposit, false);
  reader.SetRecordAmount(record, 0.01);
  EXPECT_EQ(record.isDeposit, true);
  reader.SetRecordAmount(record, -0.01);
  EXPECT_EQ(record.isDeposit, false);
  EXPECT_EQ(LeadingInteger(" -12abc"), -12);
  EXPECT_EQ(LeadingInteger("ATM"), 0);
  EXPECT_EQ(LeadingInteger("99999999999"), 2147483647);
}

TEST(ImportParsing, ReviewEntryFollowsItsTypeAndCategory) {
  ZELMImportEntry entry;
  EXPECT_EQ(entry.GetType(), -1);
  EXPECT_FALSE(entry.GetImport());
  auto type = std::make_shared<ZELMAccountEntryType>();
  type->SetNumber(7);
  entry.SetActualType(type);
  EXPECT_EQ(entry.GetType(), 7);
  entry.SetActualType(nullptr);
  EXPECT_EQ(entry.GetType(), -1);

  ZELMImportEntry ticked;
  ticked.SetImport(true);
  EXPECT_EQ(entry.ImportIsGreaterThan(ticked), -1);
  EXPECT_EQ(entry.ImportIsGreaterThan_Reversed(ticked), 1);
}

}  // namespace
}  // namespace folvant
