#include "folvant/book/Import.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/book/Reconcile.h"
#include "folvant/book/Types.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/exchange/ZELMOFXImport.h"
#include "folvant/exchange/ZELMQIFImport.h"
#include "folvant/exchange/ZELMTextImport.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/Text.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using EntryPtr = std::shared_ptr<ZELMAccountEntry>;

constexpr std::int32_t kMatchDays = 3;
// Larger files are refused before they are read: no bank statement comes near it.
constexpr std::uintmax_t kLargestFile = 512u * 1024 * 1024;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

Unexpected<BookError> Invalid(std::string message) {
  return Unexpected{BookError::Of(Kind::kInvalid, std::move(message))};
}

// The date formats an account stores by number.
constexpr std::string_view kDateFormats[] = {"%m/%d/%y", "%d/%m/%y", "%y/%m/%d",
                                             "%m/%d/%Y", "%d/%m/%Y", "%Y/%m/%d"};

std::string StoredDateFormat(std::int32_t code) {
  if (code < 0 || code >= static_cast<std::int32_t>(std::size(kDateFormats))) {
    return std::string(kDateFormats[0]);
  }
  return std::string(kDateFormats[code]);
}

std::optional<std::int32_t> DateFormatCode(std::string_view format) {
  for (std::size_t i = 0; i < std::size(kDateFormats); ++i) {
    if (kDateFormats[i] == format) return static_cast<std::int32_t>(i);
  }
  return std::nullopt;
}

std::int64_t Cents(double amount) { return std::llround(amount * 100.0); }

std::int64_t DayNumber(std::int32_t date) {
  return static_cast<std::int64_t>(platform::DayFromDateNumber(date));
}

// ---- the book's records of imports ----

struct Fingerprinted {
  std::int32_t account = 0;  // the account the entry is in
  std::int32_t entry = 0;
  std::string fingerprint;
  bool made = true;              // false: an entry that was there and got linked
  std::int32_t previousType = -1;  // of a linked entry, to put back
};

struct Batch {
  ImportBatch listing;
  std::vector<Fingerprinted> entries;  // this account's entries, then the other accounts'
  std::vector<std::string> bankIDs;
};

struct BankID {
  std::int32_t date = 0;
  std::int64_t cents = 0;
  std::int32_t entry = 0;
};

struct Records {
  std::vector<Batch> batches;
  std::unordered_map<std::string, BankID> bankIDs;
};

std::filesystem::path RecordsFile(const ZELMAccount& account) {
  return std::filesystem::path("imports") / (std::to_string(account.GetNumber()) + ".plist");
}
const std::filesystem::path kSourcesFile = std::filesystem::path("imports") / "sources.plist";

// A fingerprint of what an entry stores: it changes with any edit.
std::string Fingerprint(const ZELMAccountEntry& entry) {
  const std::string bytes =
      plist::Write(plist::Value(entry.asDictionary()), plist::Format::kXml);
  std::uint64_t hash = 1469598103934665603ull;
  for (unsigned char c : bytes) hash = (hash ^ c) * 1099511628211ull;
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

BookResult<std::optional<plist::Value>> ReadOwn(const Book& book,
                                                const std::filesystem::path& name) {
  auto bytes = book.ReadOwnFile(name);
  if (!bytes) return Unexpected{bytes.error()};
  if (!*bytes) return std::optional<plist::Value>();
  auto value = plist::Read(**bytes);
  if (!value || value->asDictionary() == nullptr) {
    return Unexpected{BookError::Of(
        Kind::kDamaged, (book.directory() / name).string() +
                            ": not a record of imports; restore it from its backup (\"" +
                            name.filename().string() + ".bak\") or remove it")};
  }
  return std::optional<plist::Value>(std::move(*value));
}

std::string Text(const plist::Dictionary& d, std::string_view key) {
  const plist::Value* v = d.find(key);
  return v != nullptr && v->asString() != nullptr ? std::string(*v->asString()) : std::string();
}
std::int32_t Int(const plist::Dictionary& d, std::string_view key, std::int32_t otherwise = 0) {
  const plist::Value* v = d.find(key);
  return v != nullptr ? v->intValue() : otherwise;
}

BookResult<Records> ReadRecords(const Book& book, const ZELMAccount& account) {
  auto value = ReadOwn(book, RecordsFile(account));
  if (!value) return Unexpected{value.error()};
  Records records;
  if (!*value) return records;
  const plist::Dictionary& top = *(*value)->asDictionary();
  if (const plist::Value* list = top.find("batches"); list && list->asArray()) {
    for (const plist::Value& item : *list->asArray()) {
      const plist::Dictionary* d = item.asDictionary();
      if (d == nullptr) continue;
      Batch batch;
      batch.listing.number = Int(*d, "number");
      batch.listing.file = Text(*d, "file");
      batch.listing.format = Text(*d, "format");
      if (const plist::Value* when = d->find("when"); when && when->asDate()) {
        batch.listing.when = platform::FromPlistDate(*when->asDate());
      }
      if (const plist::Value* entries = d->find("entries"); entries && entries->asArray()) {
        for (const plist::Value& e : *entries->asArray()) {
          const plist::Dictionary* ed = e.asDictionary();
          if (ed == nullptr) continue;
          Fingerprinted f{Int(*ed, "account"), Int(*ed, "entry"), Text(*ed, "fingerprint"),
                          Int(*ed, "made", 1) != 0, Int(*ed, "previousType", -1)};
          if (f.account == account.GetNumber()) {
            batch.listing.entries.push_back(f.entry);
          } else {
            ++batch.listing.linked;
          }
          batch.entries.push_back(std::move(f));
        }
      }
      if (const plist::Value* ids = d->find("bankIDs"); ids && ids->asArray()) {
        for (const plist::Value& id : *ids->asArray()) {
          if (id.asString() != nullptr) batch.bankIDs.emplace_back(*id.asString());
        }
      }
      records.batches.push_back(std::move(batch));
    }
  }
  if (const plist::Value* ids = top.find("bankIDs"); ids && ids->asDictionary()) {
    for (const auto& [key, v] : *ids->asDictionary()) {
      if (const plist::Dictionary* d = v.asDictionary()) {
        records.bankIDs[key.str()] =
            BankID{Int(*d, "date"), static_cast<std::int64_t>(Int(*d, "cents")), Int(*d, "entry")};
      }
    }
  }
  return records;
}

std::optional<BookError> WriteRecords(Book& book, const ZELMAccount& account,
                                      const Records& records) {
  plist::Array batches;
  for (const Batch& b : records.batches) {
    plist::Array entries;
    for (const Fingerprinted& f : b.entries) {
      plist::Dictionary e{{"account", f.account},
                          {"entry", f.entry},
                          {"fingerprint", f.fingerprint}};
      if (!f.made) {
        e.set("made", 0);
        e.set("previousType", f.previousType);
      }
      entries.emplace_back(std::move(e));
    }
    plist::Array ids;
    for (const std::string& id : b.bankIDs) ids.emplace_back(id);
    batches.emplace_back(plist::Dictionary{{"number", b.listing.number},
                                           {"when", platform::ToPlistDate(b.listing.when)},
                                           {"file", b.listing.file},
                                           {"format", b.listing.format},
                                           {"entries", plist::Value(std::move(entries))},
                                           {"bankIDs", plist::Value(std::move(ids))}});
  }
  // Sorted, so that the file reads the same whatever order the table holds them in.
  std::vector<const std::pair<const std::string, BankID>*> sorted;
  for (const auto& item : records.bankIDs) sorted.push_back(&item);
  std::sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) { return a->first < b->first; });
  plist::Dictionary ids;
  for (const auto* item : sorted) {
    ids.set(item->first, plist::Dictionary{{"date", item->second.date},
                                           {"cents", static_cast<long long>(item->second.cents)},
                                           {"entry", item->second.entry}});
  }
  plist::Dictionary top{{"batches", plist::Value(std::move(batches))},
                        {"bankIDs", plist::Value(std::move(ids))}};
  return book.StageOwnFile(RecordsFile(account),
                           plist::Write(plist::Value(std::move(top)), plist::Format::kXml));
}

// ---- reading the file ----

struct FileAccount {
  std::string id;  // the bank's account number, or the QIF account name
  ImportRecords records;
  std::string currency;  // as an OFX statement names it
};

struct ReadFile {
  ImportFormat format = ImportFormat::kQIF;
  std::string encoding;
  std::vector<FileAccount> accounts;
  bool datesFromText = false;  // dates wait for a format chosen from all of them
  std::string note;            // a repair the file needed
};

ImportFormat GuessFormat(const std::filesystem::path& file, std::string_view bytes) {
  std::string ext = platform::AsciiLower(file.extension().string());
  if (ext == ".qif") return ImportFormat::kQIF;
  if (ext == ".ofx" || ext == ".qfx") return ImportFormat::kOFX;
  if (ext == ".csv") return ImportFormat::kCSV;
  if (ext == ".tsv" || ext == ".tab") return ImportFormat::kTSV;
  const std::string_view head = bytes.substr(0, 4096);
  if (platform::CaseInsensitiveContains(head, "OFXHEADER") ||
      platform::CaseInsensitiveContains(head, "<OFX")) {
    return ImportFormat::kOFX;
  }
  if (head.find("!Type:") != std::string_view::npos || head.starts_with("!")) {
    return ImportFormat::kQIF;
  }
  const std::string_view line = head.substr(0, head.find('\n'));
  return line.find('\t') != std::string_view::npos ? ImportFormat::kTSV : ImportFormat::kCSV;
}

// The text of the bytes: in the encoding asked for; else with a byte-order mark or as UTF-8
// when they are valid UTF-8 holding more than ASCII; else in the account's encoding when they
// are valid in it; else as the bytes suggest.
BookResult<std::pair<std::string, std::string>> DecodeText(std::string_view bytes,
                                                           std::optional<platform::StringEncoding> asked,
                                                           platform::StringEncoding stored) {
  auto named = [](platform::StringEncoding e) {
    const std::string_view name = platform::EncodingName(e);
    return name.empty() ? "encoding " + std::to_string(e) : std::string(name);
  };
  if (asked) {
    auto text = platform::DecodeBytes(bytes, *asked);
    if (!text) {
      return Unexpected{BookError::Of(Kind::kInvalid,
                                      "the file is not valid " + named(*asked) + " text",
                                      "leave out --encoding to let the program find the encoding")};
    }
    return std::make_pair(std::move(*text), named(*asked));
  }
  const bool ascii = std::all_of(bytes.begin(), bytes.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  if (!ascii) {
    platform::GuessedText guessed = platform::DecodeBytesGuessingEncoding(bytes);
    const bool unicode = guessed.encoding == platform::kUTF8StringEncoding ||
                         guessed.encoding == platform::kUTF16BigEndianStringEncoding ||
                         guessed.encoding == platform::kUTF16LittleEndianStringEncoding ||
                         guessed.encoding == platform::kUnicodeStringEncoding ||
                         guessed.encoding == platform::kUTF32StringEncoding ||
                         guessed.encoding == platform::kUTF32BigEndianStringEncoding ||
                         guessed.encoding == platform::kUTF32LittleEndianStringEncoding;
    if (unicode) return std::make_pair(std::move(guessed.text), named(guessed.encoding));
    if (stored != platform::kNoEncoding) {
      if (auto text = platform::DecodeBytes(bytes, stored)) {
        return std::make_pair(std::move(*text), named(stored));
      }
    }
    return std::make_pair(std::move(guessed.text), named(guessed.encoding));
  }
  return std::make_pair(std::string(bytes),
                        named(stored != platform::kNoEncoding ? stored
                                                              : platform::kASCIIStringEncoding));
}

std::int32_t Swap(const ImportRequest& request, const std::string& field, std::int32_t stored) {
  const auto it = request.swaps.find(field);
  return it != request.swaps.end() ? it->second : stored;
}

BookResult<ReadFile> Read(const ImportRequest& request, const ZELMAccount& account) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(request.file, error);
  if (error) return Unexpected{BookError::Of(Kind::kNotFound, "cannot read " +
                                                                  request.file.string() + ": " +
                                                                  error.message())};
  if (size > kLargestFile) return Invalid(request.file.string() + " is too large to be a statement");
  std::ifstream in(request.file, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!in.good() && !in.eof()) {
    return Unexpected{BookError::Of(Kind::kFailed, "cannot read " + request.file.string())};
  }

  ReadFile read;
  read.format = request.format.value_or(GuessFormat(request.file, bytes));
  switch (read.format) {
    case ImportFormat::kOFX: {
      auto reader = ZELMOFXImport::Read(bytes);
      if (!reader && reader.error().what.starts_with("the XML is not well formed")) {
        // Banks leave aggregates open (a transaction list never closed); such a body is read
        // once more with them closed where their parents close, and the review says so.
        if (auto balanced = ZELMOFXImport::Read(bytes, true)) {
          read.note = "its elements did not nest (" + reader.error().what +
                      "); it was read with the unclosed ones closed where their parents close";
          reader = std::move(balanced);
        }
      }
      if (!reader) return Invalid(request.file.string() + ": " + reader.error().what);
      ZELMOFXImport& r = **reader;
      read.encoding = platform::EncodingName(r.TextEncoding());
      r.SetDecimalSeparator(".");
      r.SetThousandsSeparator(",");
      r.SetImportZeroAmountsAsDeposits(account.GetOFXImportZeroAmountsAsDeposits());
      r.SetSwapOptions_Name(Swap(request, "name", account.GetOFXImport_SwapOptions_Name()));
      r.SetSwapOptions_Payee(Swap(request, "payee", account.GetOFXImport_SwapOptions_Payee()));
      r.SetSwapOptions_Memo(Swap(request, "memo", account.GetOFXImport_SwapOptions_Memo()));
      r.SetSwapOptions_TransactionType(
          Swap(request, "type", account.GetOFXImport_SwapOptions_TransactionType()));
      r.SetSwapOptions_ReferenceNumber(
          Swap(request, "refnum", account.GetOFXImport_SwapOptions_ReferenceNumber()));
      for (OFXAccount& a : r.parse().accounts) {
        read.accounts.push_back({a.accountID, std::move(a.entries), a.currency});
      }
      return read;
    }
    case ImportFormat::kQIF: {
      auto text = DecodeText(bytes, request.encoding,
                             static_cast<platform::StringEncoding>(account.GetQIFImportEncoding()));
      if (!text) return Unexpected{text.error()};
      read.encoding = text->second;
      ZELMQIFImport r(text->first);
      if (r.error() == ZELMImporter::kUnclosedAutoSwitch) {
        return Invalid(request.file.string() +
                       ": its list of accounts (!Option:AutoSwitch) has no end (!Clear:AutoSwitch)");
      }
      r.SetDecimalSeparator(account.GetQIFImportDecimalSeparator());
      r.SetThousandsSeparator(account.GetQIFImportThousandsSeparator());
      r.SetImportZeroAmountsAsDeposits(account.GetQIFImportZeroAmountsAsDeposits());
      r.SetImportSplitLineItems(account.GetQIFImportSplitLineItems());
      r.SetSwapOptions_ToFrom(Swap(request, "payee", account.GetQIFImport_SwapOptions_ToFrom()));
      r.SetSwapOptions_Description(
          Swap(request, "memo", account.GetQIFImport_SwapOptions_Description()));
      r.SetSwapOptions_Category(
          Swap(request, "category", account.GetQIFImport_SwapOptions_Category()));
      ZELMQIFImport::Result result = r.parse();
      if (result.accounts.empty()) {
        read.accounts.push_back({"", std::move(result.entries), ""});
      } else {
        for (auto& a : result.accounts) read.accounts.push_back({a.name, std::move(a.entries), ""});
      }
      read.datesFromText = true;
      return read;
    }
    case ImportFormat::kCSV:
    case ImportFormat::kTSV: {
      auto text = DecodeText(bytes, request.encoding,
                             static_cast<platform::StringEncoding>(account.GetTextImportEncoding()));
      if (!text) return Unexpected{text.error()};
      read.encoding = text->second;
      ZELMTextImport r(text->first);
      r.SetDataFormat(read.format == ImportFormat::kTSV ? ZELMTextImport::kSeparatorTab
                                                        : ZELMTextImport::kSeparatorDetect);
      r.SetDecimalSeparator(account.GetTextImportDecimalSeparator());
      r.SetThousandsSeparator(account.GetTextImportThousandsSeparator());
      r.SetImportZeroAmountsAsDeposits(account.GetTextImportZeroAmountsAsDeposits() != 0);
      if (request.columns) {
        r.SetDataLayout(*request.columns);
      } else if (const auto& layout = account.GetTextImportDataLayout();
                 layout && !layout->empty()) {
        r.SetDataLayout(*layout);
        r.SetSkipFirstRow(account.GetTextImportSkipFirstRow());
      }
      TextParseResult parsed = r.parse();
      if (parsed.entries.empty() && r.GetDataLayout().empty() &&
          text->first.find_first_not_of(" \t\r\n") != std::string::npos) {
        return Unexpected{BookError::Of(
            Kind::kInvalid,
            "the columns of " + request.file.filename().string() +
                " are not known: its first row names no date and amount columns",
            "give them with --columns, for example --columns date,payee,amount")};
      }
      read.accounts.push_back({"", std::move(parsed.entries), ""});
      read.datesFromText = true;
      return read;
    }
  }
  return Invalid("unknown format");
}

// ---- dates ----

struct DateChoice {
  std::string format;
  std::string note;
  bool guessed = false;  // the dates did not decide the order
};

// The formats of one order of day, month and year, two-digit years first.
struct Order {
  std::string_view name;
  std::string_view shortYear, longYear;
};
constexpr Order kOrders[] = {{"month first", "%m/%d/%y", "%m/%d/%Y"},
                             {"day first", "%d/%m/%y", "%d/%m/%Y"},
                             {"year first", "%y/%m/%d", "%Y/%m/%d"}};

DateChoice ChooseDateFormat(const ImportRecords& records, std::optional<std::string> asked,
                            const std::string& stored) {
  std::unordered_set<std::string_view> texts;
  for (const ImportRecord& r : records) {
    if (r.dateText) texts.insert(*r.dateText);
  }
  // The four-digit form when every year is written with more than two digits.
  ZELMImporter probe;
  auto formatOf = [&](const Order& order) {
    const int yearAt = order.shortYear.starts_with("%y") ? 0 : 2;
    bool longYears = !texts.empty();
    for (std::string_view text : texts) {
      longYears = longYears && probe.DateStringComponents(text)[yearAt] > 99;
    }
    return std::string(longYears ? order.longYear : order.shortYear);
  };
  // Every date a day under the format, and every number where the format has it in its range
  // (a reading that would take "2026" as a day is no reading at all).
  auto valid = [&](const std::string& format) {
    probe.SetDateFormat(format);
    std::size_t dayAt = 0, monthAt = 0, yearAt = 0;
    for (std::size_t i = 0, field = 0; i + 1 < format.size(); ++i) {
      if (format[i] != '%') continue;
      const char c = format[i + 1];
      (c == 'd' ? dayAt : c == 'm' ? monthAt : yearAt) = field++;
    }
    const bool shortYear = format.find("%y") != std::string::npos;
    return std::all_of(texts.begin(), texts.end(), [&](std::string_view t) {
      const auto parts = probe.DateStringComponents(t);
      return parts[dayAt] <= 31 && parts[monthAt] <= 12 && (!shortYear || parts[yearAt] <= 99) &&
             probe.DateOfDateString(t).has_value();
    });
  };
  if (asked) {
    for (const Order& order : kOrders) {
      const std::string_view shortName = order.shortYear;
      const std::string word = {shortName[1] == 'm' ? 'm' : shortName[1] == 'd' ? 'd' : 'y',
                                shortName[4] == 'm' ? 'm' : 'd',
                                shortName[7] == 'y' ? 'y' : shortName[7] == 'd' ? 'd' : 'm'};
      if (platform::AsciiLower(*asked) == word) return {formatOf(order), "as asked"};
    }
    return {*asked, "as asked"};
  }
  if (texts.empty()) return {stored, ""};
  std::vector<std::pair<const Order*, std::string>> fits;
  for (const Order& order : kOrders) {
    std::string format = formatOf(order);
    if (valid(format)) fits.emplace_back(&order, std::move(format));
  }
  if (fits.size() == 1) {
    return {fits[0].second, "dates read " + std::string(fits[0].first->name) +
                                ": the only order that makes every date a day"};
  }
  if (fits.empty()) {
    return {stored,
            "no order of day, month and year makes every date a day; used the account's " + stored,
            true};
  }
  for (const auto& fit : fits) {
    if (fit.second == stored || fit.first->shortYear == stored || fit.first->longYear == stored) {
      return {fit.second,
              "every date reads " + std::string(fits[0].first->name) + " and " +
                  std::string(fits[1].first->name) + "; used the account's order, " +
                  std::string(fit.first->name),
              true};
    }
  }
  return {fits[0].second,
          "every date reads " + std::string(fits[0].first->name) + " and " +
              std::string(fits[1].first->name) + "; used " + std::string(fits[0].first->name),
          true};
}

// Whether applying adds the row: a new record or a transfer, a possible duplicate when asked
// for; of those only the lines chosen, when the request chooses lines.
bool Adding(const ImportRow& row, const ImportRequest& request) {
  const bool chosen = request.lines && request.lines->contains(row.line);
  switch (row.status) {
    case ImportStatus::kNew:
    case ImportStatus::kTransfer:
      return !request.lines || chosen;
    case ImportStatus::kPossibleDuplicate:
      return request.lines ? chosen : request.includePossible;
    case ImportStatus::kDuplicate:
    case ImportStatus::kUnreadable:
      return false;
  }
  return false;
}

// ---- matching ----

// Words of a text, folded, for comparing payees written differently by two programs.
std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  for (char c : platform::CaseFold(text)) {
    if (std::isalnum(static_cast<unsigned char>(c)) || static_cast<unsigned char>(c) >= 0x80) {
      word += c;
    } else if (!word.empty()) {
      words.push_back(std::move(word));
      word.clear();
    }
  }
  if (!word.empty()) words.push_back(std::move(word));
  return words;
}

// Whether two texts name the same payee: one's words all in the other's, or the first word
// shared when it is long enough to mean something ("AMAZON MKTPL*2K4" and "Amazon").
bool Similar(std::string_view a, std::string_view b) {
  const auto wa = Words(a), wb = Words(b);
  if (wa.empty() || wb.empty()) return false;
  auto within = [](const std::vector<std::string>& x, const std::vector<std::string>& y) {
    return std::all_of(x.begin(), x.end(),
                       [&](const std::string& w) { return std::find(y.begin(), y.end(), w) != y.end(); });
  };
  if (within(wa, wb) || within(wb, wa)) return true;
  return wa[0] == wb[0] && wa[0].size() >= 4;
}

bool TextsMatch(const ImportRecord& r, const ZELMAccountEntry& e) {
  const std::string toFrom = r.toFrom.value_or(""), description = r.description.value_or("");
  return Similar(toFrom, e.GetToFrom()) || Similar(description, e.GetDescription()) ||
         Similar(toFrom, e.GetDescription()) || Similar(description, e.GetToFrom());
}

bool TextsEqual(const ImportRecord& r, const ZELMAccountEntry& e) {
  return platform::CaseInsensitiveEqual(r.toFrom.value_or(""), e.GetToFrom()) &&
         platform::CaseInsensitiveEqual(r.description.value_or(""), e.GetDescription());
}

// The entries of an account by amount in cents, for finding an entry of one amount near a day.
struct EntryIndex {
  std::unordered_map<std::int64_t, std::vector<ZELMAccountEntry*>> byCents;
  std::unordered_set<const ZELMAccountEntry*> taken;

  explicit EntryIndex(const ZELMAccount& account) {
    auto add = [this](const EntryPtr& e) {
      if (!e->GetVoid()) byCents[Cents(e->GetAmount())].push_back(e.get());
    };
    for (const auto& e : account.GetEntries()) add(e);
    for (const auto& folder : account.folders()) {
      for (const auto& e : folder->entries()) add(e);
    }
  }
  // The entries of that amount within kMatchDays of the day, the nearest first.
  std::vector<ZELMAccountEntry*> Near(std::int64_t cents, std::int32_t date) const {
    std::vector<ZELMAccountEntry*> near;
    const auto it = byCents.find(cents);
    if (it == byCents.end()) return near;
    const std::int64_t day = DayNumber(date);
    for (ZELMAccountEntry* e : it->second) {
      if (!taken.contains(e) && std::llabs(DayNumber(e->GetDate()) - day) <= kMatchDays) {
        near.push_back(e);
      }
    }
    std::stable_sort(near.begin(), near.end(), [day](auto* a, auto* b) {
      return std::llabs(DayNumber(a->GetDate()) - day) < std::llabs(DayNumber(b->GetDate()) - day);
    });
    return near;
  }
};

// ---- the review ----

struct Resolved {
  std::shared_ptr<ZELMAccountEntryType> type;  // nullptr: make `row.type`
  std::int32_t category = -1;                  // -1 with row.newCategory: make it
  std::shared_ptr<ZELMAccount> transferTo;     // a QIF "[Account]" category naming a book account
  ZELMAccountEntry* counterpart = nullptr;     // the other side found in that account
};

struct Review {
  ImportReview review;
  std::vector<Resolved> resolved;  // one per row
  std::vector<const ImportRecord*> sourceRecords;
  std::string fileAccountID;
};

std::string LowerFolded(std::string_view text) { return platform::CaseFold(text); }

// Finds a category by full name, else by its last part when only one category has that name.
class CategoryFinder {
 public:
  explicit CategoryFinder(const Book& book) : book_(book) {
    for (const auto& c : book.allCategories()) {
      auto [it, added] = byLeaf_.emplace(LowerFolded(c->name()), c);
      if (!added) it->second = nullptr;  // two categories of that name: not a unique match
    }
  }
  std::shared_ptr<ZELMAccountEntryCategory> Find(const std::string& name) const {
    if (auto found = CategoryNamed(book_, name)) return found;
    const auto it = byLeaf_.find(LowerFolded(name));
    return it != byLeaf_.end() ? it->second : nullptr;
  }

 private:
  const Book& book_;
  std::unordered_map<std::string, std::shared_ptr<ZELMAccountEntryCategory>> byLeaf_;
};

bool WellFormedCategory(std::string_view name) {
  return !name.empty() && name.front() != ':' && name.back() != ':' &&
         name.find("::") == std::string_view::npos;
}

BookResult<Review> BuildReview(Book& book, const ImportRequest& request,
                               const std::shared_ptr<ZELMAccount>& account) {
  if (request.dateFormat) {
    const std::string& f = *request.dateFormat;
    const std::string word = platform::AsciiLower(f);
    const bool order = word == "mdy" || word == "dmy" || word == "ymd";
    const bool format = f.find("%d") != std::string::npos && f.find("%m") != std::string::npos &&
                        (f.find("%y") != std::string::npos || f.find("%Y") != std::string::npos);
    if (!order && !format) {
      return Invalid("the date format " + Quote(f) +
                     " names no day, month and year; use mdy, dmy, ymd or a format such as "
                     "%d/%m/%Y");
    }
  }
  auto read = Read(request, *account);
  if (!read) return Unexpected{read.error()};
  Review out;
  ImportReview& review = out.review;
  review.account = account;
  review.file = request.file.filename().string();
  review.format = read->format;
  review.encoding = read->encoding;
  review.readNote = read->note;

  // Which of the file's accounts.
  std::vector<FileAccount>& accounts = read->accounts;
  for (const FileAccount& a : accounts) {
    if (!a.id.empty()) review.fileAccounts.push_back(a.id);
  }
  std::size_t chosen = 0;
  if (request.from) {
    // The account named exactly (any case), else the only one whose name starts so.
    auto it = std::find_if(accounts.begin(), accounts.end(), [&](const FileAccount& a) {
      return platform::CaseInsensitiveEqual(a.id, *request.from);
    });
    if (it == accounts.end() && !request.from->empty()) {
      auto starts = [&](const FileAccount& a) {
        return platform::CaseInsensitiveHasPrefix(a.id, *request.from);
      };
      it = std::find_if(accounts.begin(), accounts.end(), starts);
      if (it != accounts.end() && std::find_if(it + 1, accounts.end(), starts) != accounts.end()) {
        it = accounts.end();
      }
    }
    if (it == accounts.end()) {
      std::string names;
      for (const std::string& id : review.fileAccounts) names += (names.empty() ? "" : ", ") + Quote(id);
      return Unexpected{BookError::Of(Kind::kNotFound,
                                      "the file holds no account " + Quote(*request.from) +
                                          (names.empty() ? "" : "; it holds " + names))};
    }
    chosen = static_cast<std::size_t>(it - accounts.begin());
    review.fileAccountNote = "as asked";
  } else if (accounts.size() > 1) {
    auto sources = ReadOwn(book, kSourcesFile);
    if (!sources) return Unexpected{sources.error()};
    std::optional<std::size_t> remembered;
    for (std::size_t i = 0; i < accounts.size() && *sources; ++i) {
      const plist::Value* to = (*sources)->asDictionary()->find(accounts[i].id);
      if (to != nullptr && to->intValue() == account->GetNumber()) remembered = i;
    }
    if (!remembered) {
      std::string names;
      for (const std::string& id : review.fileAccounts) names += (names.empty() ? "" : ", ") + Quote(id);
      return Unexpected{BookError::Of(
          Kind::kInvalid,
          "the file holds " + std::to_string(accounts.size()) + " accounts (" + names + ")",
          "name the one to import with --from")};
    }
    chosen = *remembered;
    review.fileAccountNote = "the one imported into " + Quote(account->GetName()) + " before";
  }
  if (accounts.empty()) accounts.push_back({});
  FileAccount& source = accounts[chosen];
  if (!source.currency.empty() && account->currency() &&
      !platform::CaseInsensitiveEqual(source.currency, account->currency()->code())) {
    review.readNote += std::string(review.readNote.empty() ? "" : "; ") + "its amounts are in " +
                       source.currency + ", the account's in " + account->currency()->code() +
                       ", and they are taken as they are";
  }
  review.fileAccount = source.id;
  out.fileAccountID = source.id;

  // Dates.
  if (read->datesFromText) {
    const std::string stored = StoredDateFormat(read->format == ImportFormat::kQIF
                                                    ? account->GetQIFImportDateFormat()
                                                    : account->GetTextImportDateFormat());
    DateChoice choice = ChooseDateFormat(source.records, request.dateFormat, stored);
    review.dateFormat = choice.format;
    review.dateNote = choice.note;
    review.dateFormatGuessed = choice.guessed;
    ZELMImporter dates;
    dates.SetDateFormat(choice.format);
    for (ImportRecord& r : source.records) {
      if (r.dateText) r.date = dates.DateOfDateString(*r.dateText);
    }
  }

  // The book's bank identifiers and the register, for duplicates.
  auto records = ReadRecords(book, *account);
  if (!records) return Unexpected{records.error()};
  EntryIndex index(*account);
  std::unordered_set<std::int32_t> entriesWithBankID;
  for (const auto& [id, known] : records->bankIDs) entriesWithBankID.insert(known.entry);

  // Other accounts of the book in the same currency, for transfers.
  std::vector<std::pair<std::shared_ptr<ZELMAccount>, std::unique_ptr<EntryIndex>>> others;
  for (auto& other : book.LoadAllAccounts()) {
    if (other.get() == account.get() || !other->IsAuthenticated() ||
        other->currency() != account->currency()) {
      continue;
    }
    others.emplace_back(other, nullptr);
  }
  auto otherIndex = [&](std::size_t i) -> EntryIndex& {
    if (!others[i].second) others[i].second = std::make_unique<EntryIndex>(*others[i].first);
    return *others[i].second;
  };

  CategoryFinder categories(book);
  std::unordered_set<std::string> newTypes, newCategories;
  const std::size_t total = source.records.size();
  review.rows.reserve(total);
  out.resolved.reserve(total);
  for (std::size_t i = 0; i < total; ++i) {
    if (request.progress && i % 4096 == 0 && total > 0) request.progress(double(i) / total);
    ImportRow row;
    Resolved res;
    row.line = i + 1;
    row.record = std::move(source.records[i]);  // read no more from the file's list
    const ImportRecord& r = row.record;
    if (!r.date) {
      row.status = ImportStatus::kUnreadable;
      row.problem = r.dateText ? "the date " + Quote(*r.dateText) + " is not a day under " +
                                     review.dateFormat
                               : "no date";
    } else if (!platform::IsValidDateNumber(*r.date)) {
      row.status = ImportStatus::kUnreadable;
      row.problem = "the date " + std::to_string(*r.date) + " is not a day";
    } else if (!r.amount) {
      row.status = ImportStatus::kUnreadable;
      row.problem = "no amount";
    }
    row.date = r.date.value_or(0);
    row.amount = RoundAmount(r.amount.value_or(0.0));
    const bool debit = row.amount < 0 || (row.amount == 0 && !r.isDeposit.value_or(true));

    // Type.
    if (r.type && !r.type->empty()) {
      res.type = AccountTypeNamed(*account, *r.type, debit);
      row.type = res.type ? res.type->GetName() : *r.type;
      row.newType = res.type == nullptr;
    } else if (const auto& type =
                   debit ? account->GetDefaultDebitType() : account->GetDefaultDepositType()) {
      res.type = type;
      row.type = type->GetName();
    }
    // Category, or the account a QIF transfer names.
    const std::string category = r.category.value_or("");
    if (category.size() >= 2 && category.front() == '[' && category.back() == ']') {
      const std::string other = category.substr(1, category.size() - 2);
      for (std::size_t k = 0; k < others.size(); ++k) {
        if (platform::CaseInsensitiveEqual(others[k].first->GetName(), other)) {
          res.transferTo = others[k].first;
          row.status = row.status == ImportStatus::kUnreadable ? row.status : ImportStatus::kTransfer;
          row.matchAccount = others[k].first->GetName();
          if (row.status == ImportStatus::kTransfer) {
            EntryIndex& idx = otherIndex(k);
            for (ZELMAccountEntry* e : idx.Near(Cents(-row.amount), row.date)) {
              if (!e->IsLinked()) {
                res.counterpart = e;
                row.match = e->GetNumber();
                idx.taken.insert(e);
                break;
              }
            }
          }
        }
      }
    } else if (!category.empty()) {
      if (auto found = categories.Find(category)) {
        res.category = found->number();
        row.category = found->fullName();
      } else if (WellFormedCategory(category)) {
        row.category = category;
        row.newCategory = true;
      }
    }

    if (row.status == ImportStatus::kNew) {
      // The bank's identifier, when it was imported before with this day and amount.
      if (r.fitID && !r.fitID->empty()) {
        const auto known = records->bankIDs.find(*r.fitID);
        if (known != records->bankIDs.end() && known->second.date == row.date &&
            known->second.cents == Cents(row.amount)) {
          row.status = ImportStatus::kDuplicate;
          row.match = known->second.entry;
          if (ZELMAccountEntry* e = account->GetEntryWithNumber(known->second.entry).get()) {
            index.taken.insert(e);
          }
        }
      }
    }
    if (row.status == ImportStatus::kNew) {
      for (ZELMAccountEntry* e : index.Near(Cents(row.amount), row.date)) {
        // An entry imported with another identifier is another transaction of the bank's.
        if (r.fitID && entriesWithBankID.contains(e->GetNumber())) continue;
        const bool same = e->GetDate() == row.date && TextsEqual(r, *e);
        if (same || TextsMatch(r, *e)) {
          row.status = same ? ImportStatus::kDuplicate : ImportStatus::kPossibleDuplicate;
          row.match = e->GetNumber();
          index.taken.insert(e);
          break;
        }
      }
    }
    if (row.status == ImportStatus::kNew) {
      // The other side of a transfer already in another account: opposite amount, near day,
      // not linked yet, and one of the two naming the other account or a transfer.
      for (std::size_t k = 0; k < others.size() && row.status == ImportStatus::kNew; ++k) {
        EntryIndex& idx = otherIndex(k);
        const std::string otherName = others[k].first->GetName();
        for (ZELMAccountEntry* e : idx.Near(Cents(-row.amount), row.date)) {
          if (e->IsLinked()) continue;
          const std::string texts = r.toFrom.value_or("") + " " + r.description.value_or("");
          const std::string theirs = e->GetToFrom() + " " + e->GetDescription();
          if (platform::CaseInsensitiveContains(texts, otherName) ||
              platform::CaseInsensitiveContains(theirs, account->GetName()) ||
              (platform::CaseInsensitiveContains(texts, "transfer") &&
               platform::CaseInsensitiveContains(theirs, "transfer"))) {
            row.status = ImportStatus::kTransfer;
            row.match = e->GetNumber();
            row.matchAccount = otherName;
            res.transferTo = others[k].first;
            res.counterpart = e;
            idx.taken.insert(e);
            break;
          }
        }
      }
    }
    if (row.status == ImportStatus::kTransfer) {
      row.category.clear();
      row.newCategory = false;
      res.category = -1;
      if (auto type = TransferType(*account, debit)) {
        res.type = type;
        row.type = type->GetName();
        row.newType = false;
      }
    }
    if (Adding(row, request)) {
      if (row.newType && newTypes.insert(platform::CaseFold(row.type) + (debit ? "-" : "+")).second) {
        review.newTypes.push_back(row.type);
      }
      if (row.newCategory && newCategories.insert(platform::CaseFold(row.category)).second) {
        review.newCategories.push_back(row.category);
      }
      for (const ImportSplit& s : r.splits.value_or(std::vector<ImportSplit>{})) {
        if (!s.category.empty() && !categories.Find(s.category) && WellFormedCategory(s.category) &&
            !(s.category.front() == '[') && newCategories.insert(platform::CaseFold(s.category)).second) {
          review.newCategories.push_back(s.category);
        }
      }
    }
    ++review.counts[row.status];
    review.rows.push_back(std::move(row));
    out.resolved.push_back(std::move(res));
  }
  if (request.progress && total > 0) request.progress(1.0);
  review.balance = account->GetBalance();
  return out;
}

}  // namespace

std::string_view ImportFormatName(ImportFormat format) {
  switch (format) {
    case ImportFormat::kQIF:
      return "QIF";
    case ImportFormat::kOFX:
      return "OFX";
    case ImportFormat::kCSV:
      return "CSV";
    case ImportFormat::kTSV:
      return "TSV";
  }
  return "";
}

std::string_view ImportStatusName(ImportStatus status) {
  switch (status) {
    case ImportStatus::kNew:
      return "new";
    case ImportStatus::kDuplicate:
      return "duplicate";
    case ImportStatus::kPossibleDuplicate:
      return "possible duplicate";
    case ImportStatus::kTransfer:
      return "transfer";
    case ImportStatus::kUnreadable:
      return "unreadable";
  }
  return "";
}

BookResult<std::vector<std::string>> ImportFileAccounts(Book& book,
                                                        const ImportRequest& request) {
  auto account = book.FindAccount(request.account);
  if (!account) return Unexpected{account.error()};
  auto read = Read(request, **account);
  if (!read) return Unexpected{read.error()};
  std::vector<std::string> names;
  for (const FileAccount& a : read->accounts) {
    if (!a.id.empty()) names.push_back(a.id);
  }
  return names;
}

BookResult<ImportReview> ReviewImport(Book& book, const ImportRequest& request) {
  auto account = book.FindAccount(request.account);
  if (!account) return Unexpected{account.error()};
  auto review = BuildReview(book, request, *account);
  if (!review) return Unexpected{review.error()};
  return std::move(review->review);
}

BookResult<ImportReview> ApplyImport(Book& book, const ImportRequest& request) {
  auto found = book.AccountToChange(request.account);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto built = BuildReview(book, request, *found);
  if (!built) return Unexpected{built.error()};
  ImportReview& review = built->review;
  auto records = ReadRecords(book, account);
  if (!records) return Unexpected{records.error()};
  // Every account a transfer touches must take the change before anything is made.
  for (const Resolved& res : built->resolved) {
    if (res.transferTo) {
      if (auto refused = book.Changed(*res.transferTo)) return Unexpected{*refused};
    }
  }

  // Types and categories to make.
  std::unordered_map<std::string, std::shared_ptr<ZELMAccountEntryType>> madeTypes;
  auto typeFor = [&](const ImportRow& row, const Resolved& res,
                     bool debit) -> BookResult<std::shared_ptr<ZELMAccountEntryType>> {
    if (!row.newType) return res.type;
    if (auto existing = AccountTypeNamed(account, row.type, debit)) return existing;
    auto made = NewType(book, account.GetName(), row.type, !debit, false);
    if (!made) return Unexpected{made.error()};
    return AccountTypeNamed(account, row.type, debit);
  };
  CategoryFinder categories(book);
  auto categoryFor = [&](const std::string& name) -> std::int32_t {
    if (name.empty() || name.front() == '[') return -1;
    if (auto c = categories.Find(name)) return c->number();
    if (!WellFormedCategory(name)) return -1;
    return MakeCategoryNamed(book, name);
  };

  Batch batch;
  batch.listing.number = records->batches.empty() ? 1 : records->batches.back().listing.number + 1;
  batch.listing.when = platform::Now();
  batch.listing.file = review.file;
  batch.listing.format = std::string(ImportFormatName(review.format));
  std::vector<std::int32_t> resolvedNumbers;
  std::vector<std::pair<ZELMAccount*, EntryPtr>> touched;  // entries to fingerprint at the end
  std::vector<std::pair<ZELMAccount*, ZELMAccountEntry*>> linkedExisting;
  std::vector<std::int32_t> linkedPreviousTypes;

  for (std::size_t i = 0; i < review.rows.size(); ++i) {
    ImportRow& row = review.rows[i];
    const Resolved& res = built->resolved[i];
    if (!Adding(row, request)) continue;
    const ImportRecord& r = row.record;
    const bool debit = row.amount < 0 || (row.amount == 0 && !r.isDeposit.value_or(true));
    auto type = typeFor(row, res, debit);
    if (!type) return Unexpected{type.error()};

    auto e = std::make_shared<ZELMAccountEntry>();
    e->SetNumber(account.NextAvailableNumber());
    e->SetDate(row.date);
    e->SetToFrom(r.toFrom.value_or(""));
    e->SetDescription(r.description.value_or(""));
    if (r.notes) e->SetNotes(*r.notes);
    if (r.splits && !r.splits->empty() && row.status != ImportStatus::kTransfer) {
      for (const ImportSplit& s : *r.splits) {
        e->addSplitLineItemWithCategory(categoryFor(s.category), s.description, std::string(),
                                        RoundAmount(s.amount));
      }
    }
    e->SetAmount(row.amount);
    if (debit) {
      e->SetIsDebit(true);
    } else {
      e->SetIsDeposit(true);
    }
    if (*type) e->SetType((*type)->GetNumber());
    // Bank reference numbers (dates, long references) are not check numbers.
    const std::int32_t number = r.number.value_or(0);
    const bool checkType = *type && (*type)->GetIsCheck();
    if (debit && number > 0 && number < 1'000'000 && (checkType || !r.type)) {
      e->SetIsCheck(true);
      e->SetCheckNumber(number);
    }
    if (!row.category.empty()) e->SetCategory(categoryFor(row.category));
    if (r.cleared.value_or(false)) {
      e->SetCleared(1);
      resolvedNumbers.push_back(e->GetNumber());
    }
    account.AddEntry(e);
    row.added = e->GetNumber();
    ++review.added;
    touched.emplace_back(&account, e);

    if (row.status == ImportStatus::kTransfer && res.transferTo) {
      ZELMAccount& other = *res.transferTo;
      if (res.counterpart != nullptr) {
        linkedExisting.emplace_back(&other, res.counterpart);
        linkedPreviousTypes.push_back(res.counterpart->GetType());
        e->SetIsLinked(true);
        e->SetLinkedEntry(res.counterpart->GetNumber());
        e->SetLinkedAccount(other.GetNumber());
        res.counterpart->SetIsLinked(true);
        res.counterpart->SetLinkedEntry(e->GetNumber());
        res.counterpart->SetLinkedAccount(account.GetNumber());
        if (auto t = TransferType(other, !debit)) res.counterpart->SetType(t->GetNumber());
      } else {
        auto side = std::make_shared<ZELMAccountEntry>();
        side->SetNumber(other.NextAvailableNumber());
        if (auto t = TransferType(other, !debit)) side->SetType(t->GetNumber());
        other.AddEntry(side);
        e->SetIsLinked(true);
        e->SetLinkedEntry(side->GetNumber());
        e->SetLinkedAccount(other.GetNumber());
        e->syncToEntry(*side);
        touched.emplace_back(&other, side);
      }
      ++review.linked;
    }
    if (r.fitID && !r.fitID->empty()) {
      records->bankIDs[*r.fitID] = BankID{row.date, Cents(row.amount), e->GetNumber()};
      batch.bankIDs.push_back(*r.fitID);
    }
  }
  if (review.added == 0) {
    review.applied = true;
    return std::move(review);
  }
  for (const auto& [owner, e] : touched) {
    batch.entries.push_back({owner->GetNumber(), e->GetNumber(), Fingerprint(*e), true, -1});
  }
  for (std::size_t k = 0; k < linkedExisting.size(); ++k) {
    const auto& [owner, e] = linkedExisting[k];
    batch.entries.push_back(
        {owner->GetNumber(), e->GetNumber(), Fingerprint(*e), false, linkedPreviousTypes[k]});
  }
  for (const auto& f : batch.entries) {
    if (f.account == account.GetNumber()) batch.listing.entries.push_back(f.entry);
  }
  batch.listing.linked = batch.entries.size() - batch.listing.entries.size();
  review.batch = batch.listing.number;
  records->batches.push_back(std::move(batch));
  if (!resolvedNumbers.empty()) {
    if (auto failed = NoteResolvedMarks(book, account, resolvedNumbers, {})) {
      return Unexpected{*failed};
    }
  }
  if (auto failed = WriteRecords(book, account, *records)) return Unexpected{*failed};

  // Remember where this bank account goes, and the settings asked to be kept.
  if (!built->fileAccountID.empty()) {
    auto sources = ReadOwn(book, kSourcesFile);
    if (!sources) return Unexpected{sources.error()};
    plist::Dictionary map = *sources ? *(*sources)->asDictionary() : plist::Dictionary();
    map.set(built->fileAccountID, account.GetNumber());
    if (auto failed = book.StageOwnFile(
            kSourcesFile, plist::Write(plist::Value(std::move(map)), plist::Format::kXml))) {
      return Unexpected{*failed};
    }
  }
  if (request.saveSettings) {
    const bool qif = review.format == ImportFormat::kQIF;
    const bool text = review.format == ImportFormat::kCSV || review.format == ImportFormat::kTSV;
    if (request.dateFormat && (qif || text)) {
      const auto code = DateFormatCode(review.dateFormat);
      if (!code) {
        return Invalid("the date format " + Quote(review.dateFormat) +
                       " cannot be kept: an account keeps one of %m/%d/%y, %d/%m/%y, %y/%m/%d, "
                       "%m/%d/%Y, %d/%m/%Y, %Y/%m/%d");
      }
      qif ? account.SetQIFImportDateFormat(*code) : account.SetTextImportDateFormat(*code);
    }
    if (request.encoding && (qif || text)) {
      qif ? account.SetQIFImportEncoding(static_cast<std::int32_t>(*request.encoding))
          : account.SetTextImportEncoding(static_cast<std::int32_t>(*request.encoding));
    }
    if (request.columns && text) account.SetTextImportDataLayout(*request.columns);
    for (const auto& [field, code] : request.swaps) {
      if (qif) {
        if (field == "payee") account.SetQIFImport_SwapOptions_ToFrom(code);
        if (field == "memo") account.SetQIFImport_SwapOptions_Description(code);
        if (field == "category") account.SetQIFImport_SwapOptions_Category(code);
      } else if (review.format == ImportFormat::kOFX) {
        if (field == "name") account.SetOFXImport_SwapOptions_Name(code);
        if (field == "payee") account.SetOFXImport_SwapOptions_Payee(code);
        if (field == "memo") account.SetOFXImport_SwapOptions_Memo(code);
        if (field == "type") account.SetOFXImport_SwapOptions_TransactionType(code);
        if (field == "refnum") account.SetOFXImport_SwapOptions_ReferenceNumber(code);
      }
    }
  }
  review.applied = true;
  review.balance = account.GetBalance();
  return std::move(review);
}

BookResult<ImportHistory> ImportBatches(Book& book, std::string_view name) {
  auto account = book.FindAccount(name);
  if (!account) return Unexpected{account.error()};
  auto records = ReadRecords(book, **account);
  if (!records) return Unexpected{records.error()};
  ImportHistory history{*account, {}};
  for (const Batch& b : records->batches) history.batches.push_back(b.listing);
  return history;
}

BookResult<ImportUndo> UndoImport(Book& book, std::string_view name) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto records = ReadRecords(book, account);
  if (!records) return Unexpected{records.error()};
  if (records->batches.empty()) {
    return Unexpected{BookError::Of(Kind::kNotFound,
                                    "nothing was imported into " + Quote(account.GetName()))};
  }
  const Batch& batch = records->batches.back();
  ImportUndo undo{*found, batch.listing, 0, 0, 0.0};

  // Everything the batch touched, as it stands now.
  struct Now {
    ZELMAccount* account;
    EntryPtr entry;  // nullptr: deleted since
    const Fingerprinted* record;
  };
  std::vector<Now> now;
  std::vector<std::string> edited;
  for (const Fingerprinted& f : batch.entries) {
    std::shared_ptr<ZELMAccount> owner;
    if (f.account == account.GetNumber()) {
      owner = *found;
    } else {
      auto other = book.AccountWithNumber(f.account);
      if (!other) return Unexpected{other.error()};
      if (auto refused = book.Changed(**other)) return Unexpected{*refused};
      owner = *other;
    }
    EntryPtr e = owner->GetEntryWithNumber(f.entry);
    if (e && Fingerprint(*e) != f.fingerprint) {
      edited.push_back("entry " + std::to_string(f.entry) +
                       (owner.get() == &account ? "" : " of " + Quote(owner->GetName())));
    }
    now.push_back({owner.get(), e, &f});
  }
  if (!edited.empty()) {
    std::string list;
    for (std::size_t i = 0; i < edited.size() && i < 5; ++i) list += (i ? ", " : "") + edited[i];
    if (edited.size() > 5) list += " and " + std::to_string(edited.size() - 5) + " more";
    BookError error = BookError::Of(
        Kind::kInvalid, "batch " + std::to_string(batch.listing.number) + " of " +
                            Quote(account.GetName()) + " cannot be taken back: " + list +
                            (edited.size() == 1 ? " was" : " were") +
                            " changed since it was imported");
    error.details = edited;
    return Unexpected{std::move(error)};
  }
  std::vector<std::int32_t> unresolved;
  for (const Now& n : now) {
    if (!n.entry) {
      if (n.account == &account) ++undo.gone;
      continue;
    }
    if (n.record->made) {
      if (n.account == &account && n.entry->GetCleared() != 0) unresolved.push_back(n.entry->GetNumber());
      n.account->RemoveEntry(n.entry.get());
      if (n.account == &account) ++undo.removed;
    } else {
      n.entry->SetIsLinked(false);
      n.entry->SetLinkedEntry(-1);
      n.entry->SetLinkedAccount(-1);
      n.entry->SetType(n.record->previousType);
    }
  }
  if (!unresolved.empty()) {
    if (auto failed = NoteResolvedMarks(book, account, {}, unresolved)) return Unexpected{*failed};
  }
  for (const std::string& id : batch.bankIDs) records->bankIDs.erase(id);
  records->batches.pop_back();
  if (auto failed = WriteRecords(book, account, *records)) return Unexpected{*failed};
  undo.balance = account.GetBalance();
  return undo;
}

const std::vector<std::pair<std::string, std::int32_t>>& ImportColumnWords() {
  static const std::vector<std::pair<std::string, std::int32_t>> words = {
      {"date", ZELMTextImport::kColumnDate},
      {"amount", ZELMTextImport::kColumnAmount},
      {"debit", ZELMTextImport::kColumnDebitAmount},
      {"credit", ZELMTextImport::kColumnCreditAmount},
      {"payee", ZELMTextImport::kColumnToFrom},
      {"to-from", ZELMTextImport::kColumnToFrom},
      {"description", ZELMTextImport::kColumnDescription},
      {"category", ZELMTextImport::kColumnCategory},
      {"type", ZELMTextImport::kColumnType},
      {"number", ZELMTextImport::kColumnNumber},
      {"resolved", ZELMTextImport::kColumnResolved},
      {"notes", ZELMTextImport::kColumnNotes},
      {"skip", ZELMTextImport::kColumnIgnored}};
  return words;
}

std::optional<std::int32_t> ImportColumnCode(std::string_view word) {
  for (const auto& [name, code] : ImportColumnWords()) {
    if (name == word) return code;
  }
  return std::nullopt;
}

}  // namespace folvant
