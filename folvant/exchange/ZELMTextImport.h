#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/exchange/ImportRecord.h"
#include "folvant/exchange/ZELMImporter.h"
#include "folvant/platform/Encodings.h"

namespace folvant {

struct TextParseResult {
  ImportRecords entries;
  std::vector<ImportType> types;  // every (name, deposit) pair the records name once
};

// Reads a delimited text file as spreadsheets and banks write them: comma-, semicolon- or
// tab-separated fields, a field in double quotes holding separators, line ends and doubled quotes
// (""), CRLF or LF lines, an optional byte-order mark. Each column fills one record field by the
// data layout; dates and amounts are read by the shared rules of ZELMImporter.
class ZELMTextImport : public ZELMImporter {
 public:
  // Column codes: what a column of the file fills. An account keeps its layout as a list of these
  // (one per column, left to right); a column past the end of the layout is ignored.
  static constexpr std::int32_t kColumnIgnored = 0;
  static constexpr std::int32_t kColumnDate = 1;
  static constexpr std::int32_t kColumnAmount = 2;        // signed: negative is money leaving
  static constexpr std::int32_t kColumnDebitAmount = 3;   // money leaving, whatever its sign
  static constexpr std::int32_t kColumnCreditAmount = 4;  // money coming in, whatever its sign
  static constexpr std::int32_t kColumnToFrom = 5;
  static constexpr std::int32_t kColumnDescription = 6;
  static constexpr std::int32_t kColumnCategory = 7;
  static constexpr std::int32_t kColumnType = 8;
  static constexpr std::int32_t kColumnNumber = 9;    // the leading integer of the text
  static constexpr std::int32_t kColumnResolved = 10;  // C, R, X, Y, T, * or 1: resolved
  static constexpr std::int32_t kColumnNotes = 11;

  // Separator codes (the account's data format): found from the first lines, or fixed.
  static constexpr std::int32_t kSeparatorDetect = 0;
  static constexpr std::int32_t kSeparatorComma = 1;
  static constexpr std::int32_t kSeparatorTab = 2;
  static constexpr std::int32_t kSeparatorSemicolon = 3;

  // An importer with an empty text.
  ZELMTextImport() = default;
  // The file's text; nullopt (no text) sets error kNoText.
  explicit ZELMTextImport(std::optional<std::string_view> text);
  // The file read in the encoding (or, when its bytes are not valid there, a guessed one);
  // a missing or unreadable file gives error kNoText.
  ZELMTextImport(const std::optional<std::string>& path, platform::StringEncoding encoding);

  void SetDataFormat(std::int32_t code) { dataFormat_ = code; }
  std::int32_t GetDataFormat() const { return dataFormat_; }
  // Empty: the layout is guessed from a header row (LayoutFromHeaderRow).
  void SetDataLayout(std::vector<std::int32_t> layout) { dataLayout_ = std::move(layout); }
  const std::vector<std::int32_t>& GetDataLayout() const { return dataLayout_; }
  // Skip the first row whatever it holds. Without this a first row is skipped when it is a
  // header: its date column holds no digit and neither do its amount columns.
  void SetSkipFirstRow(bool on) { skipFirstRow_ = on; }
  bool GetSkipFirstRow() const { return skipFirstRow_; }

  // One record per row that holds anything. Without a layout, and without a header from which
  // one can be guessed, nothing is read.
  TextParseResult parse() const;

  // The rows of the text split into fields with the separator ("," ";" or "\t"); a separator of
  // 0 is found from the first lines.
  std::vector<std::vector<std::string>> Rows(char separator) const;
  // The separator the first lines use consistently: tab, then semicolon, then comma; when none
  // is consistent, the one that splits the first line most; comma when none occurs.
  static char DetectSeparator(std::string_view text);
  // A layout from column titles: Date; Amount; Debit, Withdrawal, Money Out; Credit, Deposit,
  // Money In; Payee, Name, To/From; Description, Details; Memo, Notes; Category; Check #,
  // Number, Ref; Type; Cleared, Status, Reconciled, Resolved. Each code goes to its first column only; nullopt unless
  // there is a date column and an amount column.
  static std::optional<std::vector<std::int32_t>> LayoutFromHeaderRow(
      const std::vector<std::string>& titles);

 private:
  ImportRecord RowToRecord(const std::vector<std::string>& fields,
                           const std::vector<std::int32_t>& layout) const;

  std::string text_;
  std::int32_t dataFormat_ = kSeparatorDetect;
  std::vector<std::int32_t> dataLayout_;
  bool skipFirstRow_ = false;
};

}  // namespace folvant
