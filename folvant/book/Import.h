#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/book/BookError.h"
#include "folvant/exchange/ImportRecord.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Encodings.h"

namespace folvant {

class Book;
class ZELMAccount;

// Bringing a bank's file into an account so that nothing is entered twice. Reviewing reads the
// file and says, record by record, what importing it would do; applying adds the new records as
// one batch, which can be taken back as a whole while its entries are as the import left them.
//
// The book keeps, per account, "imports/<number>.plist": the batches (their entry numbers and
// a fingerprint of each entry as imported) and the bank's identifiers of the transactions
// imported; and "imports/sources.plist": which account each bank account of a file went to.

enum class ImportFormat { kQIF, kOFX, kCSV, kTSV };
std::string_view ImportFormatName(ImportFormat format);  // "QIF", "OFX", "CSV", "TSV"

// What a column of delimited text holds, by word ("date", "amount", "debit", "credit", "payee"
// or "to-from", "description", "category", "type", "number", "resolved", "notes", "skip") and
// the text reader's column code.
const std::vector<std::pair<std::string, std::int32_t>>& ImportColumnWords();
std::optional<std::int32_t> ImportColumnCode(std::string_view word);

struct ImportRequest {
  std::string account;  // where the records go
  std::filesystem::path file;
  std::optional<ImportFormat> format;  // default: from the name, else from the content
  // A date format ("%d/%m/%Y", or "mdy", "dmy", "ymd" with two- or four-digit years found from
  // the dates); default: the order that makes every date valid, else the account's.
  std::optional<std::string> dateFormat;
  std::optional<platform::StringEncoding> encoding;  // default: the account's, checked
  std::optional<std::string> from;  // the file's account, by name or number
  // Where the file's fields go, by field: QIF "payee", "memo", "category"; OFX "name",
  // "payee", "memo", "type", "refnum". Codes as the readers take them.
  std::map<std::string, std::int32_t> swaps;
  // Delimited text: what each column holds (the text reader's column codes), and whether the
  // first row is a header to skip; default: the account's layout, else the file's header row.
  std::optional<std::vector<std::int32_t>> columns;
  bool includePossible = false;  // applying adds the possible duplicates too
  // Applying adds only these rows (their 1-based lines) of the new records, transfers and
  // possible duplicates; duplicates and unreadable records never. None: by status alone.
  std::optional<std::set<std::size_t>> lines;
  bool saveSettings = false;     // the overrides above become the account's settings
  // Called now and then with the share done (0 to 1) on long work.
  std::function<void(double)> progress;
};

enum class ImportStatus {
  kNew,
  kDuplicate,          // imported before, or already in the register
  kPossibleDuplicate,  // an entry of the same amount within 3 days with similar texts
  kTransfer,           // the other side of a transfer in another account of the book
  kUnreadable,         // no date or no amount
};
std::string_view ImportStatusName(ImportStatus status);  // "new", "duplicate", ...

struct ImportRow {
  std::size_t line = 0;  // 1-based position of the record in the file's account
  ImportRecord record;
  std::int32_t date = 0;
  double amount = 0.0;
  std::string type;          // the account's type it takes, or the one to create
  bool newType = false;
  std::string category;      // full name
  bool newCategory = false;
  ImportStatus status = ImportStatus::kNew;
  std::optional<std::int32_t> match;  // the entry it duplicates or pairs with
  std::string matchAccount;           // a transfer's other account
  std::string problem;                // why unreadable
  std::optional<std::int32_t> added;  // applying: the entry it became
};

struct ImportReview {
  std::shared_ptr<ZELMAccount> account;
  std::string file;
  ImportFormat format = ImportFormat::kQIF;
  std::string encoding;    // name of the encoding the text was read in
  std::string dateFormat;  // "" for OFX
  std::string dateNote;    // how the date format was chosen
  bool dateFormatGuessed = false;  // the dates did not decide it: asking for one may be needed
  std::string readNote;    // a repair the file needed to be read at all
  std::vector<std::string> fileAccounts;  // the accounts the file holds, when it names any
  std::string fileAccount;                // the one read
  std::string fileAccountNote;            // how it was chosen
  std::vector<ImportRow> rows;
  std::vector<std::string> newTypes, newCategories;
  std::map<ImportStatus, std::size_t> counts;
  // Applying:
  bool applied = false;
  std::int32_t batch = 0;  // its number in the account's history
  std::size_t added = 0, linked = 0;
  double balance = 0.0;
};

// The accounts a file names (a QIF file of several accounts, an OFX file's statements), read
// as the import would read it, for choosing `from`; empty when it names none.
BookResult<std::vector<std::string>> ImportFileAccounts(Book& book, const ImportRequest& request);

// What importing the file would do; changes nothing.
BookResult<ImportReview> ReviewImport(Book& book, const ImportRequest& request);
// Imports the new records (and transfers; possible duplicates when asked) as one batch.
BookResult<ImportReview> ApplyImport(Book& book, const ImportRequest& request);

struct ImportBatch {
  std::int32_t number = 0;
  platform::LocalTime when{};
  std::string file;
  std::string format;
  std::vector<std::int32_t> entries;
  std::size_t linked = 0;  // entries of other accounts it linked or made
};
struct ImportHistory {
  std::shared_ptr<ZELMAccount> account;
  std::vector<ImportBatch> batches;  // the oldest first
};
BookResult<ImportHistory> ImportBatches(Book& book, std::string_view account);

struct ImportUndo {
  std::shared_ptr<ZELMAccount> account;
  ImportBatch batch;
  std::size_t removed = 0;
  std::size_t gone = 0;  // entries of the batch deleted since
  double balance = 0.0;
};
// Takes back the last batch; refused while any of its entries was changed since.
BookResult<ImportUndo> UndoImport(Book& book, std::string_view account);

}  // namespace folvant
