#pragma once

#include <string>
#include <string_view>

#include "folvant/platform/Text.h"

namespace folvant {

class ZELMAccount;
class ZELMAccountEntry;

// The name of the entry's type in the account; empty when the type is unknown.
std::string EntryTypeName(const ZELMAccount& account, const ZELMAccountEntry& entry);
// The full name of the entry's category; "(split)" for a split entry without one; else empty.
std::string EntryCategoryName(const ZELMAccount& account, const ZELMAccountEntry& entry);

// The first item of `list` (folders, smart folders) whose name is `name`, ignoring case;
// nullptr when there is none.
template <typename List>
typename List::value_type FindNamed(const List& list, std::string_view name) {
  for (const auto& item : list) {
    if (platform::CaseInsensitiveEqual(item->name(), name)) return item;
  }
  return nullptr;
}

}  // namespace folvant
