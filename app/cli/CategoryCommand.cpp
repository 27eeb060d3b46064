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
#include "folvant/book/Categories.h"

namespace folvant::app {
namespace {

struct CategoryOptions {
  std::string category;
  std::string target;  // rename: the new name; move: the new parent
  bool top = false;
  std::optional<std::string> reassign;
  bool json = false;
};

int ListCategories(Context& context, const CategoryOptions& options) {
  auto book = OpenBook(context);
  if (!book) return 1;
  auto list = folvant::ListCategories(*book);
  PrintWarnings(context, *book);
  if (!list) return Fail(context, list.error());
  if (options.json) {
    using render::Json;
    Json document = Json::array();
    for (const CategoryLine& line : *list) {
      document.push_back({{"name", render::JsonText(line.name)},
                          {"fullName", render::JsonText(line.fullName)},
                          {"number", line.number},
                          {"depth", line.depth},
                          {"uses", line.uses}});
    }
    render::WriteJson(context.out, document);
    return 0;
  }
  render::Table table;
  table.AddFitColumn("Category", render::Align::kLeft);
  table.AddFitColumn("Uses", render::Align::kRight);
  for (const CategoryLine& line : *list) {
    table.AddRow({std::string(2 * line.depth, ' ') + line.name, std::to_string(line.uses)});
  }
  std::string out;
  table.Write(out);
  context.out << out;
  return 0;
}

// `category new`, `rename`, `move` and `remove`: {category, previous, reassignedTo, moved}.
void PrintChangeJson(Context& context, const CategoryChange& c) {
  using render::Json;
  const auto name_or_null = [](const std::string& name) {
    return name.empty() ? Json(nullptr) : render::JsonText(name);
  };
  Json document = Json::object();
  document["category"] = name_or_null(c.category);
  document["previous"] = name_or_null(c.previous);
  document["reassignedTo"] = name_or_null(c.reassignedTo);
  document["moved"] = c.moved;
  render::WriteJson(context.out, document);
}

int NewCategory(Context& context, const CategoryOptions& options) {
  return ChangeBook(
      context, [&](Book& book) { return folvant::NewCategory(book, options.category); },
      [&](const CategoryChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Created category \"" << c.category << "\"\n";
      });
}

int RenameCategory(Context& context, const CategoryOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) { return folvant::RenameCategory(book, options.category, options.target); },
      [&](const CategoryChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Renamed category \"" << c.previous << "\" to \"" << c.category << "\"\n";
      });
}

int MoveCategory(Context& context, const CategoryOptions& options) {
  if (options.target.empty() && !options.top) {
    Fail(context, "category move needs --to PARENT or --top");
    return 2;  // a usage error
  }
  return ChangeBook(
      context,
      [&](Book& book) {
        return folvant::MoveCategory(book, options.category,
                                     options.top ? std::string() : options.target);
      },
      [&](const CategoryChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Moved category \"" << c.previous << "\" to \"" << c.category << "\"\n";
      });
}

int RemoveCategory(Context& context, const CategoryOptions& options) {
  return ChangeBook(
      context,
      [&](Book& book) {
        auto removed = folvant::RemoveCategory(book, options.category, options.reassign);
        if (!removed && !options.reassign && removed.error().message.ends_with("move to")) {
          BookError error = removed.error();
          error.message += " with --reassign PATH";
          return decltype(removed){Unexpected{std::move(error)}};
        }
        return removed;
      },
      [&](const CategoryChange& c) {
        if (options.json) return PrintChangeJson(context, c);
        context.out << "Removed category \"" << c.previous << "\"";
        if (c.moved > 0) {
          context.out << "; its " << c.moved << (c.moved == 1 ? " use" : " uses") << " moved to \""
                      << c.reassignedTo << "\"";
        }
        context.out << '\n';
      });
}

}  // namespace

void RegisterCategoryCommand(CLI::App& app, Context& context, CommandList& actions) {
  CLI::App* category =
      app.add_subcommand("category", "The book's categories, shared by every account");
  category->require_subcommand(1);
  auto options = std::make_shared<CategoryOptions>();
  const char* kPath = "Full name of the category, e.g. Food:Groceries";

  CLI::App* list = category->add_subcommand("list", "Show the category tree and each one's uses");
  list->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(list, [&context, options]() { return ListCategories(context, *options); });

  CLI::App* create = category->add_subcommand("new", "Create a category (its parent must exist)");
  create->add_option("CATEGORY", options->category, kPath)->required();
  create->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(create, [&context, options]() { return NewCategory(context, *options); });

  CLI::App* rename = category->add_subcommand("rename", "Give a category a new name");
  rename->add_option("CATEGORY", options->category, kPath)->required();
  rename->add_option("NAME", options->target, "Its new name (one level, without \":\")")
      ->required();
  rename->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(rename, [&context, options]() { return RenameCategory(context, *options); });

  CLI::App* move = category->add_subcommand("move", "Put a category under another one");
  move->add_option("CATEGORY", options->category, kPath)->required();
  auto* to = move->add_option("--to", options->target, "The new parent's full name");
  auto* top = move->add_flag("--top", options->top, "Move it to the top level");
  to->excludes(top);
  move->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(move, [&context, options]() { return MoveCategory(context, *options); });

  CLI::App* remove = category->add_subcommand(
      "remove", "Remove a category; one in use only with --reassign");
  remove->add_option("CATEGORY", options->category, kPath)->required();
  remove->add_option("--reassign", options->reassign,
                     "Category that takes over its entries, line items and schedules");
  remove->add_flag("--json", options->json, "Print JSON");
  actions.emplace_back(remove, [&context, options]() { return RemoveCategory(context, *options); });
}

}  // namespace folvant::app
