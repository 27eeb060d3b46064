#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/cli/BookAccess.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"
#include "app/render/Table.h"
#include "folvant/book/Book.h"
#include "folvant/book/Types.h"

namespace folvant::app {
namespace {

struct TypeOptions {
  std::string account;
  std::string name;
  std::string newName;
  bool debit = false;
  bool deposit = false;
  bool check = false;
  std::optional<std::string> defaultDebit;
  std::optional<std::string> defaultDeposit;
  std::string from;
  bool json = false;
};

TypeSide SideOf(const TypeOptions& options) {
  if (options.debit) return TypeSide::kDebit;
  if (options.deposit) return TypeSide::kDeposit;
  return TypeSide::kEither;
}

const char* SideWord(bool deposit) { return deposit ? "deposit" : "debit"; }

int ListTypes(Context& context, const TypeOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = folvant::ListTypes(*book, options.account);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (options.json) {
    using render::Json;
    Json types = Json::array();
    for (const TypeLine& t : list->types) {
      types.push_back({{"name", render::JsonText(t.name)},
                       {"number", t.number},
                       {"side", SideWord(t.isDeposit)},
                       {"check", t.isCheck},
                       {"default", t.isDefault},
                       {"uses", t.uses}});
    }
    Json document = Json::object();
    document["account"] = render::JsonText(list->account);
    document["types"] = std::move(types);
    render::WriteJson(context.out, document);
    return 0;
  }
  render::Table table;
  table.AddFitColumn("Type", render::Align::kLeft);
  table.AddFitColumn("Side", render::Align::kLeft);
  table.AddFitColumn("Check", render::Align::kLeft);
  table.AddFitColumn("Default", render::Align::kLeft);
  table.AddFitColumn("Uses", render::Align::kRight);
  for (const TypeLine& t : list->types) {
    table.AddRow({t.name, SideWord(t.isDeposit), t.isCheck ? "yes" : "", t.isDefault ? "yes" : "",
                  std::to_string(t.uses)});
  }
  std::string out;
  table.Write(out);
  context.out << out;
  return 0;
}

// `type new`, `rename` and `remove`: {account, type, previous, side, uses}.
void PrintChangeJson(Context& context, const TypeChange& c) {
  using render::Json;
  Json document = Json::object();
  document["account"] = render::JsonText(c.account);
  document["type"] = render::JsonText(c.type);
  document["previous"] = c.previous.empty() ? Json(nullptr) : render::JsonText(c.previous);
  document["side"] = SideWord(c.isDeposit);
  document["uses"] = c.uses;
  render::WriteJson(context.out, document);
}

int NewType(Context& context, const TypeOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::NewType(book, options.account, options.name, options.deposit,
                                options.check);
      },
      [&](const TypeChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Created " << SideWord(c.isDeposit) << " type \"" << c.type << "\" in \""
                    << c.account << "\"\n";
      });
}

int RenameType(Context& context, const TypeOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::RenameType(book, options.account, options.name, SideOf(options),
                                   options.newName);
      },
      [&](const TypeChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Renamed " << SideWord(c.isDeposit) << " type \"" << c.previous
                    << "\" to \"" << c.type << "\"\n";
      });
}

int RemoveType(Context& context, const TypeOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::RemoveType(book, options.account, options.name, SideOf(options));
      },
      [&](const TypeChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Removed " << SideWord(c.isDeposit) << " type \"" << c.type << "\"";
        if (c.uses > 0) {
          context.out << "; its " << c.uses << (c.uses == 1 ? " entry keeps" : " entries keep")
                      << " it";
        }
        context.out << '\n';
      });
}

int SetDefaults(Context& context, const TypeOptions& options) {
  if (!options.defaultDebit && !options.defaultDeposit) {
    Fail(context, "type default needs --debit NAME, --deposit NAME or both");
    return 2;  // a usage error
  }
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::SetDefaultTypes(book, options.account, options.defaultDebit,
                                        options.defaultDeposit);
      },
      [&](const TypeDefaults& d) {
        if (options.json) {
          using render::Json;
          const auto name_or_null = [](const std::string& name) {
            return name.empty() ? Json(nullptr) : render::JsonText(name);
          };
          Json document = Json::object();
          document["account"] = render::JsonText(d.account);
          document["debit"] = name_or_null(d.debit);
          document["deposit"] = name_or_null(d.deposit);
          render::WriteJson(context.out, document);
          return;
        }
        auto text = [](const std::string& name) { return name.empty() ? "(none)" : "\"" + name + "\""; };
        context.out << "Default types of \"" << d.account << "\": debit " << text(d.debit)
                    << ", deposit " << text(d.deposit) << '\n';
      });
}

int ImportTypes(Context& context, const TypeOptions& options) {
  return ChangeBook(
      context, [&](Book& book) { return folvant::ImportTypes(book, options.account, options.from); },
      [&](const TypeImport& i) {
        if (options.json) {
          using render::Json;
          Json added = Json::array();
          for (const std::string& name : i.added) added.push_back(render::JsonText(name));
          Json document = Json::object();
          document["account"] = render::JsonText(i.account);
          document["from"] = render::JsonText(i.from);
          document["added"] = std::move(added);
          render::WriteJson(context.out, document);
          return;
        }
        context.out << "Took " << i.added.size() << (i.added.size() == 1 ? " type" : " types")
                    << " from \"" << i.from << "\" into \"" << i.account << "\"";
        for (std::size_t n = 0; n < i.added.size(); ++n) {
          context.out << (n == 0 ? ": " : ", ") << '"' << i.added[n] << '"';
        }
        context.out << '\n';
      });
}

}  // namespace

void RegisterTypeCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* type = app.add_subcommand("type", "An account's entry types");
  type->require_subcommand(1);
  auto options = std::make_shared<TypeOptions>();
  const char* kAccount = "Name or number of the account";
  auto sides = [&options](CLI::App* command, const char* what) {
    auto* debit = command->add_flag("--debit", options->debit, what);
    auto* deposit = command->add_flag("--deposit", options->deposit, what);
    debit->excludes(deposit);
  };

  CLI::App* list = type->add_subcommand("list", "List the account's entry types");
  list->add_option("ACCOUNT", options->account, kAccount)->required();
  list->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(list, [&context, options]() { return ListTypes(context, *options); });

  CLI::App* create = type->add_subcommand("new", "Create an entry type");
  create->add_option("ACCOUNT", options->account, kAccount)->required();
  create->add_option("NAME", options->name, "Name of the type")->required();
  sides(create, "A debit type (the default) / a deposit type");
  create->add_flag("--check", options->check, "Entries of the type are checks");
  create->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(create, [&context, options]() { return NewType(context, *options); });

  CLI::App* rename = type->add_subcommand("rename", "Give an entry type a new name");
  rename->add_option("ACCOUNT", options->account, kAccount)->required();
  rename->add_option("NAME", options->name, "Name of the type")->required();
  rename->add_option("NEW_NAME", options->newName, "Its new name")->required();
  sides(rename, "The debit / deposit type of that name");
  rename->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(rename, [&context, options]() { return RenameType(context, *options); });

  CLI::App* remove =
      type->add_subcommand("remove", "Retire an entry type (its entries keep it)");
  remove->add_option("ACCOUNT", options->account, kAccount)->required();
  remove->add_option("NAME", options->name, "Name of the type")->required();
  sides(remove, "The debit / deposit type of that name");
  remove->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(remove, [&context, options]() { return RemoveType(context, *options); });

  CLI::App* defaults = type->add_subcommand("default", "Choose the default debit and deposit types");
  defaults->add_option("ACCOUNT", options->account, kAccount)->required();
  defaults->add_option("--debit", options->defaultDebit, "Default debit type");
  defaults->add_option("--deposit", options->defaultDeposit, "Default deposit type");
  defaults->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(defaults, [&context, options]() { return SetDefaults(context, *options); });

  CLI::App* import =
      type->add_subcommand("import", "Copy the types another account has and this one lacks");
  import->add_option("ACCOUNT", options->account, kAccount)->required();
  import->add_option("--from", options->from, "The account to copy from")->required();
  import->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(import, [&context, options]() { return ImportTypes(context, *options); });
}

}  // namespace folvant::app
