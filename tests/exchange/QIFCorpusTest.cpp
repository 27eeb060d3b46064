// Every QIF file of the shared corpus: files written by other programs, some of them broken.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <string>

#include "folvant/exchange/ZELMQIFImport.h"

namespace folvant {
namespace {

struct Expected {
  std::string dateFormat;
  std::size_t records;
  std::int32_t firstDate = 0;  // 0: not checked
  double firstAmount = 0.0;
};

// Registers give records under their date order; lists, investment registers and broken
// files give none.
const std::map<std::string, Expected>& Table() {
  static const std::map<std::string, Expected> table = {
      {"csv2ofx-default_w_splits.qif", {"%m/%d/%y", 8, 20150324, 45000}},
      {"csv2ofx-investment_example.qif", {"%m/%d/%y", 0}},
      {"csv2ofx-ubs-ch-fr.qif", {"%Y/%m/%d", 3, 20190331, -10}},
      {"csv2ofx-xero.qif", {"%m/%d/%y", 5, 20150123, 149000}},
      {"jgnash-bank1.qif", {"%m/%d/%y", 6, 20110222, 30}},
      {"oca-test_qif_dmy.qif", {"%d/%m/%y", 5, 20130812, -1000}},
      {"oca-test_qif_ymd.qif", {"%y/%m/%d", 5, 20130812, -1000}},
      {"qifparse-file.qif", {"%d/%m/%Y", 3}},
      {"qifparse-transactions_only.qif", {"%d/%m/%Y", 3}},
      {"quiffen-empty.qif", {"%m/%d/%y", 0}},
      {"quiffen-invalid.txt", {"%m/%d/%y", 0}},
      {"quiffen-test.qif", {"%m/%d/%y", 6, 20200210, 0}},
      {"quiffen-test_FMQifTest2023-10-18.qif", {"%m/%d/%y", 2, 20231018, 0}},
      {"quiffen-test_category_inherit.qif", {"%m/%d/%y", 0}},
      {"quiffen-test_category_override.qif", {"%d/%m/%Y", 4, 20171222, 1000}},
      {"quiffen-test_circular_reference.qif", {"%m/%d/%y", 2, 20210827, -9}},
      {"quiffen-test_clear_autoswitch.qif", {"%m/%d/%y", 0}},
      {"quiffen-test_nosymbol.qif", {"%m/%d/%y", 0}},
      {"quiffen-test_option_autoswitch.qif", {"%m/%d/%y", 0}},
      {"quiffen-test_oth_a.qif", {"%m/%d/%y", 6, 20200210, 0}},
      {"quiffen-test_split.qif", {"%m/%d/%y", 1, 20000101, -10}},
      {"quiffen-test_transaction_before_account_definition_1.qif", {"%Y/%m/%d", 3}},
      {"quiffen-test_unknown_account_type.qif", {"%m/%d/%y", 0}},
      {"ruby-qif-3_records_ddmmyy.qif", {"%d/%m/%y", 3, 20100101, -10}},
      {"ruby-qif-3_records_dmyy.qif", {"%d/%m/%y", 3, 20100101, -10}},
      {"ruby-qif-3_records_invalid_header.qif", {"%d/%m/%Y", 4}},
      {"ruby-qif-3_records_mmddyy.qif", {"%m/%d/%y", 3, 20100101, -10}},
      {"ruby-qif-3_records_mmddyyyy.qif", {"%m/%d/%Y", 3, 20100101, -10}},
      {"ruby-qif-3_records_separator.qif", {"%d/%m/%Y", 3, 20100101, -1010}},
      {"ruby-qif-3_records_spaced.qif", {"%d/%m/%y", 3, 20100101, -10}},
      {"ruby-qif-quicken_non_investement_account.qif", {"%m/%d/%y", 3, 19940601, -1000}},
      {"ruby-qif-splits.qif", {"%m/%d/%y", 2, 19940601, -1000}},
      {"rust-qif-parser-amex.qif", {"%d/%m/%Y", 7, 20231125, 150.94}},
      {"rust-qif-parser-cic.qif", {"%d/%m/%y", 12}},
      {"rust-qif-parser-nasty.qif", {"%d/%m/%Y", 6}},
      {"rust-qif-parser-wikipedia_investments.qif", {"%m/%d/%y", 0}},
      {"rust-qif-parser-wikipedia_simple.qif", {"%m/%d/%y", 3, 20100303, -379}},
  };
  return table;
}

TEST(QIFCorpus, EveryFile) {
  std::size_t seen = 0;
  for (const auto& file : std::filesystem::directory_iterator(FOLVANT_CORPUS_DIR "/qif")) {
    const std::string name = file.path().filename().string();
    SCOPED_TRACE(name);
    const auto row = Table().find(name);
    ASSERT_NE(row, Table().end()) << "a corpus file the table does not know";
    ++seen;
    ZELMQIFImport reader = ZELMQIFImport::initWithContentsOfFile(file.path().string(), 0);
    reader.SetDateFormat(row->second.dateFormat);
    const ZELMQIFImport::Result result = reader.parse();
    EXPECT_EQ(result.entries.size(), row->second.records);
    for (const ImportRecord& record : result.entries) {
      ASSERT_TRUE(record.amount);
      EXPECT_TRUE(std::isfinite(*record.amount));
    }
    if (row->second.firstDate != 0) {
      ASSERT_FALSE(result.entries.empty());
      EXPECT_EQ(result.entries[0].date, row->second.firstDate);
      EXPECT_DOUBLE_EQ(*result.entries[0].amount, row->second.firstAmount);
    }
  }
  EXPECT_EQ(seen, Table().size());
}

TEST(QIFCorpus, ExactRecords) {
  const std::string dir = FOLVANT_CORPUS_DIR "/qif/";
  // Latin-1 bytes, CRLF, an account list, a header with a trailing blank.
  ZELMQIFImport german =
      ZELMQIFImport::initWithContentsOfFile(dir + "quiffen-test_FMQifTest2023-10-18.qif", 0);
  const auto result = german.parse();
  EXPECT_EQ(result.entries.at(0).toFrom, "Eröffnungssaldo");
  ASSERT_EQ(result.accounts.size(), 1u);

  // Line items of -253.64 and "=746.36" add up to neither -1000.00 nor 1000.00: the record
  // keeps its own category and loses the line items.
  ZELMQIFImport splits = ZELMQIFImport::initWithContentsOfFile(dir + "ruby-qif-splits.qif", 0);
  const ImportRecord mortgage = splits.parse().entries.at(0);
  EXPECT_EQ(mortgage.category, "[linda]");
  EXPECT_EQ(mortgage.cleared, true);
  EXPECT_EQ(mortgage.number, 1005);
  EXPECT_FALSE(mortgage.splits);
  ZELMQIFImport split = ZELMQIFImport::initWithContentsOfFile(dir + "quiffen-test_split.qif", 0);
  const ImportRecord payee = split.parse().entries.at(0);
  ASSERT_TRUE(payee.splits);
  EXPECT_EQ(payee.splits->at(0).category, "[An Account]");
  EXPECT_DOUBLE_EQ(payee.splits->at(1).amount, -1.0);

  ZELMQIFImport accounts =
      ZELMQIFImport::initWithContentsOfFile(dir + "csv2ofx-default_w_splits.qif", 0);
  const auto both = accounts.parse();
  ASSERT_EQ(both.accounts.size(), 2u);
  EXPECT_EQ(both.accounts[0].name, "Cash");
  EXPECT_EQ(both.accounts[0].entries.size() + both.accounts[1].entries.size(), 8u);
}

}  // namespace
}  // namespace folvant
