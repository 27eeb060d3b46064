#include "folvant/filters/ZELMFilterConditionGroup.h"

#include <algorithm>
#include <utility>

#include "folvant/model/ZELMAccountEntry.h"

namespace folvant {

ZELMFilterConditionGroup::ZELMFilterConditionGroup(const plist::Dictionary* dict) {
  if (dict == nullptr) return;
  if (const plist::Value* v = dict->find("logic")) setLogic(v->intValue());
  if (const plist::Value* v = dict->find("qualifier")) setQualifier(v->intValue());
  if (const plist::Value* v = dict->find("conditions")) {
    if (const plist::Array* array = v->asArray()) {
      for (const plist::Value& element : *array) {
        if (const plist::Dictionary* d = element.asDictionary()) {
          addCondition(std::make_shared<ZELMFilterCondition>(d));
        }
      }
    }
  }
}

plist::Dictionary ZELMFilterConditionGroup::asDictionary() const {
  plist::Array conditions;
  conditions.reserve(conditions_.size());
  for (const auto& condition : conditions_) conditions.emplace_back(condition->asDictionary());
  plist::Dictionary dict;
  dict.append("logic", logic_);
  dict.append("qualifier", qualifier_);
  dict.append("conditions", std::move(conditions));
  return dict;
}

void ZELMFilterConditionGroup::addCondition(std::shared_ptr<ZELMFilterCondition> condition) {
  if (!condition) return;
  if (std::find(conditions_.begin(), conditions_.end(), condition) != conditions_.end()) return;
  conditions_.push_back(std::move(condition));
}

std::shared_ptr<ZELMFilterCondition> ZELMFilterConditionGroup::addConditionWithCategory(
    std::int32_t category, std::int32_t logic, std::int32_t qualifier, plist::Value data) {
  if (data.isNone()) return nullptr;
  auto condition =
      std::make_shared<ZELMFilterCondition>(category, qualifier, logic, std::move(data));
  addCondition(condition);
  return condition;
}

void ZELMFilterConditionGroup::removeCondition(const ZELMFilterCondition* condition) {
  std::erase_if(conditions_, [&](const auto& c) { return c.get() == condition; });
}

void ZELMFilterConditionGroup::removeConditionAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= conditions_.size()) return;
  conditions_.erase(conditions_.begin() + index);
}

std::optional<ZELMFilterConditionGroup::EntryList> ZELMFilterConditionGroup::filterEntries(
    const EntryList& entries) const {
  Prepared prepared(*this);
  std::vector<std::uint8_t> keep(entries.size());
  std::size_t count = 0;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!entries[i]) continue;
    const Prepared::Verdict verdict = prepared.Test(*entries[i]);
    if (verdict == Prepared::Verdict::kUnmatched) return std::nullopt;
    keep[i] = verdict == Prepared::Verdict::kKept;
    count += keep[i];
  }
  EntryList result;
  result.reserve(count);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (keep[i]) result.push_back(entries[i]);
  }
  return result;
}

ZELMFilterConditionGroup::Prepared::Prepared(const ZELMFilterConditionGroup& group)
    : qualifier_(group.qualifier()) {
  conditions_.reserve(group.conditions().size());
  for (const auto& condition : group.conditions()) conditions_.emplace_back(*condition);
  // Each condition decides on each entry alone, so the order in which they are asked changes
  // no verdict; the cheap numeric tests go first, and text searches run on fewer entries.
  std::stable_partition(conditions_.begin(), conditions_.end(),
                        [](const ZELMFilterCondition::Prepared& c) { return !c.searchesText(); });
}

// Running the conditions one after the other over shrinking lists, as the group is defined,
// gives what testing entry by entry gives, since each condition decides on each entry alone.
ZELMFilterConditionGroup::Prepared::Verdict ZELMFilterConditionGroup::Prepared::Test(
    const ZELMAccountEntry& entry) {
  switch (qualifier_) {
    case kGroupMatchesAll:
      for (auto& condition : conditions_) {
        if (!condition.Keeps(entry)) return Verdict::kDropped;
      }
      return Verdict::kKept;
    case kGroupMatchesAny:
      for (auto& condition : conditions_) {
        if (condition.Keeps(entry)) return Verdict::kKept;
      }
      return Verdict::kUnmatched;
    default:
      return Verdict::kDropped;
  }
}

}  // namespace folvant
