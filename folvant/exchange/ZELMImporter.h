#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/exchange/ImportRecord.h"
#include "folvant/platform/Encodings.h"

namespace folvant {

// What the QIF, OFX and delimited-text readers share: their settings, their error code and the
// reading of dates and amounts. A reader is made with its text, configured, and asked to parse;
// it never touches an account.
//
// Two-digit years: a date format with "%y" reads 69 to 99 as 1969 to 1999 and 00 to 68 as 2000
// to 2068, the fixed window of the C library's date reader. Bank downloads are recent, and a
// register reaching back before 1969 is written with four-digit years.
class ZELMImporter {
 public:
  // The error codes: none; no text was given (the file could not be read); a QIF AutoSwitch
  // block without its end.
  static constexpr std::int32_t kNoError = 0;
  static constexpr std::int32_t kNoText = 1;
  static constexpr std::int32_t kUnclosedAutoSwitch = 10;

  virtual ~ZELMImporter() = default;

  // A calendar format built of %m, %d and %y or %Y with "/" between them. Default "%m/%d/%y".
  void SetDateFormat(std::string_view format) { dateFormat_ = format; }
  const std::string& GetDateFormat() const { return dateFormat_; }
  void SetDecimalSeparator(std::string_view separator) { decimalSeparator_ = separator; }
  const std::string& GetDecimalSeparator() const { return decimalSeparator_; }
  void SetThousandsSeparator(std::string_view separator) { thousandsSeparator_ = separator; }
  const std::string& GetThousandsSeparator() const { return thousandsSeparator_; }
  // Whether a zero amount makes a deposit (default yes).
  void SetImportZeroAmountsAsDeposits(bool on) { importZeroAmountsAsDeposits_ = on; }
  bool GetImportZeroAmountsAsDeposits() const { return importZeroAmountsAsDeposits_; }
  void SetError(std::int32_t error) { error_ = error; }
  std::int32_t error() const { return error_; }
  // A name for the file the records came from; nullopt stores "".
  void setSourceName(std::optional<std::string_view> name) { sourceName_ = name.value_or(""); }
  const std::string& sourceName() const { return sourceName_; }
  // The number of the account chosen as destination (-1: none); kept for the caller only.
  void setImportAccount(std::int32_t number) { importAccount_ = number; }
  std::int32_t importAccount() const { return importAccount_; }

  // The three numbers of a date text in the order they stand, e.g. "12/01/2005" → 12, 1, 2005
  // and "120105" → 12, 1, 5. Eight digits without separators are split by where the date
  // format puts its year. A number that is not there reads 0.
  std::array<std::int32_t, 3> DateStringComponents(std::string_view text) const;
  // The components joined as "A/B/C".
  std::string TweakDateString(std::string_view text) const;
  // The date number of a record's date text under the date format, or nullopt when the text
  // does not make a calendar date (13/45/05).
  std::optional<std::int32_t> DateOfDateString(std::string_view text) const;

  // Amount text with the thousands separator removed, the decimal separator made ".",
  // "(12.50)" made "-12.50", and everything but digits, "." and "-" dropped.
  std::string TweakAmountString(std::string_view text) const;
  // The number of an amount text: the leading number of its tweaked text, 0.0 when there is
  // none, and never infinite or beyond ±1e15 (read as 0.0).
  double AmountOfAmountString(std::string_view text) const;

  // Gives the record its amount and sets "isDeposit" by the sign (a zero amount by the setting).
  void SetRecordAmount(ImportRecord& record, double amount) const;
  // A record with amount 0.0 and "isDeposit" from the setting.
  ImportRecord NewRecord() const;

  // The text of a file in the given encoding; when the bytes are not valid in it, in the
  // encoding guessed from the bytes. nullopt when the file cannot be read.
  struct FileText {
    std::string text;
    platform::StringEncoding encoding = platform::kNoEncoding;
  };
  static std::optional<FileText> ReadFileText(const std::string& path,
                                              platform::StringEncoding encoding);

 private:
  std::string dateFormat_ = "%m/%d/%y";
  std::string decimalSeparator_ = ".";
  std::string thousandsSeparator_ = ",";
  bool importZeroAmountsAsDeposits_ = true;
  std::int32_t error_ = kNoError;
  std::string sourceName_;
  std::int32_t importAccount_ = -1;
};

// The leading decimal integer of a text (after blanks, with an optional sign), 0 when there is
// none; values beyond 32 bits are clamped.
std::int32_t LeadingInteger(std::string_view text);

// Whether the character is a blank or a line end (space, tab, CR, LF).
inline bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
// The text without blanks and line ends at either end.
std::string_view TrimmedBlanks(std::string_view text);

}  // namespace folvant
