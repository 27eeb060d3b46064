#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "folvant/book/BookError.h"
#include "folvant/platform/FileLock.h"

namespace httplib {
class Server;
}  // namespace httplib

namespace folvant {
class Book;
}  // namespace folvant

namespace folvant::app::web {

// The header by which the server tells the API which session a request belongs to.
inline constexpr const char* kSessionHeader = "X-Folvant-Session";

// {"error": message}
std::string ErrorJson(std::string_view message);

// The JSON API under /api: each handler opens the book, calls the book layer and answers with
// the same shapes as the command-line program's --json. A change holds the book's lock while it
// runs and saves before it answers; the handlers of one server also take turns for changes, as
// the book's lock is per process. Bad input is answered with 400 and changes nothing.
class Api {
 public:
  explicit Api(std::filesystem::path book);
  ~Api();
  void Register(httplib::Server& server);

  // A number that changes whenever a file of the book changes: the pages poll it and reload
  // what they show when it moves, whoever made the change.
  std::string Version() const;

 private:
  // The book as last read, kept while its files stay as they were: a large register is read
  // from its file once, not on every call. Calls that read take turns on it.
  struct Reading {
    std::unique_lock<std::mutex> turn;
    platform::FileLock lock;  // the book's, shared, for this call
    Book* book = nullptr;
  };
  // The book for a request of `session`: the kept one, or, for a session that unlocked
  // accounts, one opened with their passwords for this request alone.
  BookResult<Reading> ReadBook(const std::string& session = {});
  BookResult<std::unique_ptr<Book>> OpenForChange(const std::string& session);
  // The passwords a session gave, by account name.
  std::map<std::string, std::string> Passwords(const std::string& session);

  // The handlers of each page, each in a file of its own.
  void RegisterAccounts(httplib::Server& server);
  void RegisterEntries(httplib::Server& server);
  void RegisterSummaries(httplib::Server& server);
  void RegisterSchedules(httplib::Server& server);
  void RegisterReconcile(httplib::Server& server);
  void RegisterImport(httplib::Server& server);
  // A handler that answers from the book as read, or changes the book and saves it; the answer
  // gets the book, the request (Read) or its JSON body (Change), and a refusal to fill in. In
  // ApiSupport.h.
  template <class Answer>
  auto Read(Answer answer);
  template <class Answer>
  auto Change(Answer answer);

  std::filesystem::path book_;
  std::mutex changes_;
  std::mutex reading_;
  std::unique_ptr<Book> cached_;
  std::unique_ptr<Book> ownBook_;  // a reading's book opened with a session's passwords
  std::string cachedVersion_;
  std::mutex passwordsMutex_;
  std::map<std::string, std::map<std::string, std::string>> passwords_;
};

}  // namespace folvant::app::web
