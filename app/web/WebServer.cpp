#include "app/web/WebServer.h"

#include <httplib.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <random>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "app/web/Api.h"
#include "app/web/Pages.h"

namespace folvant::app::web {
namespace {

constexpr const char* kCookie = "folvant_session";

// 32 random bytes as hexadecimal.
std::string RandomToken() {
  std::random_device device;
  static constexpr char kHex[] = "0123456789abcdef";
  std::string token;
  for (int i = 0; i < 8; ++i) {
    std::uint32_t word = device();
    for (int j = 0; j < 8; ++j, word >>= 4) token.push_back(kHex[word & 15]);
  }
  return token;
}

// Compares without stopping at the first difference, so the time taken says nothing of how
// much of a guess was right.
bool SameSecret(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned char difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

std::string CookieValue(const httplib::Request& request, std::string_view name) {
  const std::string header = request.get_header_value("Cookie");
  std::string_view rest = header;
  while (!rest.empty()) {
    const std::size_t end = rest.find(';');
    std::string_view pair = rest.substr(0, end);
    while (!pair.empty() && pair.front() == ' ') pair.remove_prefix(1);
    if (pair.size() > name.size() && pair.starts_with(name) && pair[name.size()] == '=') {
      return std::string(pair.substr(name.size() + 1));
    }
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }
  return {};
}

const char* ContentType(std::string_view name) {
  if (name.ends_with(".html")) return "text/html; charset=utf-8";
  if (name.ends_with(".js")) return "text/javascript; charset=utf-8";
  if (name.ends_with(".css")) return "text/css; charset=utf-8";
  if (name.ends_with(".svg")) return "image/svg+xml";
  return "application/octet-stream";
}

void SendError(httplib::Response& response, int status, std::string_view message) {
  response.status = status;
  response.set_content(ErrorJson(message), "application/json");
}

}  // namespace

class WebServer::Impl {
 public:
  explicit Impl(ServeOptions options)
      : options_(std::move(options)), token_(RandomToken()), api_(options_.book) {}

  bool Bind(std::string& error) {
    server_.set_payload_max_length(options_.maxBody);
    server_.set_read_timeout(10, 0);
    server_.set_write_timeout(10, 0);
    server_.set_keep_alive_max_count(100);
    // Answers go out at once, not after the peer's delayed acknowledgement (40 ms a call).
    server_.set_tcp_nodelay(true);
    server_.set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response) {
          return Admit(request, response) ? httplib::Server::HandlerResponse::Unhandled
                                          : httplib::Server::HandlerResponse::Handled;
        });
    server_.set_exception_handler(
        [](const httplib::Request&, httplib::Response& response, std::exception_ptr failure) {
          std::string what = "the request failed";
          try {
            if (failure) std::rethrow_exception(failure);
          } catch (const std::exception& e) {
            what += std::string(": ") + e.what();
          } catch (...) {
          }
          SendError(response, 500, what);
        });
    server_.Get("/", [this](const httplib::Request&, httplib::Response& response) {
      SendPage("index.html", response);
    });
    server_.Get(R"(/([a-z0-9-]+\.(html|js|css|svg)))",
                [this](const httplib::Request& request, httplib::Response& response) {
                  SendPage(request.matches[1].str(), response);
                });
    api_.Register(server_);
    if (options_.port == 0) {
      port_ = server_.bind_to_any_port(options_.host);
    } else if (server_.bind_to_port(options_.host, options_.port)) {
      port_ = options_.port;
    }
    if (port_ <= 0) {
      error = "cannot listen on " + options_.host + ":" + std::to_string(options_.port) +
              " (is another program using it?)";
      return false;
    }
    const std::string host =
        options_.host.find(':') != std::string::npos ? "[" + options_.host + "]" : options_.host;
    allowedHosts_ = {host + ":" + std::to_string(port_)};
    if (options_.host == "127.0.0.1" || options_.host == "::1" || options_.host == "localhost") {
      allowedHosts_.insert("localhost:" + std::to_string(port_));
      allowedHosts_.insert("127.0.0.1:" + std::to_string(port_));
      allowedHosts_.insert("[::1]:" + std::to_string(port_));
    }
    origin_ = "http://" + host + ":" + std::to_string(port_) + "/";
    return true;
  }

  // Host and Origin name this server; the session cookie, or the start-up token on a first
  // visit (answered with the cookie and a redirect to the address without the token).
  bool Admit(const httplib::Request& request, httplib::Response& response) {
    // Answers are not compressed: on this machine or a home network compressing costs more
    // time than it saves (the library's Brotli at its best quality takes 80 ms for a page of
    // the register). The request object is the server's own, handed over as const.
    const_cast<httplib::Request&>(request).headers.erase("Accept-Encoding");
    if (!allowedHosts_.contains(request.get_header_value("Host"))) {
      SendError(response, 403, "this server answers only to the address it printed");
      return false;
    }
    const std::string origin = request.get_header_value("Origin");
    if (!origin.empty() &&
        !(origin.starts_with("http://") && allowedHosts_.contains(origin.substr(7)))) {
      SendError(response, 403, "requests from other sites are refused");
      return false;
    }
    // The session reaches the API as a header of the server's own; one sent by the client
    // is dropped first.
    auto& headers = const_cast<httplib::Request&>(request).headers;
    headers.erase(kSessionHeader);
    if (HasSession(request)) {
      headers.emplace(kSessionHeader, CookieValue(request, kCookie));
      return true;
    }
    if (request.method == "GET" && request.path == "/" && request.has_param("token") &&
        SameSecret(request.get_param_value("token"), token_)) {
      const std::string session = RandomToken();
      {
        std::lock_guard lock(mutex_);
        sessions_.insert(session);
      }
      response.set_header("Set-Cookie", std::string(kCookie) + "=" + session +
                                            "; HttpOnly; SameSite=Strict; Path=/");
      response.set_redirect("/", 303);
      return false;
    }
    if (request.path.starts_with("/api/")) {
      SendError(response, 401, "open the address that folvant serve printed, with its token");
    } else {
      response.status = 401;
      response.set_content(
          "<!doctype html><meta charset=utf-8><title>Folvant</title>"
          "<p>Open the address that <code>folvant serve</code> printed, with its token.</p>",
          "text/html; charset=utf-8");
    }
    return false;
  }

  bool HasSession(const httplib::Request& request) {
    const std::string session = CookieValue(request, kCookie);
    if (session.empty()) return false;
    std::lock_guard lock(mutex_);
    for (const std::string& known : sessions_) {
      if (SameSecret(known, session)) return true;
    }
    return false;
  }

  void SendPage(const std::string& name, httplib::Response& response) {
    const std::span<const unsigned char> bytes = Page(name);
    if (bytes.empty()) {
      SendError(response, 404, "no page " + name);
      return;
    }
    response.set_header("Cache-Control", "no-cache");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Content-Security-Policy",
                        "default-src 'self'; img-src 'self' data:; style-src 'self'; "
                        "frame-ancestors 'none'");
    response.set_content(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
                         ContentType(name));
  }

  ServeOptions options_;
  std::string token_;
  Api api_;
  httplib::Server server_;
  int port_ = -1;
  std::set<std::string> allowedHosts_;
  std::string origin_;
  std::mutex mutex_;
  std::set<std::string> sessions_;
};

WebServer::WebServer(ServeOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}
WebServer::~WebServer() = default;

bool WebServer::Bind(std::string& error) { return impl_->Bind(error); }
int WebServer::port() const { return impl_->port_; }
std::string WebServer::Origin() const { return impl_->origin_; }
std::string WebServer::Address() const { return impl_->origin_ + "?token=" + impl_->token_; }
const std::string& WebServer::token() const { return impl_->token_; }
void WebServer::Run() { impl_->server_.listen_after_bind(); }
void WebServer::Stop() { impl_->server_.stop(); }

}  // namespace folvant::app::web
