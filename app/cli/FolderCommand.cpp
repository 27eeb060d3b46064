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

// `folder new`, `move` and `remove`: {account, folder, entries}.
void PrintChangeJson(Context& context, const FolderChange& c) {
  using render::Json;
  Json document = Json::object();
  document["account"] = render::JsonText(c.account);
  document["folder"] = c.folder.empty() ? Json(nullptr) : render::JsonText(c.folder);
  document["entries"] = c.entries;
  render::WriteJson(context.out, document);
}

int NewFolder(Context& context, const FolderOptions& options) {
  return ChangeBook(
      context, [&](Book& book) { return folvant::NewFolder(book, options.account, options.name); },
      [&](const FolderChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Created folder \"" << c.folder << "\" in \"" << c.account << "\"\n";
      });
}

int MoveEntries(Context& context, const FolderOptions& options) {
  if (options.to.empty() && !options.toRegister) {
    Fail(context, "folder move needs --to NAME or --to-register");
    return 2;  // a usage error
  }
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::MoveEntries(book, options.account, options.entries,
                                    options.toRegister ? std::string() : options.to);
      },
      [&](const FolderChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Moved " << c.entries << (c.entries == 1 ? " entry" : " entries")
                    << (c.folder.empty() ? " to the register" : " to folder \"" + c.folder + "\"")
                    << '\n';
      });
}

int RemoveFolder(Context& context, const FolderOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) { return folvant::RemoveFolder(book, options.account, options.name); },
      [&](const FolderChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Removed folder \"" << c.folder << "\"";
        if (c.entries > 0) {
          context.out << "; its " << c.entries << (c.entries == 1 ? " entry is" : " entries are")
                      << " back in the register";
        }
        context.out << '\n';
      });
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
  create->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(create, [&context, options]() { return NewFolder(context, *options); });

  CLI::App* move = folder->add_subcommand(
      "move", "Move entries (by entry number) into a folder or back to the register");
  move->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  move->add_option("ENTRY", options->entries, "Entry numbers")->required();
  auto* to = move->add_option("--to", options->to, "Folder to move the entries to");
  auto* to_register = move->add_flag("--to-register", options->toRegister,
                                     "Move the entries back to the register itself");
  to->excludes(to_register);
  move->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(move, [&context, options]() { return MoveEntries(context, *options); });

  CLI::App* remove =
      folder->add_subcommand("remove", "Remove a folder; its entries go back to the register");
  remove->add_option("ACCOUNT", options->account, "Name or number of the account")->required();
  remove->add_option("NAME", options->name, "Name of the folder")->required();
  remove->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(remove, [&context, options]() { return RemoveFolder(context, *options); });
}

}  // namespace folvant::app
