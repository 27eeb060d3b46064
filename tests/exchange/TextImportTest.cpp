// Reading delimited text as spreadsheets and banks write it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "folvant/exchange/ZELMTextImport.h"

namespace folvant {
namespace {

using Layout = std::vector<std::int32_t>;
constexpr std::int32_t kIgnored = ZELMTextImport::kColumnIgnored;
constexpr std::int32_t kDate = ZELMTextImport::kColumnDate;
constexpr std::int32_t kAmount = ZELMTextImport::kColumnAmount;
constexpr std::int32_t kToFrom = ZELMTextImport::kColumnToFrom;
constexpr std::int32_t kDescription = ZELMTextImport::kColumnDescription;

TEST(TextImportRows, QuotedFieldsAsSpreadsheetsWriteThem) {
  const ZELMTextImport reader(std::string_view(
      "\xEF\xBB\xBF" "a,\"b, \"\"quoted\"\"\",c\r\n\"two\r\nlines\",,\"\"\r\nlast,x\"y"));
  const auto rows = reader.Rows(',');
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"a", "b, \"quoted\"", "c"}));
  EXPECT_EQ(rows[1], (std::vector<std::string>{"two\r\nlines", "", ""}));
  EXPECT_EQ(rows[2], (std::vector<std::string>{"last", "x\"y"}));  // no final line end
}

TEST(TextImportRows, SeparatorIsFoundFromTheFirstLines) {
  EXPECT_EQ(ZELMTextImport::DetectSeparator("Date\tAmount\tPayee\n1/2/24\t-3,50\tShop\n"), '\t');
  EXPECT_EQ(ZELMTextImport::DetectSeparator("Date;Amount\n1.2.24;-3,50\n"), ';');
  EXPECT_EQ(ZELMTextImport::DetectSeparator("Date,Amount\n1/2/24,\"-1,000.00\"\n"), ',');
  EXPECT_EQ(ZELMTextImport::DetectSeparator("just one field\n"), ',');
}

TEST(TextImportLayout, HeaderTitlesGiveTheColumns) {
  const auto layout = ZELMTextImport::LayoutFromHeaderRow(
      {"Transaction Date", "Check #", "Payee", "Memo", "Debit Amount", "Credit Amount", "Status",
       "Balance"});
  ASSERT_TRUE(layout);
  EXPECT_EQ(*layout, (Layout{kDate, ZELMTextImport::kColumnNumber, kToFrom,
                             ZELMTextImport::kColumnNotes, ZELMTextImport::kColumnDebitAmount,
                             ZELMTextImport::kColumnCreditAmount, ZELMTextImport::kColumnResolved,
                             kIgnored}));
  // A second date column is ignored; without an amount there is no layout.
  EXPECT_EQ(*ZELMTextImport::LayoutFromHeaderRow({"Date", "Value Date", "Amount"}),
            (Layout{kDate, kIgnored, kAmount}));
  EXPECT_FALSE(ZELMTextImport::LayoutFromHeaderRow({"Date", "Payee"}));
}

TEST(TextImportParse, SignedAmountsWithAStoredLayout) {
  ZELMTextImport reader(std::string_view(
      "Date,Amount,Payee,What\n"
      "01/02/24,-12.50,Grocer,Food\n"
      "01/03/24,\"1,000.00\",Employer,Pay\n"
      ",,,\n"
      "13/45/24,0,Nobody,\n"));
  reader.SetDataLayout({kDate, kAmount, kToFrom, kDescription});
  const TextParseResult result = reader.parse();
  ASSERT_EQ(result.entries.size(), 3u);  // the header and the empty row are skipped
  const ImportRecord& grocer = result.entries[0];
  EXPECT_EQ(grocer.date, 20240102);
  EXPECT_EQ(grocer.dateText, "01/02/24");
  EXPECT_EQ(grocer.amount, -12.5);
  EXPECT_EQ(grocer.isDeposit, false);
  EXPECT_EQ(grocer.toFrom, "Grocer");
  EXPECT_EQ(grocer.description, "Food");
  EXPECT_EQ(result.entries[1].amount, 1000.0);
  EXPECT_EQ(result.entries[1].isDeposit, true);
  // A date that is no day under the format is kept as text, with no date.
  EXPECT_FALSE(result.entries[2].date);
  EXPECT_EQ(result.entries[2].dateText, "13/45/24");
  EXPECT_EQ(result.entries[2].isDeposit, true);  // zero counts as a deposit by default
  EXPECT_FALSE(result.entries[2].description);
}

TEST(TextImportParse, DebitAndCreditColumnsFromAHeader) {
  ZELMTextImport reader(std::string_view(
      "Date;Type;Ref;Withdrawal;Deposit;Cleared;Category\r\n"
      "2024/03/01;POS;#1042;12,50;;R;Food:Groceries\r\n"
      "2024/03/02;XFER;;;-300;;\r\n"));
  reader.SetDataFormat(ZELMTextImport::kSeparatorSemicolon);
  reader.SetDateFormat("%Y/%m/%d");
  reader.SetDecimalSeparator(",");
  reader.SetThousandsSeparator(".");
  const TextParseResult result = reader.parse();
  ASSERT_EQ(result.entries.size(), 2u);
  const ImportRecord& pos = result.entries[0];
  EXPECT_EQ(pos.date, 20240301);
  EXPECT_EQ(pos.amount, -12.5);  // a withdrawal leaves whatever its sign
  EXPECT_EQ(pos.number, 1042);
  EXPECT_EQ(pos.cleared, true);
  EXPECT_EQ(pos.category, "Food:Groceries");
  EXPECT_EQ(result.entries[1].amount, 300.0);  // a deposit comes in whatever its sign
  EXPECT_EQ(result.entries[1].cleared, false);
  EXPECT_EQ(result.types, (std::vector<ImportType>{{"POS", false}, {"XFER", true}}));
}

TEST(TextImportParse, NothingWithoutALayout) {
  ZELMTextImport reader(std::string_view("a,b\n1,2\n"));
  EXPECT_TRUE(reader.parse().entries.empty());
  ZELMTextImport missing(std::optional<std::string_view>{});
  EXPECT_EQ(missing.error(), ZELMImporter::kNoText);
  EXPECT_TRUE(missing.parse().entries.empty());
}

}  // namespace
}  // namespace folvant
