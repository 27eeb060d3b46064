#include <ostream>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "folvant/filters/ConditionSyntax.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/TextOutput.h"
#include "app/cli/Commands.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/platform/Text.h"

namespace folvant::app {
namespace {

using Group = ZELMFilterConditionGroup;

// A smart folder is a saved filter. The command line makes two shapes of it: every --where in
// one group that all must pass, or, with --any, one group per condition where the first
// narrows and the others add, so that an entry passing any one condition is shown.
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
std::string AsOptions(const ZELMFilter& filter) {
  const auto& groups = filter.conditionGroups();
  const auto where = [](const Group& group) {
    std::string text;
    for (const auto& condition : group.conditions())
      text += " --where " + ShellQuoted(FormatCondition(*condition));
    return text;
  };
  if (groups.size() == 1 && groups[0]->logic() == Group::kLogicNarrows &&
      groups[0]->qualifier() == Group::kQualifierAll && !groups[0]->conditions().empty()) {
    return where(*groups[0]).substr(1);
  }
  if (groups.size() < 2) return {};
  for (std::size_t i = 0; i < groups.size(); ++i) {
    const Group& group = *groups[i];
    if (group.logic() != (i == 0 ? Group::kLogicNarrows : Group::kLogicAdds) ||
        group.qualifier() != Group::kQualifierAll || group.conditions().size() != 1) {
      return {};
    }
  }
  std::string text = "--any";
  for (const auto& group : groups) text += where(*group);
  return text;
}

std::string JoinWord(std::int32_t logic) {
  if (logic == Group::kLogicNarrows) return "and";
  if (logic == Group::kLogicAdds) return "or";
  return std::to_string(logic);
}

std::string MatchWord(std::int32_t qualifier) {
  if (qualifier == Group::kQualifierAll) return "all";
  if (qualifier == Group::kQualifierAny) return "any";
  return std::to_string(qualifier);
}

int ListSmartFolders(Context& context, const SmartFolderOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account);
  if (!account) return 1;
  auto& out = context.out;
  if (options.json) {
    out << "{\n  \"account\": " << JsonString(account->GetName()) << ",\n  \"smartFolders\": [";
    bool first = true;
    for (const auto& filter : account->smartFolders()) {
      out << (first ? "\n" : ",\n") << "    {\"name\": " << JsonString(filter->name())
          << ", \"groups\": [";
      bool first_group = true;
      for (const auto& group : filter->conditionGroups()) {
        out << (first_group ? "" : ", ") << "{\"join\": " << JsonString(JoinWord(group->logic()))
            << ", \"match\": " << JsonString(MatchWord(group->qualifier()))
            << ", \"conditions\": [";
        bool first_condition = true;
        for (const auto& condition : group->conditions()) {
          out << (first_condition ? "" : ", ") << JsonString(FormatCondition(*condition));
          first_condition = false;
        }
        out << "]}";
        first_group = false;
      }
      out << "]}";
      first = false;
    }
    out << (first ? "]\n}\n" : "\n  ]\n}\n");
    return 0;
  }
  for (const auto& filter : account->smartFolders()) {
    out << filter->name() << '\n';
    const std::string options_text = AsOptions(*filter);
    if (!options_text.empty()) {
      out << "  " << options_text << '\n';
      continue;
    }
    if (filter->conditionGroups().empty()) out << "  (no conditions: every entry)\n";
    for (const auto& group : filter->conditionGroups()) {
      // Groups the command line does not make: one line each, with how it joins the others.
      out << "  " << JoinWord(group->logic()) << ' ' << MatchWord(group->qualifier()) << " of:";
      for (const auto& condition : group->conditions())
        out << ' ' << ShellQuoted(FormatCondition(*condition));
      out << '\n';
    }
  }
  return 0;
}

int NewSmartFolder(Context& context, const SmartFolderOptions& options) {
  // The conditions are read before the book is opened: a mistake there is a usage error.
  std::vector<std::shared_ptr<ZELMFilterCondition>> conditions;
  for (const std::string& text : options.where) {
    std::string error;
    auto condition = ParseCondition(text, error);
    if (!condition) {
      Fail(context, "--where: " + error);
      return 2;
    }
    conditions.push_back(std::move(condition));
  }
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  if (options.name.empty()) return Fail(context, "a smart folder needs a name");
  if (FindNamed(account->smartFolders(), options.name)) {
    return Fail(context, "a smart folder named \"" + options.name + "\" already exists in \"" +
                             account->GetName() + "\"");
  }
  auto filter = std::make_shared<ZELMFilter>();
  filter->setName(options.name);
  std::shared_ptr<Group> group;
  for (auto& condition : conditions) {
    if (!group || options.any) {
      group = std::make_shared<Group>();
      group->setQualifier(Group::kQualifierAll);
      group->setLogic(filter->conditionGroups().empty() ? Group::kLogicNarrows : Group::kLogicAdds);
      filter->addConditionGroup(group);
    }
    group->addCondition(std::move(condition));
  }
  account->addSmartFolder(filter);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Created smart folder \"" << filter->name() << "\" in \"" << account->GetName()
              << "\"\n";
  return 0;
}

int RemoveSmartFolder(Context& context, const SmartFolderOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  auto filter = FindNamed(account->smartFolders(), options.name);
  if (!filter) {
    return Fail(context,
                "no smart folder named \"" + options.name + "\" in \"" + account->GetName() + "\"");
  }
  account->removeSmartFolder(filter.get());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Removed smart folder \"" << filter->name() << "\"\n";
  return 0;
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
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  create->add_flag("--any", options->any,
                   "Show entries that pass any condition (default: all conditions)");
  actions.emplace_back(create, [&context, options]() { return NewSmartFolder(context, *options); });

  CLI::App* remove = smart->add_subcommand("remove", "Remove a smart folder");
  remove->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  remove->add_option("NAME", options->name, "Name of the smart folder")->required();
  actions.emplace_back(remove,
                       [&context, options]() { return RemoveSmartFolder(context, *options); });
}

}  // namespace folvant::app
