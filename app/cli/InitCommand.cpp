#include <ostream>

#include "folvant/book/Book.h"
#include "app/cli/BookAccess.h"
#include "app/cli/Options.h"
#include "app/cli/Commands.h"

namespace folvant::app {

void RegisterInitCommand(CLI::App& app, Context& context, CommandList& actions) {
  auto directory = std::make_shared<std::string>();
  CLI::App* init = app.add_subcommand("init", "Create a new, empty book");
  init->add_option("DIR", *directory, "Folder of the new book (default: --book or $FOLVANT_BOOK)");
  actions.emplace_back(init, [&context, directory]() {
    const auto path = LocateBook(directory->empty() ? context.book : *directory);
    auto book = Book::Create(path);
    if (!book) return Fail(context, book.error());
    context.out << "Created a book in " << path.string() << '\n';
    return 0;
  });
}

}  // namespace folvant::app
