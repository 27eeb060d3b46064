#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/render/AmountText.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Folders.h"
#include "folvant/values/LVCurrency.h"

namespace folvant::app {
namespace {

struct FolderOptions {
  std::string account;
  std::string name;
  std::vector<std::int32_t> entries;
  std::string to;
  bool toRegister = false;
  bool json = false;
};

// A right-aligned header that keeps its column at least `width` wide.
std::string WideHeader(const std::string& text, std::size_t width) {
  return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

void PrintJson(Context& context, const FolderList& list) {
  using render::Json;
  Json folders = Json::array();
  for (const FolderLine& folder : list.folders) {
    folders.push_back({{"name", render::JsonText(folder.name)},
                       {"entries", folder.entries},
                       {"total", render::JsonAmount(folder.total)}});
  }
  Json document = Json::object();
  document["account"] = render::JsonText(list.account);
  document["registerEntries"] = list.registerEntries;
  document["folders"] = std::move(folders);
  render::WriteJson(context.out, document);
}

int ListFolders(Context& context, const FolderOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = folvant::ListFolders(*book, options.account);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (options.json) {
    PrintJson(context, *list);
    return 0;
  }
  auto currency = book->currencyWithCode(list->currency);
  const render::AmountWriter amounts(currency ? *currency : *book->currency());
  render::Table table;
  table.AddFitColumn("Folder", render::Align::kLeft);
  table.AddFitColumn("Entries", render::Align::kRight);
  table.AddFitColumn(WideHeader("Total", 16), render::Align::kRight);
  for (const FolderLine& folder : list->folders) {
    table.AddRow({folder.name, std::to_string(folder.entries), amounts.Text(folder.total)});
  }
  std::string out;
  table.Write(out);
  out += "\nIn the register itself: " + std::to_string(list->registerEntries) + " entries\n";
  context.out << out;
  return 0;
}

int NewFolder(Context& context, const FolderOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto made = folvant::NewFolder(*book, options.account, options.name);
  PrintWarnings(context, *book);
  if (!made) return Fail(context, made.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Created folder \"" << made->folder << "\" in \"" << made->account << "\"\n";
  return 0;
}

int MoveEntries(Context& context, const FolderOptions& options) {
  if (options.to.empty() && !options.toRegister) {
    Fail(context, "folder move needs --to NAME or --to-register");
    return 2;  // a usage error
  }
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto moved = folvant::MoveEntries(*book, options.account, options.entries,
                                    options.toRegister ? std::string() : options.to);
  PrintWarnings(context, *book);
  if (!moved) return Fail(context, moved.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Moved " << moved->entries << (moved->entries == 1 ? " entry" : " entries")
              << (moved->folder.empty() ? " to the register"
                                        : " to folder \"" + moved->folder + "\"")
              << '\n';
  return 0;
}

int RemoveFolder(Context& context, const FolderOptions& options) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto removed = folvant::RemoveFolder(*book, options.account, options.name);
  PrintWarnings(context, *book);
  if (!removed) return Fail(context, removed.error());
  if (!SaveBook(context, *book)) return 1;
  context.out << "Removed folder \"" << removed->folder << "\"";
  if (removed->entries > 0) {
    context.out << "; its " << removed->entries
                << (removed->entries == 1 ? " entry is" : " entries are")
                << " back in the register";
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
