#include "folvant/filters/ZELMFilter.h"

#include <algorithm>
#include <utility>

#include "folvant/model/ZELMAccountEntry.h"

namespace folvant {

// Which entries a filtering selected, by position in the list given: `state` marks the
// narrowed set and the added set, `added` lists the added positions in the order they were
// added. Each group decides entry by entry, so two positions holding the same entry always
// carry the same marks, and marking positions is marking entries by identity.
struct ZELMFilter::Selection {
  static constexpr std::uint8_t kNarrowed = 1;
  static constexpr std::uint8_t kAdded = 2;

  std::vector<std::uint8_t> state;
  std::vector<std::size_t> added;
  bool abandoned = false;

  // Calls visit(position) for each selected position in result order.
  template <typename Visit>
  void ForEach(Visit&& visit) const {
    if (abandoned) return;
    for (std::size_t i = 0; i < state.size(); ++i) {
      if (state[i] == kNarrowed) visit(i);
    }
    for (std::size_t i : added) visit(i);
  }
};

ZELMFilter::ZELMFilter(const plist::Dictionary* dict) {
  if (dict == nullptr) return;
  if (const plist::Value* v = dict->find("name")) {
    if (const std::string* name = v->asString()) setName(*name);
  }
  if (const plist::Value* v = dict->find("conditionGroups")) {
    if (const plist::Array* array = v->asArray()) {
      for (const plist::Value& element : *array) {
        if (const plist::Dictionary* d = element.asDictionary()) {
          addConditionGroup(std::make_shared<ZELMFilterConditionGroup>(d));
        }
      }
    }
  }
}

plist::Dictionary ZELMFilter::asDictionary() const {
  plist::Array groups;
  groups.reserve(conditionGroups_.size());
  for (const auto& group : conditionGroups_) groups.emplace_back(group->asDictionary());
  plist::Dictionary dict;
  dict.append("name", name_);
  dict.append("conditionGroups", std::move(groups));
  return dict;
}

std::shared_ptr<ZELMFilter> ZELMFilter::filterWithDictionary(const plist::Dictionary* dict) {
  return std::make_shared<ZELMFilter>(dict);
}

std::shared_ptr<ZELMFilter> ZELMFilter::filterWithFilter(const ZELMFilter* filter) {
  if (filter == nullptr) return nullptr;
  const plist::Dictionary dict = filter->asDictionary();
  return std::make_shared<ZELMFilter>(&dict);
}

void ZELMFilter::addConditionGroup(std::shared_ptr<ZELMFilterConditionGroup> group) {
  insertConditionGroup(std::move(group), static_cast<std::int32_t>(conditionGroups_.size()));
}

void ZELMFilter::insertConditionGroup(std::shared_ptr<ZELMFilterConditionGroup> group,
                                      std::int32_t index) {
  if (!group || index < 0 || static_cast<std::size_t>(index) > conditionGroups_.size()) return;
  if (std::find(conditionGroups_.begin(), conditionGroups_.end(), group) !=
      conditionGroups_.end()) {
    return;
  }
  conditionGroups_.insert(conditionGroups_.begin() + index, std::move(group));
}

void ZELMFilter::removeConditionGroup(const ZELMFilterConditionGroup* group) {
  std::erase_if(conditionGroups_, [&](const auto& g) { return g.get() == group; });
}

void ZELMFilter::removeConditionGroupAtIndex(std::int32_t index) {
  if (index < 0 || static_cast<std::size_t>(index) >= conditionGroups_.size()) return;
  conditionGroups_.erase(conditionGroups_.begin() + index);
}

ZELMFilter::Selection ZELMFilter::Select(const EntryList& entries) const {
  using Verdict = ZELMFilterConditionGroup::Prepared::Verdict;
  Selection selection;
  const std::size_t n = entries.size();
  selection.state.resize(n);
  for (std::size_t i = 0; i < n; ++i) selection.state[i] = entries[i] ? Selection::kNarrowed : 0;
  std::vector<std::size_t> newly_added;
  for (const auto& group : conditionGroups_) {
    const std::int32_t logic = group->logic();
    if (logic != kGroupNarrows && logic != kGroupAdds) {
      continue;
    }
    ZELMFilterConditionGroup::Prepared prepared(*group);
    if (logic == kGroupNarrows) {
      for (std::size_t i = 0; i < n; ++i) {
        std::uint8_t& state = selection.state[i];
        if (!(state & Selection::kNarrowed)) continue;
        if (state & Selection::kAdded) {
          state &= static_cast<std::uint8_t>(~Selection::kNarrowed);
          continue;
        }
        const Verdict verdict = prepared.Test(*entries[i]);
        if (verdict == Verdict::kUnmatched) {
          selection.abandoned = true;
          return selection;
        }
        if (verdict == Verdict::kDropped) {
          state &= static_cast<std::uint8_t>(~Selection::kNarrowed);
        }
      }
    } else {
      // The group sees every entry not yet added; what it keeps is marked only afterwards,
      // so an entry listed twice is added twice, as a list of the entries would hold it.
      newly_added.clear();
      for (std::size_t i = 0; i < n; ++i) {
        if (selection.state[i] & Selection::kAdded || !entries[i]) continue;
        const Verdict verdict = prepared.Test(*entries[i]);
        if (verdict == Verdict::kUnmatched) {
          selection.abandoned = true;
          return selection;
        }
        if (verdict == Verdict::kKept) newly_added.push_back(i);
      }
      for (std::size_t i : newly_added) selection.state[i] |= Selection::kAdded;
      selection.added.insert(selection.added.end(), newly_added.begin(), newly_added.end());
    }
  }
  return selection;
}

ZELMFilter::EntryList ZELMFilter::filterEntries(const EntryList& entries) const {
  const Selection selection = Select(entries);
  std::size_t count = 0;
  selection.ForEach([&](std::size_t) { ++count; });
  EntryList result;
  result.reserve(count);
  selection.ForEach([&](std::size_t i) { result.push_back(entries[i]); });
  return result;
}

double ZELMFilter::filterAndTotalEntries(const EntryList& entries) const {
  const Selection selection = Select(entries);
  double total = 0.0;
  selection.ForEach([&](std::size_t i) {
    if (!entries[i]->GetVoid()) total += entries[i]->GetAmount();
  });
  return total;
}

}  // namespace folvant
