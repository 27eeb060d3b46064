#include "folvant/exchange/ZELMTextImport.h"

#include <algorithm>
#include <cmath>

#include "folvant/platform/Text.h"

namespace folvant {
namespace {

constexpr std::size_t kDetectionRows = 10;


bool HasDigit(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string_view WithoutByteOrderMark(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  return text;
}

// Splits `text` into rows of fields, at most `limit` rows. A field that starts with a quote runs
// to the quote that is not doubled; what follows that quote up to the separator is kept as
// written. A row is ended by LF, CRLF or a lone CR outside quotes.
std::vector<std::vector<std::string>> SplitRows(std::string_view text, char separator,
                                                std::size_t limit) {
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> row;
  std::string field;
  std::size_t i = 0;
  const std::size_t n = text.size();
  bool rowHasField = false;
  while (i < n && rows.size() < limit) {
    const char c = text[i];
    if (c == '"' && field.empty()) {
      ++i;
      while (i < n) {
        const std::size_t quote = text.find('"', i);
        if (quote == std::string_view::npos) {
          field.append(text.substr(i));
          i = n;
          break;
        }
        field.append(text.substr(i, quote - i));
        if (quote + 1 < n && text[quote + 1] == '"') {
          field.push_back('"');
          i = quote + 2;
        } else {
          i = quote + 1;
          break;
        }
      }
      rowHasField = true;
    } else if (c == separator) {
      row.push_back(std::move(field));
      field.clear();
      rowHasField = true;
      ++i;
    } else if (c == '\n' || c == '\r') {
      if (rowHasField || !field.empty()) {
        row.push_back(std::move(field));
        rows.push_back(std::move(row));
      }
      field.clear();
      row.clear();
      rowHasField = false;
      i += (c == '\r' && i + 1 < n && text[i + 1] == '\n') ? 2 : 1;
    } else {
      // Plain characters up to the next separator, quote or line end, in one piece.
      std::size_t end = i + 1;
      while (end < n && text[end] != separator && text[end] != '\n' && text[end] != '\r' &&
             text[end] != '"') {
        ++end;
      }
      field.append(text.substr(i, end - i));
      // A quote inside an unquoted field is an ordinary character.
      if (end < n && text[end] == '"') {
        field.push_back('"');
        ++end;
      }
      i = end;
    }
  }
  if ((rowHasField || !field.empty()) && rows.size() < limit) {
    row.push_back(std::move(field));
    rows.push_back(std::move(row));
  }
  return rows;
}

bool IsResolvedMark(std::string_view text) {
  text = TrimmedBlanks(text);
  if (text.empty()) return false;
  switch (text.front()) {
    case 'c': case 'C': case 'r': case 'R': case 'x': case 'X':
    case 'y': case 'Y': case 't': case 'T': case '*': case '1':
      return true;
    default:
      return false;
  }
}

bool IsAmountColumn(std::int32_t code) {
  return code == ZELMTextImport::kColumnAmount || code == ZELMTextImport::kColumnDebitAmount ||
         code == ZELMTextImport::kColumnCreditAmount;
}

}  // namespace

ZELMTextImport::ZELMTextImport(std::optional<std::string_view> text) {
  if (text) {
    text_ = *text;
  } else {
    SetError(kNoText);
  }
}

ZELMTextImport::ZELMTextImport(const std::optional<std::string>& path,
                               platform::StringEncoding encoding) {
  std::optional<FileText> file = path ? ReadFileText(*path, encoding) : std::nullopt;
  if (file) {
    text_ = std::move(file->text);
  } else {
    SetError(kNoText);
  }
}

char ZELMTextImport::DetectSeparator(std::string_view text) {
  text = WithoutByteOrderMark(text);
  char widest = ',';
  std::size_t widestCount = 1;
  for (const char separator : {'\t', ';', ','}) {
    const auto rows = SplitRows(text, separator, kDetectionRows);
    if (rows.empty()) continue;
    const std::size_t width = rows.front().size();
    const bool consistent =
        width > 1 && std::all_of(rows.begin(), rows.end(),
                                 [width](const auto& row) { return row.size() == width; });
    if (consistent) return separator;
    if (width > widestCount) {
      widest = separator;
      widestCount = width;
    }
  }
  return widest;
}

std::vector<std::vector<std::string>> ZELMTextImport::Rows(char separator) const {
  const std::string_view text = WithoutByteOrderMark(text_);
  if (separator == 0) separator = DetectSeparator(text);
  return SplitRows(text, separator, static_cast<std::size_t>(-1));
}

std::optional<std::vector<std::int32_t>> ZELMTextImport::LayoutFromHeaderRow(
    const std::vector<std::string>& titles) {
  // Tried in order, so "Debit Amount" is a debit column and "Transaction Date" a date column.
  static constexpr std::pair<std::string_view, std::int32_t> kWords[] = {
      {"date", kColumnDate},           {"debit", kColumnDebitAmount},
      {"withdrawal", kColumnDebitAmount}, {"money out", kColumnDebitAmount},
      {"paid out", kColumnDebitAmount}, {"credit", kColumnCreditAmount},
      {"deposit", kColumnCreditAmount}, {"money in", kColumnCreditAmount},
      {"paid in", kColumnCreditAmount}, {"amount", kColumnAmount},
      {"payee", kColumnToFrom},        {"to/from", kColumnToFrom},
      {"name", kColumnToFrom},         {"description", kColumnDescription},
      {"details", kColumnDescription}, {"memo", kColumnNotes},
      {"note", kColumnNotes},          {"category", kColumnCategory},
      {"check", kColumnNumber},        {"cheque", kColumnNumber},
      {"number", kColumnNumber},       {"num", kColumnNumber},
      {"ref", kColumnNumber},          {"type", kColumnType},
      {"cleared", kColumnResolved},    {"status", kColumnResolved},
      {"reconciled", kColumnResolved}, {"resolved", kColumnResolved},
  };
  std::vector<std::int32_t> layout;
  std::vector<std::int32_t> used;
  for (const std::string& title : titles) {
    std::int32_t code = kColumnIgnored;
    for (const auto& [word, wordCode] : kWords) {
      if (platform::CaseInsensitiveContains(title, word)) {
        code = wordCode;
        break;
      }
    }
    if (std::find(used.begin(), used.end(), code) != used.end()) code = kColumnIgnored;
    if (code != kColumnIgnored) used.push_back(code);
    layout.push_back(code);
  }
  const bool hasDate = std::find(used.begin(), used.end(), kColumnDate) != used.end();
  const bool hasAmount = std::any_of(used.begin(), used.end(), IsAmountColumn);
  if (!hasDate || !hasAmount) return std::nullopt;
  return layout;
}

ImportRecord ZELMTextImport::RowToRecord(const std::vector<std::string>& fields,
                                         const std::vector<std::int32_t>& layout) const {
  ImportRecord record = NewRecord();
  bool hasAmount = false;
  double amount = 0.0;
  const std::size_t count = std::min(fields.size(), layout.size());
  for (std::size_t column = 0; column < count; ++column) {
    const std::string_view text = TrimmedBlanks(fields[column]);
    auto setText = [&text](std::optional<std::string>& key) {
      if (!text.empty()) key = std::string(text);
    };
    switch (layout[column]) {
      case kColumnDate:
        record.date = DateOfDateString(text);
        record.dateText = std::string(text);
        break;
      case kColumnAmount:
        if (!text.empty()) {
          amount += AmountOfAmountString(text);
          hasAmount = true;
        }
        break;
      case kColumnDebitAmount:
        if (!text.empty()) {
          amount -= std::fabs(AmountOfAmountString(text));
          hasAmount = true;
        }
        break;
      case kColumnCreditAmount:
        if (!text.empty()) {
          amount += std::fabs(AmountOfAmountString(text));
          hasAmount = true;
        }
        break;
      case kColumnToFrom: setText(record.toFrom); break;
      case kColumnDescription: setText(record.description); break;
      case kColumnCategory: setText(record.category); break;
      case kColumnType: setText(record.type); break;
      case kColumnNotes: setText(record.notes); break;
      case kColumnNumber: {
        std::string_view digits = text;
        if (digits.starts_with('#')) digits.remove_prefix(1);
        if (!digits.empty() && digits.front() >= '0' && digits.front() <= '9') {
          record.number = LeadingInteger(digits);
        }
        break;
      }
      case kColumnResolved: record.cleared = IsResolvedMark(text); break;
      default: break;
    }
  }
  if (hasAmount) SetRecordAmount(record, amount);
  return record;
}

TextParseResult ZELMTextImport::parse() const {
  TextParseResult result;
  char separator = 0;
  switch (dataFormat_) {
    case kSeparatorComma: separator = ','; break;
    case kSeparatorTab: separator = '\t'; break;
    case kSeparatorSemicolon: separator = ';'; break;
    default: break;
  }
  const std::vector<std::vector<std::string>> rows = Rows(separator);
  if (rows.empty()) return result;

  std::vector<std::int32_t> layout = dataLayout_;
  std::size_t first = 0;
  if (layout.empty()) {
    std::optional<std::vector<std::int32_t>> guessed = LayoutFromHeaderRow(rows.front());
    if (!guessed) return result;
    layout = std::move(*guessed);
    first = 1;
  } else if (skipFirstRow_) {
    first = 1;
  } else {
    // A first row is a header when none of its date and amount fields holds a digit.
    bool header = false;
    const std::vector<std::string>& row = rows.front();
    for (std::size_t column = 0; column < std::min(row.size(), layout.size()); ++column) {
      if (layout[column] != kColumnDate && !IsAmountColumn(layout[column])) continue;
      if (HasDigit(row[column])) {
        header = false;
        break;
      }
      header = true;
    }
    if (header) first = 1;
  }

  result.entries.reserve(rows.size() - first);
  for (std::size_t i = first; i < rows.size(); ++i) {
    const std::vector<std::string>& row = rows[i];
    const auto blank = [](const std::string& f) { return TrimmedBlanks(f).empty(); };
    if (std::all_of(row.begin(), row.end(), blank)) {
      continue;
    }
    result.entries.push_back(RowToRecord(row, layout));
  }
  AddImportTypes(result.entries, result.types);
  return result;
}

}  // namespace folvant
