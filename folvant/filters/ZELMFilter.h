#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folvant/filters/ZELMFilterConditionGroup.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

// A named rule over register entries made of condition groups: a smart folder (owned by its
// account's smart-folder list through std::shared_ptr), or a view filter built on demand.
// Owns its groups, each at most once. Filtering returns new lists of the same entry pointers
// and never changes an entry.
class ZELMFilter {
 public:
  using EntryList = ZELMFilterCondition::EntryList;

  // No name (the empty text), no groups.
  ZELMFilter() = default;
  // A new filter, then "name" when it is a text, and a group made from each dictionary of
  // "conditionGroups" when that is an array. Nothing is logged. nullptr: a new filter.
  explicit ZELMFilter(const plist::Dictionary* dict);

  // "name" and "conditionGroups" (the groups' stored forms), always written.
  plist::Dictionary asDictionary() const;

  // A new filter read from the dictionary, as the constructor reads it.
  static std::shared_ptr<ZELMFilter> filterWithDictionary(const plist::Dictionary* dict);
  // A deep copy made through the other filter's stored form; nullptr for nullptr.
  static std::shared_ptr<ZELMFilter> filterWithFilter(const ZELMFilter* filter);

  const std::string& name() const { return name_; }
  // nullopt stores the empty text.
  void setName(std::optional<std::string_view> name) { name_ = std::string(name.value_or("")); }

  const std::vector<std::shared_ptr<ZELMFilterConditionGroup>>& conditionGroups() const {
    return conditionGroups_;
  }
  // Ignored for nullptr or a group already in the filter.
  void addConditionGroup(std::shared_ptr<ZELMFilterConditionGroup> group);
  // Ignored for nullptr, a group already in the filter, or an index outside 0..count (the
  // count appends).
  void insertConditionGroup(std::shared_ptr<ZELMFilterConditionGroup> group, std::int32_t index);
  // Ignored when the group is not in the filter.
  void removeConditionGroup(const ZELMFilterConditionGroup* group);
  // Ignored outside 0..count-1.
  void removeConditionGroupAtIndex(std::int32_t index);
  void removeAllConditionGroups() { conditionGroups_.clear(); }

  // The entries the filter selects. The groups are applied in order to two sets: the narrowed
  // set C (all entries at first) and the added set O (empty at first). A group with logic 0
  // takes O out of C and then keeps of C what it keeps; a group with logic 1 is run on all
  // entries not in O and appends what it keeps to O; other logic values are skipped. The result
  // is C without O, in the order given, followed by O. Entries are compared by identity, so
  // groups A(0), B(1), C(0) select (A and C) or B, and a filter whose only group adds selects
  // every entry.
  //
  // When an any-group fails (entries left over after its last condition, see
  // ZELMFilterConditionGroup::filterEntries), the filtering is abandoned and the filter
  // selects nothing: the result is empty.
  EntryList filterEntries(const EntryList& entries) const;

  // The sum of GetAmount over the selected entries that are not void, added in the order of
  // filterEntries; 0.0 when the filtering is abandoned.
  double filterAndTotalEntries(const EntryList& entries) const;

 private:
  struct Selection;
  Selection Select(const EntryList& entries) const;

  std::string name_;
  std::vector<std::shared_ptr<ZELMFilterConditionGroup>> conditionGroups_;
};

}  // namespace folvant
