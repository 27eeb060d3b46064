#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/TextOutput.h"
#include "app/cli/Commands.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/platform/Text.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

// Folders hold entries beside the register: an entry lives either in the account's main list
// (the register proper) or in exactly one folder, and every balance counts it either way.
struct FolderOptions {
  std::string account;
  std::string name;
  std::vector<std::int32_t> entries;
  std::string to;
  bool toRegister = false;
  bool json = false;
};

int NoFolder(Context& context, const ZELMAccount& account, const std::string& name) {
  return Fail(context, "no folder named \"" + name + "\" in \"" + account.GetName() + "\"");
}

// Files the entry in `target` (nullptr: the main list), taking it out of wherever it was. The
// account files new entries into the shown folder, so the target is shown for the move.
void MoveEntry(ZELMAccount& account, const std::shared_ptr<ZELMAccountEntry>& entry,
               const std::shared_ptr<ZELMAccountFolder>& target) {
  account.RemoveEntry(entry.get());
  const std::shared_ptr<ZELMAccountFolder> shown = account.folder();
  account.setFolder(target);
  account.AddEntry(entry);
  account.setFolder(shown);
}

std::size_t MainListCount(const ZELMAccount& account) { return account.GetEntries().size(); }

int ListFolders(Context& context, const FolderOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account);
  if (!account) return 1;
  auto& out = context.out;
  if (options.json) {
    out << "{\n  \"account\": " << JsonString(account->GetName())
        << ",\n  \"registerEntries\": " << MainListCount(*account) << ",\n  \"folders\": [";
    bool first = true;
    for (const auto& folder : account->folders()) {
      out << (first ? "\n" : ",\n") << "    {\"name\": " << JsonString(folder->name())
          << ", \"entries\": " << folder->entries().size()
          << ", \"total\": " << PlainAmount(folder->total()) << "}";
      first = false;
    }
    out << (first ? "]\n}\n" : "\n  ]\n}\n");
    return 0;
  }
  std::size_t width = 6;
  for (const auto& folder : account->folders())
    width = std::max(width, DisplayWidth(folder->name()));
  out << Pad("Folder", width) << "  " << std::setw(7) << "Entries"
      << "  " << std::setw(16) << "Total" << '\n';
  for (const auto& folder : account->folders()) {
    out << Pad(folder->name(), width) << "  " << std::setw(7) << folder->entries().size() << "  "
        << PadLeft(FormatAmount(*account->currency(), folder->total()), 16) << '\n';
  }
  out << "\nIn the register itself: " << MainListCount(*account) << " entries\n";
  return 0;
}

int NewFolder(Context& context, const FolderOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  if (options.name.empty()) return Fail(context, "a folder needs a name");
  if (FindNamed(account->folders(), options.name)) {
    return Fail(context, "a folder named \"" + options.name + "\" already exists in \"" +
                             account->GetName() + "\"");
  }
  auto folder = std::make_shared<ZELMAccountFolder>();
  folder->setName(options.name);
  account->addFolder(folder);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Created folder \"" << folder->name() << "\" in \"" << account->GetName()
              << "\"\n";
  return 0;
}

int MoveEntries(Context& context, const FolderOptions& options) {
  if (options.to.empty() && !options.toRegister) {
    Fail(context, "folder move needs --to NAME or --to-register");
    return 2;  // a usage error
  }
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  std::shared_ptr<ZELMAccountFolder> target;
  if (!options.toRegister && !(target = FindNamed(account->folders(), options.to))) {
    return NoFolder(context, *account, options.to);
  }
  // Every number is checked before anything moves, so a bad number changes nothing.
  std::vector<std::shared_ptr<ZELMAccountEntry>> entries;
  for (std::int32_t number : options.entries) {
    auto entry = account->GetEntryWithNumber(number);
    if (!entry) {
      return Fail(context, "no entry number " + std::to_string(number) + " in \"" +
                               account->GetName() + "\"");
    }
    entries.push_back(std::move(entry));
  }
  for (const auto& entry : entries) MoveEntry(*account, entry, target);
  if (!SaveBook(context, *book)) return 1;
  context.out << "Moved " << entries.size() << (entries.size() == 1 ? " entry" : " entries")
              << (target ? " to folder \"" + target->name() + "\"" : " to the register") << '\n';
  return 0;
}

int RemoveFolder(Context& context, const FolderOptions& options) {
  std::unique_ptr<Book> book;
  auto account = OpenAccount(context, book, options.account, Book::Access::kWrite);
  if (!account) return 1;
  auto folder = FindNamed(account->folders(), options.name);
  if (!folder) return NoFolder(context, *account, options.name);
  // The folder holds its entries itself; they go back to the register so that none is lost.
  const ZELMAccountFolder::EntryList entries = folder->entries();
  for (const auto& entry : entries) MoveEntry(*account, entry, nullptr);
  account->removeFolder(folder.get());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Removed folder \"" << folder->name() << "\"";
  if (!entries.empty()) {
    context.out << "; its " << entries.size()
                << (entries.size() == 1 ? " entry is" : " entries are") << " back in the register";
  }
  context.out << '\n';
  return 0;
}

}  // namespace

void RegisterFolderCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* folder = app.add_subcommand("folder", "Folders: entries kept beside the register");
  folder->require_subcommand(1);
  auto options = std::make_shared<FolderOptions>();

  CLI::App* list = folder->add_subcommand("list", "List an account's folders and entry counts");
  list->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  list->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(list, [&context, options]() { return ListFolders(context, *options); });

  CLI::App* create = folder->add_subcommand("new", "Create an empty folder");
  create->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  create->add_option("NAME", options->name, "Name of the folder")->required();
  actions.emplace_back(create, [&context, options]() { return NewFolder(context, *options); });

  CLI::App* move = folder->add_subcommand(
      "move", "Move entries (by entry number) into a folder or back to the register");
  move->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  move->add_option("ENTRY", options->entries, "Entry numbers")->required();
  auto* to = move->add_option("--to", options->to, "Folder to move the entries to");
  auto* to_register = move->add_flag("--to-register", options->toRegister,
                                     "Move the entries back to the register itself");
  to->excludes(to_register);
  actions.emplace_back(move, [&context, options]() { return MoveEntries(context, *options); });

  CLI::App* remove =
      folder->add_subcommand("remove", "Remove a folder; its entries go back to the register");
  remove->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  remove->add_option("NAME", options->name, "Name of the folder")->required();
  actions.emplace_back(remove, [&context, options]() { return RemoveFolder(context, *options); });
}

}  // namespace folvant::app
