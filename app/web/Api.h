#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace httplib {
class Server;
}  // namespace httplib

namespace folvant::app::web {

// {"error": message}
std::string ErrorJson(std::string_view message);

// The JSON API under /api: each handler opens the book, calls the book layer and answers with
// the same shapes as the command-line program's --json. A change holds the book's lock while it
// runs and saves before it answers; the handlers of one server also take turns for changes, as
// the book's lock is per process. Bad input is answered with 400 and changes nothing.
class Api {
 public:
  explicit Api(std::filesystem::path book) : book_(std::move(book)) {}
  void Register(httplib::Server& server);

  // A number that changes whenever a file of the book changes: the pages poll it and reload
  // what they show when it moves, whoever made the change.
  std::string Version() const;

 private:
  std::filesystem::path book_;
  std::mutex changes_;
};

}  // namespace folvant::app::web
