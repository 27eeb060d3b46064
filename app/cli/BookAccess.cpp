#include "app/cli/BookAccess.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "app/cli/Password.h"
#include "folvant/model/ZELMAccount.h"

namespace folvant::app {

std::filesystem::path LocateBook(std::string_view option) {
  if (!option.empty()) return std::filesystem::path(option);
  if (const char* env = std::getenv("FOLVANT_BOOK"); env != nullptr && *env != '\0') {
    return std::filesystem::path(env);
  }
  std::filesystem::path data;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0') {
    data = xdg;
  } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    data = std::filesystem::path(home) / ".local" / "share";
  } else {
    data = ".";
  }
  return data / "folvant" / "book";
}

std::unique_ptr<Book> OpenBook(Context& context, Book::Access access) {
  Book::OpenOptions options;
  options.access = access;
  if (const char* password = std::getenv("FOLVANT_PASSWORD")) options.password = password;
  auto book = Book::Open(LocateBook(context.book), options);
  if (!book) {
    Fail(context, book.error());
    return nullptr;
  }
  // Read once: one line of standard input serves every locked account the command meets.
  auto given = std::make_shared<std::optional<std::optional<std::string>>>();
  (*book)->setPasswordAsker([&context, given](std::string_view account) {
    if (context.passwordStdin && given->has_value()) return **given;
    std::optional<std::string> password = ReadPassword(
        context, "Password for \"" + std::string(account) + "\": ", context.passwordStdin);
    if (context.passwordStdin) *given = password;
    return password;
  });
  return std::move(*book);
}

bool SaveBook(Context& context, Book& book) {
  if (auto failed = book.Save()) {
    Fail(context, *failed);
    return false;
  }
  return true;
}

int Fail(Context& context, std::string_view message) {
  context.err << "folvant: " << message << '\n';
  return 1;
}

int Fail(Context& context, const BookError& error) {
  if (error.kind == BookError::Kind::kLocked) {
    Fail(context, error.message +
                      "; give the password on the terminal, with --password-stdin or in "
                      "FOLVANT_PASSWORD");
    return 1;
  }
  Fail(context, error.hint.empty() ? error.message : error.message + "; " + error.hint);
  if (context.verbose) {
    for (const std::string& detail : error.details) context.err << "  " << detail << '\n';
  } else if (!error.details.empty()) {
    context.err << "folvant: (--verbose lists the " << error.details.size() << " messages)\n";
  }
  return 1;
}

void PrintWarnings(Context& context, Book& book) {
  for (const std::string& warning : book.TakeWarnings()) {
    context.err << "folvant: warning: " << warning << '\n';
  }
}


std::shared_ptr<ZELMAccount> FindAccount(Context& context, Book& book, std::string_view name) {
  auto account = book.FindAccount(name);
  PrintWarnings(context, book);
  if (!account) {
    Fail(context, account.error());
    return nullptr;
  }
  return *account;
}

std::shared_ptr<ZELMAccount> OpenAccount(Context& context, std::unique_ptr<Book>& book,
                                         std::string_view name, Book::Access access) {
  book = OpenBook(context, access);
  if (!book) return nullptr;
  if (access == Book::Access::kRead) return FindAccount(context, *book, name);
  auto account = book->AccountToChange(name);
  PrintWarnings(context, *book);
  if (!account) {
    Fail(context, account.error());
    return nullptr;
  }
  return *account;
}

}  // namespace folvant::app
