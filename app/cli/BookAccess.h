#pragma once

#include <filesystem>
#include <memory>
#include <string_view>

#include "app/cli/Program.h"
#include "folvant/book/Book.h"
#include "folvant/platform/Text.h"

namespace folvant {
class ZELMAccount;
}  // namespace folvant

namespace folvant::app {

// Opening the book and finding what a command names. On failure these print one line on the
// error stream and return nullptr (or false).

// Where the book is: --book, else $FOLVANT_BOOK, else $XDG_DATA_HOME/folvant/book (with
// ~/.local/share as the default data directory).
std::filesystem::path LocateBook(std::string_view option);
// Opens the book named by the global options, for reading or for changing.
std::unique_ptr<Book> OpenBook(Context& context, Book::Access access = Book::Access::kRead);
// Saves the book.
bool SaveBook(Context& context, Book& book);
// Prints "folvant: <message>" on the error stream and returns the failure status 1.
int Fail(Context& context, std::string_view message);
// Prints the error (and with --verbose what lies behind it) and returns 1.
int Fail(Context& context, const BookError& error);
// Prints the book's warnings, one line each.
void PrintWarnings(Context& context, Book& book);

// The account of that name or number, for reading.
std::shared_ptr<ZELMAccount> FindAccount(Context& context, Book& book, std::string_view name);
// Opens the book into `book` and finds the account in it, for reading or, with
// Book::Access::kWrite, for changing.
std::shared_ptr<ZELMAccount> OpenAccount(Context& context, std::unique_ptr<Book>& book,
                                         std::string_view name,
                                         Book::Access access = Book::Access::kRead);

// Runs one change of the book as a command: opens the book for changing, calls `change(book)`
// (a BookResult), prints the book's warnings, and on success saves and calls `report` with the
// result. The exit status: 0, or 1 with the error printed and nothing saved.
template <typename Change, typename Report>
int ChangeBook(Context& context, Change&& change, Report&& report) {
  auto book = OpenBook(context, Book::Access::kWrite);
  if (!book) return 1;
  auto done = change(*book);
  PrintWarnings(context, *book);
  if (!done) return Fail(context, done.error());
  if (!SaveBook(context, *book)) return 1;
  report(*done);
  return 0;
}

}  // namespace folvant::app
