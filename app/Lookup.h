#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "folvant/book/Book.h"
#include "app/Program.h"
#include "folvant/platform/Text.h"

namespace folvant {
class ZELMAccount;
class ZELMAccountEntry;
}  // namespace folvant

namespace folvant::app {

// Finding what a command names. The finders print one line and return nullptr when the thing
// is not there.

// The account of that name or number, for reading.
std::shared_ptr<ZELMAccount> FindAccount(Context& context, Book& book, std::string_view name);
// Opens the book into `book` and finds the account in it, for reading or, with
// Book::Access::kWrite, for changing.
std::shared_ptr<ZELMAccount> OpenAccount(Context& context, std::unique_ptr<Book>& book,
                                         std::string_view name,
                                         Book::Access access = Book::Access::kRead);

// The first item of `list` (folders, smart folders) whose name is `name`, ignoring case;
// nullptr when there is none. Prints nothing.
template <typename List>
typename List::value_type FindNamed(const List& list, std::string_view name) {
  for (const auto& item : list) {
    if (platform::CaseInsensitiveEqual(item->name(), name)) return item;
  }
  return nullptr;
}

// The name of the entry's type in the account; empty when the type is unknown.
std::string EntryTypeName(const ZELMAccount& account, const ZELMAccountEntry& entry);
// The full name of the entry's category; "(split)" for a split entry without one; else empty.
std::string EntryCategoryName(const ZELMAccount& account, const ZELMAccountEntry& entry);

}  // namespace folvant::app
