#pragma once

#include <cstdint>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/exchange/ImportRecord.h"
#include "folvant/exchange/ZELMImporter.h"
#include "folvant/platform/Encodings.h"
#include "folvant/platform/Expected.h"

namespace folvant {

// Why an OFX download could not be read, in words for the user ("no </OFX> element").
struct OFXReadError {
  std::string what;
};

// One statement of a download: its currency (CURDEF), account number and transactions.
struct OFXAccount {
  std::string currency;
  std::string accountID;
  ImportRecords entries;
};

struct OFXParseResult {
  std::vector<OFXAccount> accounts;
  std::vector<ImportType> types;  // every (name, deposit) pair the records name once
};

// Reads an Open Financial Exchange download: an OFX 1.x file (KEY:VALUE header lines, then SGML
// whose data elements need not be closed) or an OFX 2.x file (XML). Bank, credit-card and loan
// statements become accounts of import records; investment statements and other message sets
// are skipped.
//
// A 1.x body is made into XML before it is parsed: every data element gets its end tag and every
// bare "&" is escaped. The text is decoded by the header (ENCODING, CHARSET with Windows code
// pages) and the tree always holds UTF-8.
class ZELMOFXImport : public ZELMImporter {
 public:
  // Where a field of a transaction goes (the five routing settings).
  static constexpr std::int32_t kRouteToCategory = 0;
  static constexpr std::int32_t kRouteToToFrom = 1;
  static constexpr std::int32_t kRouteToDescription = 2;
  static constexpr std::int32_t kRouteToType = 3;
  static constexpr std::int32_t kRouteToNotes = 4;
  static constexpr std::int32_t kRouteToNumber = 5;  // the text's leading integer
  static constexpr std::int32_t kNotRead = -100;     // the field is not looked at
  // Any other code drops the field.

  // An importer with no document; parse() gives nothing.
  ZELMOFXImport() = default;

  // The file read and parsed; nullptr when it cannot be read or is not a usable OFX document.
  static std::unique_ptr<ZELMOFXImport> initWithContentsOfFile(const std::string& path);
  // As above, keeping the reason of a refusal.
  //
  // With `balanceAggregates`, an SGML body whose aggregates do not nest once its data elements
  // are closed (a bank that never closes BANKTRANLIST) is balanced before it is parsed: an end
  // tag closes the aggregates still open inside its element, an end tag of nothing open is
  // dropped, and what is open at the end is closed. The plain reading refuses such a body; the
  // import review tries it only after the plain reading failed, and says so.
  static Expected<std::unique_ptr<ZELMOFXImport>, OFXReadError> ReadFile(
      const std::string& path, bool balanceAggregates = false);
  // The bytes of a download.
  static Expected<std::unique_ptr<ZELMOFXImport>, OFXReadError> Read(
      std::string_view bytes, bool balanceAggregates = false);

  // Closes every data element of an SGML body: after a start tag and its text, when the next tag
  // is not this element's end tag, the end tag is written right after the text (trimmed of white
  // space). "<TRNAMT>-12.50\n<FITID>7\n</STMTTRN>" becomes
  // "<TRNAMT>-12.50</TRNAMT><FITID>7</FITID></STMTTRN>". Linear in the text.
  static std::string addMissingEndTagsToElementsInString(std::string_view text);
  // Writes every "&" that does not start &amp; &lt; &gt; &quot; or &apos; as "&amp;".
  static std::string escapePhysicalEntitiesInElementsInString(std::string_view text);

  // The encoding the download was read in (UTF-8 until one is read).
  platform::StringEncoding TextEncoding() const { return encoding_; }

  // The parsed document (owns the tree; text nodes point into a buffer the importer keeps).
  const pugi::xml_document& XMLTree() const { return *tree_; }
  void setXMLTree(std::unique_ptr<pugi::xml_document> tree);

  // The routing of NAME (or EXTDNAME), PAYEE/NAME, MEMO, TRNTYPE and REFNUM; each 0 until set.
  void SetSwapOptions_Name(std::int32_t code) { swapOptions_Name_ = code; }
  std::int32_t GetSwapOptions_Name() const { return swapOptions_Name_; }
  void SetSwapOptions_Payee(std::int32_t code) { swapOptions_Payee_ = code; }
  std::int32_t GetSwapOptions_Payee() const { return swapOptions_Payee_; }
  void SetSwapOptions_Memo(std::int32_t code) { swapOptions_Memo_ = code; }
  std::int32_t GetSwapOptions_Memo() const { return swapOptions_Memo_; }
  void SetSwapOptions_TransactionType(std::int32_t code) { swapOptions_Type_ = code; }
  std::int32_t GetSwapOptions_TransactionType() const { return swapOptions_Type_; }
  void SetSwapOptions_ReferenceNumber(std::int32_t code) { swapOptions_RefNum_ = code; }
  std::int32_t GetSwapOptions_ReferenceNumber() const { return swapOptions_RefNum_; }

  // The statements and the entry types their records name.
  OFXParseResult parse() const;
  // One account per bank, credit-card and loan message set (its first statement).
  std::vector<OFXAccount> Accounts() const;
  OFXAccount BankStatementAggregateToAccount(const pugi::xml_node& statement) const;
  OFXAccount CreditCardStatementAggregateToAccount(const pugi::xml_node& statement) const;
  OFXAccount LoanStatementAggregateToAccount(const pugi::xml_node& statement) const;
  ImportRecord BankTransactionAggregateToEntry(const pugi::xml_node& transaction) const;
  // A loan payment, with its principal, interest, insurance and escrow parts as splits.
  ImportRecord LoanTransactionAggregateToEntry(const pugi::xml_node& transaction) const;
  static std::vector<ImportType> EntryTypesInAccounts(const std::vector<OFXAccount>& accounts);

  // The first eight digits of an OFX date-time ("20051231120000[-5:EST]" → 20051231); fewer
  // digits give today. The digits are taken as they are: 20120231 stays 20120231, and the
  // import review reports such a record as having no readable date.
  static std::int32_t DateStringToDateNumber(std::string_view text);

 private:
  OFXAccount TransactionListToAccount(const pugi::xml_node& statement,
                                      const char* accountIDPath) const;
  ImportRecord TransactionToEntry(const pugi::xml_node& transaction,
                                  const char* typeElement) const;
  void Route(ImportRecord& record, std::int32_t code, std::string text) const;

  std::string buffer_;  // the text the tree was parsed from, in place
  std::unique_ptr<pugi::xml_document> tree_ = std::make_unique<pugi::xml_document>();
  platform::StringEncoding encoding_ = platform::kUTF8StringEncoding;
  std::int32_t swapOptions_Name_ = 0;
  std::int32_t swapOptions_Payee_ = 0;
  std::int32_t swapOptions_Memo_ = 0;
  std::int32_t swapOptions_Type_ = 0;
  std::int32_t swapOptions_RefNum_ = 0;
};

}  // namespace folvant
