#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// A node of the category tree (Auto, Auto:Fuel, Auto:Fuel:Diesel). The accounts controller
// holds the top-level categories; each category owns its children through std::shared_ptr and
// keeps them sorted by name, and refers to its parent by a plain pointer (not owned). A parent
// clears the parent pointer of its children when it goes; a child taken out with removeChild
// keeps its pointer and must not outlive that parent. Always create categories with
// std::make_shared: childWithFullName can answer the receiver itself.
class ZELMAccountEntryCategory : public std::enable_shared_from_this<ZELMAccountEntryCategory> {
 public:
  ZELMAccountEntryCategory() = default;
  // "name" and "number" (a missing number reads as 0), then each element of "children" made
  // into a category of the receiver's class and added with addChild; elements that are not
  // dictionaries are skipped. `parent` becomes the parent reference. nullptr: a fresh category.
  explicit ZELMAccountEntryCategory(const plist::Dictionary* dict,
                                    ZELMAccountEntryCategory* parent = nullptr);
  ZELMAccountEntryCategory(const ZELMAccountEntryCategory&) = delete;  // copies: copy()
  ZELMAccountEntryCategory& operator=(const ZELMAccountEntryCategory&) = delete;
  virtual ~ZELMAccountEntryCategory();

  // "name", "number" and "children" (the children's stored forms, always written).
  plist::Dictionary asDictionary() const;
  // A deep copy of the subtree through the stored form: always a plain category, no parent.
  std::shared_ptr<ZELMAccountEntryCategory> copy() const;

  const std::string& name() const { return name_; }
  // nullopt is ignored.
  void setName(std::optional<std::string_view> name);
  std::int32_t number() const { return number_; }
  void setNumber(std::int32_t number) { number_ = number; }
  ZELMAccountEntryCategory* parent() const { return parent_; }
  void setParent(ZELMAccountEntryCategory* parent) { parent_ = parent; }
  const std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& children() const {
    return children_;
  }

  // The ancestors from the top-level category down to the direct parent; empty at the top.
  std::vector<ZELMAccountEntryCategory*> parents() const;
  // The names from the top-level ancestor down to this one joined with ":" (Auto:Fuel:Diesel).
  std::string fullName() const;

  // In this order: appends the child, asks the child's former parent (if any) to removeChild
  // it, makes the receiver its parent, and sorts the children by name. So adding a child
  // again to its own parent takes out both occurrences and leaves it naming that parent.
  // nullptr is ignored.
  void addChild(std::shared_ptr<ZELMAccountEntryCategory> child);
  // As addChild with the child inserted at `index` before the sort; ignored for nullptr, a
  // negative index or one beyond the count.
  void insertChild(std::shared_ptr<ZELMAccountEntryCategory> child, std::int32_t index);
  // Takes the child out of the list (ignored outside 0..count-1); it keeps its parent pointer.
  void removeChildAtIndex(std::int32_t index);
  // Takes every occurrence of the child out of the list; ignored when it is not a child. The
  // child keeps its parent pointer.
  void removeChild(const ZELMAccountEntryCategory* child);

  // Every descendant, depth first, each child followed by its own descendants.
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> allChildren() const;
  // The first direct child named `name` ignoring case; nullptr for nullopt or no match.
  std::shared_ptr<ZELMAccountEntryCategory> childWithName(
      std::optional<std::string_view> name) const;
  // The receiver when its full name equals `fullName` ignoring case, else the first
  // descendant in allChildren order whose full name does; nullptr otherwise.
  std::shared_ptr<ZELMAccountEntryCategory> childWithFullName(
      std::optional<std::string_view> fullName) const;

  // Sorts the children by name, and their children, all the way down.
  void sortChildren();
  // -1, 0 or 1 comparing the names without regard to case.
  int nameIsGreaterThan(const ZELMAccountEntryCategory& other) const;

 protected:
  using ChildFactory = std::shared_ptr<ZELMAccountEntryCategory> (*)(const plist::Dictionary*);
  // Reads as the public dictionary constructor does, making each child with `make_child` so a
  // subclass gets children of its own class.
  ZELMAccountEntryCategory(const plist::Dictionary* dict, ZELMAccountEntryCategory* parent,
                           ChildFactory make_child);

 private:
  void SortOwnChildren();

  std::string name_;
  std::int32_t number_ = -1;
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> children_;
  ZELMAccountEntryCategory* parent_ = nullptr;  // not owned
};

}  // namespace folvant
