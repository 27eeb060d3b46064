#include <ostream>

#include "folvant/book/Book.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"
#include "app/render/Json.h"

namespace folvant::app {

void RegisterInitCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto directory = std::make_shared<std::string>();
  auto json = std::make_shared<bool>(false);
  CLI::App* init = app.add_subcommand("init", "Create a new, empty book");
  init->add_option("DIR", *directory, "Folder of the new book (default: --book or $FOLVANT_BOOK)");
  init->add_flag("--json", *json, "Print JSON");
  actions.emplace_back(init, [&context, directory, json]() {
    const auto path = LocateBook(directory->empty() ? context.book : *directory);
    auto book = Book::Create(path);
    if (!book) return Fail(context, book.error());
    if (*json) {
      render::Json document = render::Json::object();
      document["book"] = render::JsonText(path.string());
      render::WriteJson(context.out, document);
    } else {
      context.out << "Created a book in " << path.string() << '\n';
    }
    return 0;
  });
}

}  // namespace folvant::app
