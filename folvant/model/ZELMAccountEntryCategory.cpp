#include "folvant/model/ZELMAccountEntryCategory.h"

#include <algorithm>
#include <utility>

#include "folvant/platform/Text.h"

namespace folvant {

namespace {

std::shared_ptr<ZELMAccountEntryCategory> MakePlainChild(const plist::Dictionary* dict) {
  return std::make_shared<ZELMAccountEntryCategory>(dict);
}

void CollectDescendants(const ZELMAccountEntryCategory& category,
                        std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& out) {
  for (const auto& child : category.children()) {
    out.push_back(child);
    CollectDescendants(*child, out);
  }
}

}  // namespace

ZELMAccountEntryCategory::ZELMAccountEntryCategory(const plist::Dictionary* dict,
                                                   ZELMAccountEntryCategory* parent)
    : ZELMAccountEntryCategory(dict, parent, &MakePlainChild) {}

ZELMAccountEntryCategory::ZELMAccountEntryCategory(const plist::Dictionary* dict,
                                                   ZELMAccountEntryCategory* parent,
                                                   ChildFactory make_child)
    : parent_(parent) {
  if (dict == nullptr) return;
  if (const plist::Value* v = dict->find("name")) {
    if (const std::string* name = v->asString()) name_ = *name;
  }
  // Read without checks: a missing number converts to 0 like any absent value.
  const plist::Value* number = dict->find("number");
  number_ = number != nullptr ? number->intValue() : 0;
  if (const plist::Value* v = dict->find("children")) {
    if (const plist::Array* children = v->asArray()) {
      for (const plist::Value& element : *children) {
        if (const plist::Dictionary* d = element.asDictionary()) addChild(make_child(d));
      }
    }
  }
}

ZELMAccountEntryCategory::~ZELMAccountEntryCategory() {
  // Children that live on elsewhere must not point at a parent that is gone.
  for (const auto& child : children_) {
    if (child->parent_ == this) child->parent_ = nullptr;
  }
}

plist::Dictionary ZELMAccountEntryCategory::asDictionary() const {
  plist::Array children;
  children.reserve(children_.size());
  for (const auto& child : children_) children.emplace_back(child->asDictionary());
  plist::Dictionary dict;
  dict.reserve(3);
  dict.append("name", name_);
  dict.append("number", number_);
  dict.append("children", std::move(children));
  return dict;
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountEntryCategory::copy() const {
  const plist::Dictionary stored = asDictionary();
  return std::make_shared<ZELMAccountEntryCategory>(&stored);
}

void ZELMAccountEntryCategory::setName(std::optional<std::string_view> name) {
  if (name) name_ = std::string(*name);
}

std::vector<ZELMAccountEntryCategory*> ZELMAccountEntryCategory::parents() const {
  std::vector<ZELMAccountEntryCategory*> chain;
  for (ZELMAccountEntryCategory* p = parent_; p != nullptr; p = p->parent_) chain.push_back(p);
  std::reverse(chain.begin(), chain.end());
  return chain;
}

std::string ZELMAccountEntryCategory::fullName() const {
  std::string full;
  for (const ZELMAccountEntryCategory* p : parents()) {
    full += p->name_;
    full += ':';
  }
  full += name_;
  return full;
}

void ZELMAccountEntryCategory::addChild(std::shared_ptr<ZELMAccountEntryCategory> child) {
  if (child == nullptr) return;
  insertChild(child, static_cast<std::int32_t>(children_.size()));
}

void ZELMAccountEntryCategory::insertChild(std::shared_ptr<ZELMAccountEntryCategory> child,
                                           std::int32_t index) {
  if (child == nullptr || index < 0 || static_cast<std::size_t>(index) > children_.size()) {
    return;
  }
  // The order matters: the former parent removes every occurrence, so a child added again to
  // its own parent leaves the list while still naming that parent.
  ZELMAccountEntryCategory* former = child->parent_;
  children_.insert(children_.begin() + index, child);
  if (former != nullptr) former->removeChild(child.get());
  child->parent_ = this;
  SortOwnChildren();
}

void ZELMAccountEntryCategory::removeChildAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= children_.size()) return;
  children_.erase(children_.begin() + index);
}

void ZELMAccountEntryCategory::removeChild(const ZELMAccountEntryCategory* child) {
  std::erase_if(children_, [child](const auto& held) { return held.get() == child; });
}

std::vector<std::shared_ptr<ZELMAccountEntryCategory>> ZELMAccountEntryCategory::allChildren()
    const {
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> all;
  CollectDescendants(*this, all);
  return all;
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountEntryCategory::childWithName(
    std::optional<std::string_view> name) const {
  if (!name) return nullptr;
  for (const auto& child : children_) {
    if (platform::CaseInsensitiveEqual(child->name_, *name)) return child;
  }
  return nullptr;
}

std::shared_ptr<ZELMAccountEntryCategory> ZELMAccountEntryCategory::childWithFullName(
    std::optional<std::string_view> fullName) const {
  if (!fullName) return nullptr;
  if (platform::CaseInsensitiveEqual(this->fullName(), *fullName)) {
    return std::const_pointer_cast<ZELMAccountEntryCategory>(weak_from_this().lock());
  }
  for (auto& child : allChildren()) {
    if (platform::CaseInsensitiveEqual(child->fullName(), *fullName)) return child;
  }
  return nullptr;
}

void ZELMAccountEntryCategory::sortChildren() {
  SortOwnChildren();
  for (const auto& child : children_) child->sortChildren();
}

int ZELMAccountEntryCategory::nameIsGreaterThan(const ZELMAccountEntryCategory& other) const {
  return platform::CaseInsensitiveCompare(name_, other.name_);
}

void ZELMAccountEntryCategory::SortOwnChildren() {
  std::stable_sort(children_.begin(), children_.end(),
                   [](const auto& a, const auto& b) { return a->nameIsGreaterThan(*b) < 0; });
}

}  // namespace folvant
