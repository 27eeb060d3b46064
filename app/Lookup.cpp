#include "app/Lookup.h"

#include "app/Output.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"

namespace folvant::app {

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

std::string EntryTypeName(const ZELMAccount& account, const ZELMAccountEntry& entry) {
  if (auto type = account.accountEntryTypeForNumber(entry.GetType())) return type->GetName();
  return {};
}

std::string EntryCategoryName(const ZELMAccount& account, const ZELMAccountEntry& entry) {
  if (auto category = account.accountEntryCategoryForNumber(entry.GetCategory())) {
    return category->fullName();
  }
  return entry.splitLineItems().empty() ? std::string() : std::string("(split)");
}

}  // namespace folvant::app
