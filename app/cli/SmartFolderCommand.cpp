#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"
#include "folvant/book/Book.h"
#include "folvant/book/Folders.h"
#include "folvant/filters/ConditionSyntax.h"

namespace folvant::app {
namespace {

// The command line makes two shapes of smart folder: every --where in one group that all must
// pass, or, with --any, one group per condition where the first narrows and the others add.
struct SmartFolderOptions {
  std::string account;
  std::string name;
  std::vector<std::string> where;
  bool any = false;
  bool json = false;
};

// The text quoted for a POSIX shell.
std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// The options that make this smart folder again, or nothing when it has a shape the command
// line does not make.
std::string AsOptions(const SmartFolderLine& line) {
  const auto& groups = line.groups;
  const auto where = [](const SmartFolderGroup& group) {
    std::string text;
    for (const std::string& condition : group.conditions)
      text += " --where " + ShellQuoted(condition);
    return text;
  };
  if (groups.size() == 1 && groups[0].join == "and" && groups[0].match == "all" &&
      !groups[0].conditions.empty()) {
    return where(groups[0]).substr(1);
  }
  if (groups.size() < 2) return {};
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const SmartFolderGroup& group = groups[i];
    if (group.join != (i == 0 ? "and" : "or") || group.match != "all" ||
        group.conditions.size() != 1) {
      return {};
    }
  }
  std::string text = "--any";
  for (const auto& group : groups) text += where(group);
  return text;
}

void PrintJson(Context& context, const SmartFolderList& list) {
  using render::Json;
  Json folders = Json::array();
  for (const SmartFolderLine& line : list.smartFolders) {
    Json groups = Json::array();
    for (const SmartFolderGroup& group : line.groups) {
      Json conditions = Json::array();
      for (const std::string& condition : group.conditions) {
        conditions.push_back(render::JsonText(condition));
      }
      groups.push_back(
          {{"join", group.join}, {"match", group.match}, {"conditions", std::move(conditions)}});
    }
    folders.push_back({{"name", render::JsonText(line.name)}, {"groups", std::move(groups)}});
  }
  Json document = Json::object();
  document["account"] = render::JsonText(list.account);
  document["smartFolders"] = std::move(folders);
  render::WriteJson(context.out, document);
}

int ListSmartFolders(Context& context, const SmartFolderOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = folvant::ListSmartFolders(*book, options.account);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (options.json) {
    PrintJson(context, *list);
    return 0;
  }
  std::string out;
  for (const SmartFolderLine& line : list->smartFolders) {
    out += line.name + '\n';
    const std::string options_text = AsOptions(line);
    if (!options_text.empty()) {
      out += "  " + options_text + '\n';
      continue;
    }
    if (line.groups.empty()) out += "  (no conditions: every entry)\n";
    for (const SmartFolderGroup& group : line.groups) {
      // Groups the command line does not make: one line each, with how it joins the others.
      out += "  " + group.join + ' ' + group.match + " of:";
      for (const std::string& condition : group.conditions) out += ' ' + ShellQuoted(condition);
      out += '\n';
    }
  }
  context.out << out;
  return 0;
}

// `smart-folder new` and `remove`: {account, smartFolder}.
void PrintChange(Context& context, const FolderChange& c, const char* verb, bool json) {
  if (json) {
    render::Json document = render::Json::object();
    document["account"] = render::JsonText(c.account);
    document["smartFolder"] = render::JsonText(c.folder);
    render::WriteJson(context.out, document);
    return;
  }
  context.out << verb << " smart folder \"" << c.folder << '"';
  if (std::string_view(verb) == "Created") context.out << " in \"" << c.account << '"';
  context.out << '\n';
}

int NewSmartFolder(Context& context, const SmartFolderOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::NewSmartFolder(book, options.account, options.name, options.where,
                                       options.any);
      },
      [&](const FolderChange& c) { PrintChange(context, c, "Created", options.json); });
}

int RemoveSmartFolder(Context& context, const SmartFolderOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) { return folvant::RemoveSmartFolder(book, options.account, options.name); },
      [&](const FolderChange& c) { PrintChange(context, c, "Removed", options.json); });
}

// An option check: the value is a condition the command line reads.
CLI::Validator Condition() {
  return CLI::Validator(
      [](const std::string& value) -> std::string {
        std::string error;
        return ParseCondition(value, error) ? std::string() : error;
      },
      "");
}

}  // namespace

void RegisterSmartFolderCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* smart = app.add_subcommand("smart-folder", "Smart folders: saved filters");
  smart->require_subcommand(1);
  auto options = std::make_shared<SmartFolderOptions>();

  CLI::App* list = smart->add_subcommand("list", "List the smart folders and their conditions");
  list->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  list->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(list, [&context, options]() { return ListSmartFolders(context, *options); });

  CLI::App* create = smart->add_subcommand("new", "Create a smart folder");
  create->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  create->add_option("NAME", options->name, "Name of the smart folder")->required();
  create
      ->add_option("--where", options->where,
                   "A condition FIELD QUALIFIER [VALUE], e.g. 'description contains rent', "
                   "'amount > 100', 'date in-last 3 months', 'resolved no'")
      ->required()
      ->check(Condition())
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  create->add_flag("--any", options->any,
                   "Show entries that pass any condition (default: all conditions)");
  create->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(create, [&context, options]() { return NewSmartFolder(context, *options); });

  CLI::App* remove = smart->add_subcommand("remove", "Remove a smart folder");
  remove->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  remove->add_option("NAME", options->name, "Name of the smart folder")->required();
  remove->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(remove,
                       [&context, options]() { return RemoveSmartFolder(context, *options); });
}

}  // namespace folvant::app
