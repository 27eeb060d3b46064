#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

// A named, hand-made collection of entries kept beside an account's register. The folder owns
// its entries: an entry filed here lives only here, not also in the account's main list. The
// account owns its folders through std::shared_ptr and sets itself as the account of their
// entries.
class ZELMAccountFolder {
 public:
  using EntryList = std::vector<std::shared_ptr<ZELMAccountEntry>>;

  // An empty folder named by the localized "Untitled".
  ZELMAccountFolder();
  // A new folder, then "entries" (through InitEntries) and "name" when present. nullptr: a new
  // folder.
  explicit ZELMAccountFolder(const plist::Dictionary* dict);
  ZELMAccountFolder(const ZELMAccountFolder&) = delete;
  ZELMAccountFolder& operator=(const ZELMAccountFolder&) = delete;

  // "entries" (the entries' stored forms) and "name", always written.
  plist::Dictionary asDictionary() const;

  // Builds the entry list from stored entries and returns it; nullptr for a missing argument or
  // one that is not an array (with a message for the latter).
  const EntryList* InitEntries(const plist::Value* array);
  // The list becomes these entries (nullopt: an empty list).
  void setEntries(std::optional<EntryList> entries);
  const EntryList& entries() const { return entries_; }

  const std::string& name() const { return name_; }
  // nullopt gives the localized "Untitled".
  void setName(std::optional<std::string_view> name);

  // The sum of the amounts of the entries that are not void.
  double total() const;

 private:
  friend class ZELMAccount;  // files entries into the shown folder and takes them out
  EntryList& mutableEntries() { return entries_; }

  std::string name_;
  EntryList entries_;
};

// The entries that a stored array holds: one per element that is a dictionary (an element of
// another kind is skipped with a message). nullopt for a missing argument, and, with a message,
// for one that is not an array. Shared by the account's register and its folders.
std::optional<ZELMAccountFolder::EntryList> EntriesFromStoredArray(const plist::Value* array);

}  // namespace folvant
