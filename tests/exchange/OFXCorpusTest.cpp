// Every OFX file of the shared corpus: downloads written by banks and other programs, some of
// them broken on purpose.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <string>

#include "folvant/exchange/ZELMOFXImport.h"

namespace folvant {
namespace {

struct Expected {
  // Refused: the start of the reason; else the statements read.
  std::string refused;
  std::size_t accounts = 0;
  std::size_t records = 0;  // of the first statement
  std::int32_t firstDate = 0;
  double firstAmount = 0.0;
  bool needsBalancing = false;  // read only with the unclosed aggregates closed
};

constexpr const char* kNotWellFormed = "the XML is not well formed";

Expected Refused(const char* reason) { return {reason}; }
Expected Read(std::size_t accounts, std::size_t records = 0, std::int32_t date = 0,
              double amount = 0.0) {
  return {"", accounts, records, date, amount};
}
Expected Balanced(std::size_t records, std::int32_t date, double amount) {
  return {"", 1, records, date, amount, true};
}

const std::map<std::string, Expected>& Table() {
  static const std::map<std::string, Expected> table = {
      {"csv2ofx-default.ofx", Read(1, 2, 20150324, 45000)},
      {"csv2ofx-schwab-checking-msmoney.ofx", Read(1, 4, 20220817, 20)},
      {"csv2ofx-stripe-all.ofx", Read(1, 5, 20210203, 25)},
      {"csv2ofx-transfer_example.ofx", Refused(kNotWellFormed)},  // <CODE>0<CODE>
      {"jgnash-File_with_Accents.ofx", Read(1, 3, 20091201, -30)},
      {"jgnash-Sample.ofx", Read(1, 5, 20030905, -6000)},
      {"jgnash-activity.ofx", Read(1, 11, 20081117, 180)},
      {"jgnash-bank1-commas.ofx", Read(1, 4, 20071212, -13000)},  // "-130,00" under "."
      {"jgnash-bank1.ofx", Read(1, 4, 20071212, -130)},
      {"jgnash-checking1.ofx", Read(1, 3, 20070918, -120)},
      {"jgnash-comptes.ofx", Read(1, 3, 20071224, -60.94)},
      {"jgnash-demobank.ofx", Read(1, 3, 19981015, 582)},
      {"jgnash-test_fails.ofx", Read(1, 2, 20180910, -36)},
      {"jgnash-uglyFormat.ofx", Read(1, 5, 20170331, 123.45)},
      {"ledger-autosync-accented_characters_latin1.ofx", Read(1, 1, 20140920, -58.73)},
      {"ledger-autosync-comments.ofx", Read(1, 2, 20161027, 123.45)},
      {"libofx-downcast.ofx", Refused(kNotWellFormed)},
      {"libofx-example-listing1.xml", Read(1, 2, 20090209, -98.91)},
      {"libofx-example-listing2.xml", Read(1, 2, 20090209, -98.91)},
      {"libofx-failing-ofx-file1.xml", Refused("not an OFX file")},
      {"libofx-failing-ofx-file2.xml", Refused(kNotWellFormed)},
      {"libofx-heap-buffer-overflow-1.ofx", Refused(kNotWellFormed)},
      {"libofx-heap-buffer-overflow-2.ofx", Refused("not an OFX file")},
      {"libofx-null-ptr-deref-1.ofx", Refused("no </OFX> element")},
      {"libofx-null-ptr-deref-2.ofx", Refused("no </OFX> element")},
      {"libofx-ofx-2.1.1-sect-13.12.ofx", Read(0)},  // investments are skipped
      {"libofx-ofx-2.1.1-sect-16.5.3.2.ofx", Read(2, 1, 20050824, -80)},
      {"libofx-ofx-2.1.1-sect-16.5.4.2.ofx", Read(1, 1, 20050824, -80.32)},
      {"libofx-ofx-2.1.1-sect-8.5.5.ofx", Read(0)},
      {"libofx-ofx_spec160_stmtrs_example.sgml", Read(1, 2, 19961004, -200)},
      {"libofx-ofx_spec201_stmtrs_example.xml", Read(1, 2, 19991004, -200)},
      {"libofx-use-after-free.ofx", Refused("not an OFX file")},
      {"oca-test_ofx.ofx", Read(2, 1, 20130824, -80)},
      {"oca-test_ofx_wrong.ofx", Read(2, 1, 20130824, -80)},  // its CURDEF is in a comment
      {"ofx4j-example-response.ofx", Refused(kNotWellFormed)},  // CDATA inside an SGML body
      {"ofx4j-pag-seguro.ofx", Read(1, 3, 20250602, -1901)},
      {"ofx4j-whitespace-example.ofx", Read(0)},
      {"ofxgo-401k_v203.ofx", Read(0)},
      {"ofxgo-bmo_v102__no_header_newline.qfx", Read(1, 1, 20181030, 2042.24)},
      {"ofxgo-moneymrkt1_v103.ofx", Read(1, 3, 20170117, -995.4190396554627)},
      {"ofxgo-moneymrkt1_v203.ofx", Read(1, 3, 20170117, 1303.7355652284177)},
      {"ofxgo-wellsfargo.qfx", Read(1, 1, 20201201, -12.34)},
      {"ofxparse-account_listing_aggregation.ofx", Read(0)},
      {"ofxparse-anzcc.ofx", Refused(kNotWellFormed)},  // an XML declaration on an SGML body
      {"ofxparse-bank_medium.ofx", Read(1, 3, 20090401, -6.6)},
      {"ofxparse-bank_small.ofx", Read(0)},
      {"ofxparse-chase_cc.qfx", Read(1, 1, 20200101, -10)},
      {"ofxparse-checking.ofx", Read(1, 3, 20110331, 0.01)},
      {"ofxparse-error_message.ofx", Read(0)},
      {"ofxparse-fail_nice-date_missing.ofx", Read(1, 3, 0, -80)},  // an empty DTPOSTED: no date
      {"ofxparse-fail_nice-decimal_error.ofx", Read(1, 1, 20112000, 120)},  // month 20
      {"ofxparse-fail_nice-empty_balance.ofx", Read(1, 1, 20110308, 120)},
      {"ofxparse-fidelity-savings.ofx", Read(0)},
      {"ofxparse-multiple_accounts.ofx", Read(1, 0)},
      {"ofxparse-ofx-v102-empty-tags.ofx", Read(1, 1, 20180507, 12.34)},
      {"ofxparse-signon_fail.ofx", Read(0)},
      {"ofxparse-suncorp.ofx", Read(1, 1, 20131215, -16.85)},
      {"ofxtools-br_nubank_cc.ofx", Balanced(6, 20240323, -13)},  // BANKTRANLIST never closed
      {"ofxtools-stmtrs.ofx", Read(1, 2, 20051004, -200)},
      {"ofxtools-stmtrs_euro.ofx", Read(1, 2, 20051004, -20000)},  // "-200,00" under "."
  };
  return table;
}

TEST(OFXCorpus, EveryFile) {
  std::size_t seen = 0;
  for (const auto& file : std::filesystem::directory_iterator(FOLVANT_CORPUS_DIR "/ofx")) {
    const std::string name = file.path().filename().string();
    SCOPED_TRACE(name);
    const auto row = Table().find(name);
    ASSERT_NE(row, Table().end()) << "a corpus file the table does not know";
    const Expected& expected = row->second;
    ++seen;
    auto read = ZELMOFXImport::ReadFile(file.path().string());
    EXPECT_EQ(static_cast<bool>(ZELMOFXImport::initWithContentsOfFile(file.path().string())),
              static_cast<bool>(read));
    if (!expected.refused.empty() || expected.needsBalancing) {
      ASSERT_FALSE(read) << "read, though it should be refused";
      const std::string reason = read.error().what;
      EXPECT_TRUE(reason.starts_with(expected.needsBalancing ? kNotWellFormed : expected.refused))
          << reason;
      if (!expected.needsBalancing) continue;
      read = ZELMOFXImport::ReadFile(file.path().string(), true);
    }
    ASSERT_TRUE(read) << read.error().what;
    const OFXParseResult result = (*read)->parse();
    ASSERT_EQ(result.accounts.size(), expected.accounts);
    if (expected.accounts == 0) continue;
    const ImportRecords& records = result.accounts[0].entries;
    ASSERT_EQ(records.size(), expected.records);
    if (records.empty()) continue;
    EXPECT_EQ(records[0].date.value_or(0), expected.firstDate);
    EXPECT_NEAR(records[0].amount.value_or(NAN), expected.firstAmount, 1e-9);
    for (const ImportRecord& record : records) {
      if (record.amount) {
        EXPECT_TRUE(std::isfinite(*record.amount));
      }
    }
  }
  EXPECT_EQ(seen, Table().size());
}

// What a few files say, read as an account reads them by default.
TEST(OFXCorpus, ValuesOfKnownFiles) {
  auto first = [](const char* name, bool balance = false) {
    auto read = ZELMOFXImport::ReadFile(std::string(FOLVANT_CORPUS_DIR "/ofx/") + name, balance);
    EXPECT_TRUE(read);
    ZELMOFXImport& importer = **read;
    importer.SetSwapOptions_Name(ZELMOFXImport::kRouteToDescription);
    importer.SetSwapOptions_Payee(ZELMOFXImport::kRouteToToFrom);
    importer.SetSwapOptions_Memo(ZELMOFXImport::kRouteToNotes);
    importer.SetSwapOptions_TransactionType(ZELMOFXImport::kRouteToType);
    importer.SetSwapOptions_ReferenceNumber(ZELMOFXImport::kRouteToNumber);
    return importer.parse().accounts.at(0);
  };
  // ISO Latin-1 bytes under CHARSET:8859-1.
  EXPECT_TRUE(first("jgnash-File_with_Accents.ofx").entries.at(1).description.value_or("")
                  .find("\u00C0\u00E0\u00C9\u00E9") != std::string::npos);
  // A Windows-1252 byte in a NAME.
  EXPECT_EQ(first("ledger-autosync-accented_characters_latin1.ofx").entries.at(0).description,
            "Virement Interac \u00E0: Jean");
  // Japanese names in UTF-8 after a byte-order mark.
  EXPECT_FALSE(first("jgnash-Sample.ofx").entries.at(0).description.value_or("").empty());
  // A raw "&" in a NAME.
  const OFXAccount listing = first("libofx-example-listing1.xml");
  EXPECT_EQ(listing.entries.at(0).description, "GROCER A & Z");
  // A check with its number; memo-only card transactions.
  EXPECT_EQ(first("libofx-ofx-2.1.1-sect-16.5.4.2.ofx").entries.at(0).number, 1044);
  EXPECT_EQ(first("ofxtools-br_nubank_cc.ofx", true).entries.at(0).notes, "-memo-message-");
}

}  // namespace
}  // namespace folvant
