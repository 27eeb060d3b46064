#include "folvant/book/Folders.h"

#include <memory>
#include <utility>

#include "folvant/book/Book.h"
#include "folvant/book/Names.h"
#include "folvant/filters/ConditionSyntax.h"
#include "folvant/filters/ZELMFilter.h"
#include "folvant/model/ZELMAccount.h"
#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountFolder.h"
#include "folvant/values/LVCurrency.h"

namespace folvant {
namespace {

using Kind = BookError::Kind;
using Group = ZELMFilterConditionGroup;

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

BookError NotIn(const ZELMAccount& account, const std::string& what) {
  return BookError::Of(Kind::kNotFound, "no " + what + " in " + Quote(account.GetName()));
}

// Files the entry in `target` (nullptr: the main list), taking it out of wherever it was. The
// account files new entries into the shown folder, so the target is shown for the move.
void MoveEntry(ZELMAccount& account, const std::shared_ptr<ZELMAccountEntry>& entry,
               const std::shared_ptr<ZELMAccountFolder>& target) {
  account.RemoveEntry(entry.get());
  const std::shared_ptr<ZELMAccountFolder> shown = account.folder();
  account.setFolder(target);
  account.AddEntry(entry);
  account.setFolder(shown);
}

std::string JoinWord(std::int32_t logic) {
  if (logic == Group::kLogicNarrows) return "and";
  if (logic == Group::kLogicAdds) return "or";
  return std::to_string(logic);
}

std::string MatchWord(std::int32_t qualifier) {
  if (qualifier == Group::kQualifierAll) return "all";
  if (qualifier == Group::kQualifierAny) return "any";
  return std::to_string(qualifier);
}

}  // namespace

BookResult<FolderList> ListFolders(Book& book, std::string_view name) {
  auto found = book.FindAccount(name);
  if (!found) return Unexpected{found.error()};
  const ZELMAccount& account = **found;
  FolderList list;
  list.account = account.GetName();
  list.currency = account.currency() ? account.currency()->code() : std::string();
  list.registerEntries = account.GetEntries().size();
  for (const auto& folder : account.folders()) {
    list.folders.push_back({folder->name(), folder->entries().size(), folder->total()});
  }
  return list;
}

BookResult<FolderChange> NewFolder(Book& book, std::string_view name, std::string_view folder) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (folder.empty()) return Unexpected{BookError::Of(Kind::kInvalid, "a folder needs a name")};
  if (FindNamed(account.folders(), folder)) {
    return Unexpected{BookError::Of(
        Kind::kExists,
        "a folder named " + Quote(folder) + " already exists in " + Quote(account.GetName()))};
  }
  auto added = std::make_shared<ZELMAccountFolder>();
  added->setName(std::string(folder));
  account.addFolder(added);
  return FolderChange{account.GetName(), added->name(), 0};
}

BookResult<FolderChange> MoveEntries(Book& book, std::string_view name,
                                     const std::vector<std::int32_t>& numbers,
                                     std::string_view folder) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  std::shared_ptr<ZELMAccountFolder> target;
  if (!folder.empty() && !(target = FindNamed(account.folders(), folder))) {
    return Unexpected{NotIn(account, "folder named " + Quote(folder))};
  }
  std::vector<std::shared_ptr<ZELMAccountEntry>> entries;
  for (std::int32_t number : numbers) {
    auto entry = account.GetEntryWithNumber(number);
    if (!entry) return Unexpected{NotIn(account, "entry number " + std::to_string(number))};
    entries.push_back(std::move(entry));
  }
  for (const auto& entry : entries) MoveEntry(account, entry, target);
  return FolderChange{account.GetName(), target ? target->name() : std::string(), entries.size()};
}

BookResult<FolderChange> RemoveFolder(Book& book, std::string_view name, std::string_view folder) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto removed = FindNamed(account.folders(), folder);
  if (!removed) return Unexpected{NotIn(account, "folder named " + Quote(folder))};
  // The folder holds its entries itself; copied, since each move takes one out of it.
  const ZELMAccountFolder::EntryList entries = removed->entries();
  for (const auto& entry : entries) MoveEntry(account, entry, nullptr);
  account.removeFolder(removed.get());
  return FolderChange{account.GetName(), removed->name(), entries.size()};
}

BookResult<SmartFolderList> ListSmartFolders(Book& book, std::string_view name) {
  auto found = book.FindAccount(name);
  if (!found) return Unexpected{found.error()};
  const ZELMAccount& account = **found;
  SmartFolderList list;
  list.account = account.GetName();
  for (const auto& filter : account.smartFolders()) {
    SmartFolderLine line{filter->name(), {}};
    for (const auto& group : filter->conditionGroups()) {
      SmartFolderGroup words{JoinWord(group->logic()), MatchWord(group->qualifier()), {}};
      for (const auto& condition : group->conditions()) {
        words.conditions.push_back(FormatCondition(*condition));
      }
      line.groups.push_back(std::move(words));
    }
    list.smartFolders.push_back(std::move(line));
  }
  return list;
}

BookResult<FolderChange> NewSmartFolder(Book& book, std::string_view name,
                                        std::string_view smartFolder,
                                        const std::vector<std::string>& conditions, bool any) {
  std::vector<std::shared_ptr<ZELMFilterCondition>> parsed;
  for (const std::string& text : conditions) {
    std::string error;
    auto condition = ParseCondition(text, error);
    if (!condition) return Unexpected{BookError::Of(Kind::kInvalid, error)};
    parsed.push_back(std::move(condition));
  }
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  if (smartFolder.empty()) {
    return Unexpected{BookError::Of(Kind::kInvalid, "a smart folder needs a name")};
  }
  if (FindNamed(account.smartFolders(), smartFolder)) {
    return Unexpected{BookError::Of(Kind::kExists, "a smart folder named " + Quote(smartFolder) +
                                                       " already exists in " +
                                                       Quote(account.GetName()))};
  }
  // Every condition in one group that all must pass; or, with `any`, one group per condition
  // where the first narrows and the others add, so that an entry passing any one is shown.
  auto filter = std::make_shared<ZELMFilter>();
  filter->setName(std::string(smartFolder));
  std::shared_ptr<Group> group;
  for (auto& condition : parsed) {
    if (!group || any) {
      group = std::make_shared<Group>();
      group->setQualifier(Group::kQualifierAll);
      group->setLogic(filter->conditionGroups().empty() ? Group::kLogicNarrows : Group::kLogicAdds);
      filter->addConditionGroup(group);
    }
    group->addCondition(std::move(condition));
  }
  account.addSmartFolder(filter);
  return FolderChange{account.GetName(), filter->name(), 0};
}

BookResult<FolderChange> RemoveSmartFolder(Book& book, std::string_view name,
                                           std::string_view smartFolder) {
  auto found = book.AccountToChange(name);
  if (!found) return Unexpected{found.error()};
  ZELMAccount& account = **found;
  auto removed = FindNamed(account.smartFolders(), smartFolder);
  if (!removed) return Unexpected{NotIn(account, "smart folder named " + Quote(smartFolder))};
  account.removeSmartFolder(removed.get());
  return FolderChange{account.GetName(), removed->name(), 0};
}

}  // namespace folvant
