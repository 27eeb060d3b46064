#include "app/Lookup.h"

#include "app/Output.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"

namespace folvant::app {

std::shared_ptr<ZELMAccount> FindAccount(Context& context, const Book& book,
                                         std::string_view name) {
  auto account = book.FindAccount(name);
  if (!account) Fail(context, "no account named \"" + std::string(name) + "\" in the book");
  return account;
}

std::shared_ptr<ZELMAccount> OpenAccount(Context& context, std::unique_ptr<Book>& book,
                                         std::string_view name) {
  book = OpenBook(context);
  if (!book) return nullptr;
  return FindAccount(context, *book, name);
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
