#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <memory>
#include <string>
#include <thread>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/web/WebServer.h"

extern char** environ;

namespace folvant::app {
namespace {

struct ServeOptions {
  std::string host = "127.0.0.1";
  int port = 8270;
  bool open = false;
};

bool IsLoopback(const std::string& host) {
  return host == "127.0.0.1" || host == "::1" || host == "localhost";
}

// Opens the address in the desktop's browser, when there is one to ask.
void OpenInBrowser(const std::string& address) {
  const char* const argv[] = {"xdg-open", address.c_str(), nullptr};
  pid_t child = 0;
  if (posix_spawnp(&child, "xdg-open", nullptr, nullptr, const_cast<char* const*>(argv),
                   environ) == 0) {
    int status = 0;
    waitpid(child, &status, 0);
  }
}

int Run(Context& context, const ServeOptions& o) {
  // The book must open before anything is served.
  auto book = OpenBook(context);
  if (!book) return 1;
  PrintWarnings(context, *book);
  web::ServeOptions options;
  options.book = book->directory();
  options.host = o.host;
  options.port = o.port;
  book.reset();

  // Interrupts wait for a thread of their own, which stops the server.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  web::WebServer server(options);
  std::string error;
  if (!server.Bind(error)) return Fail(context, error);
  if (!IsLoopback(o.host)) {
    context.err << "folvant: warning: serving on " << o.host
                << ", so other machines of the network can reach the book; only the address "
                   "with its token lets them in\n";
  }
  context.out << "Serving the book " << options.book.string() << "\n"
              << "Open " << server.Address() << "\n"
              << "Ctrl-C stops.\n";
  context.out.flush();
  if (o.open) OpenInBrowser(server.Address());

  std::thread watcher([&server, signals] {
    int which = 0;
    sigwait(&signals, &which);
    server.Stop();
  });
  server.Run();
  // Stopped by the watcher: it has returned. Stopped otherwise: wake the watcher to end it.
  pthread_kill(watcher.native_handle(), SIGTERM);
  watcher.join();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  return 0;
}

}  // namespace

void RegisterServeCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto o = std::make_shared<ServeOptions>();
  CLI::App* serve = app.add_subcommand(
      "serve", "Serve the book to a web browser on this machine (the address has a token)");
  serve->add_option("--port", o->port, "Port to listen on (default 8270; 0: any free port)")
      ->check(CLI::Range(0, 65535));
  serve->add_option("--host", o->host,
                    "Address to listen on (default 127.0.0.1; another lets the network in)");
  serve->add_flag("--open", o->open, "Open the address in the desktop's browser");
  actions.emplace_back(serve, [&context, o]() { return Run(context, *o); });
}

}  // namespace folvant::app
