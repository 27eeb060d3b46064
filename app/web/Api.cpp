#include "app/web/Api.h"

#include <httplib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <charconv>
#include <chrono>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "app/render/EntryOutput.h"
#include "app/render/ImportOutput.h"
#include "app/render/Json.h"
#include "app/render/ReconcileOutput.h"
#include "app/render/SummaryChart.h"
#include "folvant/book/Accounts.h"
#include "folvant/book/Book.h"
#include "folvant/book/Entries.h"
#include "folvant/book/Export.h"
#include "folvant/book/Import.h"
#include "folvant/book/Reconcile.h"
#include "folvant/book/RegisterView.h"
#include "folvant/book/Schedules.h"
#include "folvant/book/Summaries.h"
#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app::web {
namespace {

using render::Json;
using render::JsonAmount;
using render::JsonText;
using Kind = BookError::Kind;

// A request that cannot be answered as asked: the status and one line saying why.
struct Refusal {
  int status = 400;
  std::string message;
};

Refusal Bad(std::string message) { return {400, std::move(message)}; }

Refusal RefusalOf(const BookError& error) {
  switch (error.kind) {
    case Kind::kNotFound: return {404, error.message};
    case Kind::kExists: return {409, error.message};
    case Kind::kInvalid: return {400, error.message};
    case Kind::kBusy: return {503, error.message};
    case Kind::kDamaged: return {409, error.message};
    case Kind::kLocked: return {403, error.message};
    case Kind::kReadOnly:
    case Kind::kFailed: return {500, error.message};
  }
  return {500, error.message};
}

void Send(httplib::Response& response, const Json& document) {
  response.set_header("Cache-Control", "no-store");
  response.set_content(render::JsonDump(document), "application/json");
}

void Send(httplib::Response& response, const Refusal& refusal) {
  response.status = refusal.status;
  response.set_header("Cache-Control", "no-store");
  response.set_content(ErrorJson(refusal.message), "application/json");
}

// ---- reading requests ----

// The body as a JSON object.
std::optional<Json> BodyOf(const httplib::Request& request, Refusal& refusal) {
  Json body = Json::parse(request.body, nullptr, false);
  if (body.is_discarded() || !body.is_object()) {
    refusal = Bad("the request's body is not a JSON object");
    return std::nullopt;
  }
  return body;
}

// The fields of a JSON object, each checked for its type; the first wrong one is kept.
class Fields {
 public:
  explicit Fields(const Json& object) : object_(object) {}

  std::optional<std::string> Text(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    if (!it->is_string()) return Wrong(key, "a text"), std::nullopt;
    return it->get<std::string>();
  }
  std::optional<double> Amount(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    std::optional<double> value;
    if (it->is_number()) value = it->get<double>();
    if (it->is_string()) value = ParseNumber(it->get<std::string>());
    if (!value || !std::isfinite(*value) || std::fabs(*value) > 1e12) {
      return Wrong(key, "an amount"), std::nullopt;
    }
    return value;
  }
  std::optional<std::int32_t> Integer(const char* key, bool required = false) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return Missing(key, required), std::nullopt;
    if (!it->is_number_integer() || it->get<std::int64_t>() < 0 ||
        it->get<std::int64_t>() > 2'000'000'000) {
      return Wrong(key, "a whole number"), std::nullopt;
    }
    return static_cast<std::int32_t>(it->get<std::int64_t>());
  }
  std::optional<bool> Flag(const char* key) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return std::nullopt;
    if (!it->is_boolean()) return Wrong(key, "true or false"), std::nullopt;
    return it->get<bool>();
  }
  std::optional<std::int32_t> Date(const char* key) {
    const std::optional<std::string> text = Text(key);
    if (!text || text->empty()) return std::nullopt;
    std::int32_t date = 0;
    if (!platform::ParseIsoDate(*text, date)) return Wrong(key, "a date, YYYY-MM-DD"), std::nullopt;
    return date;
  }
  std::vector<std::int32_t> Integers(const char* key) {
    std::vector<std::int32_t> numbers;
    const auto it = object_.find(key);
    if (it == object_.end() || !it->is_array() || it->empty()) {
      Wrong(key, "a list of entry numbers");
      return numbers;
    }
    for (const Json& value : *it) {
      if (!value.is_number_integer() || value.get<std::int64_t>() < 1 ||
          value.get<std::int64_t>() > 2'000'000'000) {
        Wrong(key, "a list of entry numbers");
        return {};
      }
      numbers.push_back(static_cast<std::int32_t>(value.get<std::int64_t>()));
    }
    return numbers;
  }

  // Line items: [{category, amount, description}], at least two.
  std::optional<std::vector<SplitFields>> Splits(const char* key) {
    const auto it = object_.find(key);
    if (it == object_.end() || it->is_null()) return std::nullopt;
    if (!it->is_array() || it->size() < 2 || it->size() > 1000) {
      return Wrong(key, "a list of at least two line items"), std::nullopt;
    }
    std::vector<SplitFields> splits;
    for (const Json& item : *it) {
      if (!item.is_object()) return Wrong(key, "a list of line items"), std::nullopt;
      Fields line(item);
      SplitFields split;
      split.category = line.Text("category").value_or("");
      split.description = line.Text("description").value_or("");
      split.amount = line.Amount("amount", true).value_or(0.0);
      if (line.problem()) {
        if (!problem_) problem_ = Bad("a line item: " + line.problem()->message);
        return std::nullopt;
      }
      splits.push_back(std::move(split));
    }
    return splits;
  }

  const std::optional<Refusal>& problem() const { return problem_; }

 private:
  static std::optional<double> ParseNumber(const std::string& text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
  }
  void Missing(const char* key, bool required) {
    if (required && !problem_) problem_ = Bad(std::string("\"") + key + "\" is missing");
  }
  void Wrong(const char* key, const char* what) {
    if (!problem_) problem_ = Bad(std::string("\"") + key + "\" must be " + what);
  }

  const Json& object_;
  std::optional<Refusal> problem_;
};

std::optional<std::size_t> Count(const httplib::Request& request, const char* key,
                                 std::size_t fallback, Refusal& refusal) {
  if (!request.has_param(key)) return fallback;
  const std::string text = request.get_param_value(key);
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    refusal = Bad(std::string("\"") + key + "\" must be a whole number");
    return std::nullopt;
  }
  return value;
}

std::optional<std::int32_t> WordCode(const std::vector<RegisterWord>& words,
                                     std::string_view word) {
  for (const RegisterWord& w : words) {
    if (word == w.word) return w.code;
  }
  return std::nullopt;
}

// ---- shapes ----

Json FilterJson(const RegisterFilterWords& f) {
  return Json{{"active", f.active},
              {"field", f.field},
              {"search", JsonText(f.search)},
              {"dates", f.dates},
              {"from", f.from ? Json(platform::FormatIsoDate(*f.from)) : Json(nullptr)},
              {"to", f.to ? Json(platform::FormatIsoDate(*f.to)) : Json(nullptr)},
              {"resolved", f.resolved},
              {"taxDeductible", f.taxDeductible},
              {"line", JsonText(f.line)}};
}

Json RowJson(const RegisterRow& row) {
  return Json{{"number", row.entry != nullptr ? Json(row.entry->GetNumber()) : Json(nullptr)},
              {"date", platform::FormatIsoDate(row.date)},
              {"checkNumber", row.checkNumber ? Json(*row.checkNumber) : Json(nullptr)},
              {"type", JsonText(row.type)},
              {"toFrom", JsonText(row.toFrom)},
              {"description", JsonText(row.description)},
              {"category", JsonText(row.category)},
              {"resolved", row.resolved},
              {"void", row.isVoid},
              {"amount", JsonAmount(row.amount)},
              {"balance", JsonAmount(row.balance)}};
}

Json ChangeJson(const EntryChange& change) {
  Json remembered = Json::array();
  for (const std::string& field : change.remembered) remembered.push_back(JsonText(field));
  return Json{{"account", JsonText(change.account->GetName())},
              {"entry", render::EntryJson(change.entry)},
              {"remembered", std::move(remembered)},
              {"linked", render::LinkedJson(change.linked)},
              {"balance", JsonAmount(change.balance)}};
}

// Entry fields from a JSON object: {date, amount, check, checkNumber, toFrom, description,
// type, category, notes, resolved, taxDeductible}.
EntryFields EntryFieldsOf(Fields& fields) {
  EntryFields entry;
  entry.date = fields.Date("date");
  entry.amount = fields.Amount("amount");
  entry.check = fields.Flag("check");
  entry.checkNumber = fields.Integer("checkNumber");
  if (entry.checkNumber) entry.check = true;
  entry.toFrom = fields.Text("toFrom");
  entry.description = fields.Text("description");
  entry.type = fields.Text("type");
  entry.category = fields.Text("category");
  entry.notes = fields.Text("notes");
  entry.resolved = fields.Flag("resolved");
  entry.taxDeductible = fields.Flag("taxDeductible");
  entry.splits = fields.Splits("splits");
  return entry;
}

}  // namespace

std::string ErrorJson(std::string_view message) {
  return render::JsonDump(Json{{"error", JsonText(message)}});
}

Api::Api(std::filesystem::path book) : book_(std::move(book)) {}
Api::~Api() = default;

std::map<std::string, std::string> Api::Passwords(const std::string& session) {
  std::lock_guard lock(passwordsMutex_);
  const auto it = passwords_.find(session);
  return it == passwords_.end() ? std::map<std::string, std::string>{} : it->second;
}

namespace {

// Gives each locked account the password the session gave for it.
void AskWith(Book& book, std::map<std::string, std::string> passwords) {
  book.setPasswordAsker([passwords = std::move(passwords)](std::string_view account)
                            -> std::optional<std::string> {
    for (const auto& [name, password] : passwords) {
      if (platform::CaseInsensitiveEqual(name, account)) return password;
    }
    return std::nullopt;
  });
}

}  // namespace

BookResult<std::unique_ptr<Book>> Api::OpenForChange(const std::string& session) {
  Forget();  // before the book's lock is taken: a reading may be waiting for its turn
  Book::OpenOptions options;
  options.access = Book::Access::kWrite;
  auto book = Book::Open(book_, options);
  if (book) AskWith(**book, Passwords(session));
  return book;
}

BookResult<Api::Reading> Api::ReadBook(const std::string& session) {
  Reading reading{std::unique_lock(reading_), {}, nullptr};
  std::string error;
  std::optional<platform::FileLock> lock = platform::FileLock::Acquire(
      Book::LockFile(book_), platform::FileLock::Mode::kShared, std::chrono::seconds(5), error);
  if (!lock) {
    return Unexpected{BookError::Of(BookError::Kind::kBusy,
                                    error.empty() ? "the book is in use by another program; "
                                                    "try again when it has finished"
                                                  : error)};
  }
  reading.lock = std::move(*lock);
  if (std::map<std::string, std::string> passwords = Passwords(session); !passwords.empty()) {
    ownBook_.reset();
    auto opened = Book::Open(book_, {});
    if (!opened) return Unexpected{opened.error()};
    ownBook_ = std::move(*opened);
    ownBook_->ReleaseLock();  // this reading holds the lock
    AskWith(*ownBook_, std::move(passwords));
    reading.book = ownBook_.get();
    return reading;
  }
  const std::string version = Version();
  if (!cached_ || version != cachedVersion_) {
    cached_.reset();
    auto opened = Book::Open(book_, {});
    if (!opened) return Unexpected{opened.error()};
    cached_ = std::move(*opened);
    cached_->ReleaseLock();
    cachedVersion_ = version;
  }
  reading.book = cached_.get();
  return reading;
}

void Api::Forget() {
  std::lock_guard lock(reading_);
  cached_.reset();
  ownBook_.reset();
}

std::string Api::Version() const {
  // The names, sizes and change times of the book's files, folded into one number.
  std::uint64_t hash = 1469598103934665603ULL;
  auto fold = [&hash](const void* data, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 1099511628211ULL;
  };
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator it(book_, error), end; !error && it != end;
       it.increment(error)) {
    if (!it->is_regular_file(error)) continue;
    const std::string name = it->path().string();
    if (name.ends_with(".lock")) continue;
    fold(name.data(), name.size());
    const auto size = it->file_size(error);
    fold(&size, sizeof size);
    const auto time = it->last_write_time(error).time_since_epoch().count();
    fold(&time, sizeof time);
  }
  return std::to_string(hash % 1000000000000ULL);
}

void Api::Register(httplib::Server& server) {
  using Request = httplib::Request;
  using Response = httplib::Response;

  // Reading: the book opened for reading, the answer made from it.
  auto read = [this](std::function<std::optional<Json>(Book&, const Request&, Refusal&)> answer) {
    return [this, answer](const Request& request, Response& response) {
      auto reading = ReadBook(request.get_header_value(kSessionHeader));
      if (!reading) return Send(response, RefusalOf(reading.error()));
      Refusal refusal;
      std::optional<Json> document = answer(*reading->book, request, refusal);
      document ? Send(response, *document) : Send(response, refusal);
    };
  };
  // Changing: the JSON body read, the book opened for changing under its lock, changed, saved.
  auto change = [this](std::function<std::optional<Json>(Book&, const Json&, Refusal&)> answer) {
    return [this, answer](const Request& request, Response& response) {
      Refusal refusal;
      const std::optional<Json> body = BodyOf(request, refusal);
      if (!body) return Send(response, refusal);
      std::lock_guard lock(changes_);
      auto book = OpenForChange(request.get_header_value(kSessionHeader));
      if (!book) return Send(response, RefusalOf(book.error()));
      std::optional<Json> document = answer(**book, *body, refusal);
      if (!document) return Send(response, refusal);
      // The saved files have a new version, so the next reading reads them again.
      if (std::optional<BookError> failed = (*book)->Save()) {
        return Send(response, RefusalOf(*failed));
      }
      Send(response, *document);
    };
  };

  // A locked account's password, kept for this session only (never written anywhere):
  // {account, password}. The account shows nothing until it is given.
  server.Post("/api/unlock", [this](const Request& request, Response& response) {
    Refusal refusal;
    const std::optional<Json> body = BodyOf(request, refusal);
    if (!body) return Send(response, refusal);
    Fields fields(*body);
    const std::optional<std::string> account = fields.Text("account", true);
    const std::optional<std::string> password = fields.Text("password", true);
    if (fields.problem()) return Send(response, *fields.problem());
    Book::OpenOptions options;
    options.password = *password;
    auto book = Book::Open(book_, options);
    if (!book) return Send(response, RefusalOf(book.error()));
    auto found = (*book)->FindAccount(*account);
    if (!found) {
      return Send(response, found.error().kind == Kind::kLocked
                                ? Refusal{403, "that is not the password of \"" + *account + "\""}
                                : RefusalOf(found.error()));
    }
    {
      std::lock_guard lock(passwordsMutex_);
      passwords_[request.get_header_value(kSessionHeader)][(*found)->GetName()] = *password;
    }
    Send(response, Json{{"account", JsonText((*found)->GetName())}, {"unlocked", true}});
  });

  server.Get("/api/status", [this](const Request&, Response& response) {
    Send(response, Json{{"book", JsonText(book_.string())},
                        {"version", Version()},
                        {"today", platform::FormatIsoDate(platform::Today())}});
  });

  server.Get("/api/accounts", read([](Book& book, const Request&, Refusal&) -> std::optional<Json> {
    Json accounts = Json::array();
    for (const AccountListing& line : book.ListAccounts()) {
      Json account{{"number", line.number},
                   {"name", JsonText(line.name)},
                   {"currency", JsonText(line.currency)},
                   {"balance", line.balance ? JsonAmount(*line.balance) : Json(nullptr)},
                   {"todaysBalance", nullptr},
                   {"resolvedBalance", nullptr},
                   {"entries", line.entries},
                   {"locked", line.locked},
                   {"problem", line.problem.empty() ? Json(nullptr) : JsonText(line.problem)}};
      // A locked account opens only with the password its session gave.
      if (line.balance || line.locked) {
        if (auto loaded = book.FindAccount(line.name)) {
          account["balance"] = JsonAmount((*loaded)->GetBalance());
          account["todaysBalance"] = JsonAmount((*loaded)->GetTodaysBalance());
          account["resolvedBalance"] = JsonAmount((*loaded)->GetResolvedBalance());
          account["locked"] = false;
          account["problem"] = nullptr;
        }
      }
      accounts.push_back(std::move(account));
    }
    return Json{{"baseCurrency", JsonText(book.currency() ? book.currency()->code() : "")},
                {"accounts", std::move(accounts)}};
  }));

  // A range of the register's rows: ?account=NAME&offset=N&limit=M (at most 1,000 rows); with
  // &tail=1 the last range whose offset is a multiple of the limit, so that the page that opens
  // on the newest entries needs one call.
  server.Get("/api/register",
             read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               if (!request.has_param("account")) return refusal = Bad("\"account\" is missing"), std::nullopt;
               const auto offset = Count(request, "offset", 0, refusal);
               const auto limit = Count(request, "limit", 200, refusal);
               if (!offset || !limit) return std::nullopt;
               RegisterQuery query;
               query.account = request.get_param_value("account");
               if (request.has_param("sort")) {
                 const auto sort = WordCode(RegisterSortWords(), request.get_param_value("sort"));
                 if (!sort) return refusal = Bad("\"sort\" is not an order"), std::nullopt;
                 query.sort = static_cast<RegisterSort>(*sort);
               }
               query.descending = request.get_param_value("descending") == "1";
               query.folder = request.get_param_value("folder");
               query.smartFolder = request.get_param_value("smartFolder");
               auto view = ShowRegister(book, query);
               if (!view) return refusal = RefusalOf(view.error()), std::nullopt;
               Json rows = Json::array();
               std::size_t first = std::min(*offset, view->size());
               if (request.get_param_value("tail") == "1" && *limit > 0 && view->size() > 0) {
                 first = (view->size() - 1) / *limit * *limit;
               }
               const std::size_t last = std::min(view->size(), first + std::min<std::size_t>(*limit, 1000));
               for (std::size_t i = first; i < last; ++i) rows.push_back(RowJson(view->row(i)));
               Json folders = Json::array(), smartFolders = Json::array();
               for (const auto& folder : view->account->folders()) {
                 folders.push_back(JsonText(folder->name()));
               }
               for (const auto& folder : view->account->smartFolders()) {
                 smartFolders.push_back(JsonText(folder->name()));
               }
               return Json{{"account", JsonText(view->account->GetName())},
                           {"currency", JsonText(view->currency)},
                           {"filter", FilterJson(view->filter)},
                           {"folders", std::move(folders)},
                           {"smartFolders", std::move(smartFolders)},
                           {"total", view->size()},
                           {"offset", first},
                           {"rows", std::move(rows)},
                           {"balances",
                            Json{{"current", JsonAmount(view->balance)},
                                 {"today", JsonAmount(view->todaysBalance)},
                                 {"resolved", JsonAmount(view->resolvedBalance)}}}};
             }));

  // The register's filter, kept in the account as the command line keeps it: {account, reset,
  // search, field, dates (a range's words, or FROM..TO), resolved and taxDeductible ("all",
  // "only", "not")}.
  server.Post("/api/register/filter",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                RegisterQuery query;
                query.account = fields.Text("account", true).value_or("");
                query.filter.reset = fields.Flag("reset").value_or(false);
                query.filter.search = fields.Text("search");
                if (const auto field = fields.Text("field")) {
                  query.filter.field = WordCode(RegisterSearchFields(), *field);
                  if (!query.filter.field) return refusal = Bad("\"field\" is not a field"), std::nullopt;
                }
                if (const auto dates = fields.Text("dates")) {
                  const std::size_t dots = dates->find("..");
                  std::int32_t from = 0, to = 0;
                  if (dots != std::string::npos && platform::ParseIsoDate(dates->substr(0, dots), from) &&
                      platform::ParseIsoDate(dates->substr(dots + 2), to) && from <= to) {
                    query.filter.dates = kShowCustomDates;
                    query.filter.from = from;
                    query.filter.to = to;
                  } else if (!(query.filter.dates = WordCode(RegisterDateRanges(), *dates))) {
                    return refusal = Bad("\"dates\" is not a date range"), std::nullopt;
                  }
                }
                const std::pair<const char*, std::array<std::int32_t, 3>> flags[] = {
                    {"resolved", {kShowResolvedAndUnresolved, kShowResolvedOnly, kShowUnresolvedOnly}},
                    {"taxDeductible",
                     {kShowTaxDeductibleAndNot, kShowTaxDeductibleOnly, kShowNotTaxDeductibleOnly}}};
                for (const auto& [key, codes] : flags) {
                  const std::optional<std::string> word = fields.Text(key);
                  if (!word) continue;
                  std::optional<std::int32_t>& target =
                      std::string_view(key) == "resolved" ? query.filter.resolved
                                                          : query.filter.taxDeductible;
                  if (*word == "all") target = codes[0];
                  else if (*word == "only") target = codes[1];
                  else if (*word == "not") target = codes[2];
                  else return refusal = Bad(std::string("\"") + key + "\" is all, only or not"), std::nullopt;
                }
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto view = ShowRegister(book, query);
                if (!view) return refusal = RefusalOf(view.error()), std::nullopt;
                return Json{{"account", JsonText(view->account->GetName())},
                            {"filter", FilterJson(view->filter)},
                            {"total", view->size()}};
              }));

  // The account written as a file to download: ?account=NAME&format=qif|csv|tsv.
  server.Get("/api/export",
             [this](const Request& request, Response& response) {
               ExportRequest exportRequest;
               exportRequest.account = request.get_param_value("account");
               const std::string format = request.get_param_value("format");
               const std::map<std::string, std::pair<ExportFormat, const char*>> formats = {
                   {"qif", {ExportFormat::kQIF, "application/qif"}},
                   {"csv", {ExportFormat::kCSV, "text/csv; charset=utf-8"}},
                   {"tsv", {ExportFormat::kTSV, "text/tab-separated-values; charset=utf-8"}}};
               const auto it = formats.find(format);
               if (it == formats.end()) return Send(response, Bad("\"format\" is qif, csv or tsv"));
               exportRequest.format = it->second.first;
               auto reading = ReadBook(request.get_header_value(kSessionHeader));
               if (!reading) return Send(response, RefusalOf(reading.error()));
               auto exported = ExportAccount(*reading->book, exportRequest);
               if (!exported) return Send(response, RefusalOf(exported.error()));
               std::string file;
               for (char c : exported->account->GetName()) {
                 file.push_back(std::isalnum(static_cast<unsigned char>(c)) ? c : '-');
               }
               response.set_header("Content-Disposition",
                                   "attachment; filename=\"" + file + "." + format + "\"");
               response.set_header("Cache-Control", "no-store");
               response.set_content(exported->bytes, it->second.second);
             });

  // A new account: {name, currency, startingBalance}.
  server.Post("/api/accounts",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> name = fields.Text("name", true);
                const std::optional<std::string> currency = fields.Text("currency");
                const double starting = fields.Amount("startingBalance").value_or(0.0);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                std::shared_ptr<LVCurrency> chosen;
                if (currency && !currency->empty()) {
                  auto found = book.RegisterCurrency(*currency);
                  if (!found) return refusal = RefusalOf(found.error()), std::nullopt;
                  chosen = *found;
                }
                auto added = book.AddAccount(*name, chosen, starting);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return Json{{"number", (*added)->GetNumber()},
                            {"name", JsonText((*added)->GetName())},
                            {"currency", JsonText((*added)->currency()->code())},
                            {"balance", JsonAmount((*added)->GetBalance())}};
              }));

  // Changes an account: {account, name, startingBalance, startingCheck, notes}.
  server.Post("/api/accounts/edit",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                AccountEdit edit;
                edit.name = fields.Text("name");
                edit.startingBalance = fields.Amount("startingBalance");
                edit.startingCheck = fields.Integer("startingCheck");
                edit.notes = fields.Text("notes");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto edited = EditAccount(book, *account, edit);
                if (!edited) return refusal = RefusalOf(edited.error()), std::nullopt;
                return Json{{"number", edited->number},
                            {"name", JsonText(edited->name)},
                            {"currency", JsonText(edited->currency)},
                            {"startingBalance", JsonAmount(edited->startingBalance)},
                            {"startingCheck", edited->startingCheck},
                            {"notes", JsonText(edited->notes)}};
              }));

  server.Get("/api/suggest",
             read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               const std::string which = request.get_param_value("which");
               if (which != "to" && which != "from" && which != "description") {
                 return refusal = Bad("\"which\" must be to, from or description"), std::nullopt;
               }
               auto list = Suggestions(book, request.get_param_value("account"), which,
                                       request.get_param_value("prefix"));
               if (!list) return refusal = RefusalOf(list.error()), std::nullopt;
               Json texts = Json::array();
               for (const std::string& text : list->texts) texts.push_back(JsonText(text));
               return Json{{"suggestions", std::move(texts)}};
             }));

  server.Get("/api/categories", read([](Book& book, const Request&, Refusal&) -> std::optional<Json> {
    std::vector<std::string> names;
    for (const auto& category : book.allCategories()) names.push_back(category->fullName());
    std::sort(names.begin(), names.end());
    Json list = Json::array();
    for (const std::string& name : names) list.push_back(JsonText(name));
    return Json{{"categories", std::move(list)}};
  }));

  server.Post("/api/entries",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                if (!body.contains("splits")) fields.Amount("amount", true);
                EntryFields entry = EntryFieldsOf(fields);
                if (entry.splits) entry.amount.reset();  // the line items' total
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto added = AddEntry(book, *account, entry);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return ChangeJson(*added);
              }));

  server.Post("/api/entries/edit",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                EntryFields entry = EntryFieldsOf(fields);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto edited = EditEntry(book, *account, *number, entry);
                if (!edited) return refusal = RefusalOf(edited.error()), std::nullopt;
                return ChangeJson(*edited);
              }));

  using EntryOperation = BookResult<EntryChange> (*)(Book&, std::string_view, std::int32_t);
  for (const auto& [path, operation] :
       {std::pair<const char*, EntryOperation>{"/api/entries/void", &VoidEntry},
        {"/api/entries/unvoid", &UnvoidEntry},
        {"/api/entries/delete", &DeleteEntry}}) {
    server.Post(path, change([operation = operation](Book& book, const Json& body,
                                                     Refusal& refusal) -> std::optional<Json> {
                  Fields fields(body);
                  const std::optional<std::string> account = fields.Text("account", true);
                  const std::optional<std::int32_t> number = fields.Integer("number", true);
                  if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                  auto done = operation(book, *account, *number);
                  if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                  return ChangeJson(*done);
                }));
  }

  server.Post("/api/entries/resolve",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::vector<std::int32_t> numbers = fields.Integers("numbers");
                const bool resolved = fields.Flag("resolved").value_or(true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto done = resolved ? ResolveEntries(book, *account, numbers)
                                     : UnresolveEntries(book, *account, numbers);
                if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                Json changed = Json::array();
                for (std::int32_t n : done->changed) changed.push_back(n);
                return Json{{"account", JsonText(done->account->GetName())},
                            {"changed", std::move(changed)},
                            {"resolvedBalance", JsonAmount(done->resolvedBalance)}};
              }));

  server.Post("/api/transfer",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                TransferRequest transfer;
                transfer.from = fields.Text("from", true).value_or("");
                transfer.to = fields.Text("to", true).value_or("");
                transfer.amount = fields.Amount("amount", true).value_or(0.0);
                transfer.date = fields.Date("date");
                transfer.description = fields.Text("description").value_or("");
                transfer.toAmount = fields.Amount("toAmount");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto done = Transfer(book, transfer);
                if (!done) return refusal = RefusalOf(done.error()), std::nullopt;
                return Json{{"from", Json{{"account", JsonText(done->from->GetName())},
                                          {"entry", render::EntryJson(done->debit)},
                                          {"balance", JsonAmount(done->fromBalance)}}},
                            {"to", Json{{"account", JsonText(done->to->GetName())},
                                        {"entry", render::EntryJson(done->deposit)},
                                        {"balance", JsonAmount(done->toBalance)}}}};
              }));

  server.Get("/api/summaries",
             read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               auto listing = ListSummaries(book, request.get_param_value("account"));
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               Json summaries = Json::array();
               for (const SummaryDefinition& d : listing->summaries) {
                 summaries.push_back(Json{{"name", JsonText(d.name)},
                                          {"range", JsonText(d.range)},
                                          {"period", JsonText(d.period)},
                                          {"selected", d.selected}});
               }
               return Json{{"account", JsonText(listing->account->GetName())},
                           {"summaries", std::move(summaries)}};
             }));

  // A report: ?account=NAME[&name=SUMMARY][&range=WORDS][&period=month]; with the same
  // pictures as `summary show --svg`.
  server.Get("/api/summary",
             read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               SummaryOptions overrides;
               if (request.has_param("range")) {
                 overrides.range = ReadSummaryRange(request.get_param_value("range"));
                 if (!overrides.range) return refusal = Bad("\"range\" is not a range"), std::nullopt;
               }
               if (request.has_param("period")) {
                 const std::int32_t period = ReadSummaryPeriod(request.get_param_value("period"));
                 if (period < 0) return refusal = Bad("\"period\" is not a period"), std::nullopt;
                 overrides.period = period;
               }
               std::optional<std::string> name;
               if (request.has_param("name")) name = request.get_param_value("name");
               auto result = ShowSummary(book, request.get_param_value("account"), name,
                                         overrides, false);
               if (!result) return refusal = RefusalOf(result.error()), std::nullopt;
               const ZELMSummaryReport& r = result->report;
               Json periods = Json::array();
               for (const render::PeriodValues& p : render::PeriodValuesOf(*result)) {
                 periods.push_back(Json{{"label", p.label},
                                        {"deposits", JsonAmount(p.deposits)},
                                        {"debits", JsonAmount(p.debits)},
                                        {"net", JsonAmount(p.net)}});
               }
               Json categories = Json::array();
               std::vector<std::pair<const ZELMCategorySubtotal*, int>> nodes;
               render::FlattenCategories(r.categoriesSubtotals, 0, nodes);
               for (const auto& [node, depth] : nodes) {
                 categories.push_back(Json{{"name", JsonText(node->subtotalName)},
                                           {"amount", JsonAmount(node->amount)},
                                           {"depth", depth}});
               }
               auto day = [](const platform::LocalTime& t) {
                 return platform::FormatIsoDate(NSCalendarDateToDateNumber(t));
               };
               return Json{{"title", JsonText(result->title)},
                           {"summary", JsonText(result->definition.name)},
                           {"currency", JsonText(result->currency->code())},
                           {"startDate", day(r.startDate)},
                           {"endDate", day(r.endDate)},
                           {"startBalance", JsonAmount(r.startBalance)},
                           {"endBalance", JsonAmount(r.endBalance)},
                           {"depositsTotal", JsonAmount(r.depositsTotal)},
                           {"debitsTotal", JsonAmount(r.debitsTotal)},
                           {"total", JsonAmount(r.total)},
                           {"periods", std::move(periods)},
                           {"categories", std::move(categories)},
                           {"svg", render::SummaryResultSvg(*result)}};
             }));

  // A bank's file as the request's body: ?account=NAME&name=FILE.ofx[&apply=1]
  // [&includePossible=1]. Without apply the review, changing nothing; with it the import.
  server.Post("/api/import", [this](const Request& request, Response& response) {
    const std::string name = request.get_param_value("name");
    if (!request.has_param("account")) return Send(response, Bad("\"account\" is missing"));
    if (request.body.empty()) return Send(response, Bad("the file is empty"));
    // The file's own name, for its format; kept in a folder of its own while it is read.
    std::string safe;
    for (char c : name.substr(name.find_last_of("/\\") + 1)) {
      safe.push_back(std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' ? c : '_');
    }
    if (safe.empty() || safe.front() == '.') safe = "statement" + safe;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error) /
                                         ("folvant-upload-" + std::to_string(::getpid()) + "-" +
                                          std::to_string(reinterpret_cast<std::uintptr_t>(&request)));
    std::filesystem::create_directories(folder, error);
    struct Cleanup {
      std::filesystem::path folder;
      ~Cleanup() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
      }
    } cleanup{folder};
    {
      std::ofstream out(folder / safe, std::ios::binary);
      out << request.body;
      if (!out) return Send(response, Refusal{500, "the file could not be kept for reading"});
    }
    ImportRequest import;
    import.account = request.get_param_value("account");
    import.file = folder / safe;
    import.includePossible = request.get_param_value("includePossible") == "1";
    if (request.has_param("lines")) {
      // The rows chosen in the review: "1,3,7" (none: "").
      import.lines.emplace();
      const std::string list = request.get_param_value("lines");
      for (std::size_t at = 0; at < list.size();) {
        const std::size_t comma = std::min(list.find(',', at), list.size());
        std::size_t line = 0;
        const auto [end, error] = std::from_chars(list.data() + at, list.data() + comma, line);
        if (error != std::errc() || end != list.data() + comma || line == 0) {
          return Send(response, Bad("\"lines\" is a list of row numbers: 1,3,7"));
        }
        import.lines->insert(line);
        at = comma + 1;
      }
    }
    if (request.get_param_value("apply") != "1") {
      auto reading = ReadBook(request.get_header_value(kSessionHeader));
      if (!reading) return Send(response, RefusalOf(reading.error()));
      auto review = ReviewImport(*reading->book, import);
      if (!review) return Send(response, RefusalOf(review.error()));
      return Send(response, render::ImportReviewJson(*review));
    }
    std::lock_guard lock(changes_);
    auto book = OpenForChange(request.get_header_value(kSessionHeader));
    if (!book) return Send(response, RefusalOf(book.error()));
    auto applied = ApplyImport(**book, import);
    if (!applied) return Send(response, RefusalOf(applied.error()));
    if (std::optional<BookError> failed = (*book)->Save()) {
      return Send(response, RefusalOf(*failed));
    }
    Send(response, render::ImportReviewJson(*applied));
  });

  server.Post("/api/import/undo",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto undone = UndoImport(book, *account);
                if (!undone) return refusal = RefusalOf(undone.error()), std::nullopt;
                return Json{{"account", JsonText(undone->account->GetName())},
                            {"removed", undone->removed},
                            {"balance", JsonAmount(undone->balance)}};
              }));

  // Reconciling against a statement: {account, statementDate, statementBalance, resolve: [n],
  // unresolve: [n], finish}; answers with the listing after the change.
  server.Post("/api/reconcile",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                ReconcileRequest reconcile;
                const std::optional<std::int32_t> date = fields.Date("statementDate");
                const std::optional<double> balance = fields.Amount("statementBalance", true);
                if (!date && !fields.problem()) {
                  return refusal = Bad("\"statementDate\" is missing"), std::nullopt;
                }
                for (const auto& [key, list] : {std::pair{"resolve", &reconcile.resolve},
                                                {"unresolve", &reconcile.unresolve}}) {
                  if (body.contains(key)) *list = fields.Integers(key);
                }
                reconcile.finish = fields.Flag("finish").value_or(false);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                reconcile.statement.date = *date;
                reconcile.statement.balance = *balance;
                auto outcome = Reconcile(book, *account, reconcile);
                if (!outcome) return refusal = RefusalOf(outcome.error()), std::nullopt;
                return render::ReconcileOutcomeJson(*outcome);
              }));

  // The account's schedules and what of them is due by today.
  server.Get("/api/schedules",
             read([](Book& book, const Request& request, Refusal& refusal) -> std::optional<Json> {
               const std::string account = request.get_param_value("account");
               auto listing = ListSchedules(book, account);
               if (!listing) return refusal = RefusalOf(listing.error()), std::nullopt;
               auto due = DueOccurrences(book, account, platform::Today());
               if (!due) return refusal = RefusalOf(due.error()), std::nullopt;
               auto date = [](const std::optional<std::int32_t>& d) {
                 return d ? Json(platform::FormatIsoDate(*d)) : Json(nullptr);
               };
               Json schedules = Json::array();
               for (const ScheduleRow& row : listing->rows) {
                 schedules.push_back(Json{{"number", row.number},
                                          {"rule", JsonText(row.rule)},
                                          {"next", date(row.next)},
                                          {"toFrom", JsonText(row.toFrom)},
                                          {"description", JsonText(row.description)},
                                          {"category", JsonText(row.category)},
                                          {"amount", JsonAmount(row.amount)},
                                          {"transferTo", row.transferTo.empty()
                                                             ? Json(nullptr)
                                                             : JsonText(row.transferTo)}});
               }
               Json occurrences = Json::array();
               for (const DueOccurrence& o : *due) {
                 occurrences.push_back(Json{{"schedule", o.schedule},
                                            {"date", platform::FormatIsoDate(o.date)},
                                            {"toFrom", JsonText(o.toFrom)},
                                            {"description", JsonText(o.description)},
                                            {"amount", JsonAmount(o.amount)},
                                            {"transferTo", o.transferTo.empty()
                                                               ? Json(nullptr)
                                                               : JsonText(o.transferTo)}});
               }
               return Json{{"account", JsonText(listing->account->GetName())},
                           {"schedules", std::move(schedules)},
                           {"due", std::move(occurrences)}};
             }));

  server.Post("/api/schedules/enter",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                const std::optional<std::int32_t> date = fields.Date("date");
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto entered = EnterOccurrence(book, *account, *number, date);
                if (!entered) return refusal = RefusalOf(entered.error()), std::nullopt;
                return Json{{"account", JsonText(entered->account->GetName())},
                            {"schedule", entered->schedule},
                            {"entry", entered->entry},
                            {"date", platform::FormatIsoDate(entered->date)},
                            {"amount", JsonAmount(entered->amount)},
                            {"linked", render::LinkedJson(entered->linked)}};
              }));

  // A schedule in words: {account, every, unit, on, start, until, times, weekendsBefore,
  // amount, toFrom, description, category, type, check, transferTo}.
  server.Post("/api/schedules/add",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                Recurrence recurrence;
                recurrence.every = fields.Integer("every").value_or(1);
                recurrence.unit = fields.Text("unit", true).value_or("");
                recurrence.on = fields.Text("on").value_or("");
                const std::optional<std::int32_t> start = fields.Date("start");
                recurrence.until = fields.Date("until");
                recurrence.times = fields.Integer("times").value_or(0);
                recurrence.weekendsBefore = fields.Flag("weekendsBefore").value_or(false);
                ScheduledEntry entry;
                fields.Amount("amount", true);
                entry.fields = EntryFieldsOf(fields);
                entry.fields.date.reset();
                if (const auto other = fields.Text("transferTo"); other && !other->empty()) {
                  entry.transferTo = other;
                }
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                recurrence.start = start.value_or(platform::Today());
                auto added = AddSchedule(book, *account, recurrence, entry);
                if (!added) return refusal = RefusalOf(added.error()), std::nullopt;
                return Json{{"account", JsonText(added->account->GetName())},
                            {"number", added->number},
                            {"rule", JsonText(added->rule)},
                            {"next", added->next ? Json(platform::FormatIsoDate(*added->next))
                                                 : Json(nullptr)}};
              }));

  server.Post("/api/schedules/remove",
              change([](Book& book, const Json& body, Refusal& refusal) -> std::optional<Json> {
                Fields fields(body);
                const std::optional<std::string> account = fields.Text("account", true);
                const std::optional<std::int32_t> number = fields.Integer("number", true);
                if (fields.problem()) return refusal = *fields.problem(), std::nullopt;
                auto removed = RemoveSchedule(book, *account, *number);
                if (!removed) return refusal = RefusalOf(removed.error()), std::nullopt;
                return Json{{"account", JsonText(removed->account->GetName())},
                            {"number", removed->number}};
              }));

  server.set_error_handler([](const Request& request, Response& response) {
    if (response.status == 404 && request.path.starts_with("/api/")) {
      Send(response, Refusal{404, "no such call: " + request.method + " " + request.path});
    } else if (response.status == 413) {
      Send(response, Refusal{413, "the request is too large"});
    }
  });
}

}  // namespace folvant::app::web
