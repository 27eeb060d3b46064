#include "folvant/book/Names.h"

#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"

namespace folvant {

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

}  // namespace folvant
