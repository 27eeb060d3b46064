#include "app/cli/Program.h"

#include <chrono>
#include <cstdlib>
#include <ostream>
#include <type_traits>

#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "folvant/platform/Clock.h"

namespace folvant::app {
namespace {

// The words of the command the parse reached: "folvant account list".
std::string CommandPath(const CLI::App& app) {
  std::string path = "folvant";
  const CLI::App* at = &app;
  while (at != nullptr) {
    const CLI::App* next = nullptr;
    for (const CLI::App* sub : at->get_subcommands()) {
      if (sub->get_name() != "help") next = sub;
    }
    if (next != nullptr) path += " " + next->get_name();
    at = next;
  }
  return path;
}

// The subcommands one can choose under the command the parse reached.
std::string Choices(const CLI::App& app) {
  const CLI::App* at = &app;
  for (bool deeper = true; deeper;) {
    deeper = false;
    for (const CLI::App* sub : at->get_subcommands()) {
      at = sub;
      deeper = true;
    }
  }
  std::string list;
  for (const CLI::App* sub : at->get_subcommands({})) {
    if (sub->get_name() == "help") continue;
    list += (list.empty() ? "" : ", ") + sub->get_name();
  }
  return list;
}

// CLI11's message in this program's words, with what to do.
std::string UsageMessage(const CLI::App& app, const CLI::ParseError& e) {
  const std::string path = CommandPath(app);
  const std::string help = "; see '" + path + " --help'";
  std::string what = e.what();
  auto is = [&e](auto* kind) {
    return dynamic_cast<const std::remove_pointer_t<decltype(kind)>*>(&e) != nullptr;
  };
  if (is(static_cast<CLI::ExtrasError*>(nullptr))) {
    const std::string arguments = what.substr(what.find(':') + 2);
    if (arguments.rfind('-', 0) == 0) return "unknown option " + arguments + help;
    if (path == "folvant") return "unknown command \"" + arguments + "\"" + help;
    return "unexpected argument \"" + arguments + "\"" + help;
  }
  const bool required = is(static_cast<CLI::RequiredError*>(nullptr));
  if (required && what.rfind("A subcommand", 0) == 0) {
    return path.substr(path.find(' ') + 1) + " needs one of: " + Choices(app) + help;
  }
  if (required) return what + help;
  if (is(static_cast<CLI::ConversionError*>(nullptr))) {
    // "Could not convert: --amount = abc"
    const auto colon = what.find(": ");
    const auto equals = what.find(" = ");
    if (colon != std::string::npos && equals != std::string::npos) {
      return what.substr(colon + 2, equals - colon - 2) + ": \"" + what.substr(equals + 3) +
             "\" is not a number";
    }
  }
  if (is(static_cast<CLI::ExcludesError*>(nullptr))) {
    // "--a excludes --b"
    const auto at = what.find(" excludes ");
    if (at != std::string::npos) {
      return what.substr(0, at) + " and " + what.substr(at + 10) + " cannot be given together";
    }
  }
  if (const auto at = what.find(" not in {"); at != std::string::npos && what.back() == '}') {
    // A set check: "--x: value not in {a,b}".
    const auto colon = what.find(": ");
    std::string choices = what.substr(at + 9, what.size() - at - 10);
    for (std::size_t comma = 0; (comma = choices.find(',', comma)) != std::string::npos;) {
      choices.replace(comma, 1, ", ");
      comma += 2;
    }
    if (colon != std::string::npos && colon < at) {
      return what.substr(0, colon) + ": \"" + what.substr(colon + 2, at - colon - 2) +
             "\" is not one of: " + choices;
    }
  }
  return what;
}

}  // namespace

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
  // Any command may meet a locked account, so every one takes the option, before or after its
  // words; so does the book's folder (`folvant serve --book DIR`).
  const char* kPasswordStdin = "Read the password of a locked account from standard input";
  const char* kBook = "Folder of the book (default: $FOLVANT_BOOK)";
  app.add_flag("--password-stdin", context.passwordStdin, kPasswordStdin);
  for (auto& [command, action] : actions) {
    if (command->get_option_no_throw("--password-stdin") == nullptr) {
      command->add_flag("--password-stdin", context.passwordStdin, kPasswordStdin);
    }
    if (command->get_option_no_throw("--book") == nullptr) {
      command->add_option("--book", context.book, kBook);
    }
  }

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    out << app.help();
    return 0;
  } catch (const CLI::CallForVersion&) {
    out << app.version() << '\n';
    return 0;
  } catch (const CLI::ParseError& e) {
    err << "folvant: " << UsageMessage(app, e) << '\n';
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
