#include "app/cli/Program.h"

#include <chrono>
#include <cstdlib>
#include <ostream>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "folvant/platform/Clock.h"

namespace folvant::app {

int RunFolvant(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"folvant: a personal check register", "folvant"};
  app.set_version_flag("--version", std::string("folvant ") + FOLVANT_VERSION);
  app.require_subcommand(0, 1);
  Context context{out, err, {}};
  app.add_option("--book", context.book, "Folder of the book (default: $FOLVANT_BOOK)");
  app.add_flag("--verbose", context.verbose, "Show every message behind a summary");
  std::string today;
  app.add_option("--today", today,
                 "Take this day (YYYY-MM-DD) as today (default: $FOLVANT_TODAY, else the clock)");

  std::vector<std::pair<CLI::App*, CommandAction>> actions;
  CLI::App* help = app.add_subcommand("help", "Show the commands and their options");
  RegisterCommands(app, context, actions);

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return 0;
  } catch (const CLI::CallForVersion&) {
    out << app.version() << '\n';
    return 0;
  } catch (const CLI::ParseError& e) {
    err << "folvant: " << e.what() << '\n';
    return 2;  // a usage error, as command-line programs report it
  }

  if (today.empty()) {
    if (const char* env = std::getenv("FOLVANT_TODAY")) today = env;
  }
  if (!today.empty()) {
    std::int32_t date = 0;
    if (!ParseDateNumber(today, date)) {
      err << "folvant: --today: \"" << today << "\" is not a date (YYYY-MM-DD)\n";
      return 2;
    }
    using namespace std::chrono;
    platform::PinClock(local_days{year{date / 10000} / (date / 100 % 100) / (date % 100)} +
                       hours{12});
  }

  if (help->parsed() || app.get_subcommands().empty()) {
    // App::help() would describe the chosen subcommand ("help" itself); describe the program.
    out << app.get_formatter()->make_help(&app, "folvant", CLI::AppFormatMode::Normal);
    return app.get_subcommands().empty() && !help->parsed() ? 2 : 0;
  }
  for (auto& [command, action] : actions) {
    if (command->parsed()) return action();
  }
  return 0;
}

}  // namespace folvant::app
