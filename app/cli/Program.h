#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace folvant::app {

// What every command shares: the streams it writes to and the global options.
struct Context {
  std::ostream& out;
  std::ostream& err;
  std::string book;  // --book; empty: FOLVANT_BOOK, else the default folder
  bool verbose = false;  // --verbose: every message behind a summary
  bool passwordStdin = false;  // --password-stdin: a locked account's password is the first line
};

// A command adds its subcommand to the parser and returns the action run when it is chosen.
// The action returns the process exit status.
using CommandAction = std::function<int()>;

// Runs the program with the given arguments; returns the exit status.
int RunFolvant(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

// Each command lives in its own file under app/cli and is listed in Commands.cpp.
void RegisterCommands(CLI::App& app, Context& context,
                      std::vector<std::pair<CLI::App*, CommandAction>>& actions);

}  // namespace folvant::app
