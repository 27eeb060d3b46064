#include "folvant/model/ZELMAccountEntryType.h"

#include "folvant/platform/Text.h"

namespace folvant {

ZELMAccountEntryType::ZELMAccountEntryType(const plist::Dictionary* dict) {
  if (dict == nullptr) return;
  if (const plist::Value* v = dict->find("name")) {
    if (const std::string* name = v->asString()) name_ = *name;
  }
  if (const plist::Value* v = dict->find("isCheck")) isCheck_ = v->boolValue();
  if (const plist::Value* v = dict->find("isDeposit")) isDeposit_ = v->boolValue();
  if (const plist::Value* v = dict->find("number")) number_ = v->intValue();
}

plist::Dictionary ZELMAccountEntryType::asDictionary() const {
  plist::Dictionary dict;
  dict.reserve(4);
  dict.append("name", name_);
  dict.append("isCheck", isCheck_);
  dict.append("isDeposit", isDeposit_);
  dict.append("number", number_);
  return dict;
}

void ZELMAccountEntryType::SetName(std::optional<std::string_view> name) {
  if (name) name_ = std::string(*name);
}

int ZELMAccountEntryType::NameIsGreaterThan(const ZELMAccountEntryType& other) const {
  return platform::CaseInsensitiveCompare(name_, other.name_);
}

}  // namespace folvant
