#include "app/cli/Password.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>
#include <ostream>

namespace folvant::app {
namespace {

std::optional<std::string> ReadLine() {
  std::string line;
  if (!std::getline(std::cin, line)) return std::nullopt;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

}  // namespace

std::optional<std::string> ReadPassword(Context& context, std::string_view prompt,
                                        bool fromStdin) {
  if (fromStdin) return ReadLine();
  if (!::isatty(STDIN_FILENO)) return std::nullopt;
  termios saved{};
  if (::tcgetattr(STDIN_FILENO, &saved) != 0) return std::nullopt;
  termios quiet = saved;
  quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  quiet.c_lflag |= ECHONL;
  context.err << prompt << std::flush;
  if (::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet) != 0) return std::nullopt;
  std::optional<std::string> line = ReadLine();
  ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
  return line;
}

}  // namespace folvant::app
