#include "app/web/Api.h"

#include <chrono>
#include <map>
#include <string>
#include <system_error>

#include "app/web/ApiSupport.h"
#include "folvant/book/Book.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/CivilDate.h"
#include "folvant/platform/Clock.h"
#include "folvant/platform/Text.h"

namespace folvant::app::web {

using Kind = BookError::Kind;

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
  book.setPasswordAsker(
      [passwords = std::move(passwords)](std::string_view account) -> std::optional<std::string> {
        for (const auto& [name, password] : passwords) {
          if (platform::CaseInsensitiveEqual(name, account)) return password;
        }
        return std::nullopt;
      });
}

}  // namespace

BookResult<std::unique_ptr<Book>> Api::OpenForChange(const std::string& session) {
  // The server's readings wait while a change takes the book's lock: readings one after the
  // other would otherwise hold the book's shared lock nearly all the time, and the change
  // would seldom find it free.
  std::unique_lock turn(reading_);
  cached_.reset();
  ownBook_.reset();
  Book::OpenOptions options;
  options.access = Book::Access::kWrite;
  auto book = Book::Open(book_, options);
  turn.unlock();
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
      return Send(response,
                  found.error().kind == Kind::kLocked
                      ? Refusal{403, "that is not the password of \"" + *account + "\"", "locked"}
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

  RegisterAccounts(server);
  RegisterEntries(server);
  RegisterSummaries(server);
  RegisterSchedules(server);
  RegisterReconcile(server);
  RegisterImport(server);

  // For what no handler answered: the server calls this for every refusal, and a handler's own
  // answer (an account that is not there is a 404 too) stays as it was.
  server.set_error_handler([](const Request& request, Response& response) {
    if (!response.body.empty()) return;
    if (response.status == 404 && request.path.starts_with("/api/")) {
      Send(response, Refusal{404, "no such call: " + request.method + " " + request.path, {}});
    } else if (response.status == 413) {
      Send(response, Refusal{413, "the request is too large", {}});
    }
  });
}

}  // namespace folvant::app::web
