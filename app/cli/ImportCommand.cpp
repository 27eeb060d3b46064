#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/cli/FilterOptions.h"
#include "app/cli/Options.h"
#include "app/render/AmountText.h"
#include "app/render/ImportOutput.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Export.h"
#include "folvant/book/Import.h"
#include "folvant/exchange/ZELMTextImport.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/LocalCalendar.h"
#include "folvant/platform/SafeFileBatch.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

using platform::FormatIsoDate;
using render::Align;
using render::Json;
using render::JsonText;

// ---- option values ----

// An encoding by name ("utf-8", "latin-1", "windows-1252", "cp1250", "utf-16", "mac-roman") or
// by Windows code-page number.
std::optional<platform::StringEncoding> EncodingNamed(std::string text) {
  text = platform::AsciiLower(text);
  static const std::map<std::string, platform::StringEncoding> kNames = {
      {"utf-8", platform::kUTF8StringEncoding},
      {"utf8", platform::kUTF8StringEncoding},
      {"ascii", platform::kASCIIStringEncoding},
      {"us-ascii", platform::kASCIIStringEncoding},
      {"latin-1", platform::kISOLatin1StringEncoding},
      {"latin1", platform::kISOLatin1StringEncoding},
      {"iso-8859-1", platform::kISOLatin1StringEncoding},
      {"latin-2", platform::kISOLatin2StringEncoding},
      {"iso-8859-2", platform::kISOLatin2StringEncoding},
      {"utf-16", platform::kUnicodeStringEncoding},
      {"utf-16le", platform::kUTF16LittleEndianStringEncoding},
      {"utf-16be", platform::kUTF16BigEndianStringEncoding},
      {"mac-roman", platform::kMacOSRomanStringEncoding},
      {"macroman", platform::kMacOSRomanStringEncoding},
  };
  if (const auto it = kNames.find(text); it != kNames.end()) return it->second;
  for (std::string_view prefix : {"windows-", "cp"}) {
    if (text.starts_with(prefix)) text = text.substr(prefix.size());
  }
  std::uint32_t codepage = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), codepage);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  const platform::StringEncoding encoding = platform::WindowsCodepageToEncoding(codepage);
  if (encoding == platform::kNoEncoding) return std::nullopt;
  return encoding;
}

CLI::Validator EncodingValue() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        if (EncodingNamed(value)) return {};
        return "\"" + value +
               "\" is not an encoding; use utf-8, latin-1, windows-1252 (or another Windows "
               "code page), utf-16 or mac-roman";
      },
      "ENCODING");
}

// FIELD=TARGET: where a field of the file goes.
const std::map<std::string, std::int32_t>& SwapTargets() {
  static const std::map<std::string, std::int32_t> targets = {
      {"category", 0}, {"to-from", 1}, {"description", 2}, {"type", 3},
      {"notes", 4},    {"number", 5},  {"none", -100}};
  return targets;
}

std::optional<std::pair<std::string, std::int32_t>> ReadSwap(const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos) return std::nullopt;
  const std::string field = text.substr(0, equals);
  static const char* const kFields[] = {"payee", "memo", "category", "name", "type", "refnum"};
  if (std::find(std::begin(kFields), std::end(kFields), field) == std::end(kFields)) {
    return std::nullopt;
  }
  const auto target = SwapTargets().find(text.substr(equals + 1));
  if (target == SwapTargets().end()) return std::nullopt;
  return std::make_pair(field, target->second);
}

CLI::Validator SwapValue() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        if (ReadSwap(value)) return {};
        return "\"" + value +
               "\" is not FIELD=TARGET; FIELD is payee, memo or category (QIF), name, payee, memo, "
               "type or refnum (OFX); TARGET is to-from, description, category, type, notes, "
               "number or none";
      },
      "FIELD=TARGET");
}

CLI::Validator ColumnValue() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        if (ImportColumnCode(value)) return {};
        std::string words;
        for (const auto& [word, code] : ImportColumnWords()) words += (words.empty() ? "" : ", ") + word;
        return "\"" + value + "\" is not a column; use " + words;
      },
      "COLUMN");
}

// ---- progress ----

// A bar on standard error for work that has taken more than a second, when it is a terminal.
class ProgressBar {
 public:
  explicit ProgressBar(Context& context)
      : context_(context), start_(std::chrono::steady_clock::now()),
        terminal_(isatty(STDERR_FILENO) == 1) {}
  ~ProgressBar() {
    if (shown_) context_.err << "\r" << std::string(40, ' ') << "\r" << std::flush;
  }
  void operator()(double done) {
    if (!terminal_ || std::chrono::steady_clock::now() - start_ < std::chrono::seconds(1)) return;
    const int filled = static_cast<int>(done * 24);
    context_.err << "\rreading [" << std::string(filled, '#') << std::string(24 - filled, ' ')
                 << "] " << static_cast<int>(done * 100) << "%" << std::flush;
    shown_ = true;
  }

 private:
  Context& context_;
  std::chrono::steady_clock::time_point start_;
  bool terminal_;
  bool shown_ = false;
};

// ---- import ----

struct ImportOptions {
  std::string account, file, format, dateFormat, encoding, from;
  std::vector<std::string> swaps, columns;
  std::vector<std::size_t> lines;
  bool apply = false, includePossible = false, saveSettings = false, json = false;
};

std::string StatusText(const ImportRow& row) {
  std::string text(ImportStatusName(row.status));
  switch (row.status) {
    case ImportStatus::kDuplicate:
    case ImportStatus::kPossibleDuplicate:
      if (row.match) text += " of " + std::to_string(*row.match);
      break;
    case ImportStatus::kTransfer:
      text += (row.amount < 0 ? " to " : " from ") + ("\"" + row.matchAccount + "\"");
      if (row.match) text += " (entry " + std::to_string(*row.match) + ")";
      break;
    case ImportStatus::kUnreadable:
      text += ": " + row.problem;
      break;
    case ImportStatus::kNew:
      break;
  }
  if (row.added) text += " -> " + std::to_string(*row.added);
  return text;
}

std::string Count(std::size_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

// The category a row takes; a record of line items shows how many.
std::string CategoryText(const ImportRow& row) {
  const std::size_t items = row.record.splits ? row.record.splits->size() : 0;
  if (row.category.empty() && items > 0) return "(" + std::to_string(items) + " split items)";
  return row.category + (row.newCategory ? "*" : "");
}

void PrintReview(Context& context, const ImportReview& r, bool includePossible) {
  const render::AmountWriter amounts(*r.account->currency());
  std::string out = "Import of \"" + r.file + "\" (" + std::string(ImportFormatName(r.format)) +
                    ") into \"" + r.account->GetName() + "\"";
  if (!r.fileAccount.empty()) {
    out += ", from its account \"" + r.fileAccount + "\"";
    if (!r.fileAccountNote.empty()) out += " (" + r.fileAccountNote + ")";
  }
  out += ".\n";
  if (!r.encoding.empty()) out += "Encoding: " + r.encoding + ".\n";
  if (!r.readNote.empty()) out += "Note: " + r.readNote + ".\n";
  if (!r.dateFormat.empty()) {
    std::string note = r.dateNote;
    if (r.dateFormatGuessed) note += " (--date-format changes it)";
    out += "Dates: " + r.dateFormat + (note.empty() ? "" : " (" + note + ")") + ".\n";
  }
  out += '\n';
  if (r.rows.empty()) {
    out += "The file holds no records for this account.\n";
  } else {
    render::Table table;
    table.AddFitColumn("#", Align::kRight);
    table.AddColumn("Date", Align::kLeft, 10);
    table.AddFitColumn("Amount", Align::kRight);
    table.AddFitColumn("To/From", Align::kLeft, 20);
    table.AddFitColumn("Description", Align::kLeft, 16);
    table.AddFitColumn("Type", Align::kLeft, 12);
    table.AddFitColumn("Category", Align::kLeft, 18);
    table.AddFitColumn("Status", Align::kLeft, 40);
    for (const ImportRow& row : r.rows) {
      table.AddRow({std::to_string(row.line), row.date != 0 ? FormatIsoDate(row.date) : "-",
                    amounts.Text(row.amount), row.record.toFrom.value_or(""),
                    row.record.description.value_or(""), row.type + (row.newType ? "*" : ""),
                    CategoryText(row), StatusText(row)});
    }
    table.Write(out);
  }
  auto quoted = [](const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& n : names) list += (list.empty() ? "\"" : ", \"") + n + "\"";
    return list;
  };
  if (!r.newTypes.empty() || !r.newCategories.empty()) out += '\n';
  if (!r.newTypes.empty()) {
    out += (r.applied ? "Made types (*): " : "Types to make (*): ") + quoted(r.newTypes) + ".\n";
  }
  if (!r.newCategories.empty()) {
    out += (r.applied ? "Made categories (*): " : "Categories to make (*): ") +
           quoted(r.newCategories) + ".\n";
  }
  auto count = [&r](ImportStatus s) {
    const auto it = r.counts.find(s);
    return it == r.counts.end() ? std::size_t{0} : it->second;
  };
  out += '\n' + Count(count(ImportStatus::kNew), "new", "new") + ", " +
         Count(count(ImportStatus::kDuplicate), "duplicate", "duplicates") + ", " +
         Count(count(ImportStatus::kPossibleDuplicate), "possible duplicate",
               "possible duplicates") +
         ", " + Count(count(ImportStatus::kTransfer), "transfer", "transfers") + ", " +
         Count(count(ImportStatus::kUnreadable), "unreadable", "unreadable") + ".\n";
  if (r.applied) {
    if (r.added == 0) {
      out += "Nothing to import: \"" + r.account->GetName() + "\" is as it was.\n";
    } else {
      out += "Imported " + Count(r.added, "entry", "entries") + " into \"" + r.account->GetName() +
             "\" as batch " + std::to_string(r.batch) +
             (r.linked > 0 ? " (" + Count(r.linked, "transfer", "transfers") + " linked)" : "") +
             "; balance " + amounts.Text(r.balance) + ". \"folvant import undo " +
             r.account->GetName() + "\" takes them back.\n";
    }
  } else {
    const std::size_t adding = count(ImportStatus::kNew) + count(ImportStatus::kTransfer) +
                               (includePossible ? count(ImportStatus::kPossibleDuplicate) : 0);
    out += "Nothing was changed. --apply imports " + Count(adding, "record", "records");
    if (!includePossible && count(ImportStatus::kPossibleDuplicate) > 0) {
      out += " (--include-possible adds the possible duplicates)";
    }
    out += ".\n";
  }
  context.out << out;
}

int RunImport(Context& context, const ImportOptions& o) {
  ImportRequest request;
  request.account = o.account;
  request.file = o.file;
  if (!o.format.empty()) {
    static const std::map<std::string, ImportFormat> kFormats = {{"qif", ImportFormat::kQIF},
                                                                 {"ofx", ImportFormat::kOFX},
                                                                 {"csv", ImportFormat::kCSV},
                                                                 {"tsv", ImportFormat::kTSV}};
    request.format = kFormats.at(o.format);
  }
  if (!o.dateFormat.empty()) request.dateFormat = o.dateFormat;
  if (!o.encoding.empty()) request.encoding = EncodingNamed(o.encoding);
  if (!o.from.empty()) request.from = o.from;
  for (const std::string& swap : o.swaps) request.swaps.insert(*ReadSwap(swap));
  if (!o.columns.empty()) {
    request.columns.emplace();
    for (const std::string& column : o.columns) request.columns->push_back(*ImportColumnCode(column));
  }
  request.includePossible = o.includePossible;
  if (!o.lines.empty()) request.lines.emplace(o.lines.begin(), o.lines.end());
  request.saveSettings = o.saveSettings;
  if (o.saveSettings && !o.apply) {
    Fail(context, "import: --save-settings keeps the settings of an import; add --apply");
    return 2;
  }
  ProgressBar bar(context);
  request.progress = [&bar](double done) { bar(done); };
  if (!o.apply) {
    auto book = OpenBook(context);
    if (!book) return 1;
    auto review = ReviewImport(*book, request);
    PrintWarnings(context, *book);
    if (!review) return Fail(context, review.error());
    o.json ? render::WriteJson(context.out, render::ImportReviewJson(*review))
           : PrintReview(context, *review, o.includePossible);
    return 0;
  }
  return ChangeBook(
      context, [&](Book& book) { return ApplyImport(book, request); },
      [&](const ImportReview& review) {
        o.json ? render::WriteJson(context.out, render::ImportReviewJson(review))
               : PrintReview(context, review, o.includePossible);
      });
}

Json BatchJson(const ImportBatch& b) {
  Json j = Json::object();
  j["batch"] = b.number;
  j["when"] = platform::FormatLocalTime(b.when, "%Y-%m-%dT%H:%M:%S");
  j["file"] = JsonText(b.file);
  j["format"] = b.format;
  j["entries"] = b.entries;
  j["linked"] = b.linked;
  return j;
}

int History(Context& context, const std::string& account, bool json) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto history = ImportBatches(*book, account);
  PrintWarnings(context, *book);
  if (!history) return Fail(context, history.error());
  if (json) {
    Json batches = Json::array();
    for (const ImportBatch& b : history->batches) batches.push_back(BatchJson(b));
    Json document = Json::object();
    document["account"] = JsonText(history->account->GetName());
    document["batches"] = std::move(batches);
    render::WriteJson(context.out, document);
    return 0;
  }
  if (history->batches.empty()) {
    context.out << "Nothing was imported into \"" << history->account->GetName() << "\".\n";
    return 0;
  }
  render::Table table;
  table.AddFitColumn("Batch", Align::kRight);
  table.AddFitColumn("When", Align::kLeft);
  table.AddFitColumn("File", Align::kLeft, 30);
  table.AddFitColumn("Format", Align::kLeft);
  table.AddFitColumn("Entries", Align::kRight);
  table.AddFitColumn("Linked", Align::kRight);
  for (const ImportBatch& b : history->batches) {
    table.AddRow({std::to_string(b.number), platform::FormatLocalTime(b.when, "%Y-%m-%d %H:%M"),
                  b.file, b.format, std::to_string(b.entries.size()), std::to_string(b.linked)});
  }
  std::string out;
  table.Write(out);
  context.out << out;
  return 0;
}

int Undo(Context& context, const std::string& account, bool json) {
  return ChangeBook(
      context, [&](Book& book) { return UndoImport(book, account); },
      [&](const ImportUndo& undo) {
        if (json) {
          Json document = Json::object();
          document["account"] = JsonText(undo.account->GetName());
          document["batch"] = BatchJson(undo.batch);
          document["removed"] = undo.removed;
          document["deletedBefore"] = undo.gone;
          document["balance"] = render::JsonAmount(undo.balance);
          render::WriteJson(context.out, document);
          return;
        }
        const render::AmountWriter amounts(*undo.account->currency());
        context.out << "Took back batch " << undo.batch.number << " of \""
                    << undo.account->GetName() << "\" (" << undo.batch.file << "): "
                    << Count(undo.removed, "entry", "entries") << " removed"
                    << (undo.gone > 0 ? ", " + std::to_string(undo.gone) + " deleted before" : "")
                    << (undo.batch.linked > 0
                            ? "; " + Count(undo.batch.linked, "entry", "entries") +
                                  " of other accounts taken back or unlinked"
                            : "")
                    << "; balance " << amounts.Text(undo.balance) << ".\n";
      });
}

// ---- export ----

struct ExportOptions {
  std::string account, format = "qif", output, encoding;
  bool reconciled = false;
  FilterOptions filter;
};

int RunExport(Context& context, const ExportOptions& o) {
  ExportRequest request;
  request.account = o.account;
  request.format = o.format == "qif"   ? ExportFormat::kQIF
                   : o.format == "tsv" ? ExportFormat::kTSV
                                       : ExportFormat::kCSV;
  const RegisterFilterChange change = FilterChangeOf(o.filter);
  if (change.any()) request.filter = change;
  if (!o.encoding.empty()) request.encoding = EncodingNamed(o.encoding);
  request.resolvedMeansReconciled = o.reconciled;
  auto book = OpenBook(context);
  if (!book) return 1;
  auto result = ExportAccount(*book, request);
  PrintWarnings(context, *book);
  if (!result) return Fail(context, result.error());
  if (o.output.empty()) {
    context.out.write(result->bytes.data(), static_cast<std::streamsize>(result->bytes.size()));
    return 0;
  }
  platform::SafeFileBatch batch;
  std::string error;
  if (!batch.Stage(o.output, result->bytes, error, nullptr, false) || !batch.Commit(error)) {
    return Fail(context, "cannot write " + o.output + ": " + error);
  }
  context.err << "Wrote " << Count(result->entries, "entry", "entries") << " of \""
              << result->account->GetName() << "\" to " << o.output << ".\n";
  return 0;
}

}  // namespace

void RegisterImportCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto o = std::make_shared<ImportOptions>();
  CLI::App* import = app.add_subcommand(
      "import", "Import a bank's QIF, OFX or delimited-text file (shows what it would do first)");
  import->require_subcommand(0, 1);
  import->add_option("ACCOUNT", o->account, "Name or number of the account");
  import->add_option("FILE", o->file, "The file to import");
  import->add_option("--format", o->format, "qif, ofx, csv or tsv (default: from the file)")
      ->check(CLI::IsMember({"qif", "ofx", "csv", "tsv"}));
  import->add_option("--date-format", o->dateFormat,
                     "Order of the dates: mdy, dmy, ymd, or a format such as %d/%m/%Y "
                     "(default: the order that makes every date a day)");
  import->add_option("--encoding", o->encoding, "The file's encoding (default: found)")
      ->check(EncodingValue());
  import->add_option("--from", o->from, "Which of the file's accounts (name or number)");
  import->add_option("--swap", o->swaps, "Where a field of the file goes, as FIELD=TARGET")
      ->check(SwapValue());
  import->add_option("--columns", o->columns,
                     "Delimited text: what each column holds, left to right (date, amount, debit, "
                     "credit, payee, description, category, type, number, resolved, notes, skip)")
      ->delimiter(',')
      ->check(ColumnValue());
  import->add_flag("--apply", o->apply, "Import the new records");
  import->add_option("--lines", o->lines,
                     "With --apply, import only these rows of the review (1,3,7), possible "
                     "duplicates among them")
      ->delimiter(',')
      ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000'000}));
  import->add_flag("--include-possible", o->includePossible,
                   "With --apply, import the possible duplicates too");
  import->add_flag("--save-settings", o->saveSettings,
                   "Keep --date-format, --encoding and --swap as the account's settings");
  import->add_flag("--json", o->json, "Print JSON");
  {
    auto account = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    CLI::App* history = import->add_subcommand("history", "List an account's imports");
    history->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    history->add_flag("--json", *json, "Print JSON");
    actions.emplace_back(history,
                         [&context, account, json]() { return History(context, *account, *json); });
  }
  {
    auto account = std::make_shared<std::string>();
    auto json = std::make_shared<bool>(false);
    CLI::App* undo = import->add_subcommand("undo", "Take back an account's last import");
    undo->add_option("ACCOUNT", *account, "Name or number of the account")->required();
    undo->add_flag("--json", *json, "Print JSON");
    actions.emplace_back(undo,
                         [&context, account, json]() { return Undo(context, *account, *json); });
  }
  actions.emplace_back(import, [&context, o]() {
    if (o->account.empty() || o->file.empty()) {
      Fail(context, "import: name the account and the file; see folvant import --help");
      return 2;
    }
    return RunImport(context, *o);
  });

  auto e = std::make_shared<ExportOptions>();
  CLI::App* exp = app.add_subcommand("export", "Write an account as QIF, tab- or comma-separated text");
  exp->add_option("ACCOUNT", e->account, "Name or number of the account")->required();
  exp->add_option("--format", e->format, "qif (default), tsv or csv")
      ->check(CLI::IsMember({"qif", "tsv", "csv"}));
  exp->add_option("--output", e->output, "The file to write (default: standard output)");
  exp->add_option("--encoding", e->encoding, "The encoding to write (default: utf-8)")
      ->check(EncodingValue());
  exp->add_flag("--reconciled", e->reconciled, "QIF: mark resolved entries reconciled (X), not cleared (*)");
  AddFilterOptions(*exp, e->filter, "Entries whose text contains TEXT");
  actions.emplace_back(exp, [&context, e]() { return RunExport(context, *e); });
}

}  // namespace folvant::app
