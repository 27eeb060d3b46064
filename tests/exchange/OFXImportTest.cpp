// Reading OFX downloads: the 1.x repairs, encodings, routing, loans and the reasons of a refusal.

#include <gtest/gtest.h>

#include <string>

#include "folvant/exchange/ZELMOFXImport.h"
#include "folvant/platform/Clock.h"

namespace folvant {
namespace {

constexpr const char* kHeader1252 =
    "OFXHEADER:100\r\nDATA:OFXSGML\r\nVERSION:102\r\nSECURITY:NONE\r\nENCODING:USASCII\r\n"
    "CHARSET:1252\r\nCOMPRESSION:NONE\r\nOLDFILEUID:NONE\r\nNEWFILEUID:NONE\r\n\r\n";

// A bank statement whose transactions are `transactions`, written as SGML without end tags.
std::string BankSGML(const std::string& transactions, const std::string& header = kHeader1252) {
  return header +
         "<OFX><BANKMSGSRSV1><STMTTRNRS><STMTRS><CURDEF>USD\r\n"
         "<BANKACCTFROM><BANKID>121\r\n<ACCTID>9988\r\n<ACCTTYPE>CHECKING\r\n</BANKACCTFROM>\r\n"
         "<BANKTRANLIST><DTSTART>20240101\r\n" +
         transactions + "</BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>\r\n";
}

std::unique_ptr<ZELMOFXImport> ReadWithDefaults(const std::string& bytes) {
  auto read = ZELMOFXImport::Read(bytes);
  EXPECT_TRUE(read) << (read ? "" : read.error().what);
  if (!read) return nullptr;
  std::unique_ptr<ZELMOFXImport> importer = std::move(*read);
  // The routing an account keeps by default.
  importer->SetSwapOptions_Name(ZELMOFXImport::kRouteToDescription);
  importer->SetSwapOptions_Payee(ZELMOFXImport::kRouteToToFrom);
  importer->SetSwapOptions_Memo(ZELMOFXImport::kRouteToNotes);
  importer->SetSwapOptions_TransactionType(ZELMOFXImport::kRouteToType);
  importer->SetSwapOptions_ReferenceNumber(ZELMOFXImport::kRouteToNumber);
  return importer;
}

TEST(OFXRepair, UnclosedDataElementsGainTheirEndTags) {
  EXPECT_EQ(ZELMOFXImport::addMissingEndTagsToElementsInString(
                "<STMTTRN><TRNAMT>-12.50\n<FITID>7\n</STMTTRN>"),
            "<STMTTRN><TRNAMT>-12.50</TRNAMT><FITID>7</FITID></STMTTRN>");
  // Closed elements and aggregates are left as they are; a value is trimmed.
  EXPECT_EQ(ZELMOFXImport::addMissingEndTagsToElementsInString("<A>\n  <B> x </B>\n</A>"),
            "<A>\n  <B>x</B>\n</A>");
  // The input ending inside a tag ends the copy there.
  EXPECT_EQ(ZELMOFXImport::addMissingEndTagsToElementsInString("<A>1<B"), "<A>1</A>");
}

TEST(OFXRepair, BareAmpersandsAreEscapedOnce) {
  EXPECT_EQ(ZELMOFXImport::escapePhysicalEntitiesInElementsInString("A & B &amp; C &lt;&gt;"),
            "A &amp; B &amp; C &lt;&gt;");
  EXPECT_EQ(ZELMOFXImport::escapePhysicalEntitiesInElementsInString("&quot;&apos;&amp&"),
            "&quot;&apos;&amp;amp&amp;");
}

TEST(OFXRead, BankStatementRecordsFollowTheRouting) {
  const auto importer = ReadWithDefaults(BankSGML(
      "<STMTTRN><TRNTYPE>CHECK\r\n<DTPOSTED>20240105120000[-5:EST]\r\n<TRNAMT>-12.50\r\n"
      "<FITID>7\r\n<CHECKNUM>1001\r\n<REFNUM>77\r\n<NAME>A & B\r\n<MEMO>Tom &amp; Jerry\r\n"
      "</STMTTRN>\r\n"
      "<STMTTRN><TRNTYPE>CREDIT\r\n<DTUSER>20240107\r\n<TRNAMT>0\r\n<FITID>8\r\n"
      "<PAYEE><NAME>Employer\r\n</PAYEE><EXTDNAME>Pay run 12\r\n<NAME>ignored\r\n</STMTTRN>\r\n"
      "<STMTTRN><TRNTYPE>CHECK\r\n<DTPOSTED>2005\r\n<FITID>9\r\n</STMTTRN>\r\n"));
  ASSERT_TRUE(importer);
  const OFXParseResult result = importer->parse();
  ASSERT_EQ(result.accounts.size(), 1u);
  const OFXAccount& account = result.accounts[0];
  EXPECT_EQ(account.currency, "USD");
  EXPECT_EQ(account.accountID, "9988");
  ASSERT_EQ(account.entries.size(), 3u);

  const ImportRecord& check = account.entries[0];
  EXPECT_EQ(check.date, 20240105);
  EXPECT_EQ(check.cleared, true);
  EXPECT_EQ(check.amount, -12.5);
  EXPECT_EQ(check.isDeposit, false);
  EXPECT_EQ(check.fitID, "7");
  EXPECT_EQ(check.number, 77);  // the reference number overrides the check number
  EXPECT_EQ(check.description, "A & B");
  EXPECT_EQ(check.notes, "Tom & Jerry");
  EXPECT_EQ(check.type, "CHECK");

  const ImportRecord& pay = account.entries[1];
  EXPECT_EQ(pay.date, 20240107);
  EXPECT_EQ(pay.cleared, false);  // no DTPOSTED
  EXPECT_EQ(pay.isDeposit, true);  // a zero amount is a deposit by default
  EXPECT_EQ(pay.toFrom, "Employer");
  EXPECT_EQ(pay.description, "Pay run 12");  // EXTDNAME wins over NAME

  const ImportRecord& bare = account.entries[2];
  EXPECT_EQ(bare.date, platform::Today());  // "2005" has too few digits
  EXPECT_FALSE(bare.amount);
  EXPECT_FALSE(bare.isDeposit);

  // Each (name, deposit) pair once; a record without an amount names a debit type.
  EXPECT_EQ(result.types, (std::vector<ImportType>{{"CHECK", false}, {"CREDIT", true}}));
}

TEST(OFXRead, RoutingCodesMoveSkipOrDropFields) {
  auto read = ZELMOFXImport::Read(
      BankSGML("<STMTTRN><TRNTYPE>DEBIT\r\n<DTPOSTED>20240105\r\n<TRNAMT>-3\r\n<NAME>Shop 42\r\n"
               "<MEMO>coffee\r\n<REFNUM>x\r\n</STMTTRN>\r\n"));
  ASSERT_TRUE(read);
  ZELMOFXImport& importer = **read;
  importer.SetSwapOptions_Name(ZELMOFXImport::kRouteToNumber);
  importer.SetSwapOptions_Memo(ZELMOFXImport::kRouteToCategory);
  importer.SetSwapOptions_TransactionType(ZELMOFXImport::kNotRead);
  importer.SetSwapOptions_ReferenceNumber(99);  // an unknown code drops the field
  const ImportRecord record = importer.parse().accounts.at(0).entries.at(0);
  EXPECT_EQ(record.number, 0);  // "Shop 42" has no leading integer
  EXPECT_EQ(record.category, "coffee");
  EXPECT_FALSE(record.type);
  EXPECT_FALSE(record.description);
}

TEST(OFXRead, DatesKeepTheirFirstEightDigits) {
  EXPECT_EQ(ZELMOFXImport::DateStringToDateNumber("20051231120000[-5:EST]"), 20051231);
  EXPECT_EQ(ZELMOFXImport::DateStringToDateNumber("2005-12-31"), 20051231);
  EXPECT_EQ(ZELMOFXImport::DateStringToDateNumber("2005"), platform::Today());
  EXPECT_EQ(ZELMOFXImport::DateStringToDateNumber("20120231"), 20120231);
}

TEST(OFXRead, HeaderChoosesTheEncoding) {
  const std::string name = "<STMTTRN><TRNAMT>-1\r\n<NAME>Caf\xE9 \x80\r\n</STMTTRN>";
  auto nameIn = [&](const std::string& header) {
    const auto importer = ReadWithDefaults(BankSGML(name, header));
    return importer ? importer->parse().accounts.at(0).entries.at(0).description.value_or("")
                    : std::string("(refused)");
  };
  EXPECT_EQ(nameIn(kHeader1252), "Caf\u00E9 \u20AC");
  EXPECT_EQ(nameIn("OFXHEADER:100\nENCODING:USASCII\nCHARSET:NONE\n\n"), "Caf\u00E9 \u0080");
  EXPECT_EQ(nameIn("OFXHEADER:100\nENCODING:USASCII\nCHARSET:ISO-8859-1\n\n"), "Caf\u00E9 \u0080");
  EXPECT_EQ(nameIn("OFXHEADER:100\n\n"), "Caf\u00E9 \u20AC");  // no ENCODING: Windows-1252
  // UTF-8 by the header: these bytes are not UTF-8, so the file is refused.
  auto refused = ZELMOFXImport::Read(BankSGML(name, "OFXHEADER:100\nENCODING:UTF-8\n\n"));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().what, "the text is not valid Unicode (UTF-8)");
}

TEST(OFXRead, UTF16AndXMLDocuments) {
  const std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><?OFX OFXHEADER=\"200\"?><OFX><CREDITCARDMSGSRSV1>"
      "<CCSTMTTRNRS><CCSTMTRS><CURDEF>EUR</CURDEF><CCACCTFROM><ACCTID>4111</ACCTID></CCACCTFROM>"
      "<BANKTRANLIST><STMTTRN><TRNTYPE>DEBIT</TRNTYPE><DTPOSTED>20240301</DTPOSTED>"
      "<TRNAMT>-4.20</TRNAMT><NAME>Boulangerie \xC3\xA9</NAME></STMTTRN></BANKTRANLIST>"
      "</CCSTMTRS></CCSTMTTRNRS></CREDITCARDMSGSRSV1></OFX>";
  const auto utf8 = ReadWithDefaults(xml);
  ASSERT_TRUE(utf8);
  const OFXAccount card = utf8->parse().accounts.at(0);
  EXPECT_EQ(card.currency, "EUR");
  EXPECT_EQ(card.accountID, "4111");
  EXPECT_EQ(card.entries.at(0).description, "Boulangerie \u00E9");

  std::string utf16 = "\xFF\xFE";  // little-endian mark
  for (unsigned char c : std::string(xml)) {
    if (c >= 0x80) continue;  // keep the ASCII part only
    utf16.push_back(static_cast<char>(c));
    utf16.push_back('\0');
  }
  const auto wide = ReadWithDefaults(utf16);
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->parse().accounts.at(0).entries.at(0).description, "Boulangerie");
}

TEST(OFXRead, LoanPaymentsSplitTheirParts) {
  const auto importer = ReadWithDefaults(
      kHeader1252 + std::string(
                        "<OFX><LOANMSGSRSV1><LOANSTMTTRNRS><LOANSTMTRS><CURDEF>USD\n"
                        "<LOANACCTFROM><LOANACCTID>L-1\n</LOANACCTFROM><LOANTRANLIST>"
                        "<LOANSTMTTRN><LOANTRNTYPE>PAYMENT\n<DTPOSTED>20240201\n<TRNAMT>-1100\n"
                        "<LOANTRNAMT><PRINAMT>700\n<INTAMT>300\n<ESCRWAMT><ESCRWTOTAL>100.00\n"
                        "<ESCRWTAX>80.00\n</ESCRWAMT></LOANTRNAMT></LOANSTMTTRN>"
                        "<LOANSTMTTRN><LOANTRNTYPE>PAYMENT\n<DTPOSTED>20240301\n<TRNAMT>-50\n"
                        "<LOANTRNAMT><ESCRWAMT><ESCRWTOTAL>0\n<ESCRWTAX>50\n</ESCRWAMT>"
                        "</LOANTRNAMT></LOANSTMTTRN>"
                        "</LOANTRANLIST></LOANSTMTRS></LOANSTMTTRNRS></LOANMSGSRSV1></OFX>"));
  ASSERT_TRUE(importer);
  const OFXAccount loan = importer->parse().accounts.at(0);
  EXPECT_EQ(loan.accountID, "L-1");
  ASSERT_EQ(loan.entries.size(), 2u);
  const auto& splits = loan.entries[0].splits.value();
  ASSERT_EQ(splits.size(), 4u);
  EXPECT_EQ(splits[0].description, "Principal");
  EXPECT_EQ(splits[0].amount, 700);
  EXPECT_EQ(splits[1].description, "Interest");
  EXPECT_EQ(splits[2].description, "Escrow Tax");
  EXPECT_EQ(splits[2].amount, 80);
  EXPECT_EQ(splits[3].description, "Escrow Other");
  EXPECT_NEAR(splits[3].amount, 20, 1e-9);
  EXPECT_EQ(loan.entries[0].type, "PAYMENT");
  EXPECT_FALSE(loan.entries[1].splits);  // a zero escrow total adds no escrow splits
}

TEST(OFXRead, RefusalsSayWhy) {
  auto reason = [](const std::string& bytes) {
    auto read = ZELMOFXImport::Read(bytes);
    return read ? std::string("(read)") : read.error().what;
  };
  EXPECT_EQ(reason("short"), "too short");
  EXPECT_EQ(reason("Date,Amount\n1/2/24,3\n"), "not an OFX file");
  EXPECT_EQ(reason("OFXHEADER:100\nDATA:OFXSGML\n\n<BODY>"), "no <OFX> element");
  EXPECT_EQ(reason(std::string(kHeader1252) + "<OFX><SIGNONMSGSRSV1>"), "no </OFX> element");
  EXPECT_EQ(reason("<?xml version=\"1.0\"?><html></html>"), "not an OFX file");
  const std::string broken = reason("<?xml version=\"1.0\"?><OFX><A></B></OFX>");
  EXPECT_TRUE(broken.starts_with("the XML is not well formed: ")) << broken;
  EXPECT_NE(broken.find(" at byte "), std::string::npos) << broken;
  // An SGML body whose aggregates do not nest is refused, not guessed at.
  EXPECT_TRUE(reason(BankSGML("<STMTTRN><TRNAMT>1\n</STMTTRNRS>")).starts_with("the XML is not"));
  EXPECT_FALSE(ZELMOFXImport::initWithContentsOfFile("/no/such/file.ofx"));
}

}  // namespace
}  // namespace folvant
