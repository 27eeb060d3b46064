#include "folvant/model/ZELMAccountFolder.h"

#include <utility>

#include "folvant/platform/Localized.h"
#include "folvant/platform/Log.h"

namespace folvant {

std::optional<ZELMAccountFolder::EntryList> EntriesFromStoredArray(const plist::Value* array) {
  if (array == nullptr) return std::nullopt;
  const plist::Array* elements = array->asArray();
  if (elements == nullptr) {
    ZELMLog("Invalid theArray supplied to -[ZELMAccount InitEntries]");
    return std::nullopt;
  }
  return ZELMAccountEntry::entriesFromStoredArray(*elements);
}

ZELMAccountFolder::ZELMAccountFolder() : name_(Localized("Untitled")) {}

ZELMAccountFolder::ZELMAccountFolder(const plist::Dictionary* dict) : ZELMAccountFolder() {
  if (dict == nullptr) return;
  if (const plist::Value* entries = dict->find("entries")) InitEntries(entries);
  if (const plist::Value* name = dict->find("name")) {
    // A name of another kind counts as no name.
    const std::string* text = name->asString();
    setName(text != nullptr ? std::optional<std::string_view>(*text) : std::nullopt);
  }
}

plist::Dictionary ZELMAccountFolder::asDictionary() const {
  plist::Array stored;
  stored.reserve(entries_.size());
  for (const auto& entry : entries_) stored.emplace_back(entry->asDictionary());
  plist::Dictionary dict;
  dict.append("entries", std::move(stored));
  dict.append("name", name_);
  return dict;
}

const ZELMAccountFolder::EntryList* ZELMAccountFolder::InitEntries(const plist::Value* array) {
  std::optional<EntryList> entries = EntriesFromStoredArray(array);
  if (!entries) return nullptr;
  setEntries(std::move(entries));
  return &entries_;
}

void ZELMAccountFolder::setEntries(std::optional<EntryList> entries) {
  entries_ = entries ? std::move(*entries) : EntryList();
}

void ZELMAccountFolder::setName(std::optional<std::string_view> name) {
  name_ = name ? std::string(*name) : Localized("Untitled");
}

double ZELMAccountFolder::total() const {
  double sum = 0.0;
  for (const auto& entry : entries_) {
    if (!entry->GetVoid()) sum += entry->GetAmount();
  }
  return sum;
}

}  // namespace folvant
