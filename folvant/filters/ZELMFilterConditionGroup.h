#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "folvant/filters/FilterCodes.h"
#include "folvant/filters/ZELMFilterCondition.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

// Conditions joined with "all" (qualifier 1) or "any" (qualifier 0), and how the group joins
// the groups before it in a filter (logic 0 narrows, 1 adds). Owned by its filter through
// std::shared_ptr; owns its conditions, each at most once.
class ZELMFilterConditionGroup {
 public:
  using EntryList = ZELMFilterCondition::EntryList;

  static constexpr std::int32_t kLogicNarrows = kGroupNarrows;
  static constexpr std::int32_t kLogicAdds = kGroupAdds;
  static constexpr std::int32_t kQualifierAny = kGroupMatchesAny;
  static constexpr std::int32_t kQualifierAll = kGroupMatchesAll;

  // Logic 0 (narrows), qualifier 1 (all), no conditions.
  ZELMFilterConditionGroup() = default;
  // A new group, then "logic" and "qualifier" (integer values) when present, then a condition
  // made from each dictionary of "conditions". Nothing is logged. nullptr: a new group.
  explicit ZELMFilterConditionGroup(const plist::Dictionary* dict);

  // "logic", "qualifier" and "conditions" (the conditions' stored forms), always written.
  plist::Dictionary asDictionary() const;

  std::int32_t logic() const { return logic_; }
  void setLogic(std::int32_t logic) { logic_ = logic; }
  std::int32_t qualifier() const { return qualifier_; }
  void setQualifier(std::int32_t qualifier) { qualifier_ = qualifier; }

  const std::vector<std::shared_ptr<ZELMFilterCondition>>& conditions() const {
    return conditions_;
  }
  // Appends the condition; ignored for nullptr or a condition already in the group.
  void addCondition(std::shared_ptr<ZELMFilterCondition> condition);
  // Makes, appends and returns a condition; with no data (a none value) nothing is added and
  // nullptr is returned. Note the argument order: logic before qualifier, unlike the
  // condition's constructor.
  std::shared_ptr<ZELMFilterCondition> addConditionWithCategory(std::int32_t category,
                                                                std::int32_t logic,
                                                                std::int32_t qualifier,
                                                                plist::Value data);
  // Ignored when the condition is not in the group.
  void removeCondition(const ZELMFilterCondition* condition);
  // Ignored outside 0..count-1.
  void removeConditionAtIndex(std::int32_t index);
  void removeAllConditions() { conditions_.clear(); }

  // The entries the group keeps, in the order given:
  //   all (1): the entries that every condition passes (all of them without conditions);
  //   any (0): the entries that at least one condition passes. The conditions are tried in
  //            turn on the entries not yet passed, until none is left; when entries are still
  //            left after the last condition there is no further condition to try, and the
  //            group fails as a whole: the result is nullopt. So an any-group with no
  //            conditions fails on every list that is not empty;
  //   any other qualifier: no entries.
  std::optional<EntryList> filterEntries(const EntryList& entries) const;

  // The group made ready to test many entries: each condition prepared once.
  class Prepared {
   public:
    enum class Verdict : std::uint8_t {
      kKept,
      kDropped,
      kUnmatched,  // an any-group passed the entry with none of its conditions: it fails
    };
    explicit Prepared(const ZELMFilterConditionGroup& group);
    Verdict Test(const ZELMAccountEntry& entry);

   private:
    std::int32_t qualifier_;
    std::vector<ZELMFilterCondition::Prepared> conditions_;
  };

 private:
  std::int32_t logic_ = kGroupNarrows;
  std::int32_t qualifier_ = kGroupMatchesAll;
  std::vector<std::shared_ptr<ZELMFilterCondition>> conditions_;
};

}  // namespace folvant
