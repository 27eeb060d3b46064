#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace folvant::app::web {

struct ServeOptions {
  std::filesystem::path book;
  std::string host = "127.0.0.1";
  int port = 8270;                        // 0: any free port
  std::size_t maxBody = 8 * 1024 * 1024;  // an uploaded statement, at most
};

// `folvant serve`: the book over HTTP on one address. Every request must name that address as
// its Host (and, when it has one, its Origin), and every request but the first visit must carry
// the session cookie: the first visit gives the start-up token in the address ("/?token=..."),
// which is exchanged for the cookie (HttpOnly, SameSite=Strict). The pages are compiled in; the
// JSON API under /api calls the book layer, each change under the book's lock and saved at once,
// so the command-line program can work on the same book meanwhile.
class WebServer {
 public:
  explicit WebServer(ServeOptions options);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  // Binds the address; on failure says why in `error`.
  bool Bind(std::string& error);
  int port() const;
  // "http://127.0.0.1:8270/"
  std::string Origin() const;
  // The address to open: the origin with the start-up token.
  std::string Address() const;
  const std::string& token() const;

  // Serves until Stop() (from another thread or a signal handler's thread).
  void Run();
  void Stop();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace folvant::app::web
