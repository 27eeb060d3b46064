#include "folvant/model/ZELMAccountEntrySplitLineItem.h"

namespace folvant {

ZELMAccountEntrySplitLineItem::ZELMAccountEntrySplitLineItem(
    std::int32_t category, std::optional<std::string_view> description,
    std::optional<std::string_view> toFrom, double amount, double exchangedAmount)
    : amount_(amount), exchangedAmount_(exchangedAmount), category_(category) {
  setDescription(description);
  setToFrom(toFrom);
}

ZELMAccountEntrySplitLineItem::ZELMAccountEntrySplitLineItem(const plist::Dictionary* dict) {
  if (dict == nullptr) return;
  // Items are read as written, without checks: a value of another kind converts as numbers
  // convert, and a text of another kind leaves the text empty.
  if (const plist::Value* v = dict->find("category")) category_ = v->intValue();
  if (const plist::Value* v = dict->find("toFrom")) {
    if (const std::string* s = v->asString()) toFrom_ = *s;
  }
  if (const plist::Value* v = dict->find("description")) {
    if (const std::string* s = v->asString()) description_ = *s;
  }
  if (const plist::Value* v = dict->find("amount")) amount_ = v->doubleValue();
  if (const plist::Value* v = dict->find("exchangedAmount")) exchangedAmount_ = v->doubleValue();
}

plist::Dictionary ZELMAccountEntrySplitLineItem::asDictionary() const {
  plist::Dictionary dict;
  dict.reserve(5);
  dict.append("category", category_);
  dict.append("toFrom", toFrom_);
  dict.append("description", description_);
  dict.append("amount", amount());
  dict.append("exchangedAmount", exchangedAmount_);
  return dict;
}

void ZELMAccountEntrySplitLineItem::setToFrom(std::optional<std::string_view> toFrom) {
  toFrom_ = toFrom ? std::string(*toFrom) : std::string();
}

void ZELMAccountEntrySplitLineItem::setDescription(std::optional<std::string_view> description) {
  description_ = description ? std::string(*description) : std::string();
}

}  // namespace folvant
