#include "folvant/model/ZELMAccountEntrySplit.h"

#include <cstddef>

#include "folvant/platform/Log.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant {

namespace {

constexpr std::string_view kWrongFormat =
    "theValue is in the wrong format in ZELMAccountEntrySplit:initWithDictionary";

bool InSlots(std::int32_t index) { return index >= 0 && index < ZELMAccountEntrySplit::kSlotCount; }

// The elements of a stored array, or a message when the key is missing or not an array.
const plist::Array* SlotArray(const plist::Dictionary& dict, std::string_view key,
                              std::string_view missing_message) {
  const plist::Value* value = dict.find(key);
  if (value == nullptr) {
    ZELMLog(missing_message);
    return nullptr;
  }
  const plist::Array* array = value->asArray();
  if (array == nullptr) ZELMLog(kWrongFormat);
  return array;
}

std::optional<std::string_view> TextOf(const plist::Value& value) {
  if (const std::string* text = value.asString()) return *text;
  return std::nullopt;
}

}  // namespace

ZELMAccountEntrySplit::ZELMAccountEntrySplit(const plist::Dictionary* dict) {
  if (dict != nullptr) Load(*dict);
}

ZELMAccountEntrySplit::ZELMAccountEntrySplit(const ZELMAccountEntrySplit& split) {
  Load(split.asDictionary());
}

std::shared_ptr<ZELMAccountEntrySplit> ZELMAccountEntrySplit::splitWithSplit(
    const ZELMAccountEntrySplit* split) {
  if (split == nullptr) return nullptr;
  return std::make_shared<ZELMAccountEntrySplit>(*split);
}

void ZELMAccountEntrySplit::Load(const plist::Dictionary& dict) {
  // Each array fills the slots from 0; a longer array than the split holds reaches the
  // setters' own index checks (amounts beyond slot 9 are refused with a message).
  if (const plist::Array* array = SlotArray(
          dict, "descriptions",
          "No description defined for theDictionary in ZELMAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < array->size(); ++i) {
      SetDescription(TextOf((*array)[i]), static_cast<std::int32_t>(i));
    }
  }
  if (const plist::Array* array = SlotArray(
          dict, "toFrom",
          "No toFroms defined for theDictionary in ZELMAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < array->size(); ++i) {
      SetToFrom(TextOf((*array)[i]), static_cast<std::int32_t>(i));
    }
  }
  if (const plist::Array* array = SlotArray(
          dict, "amounts",
          "No amounts defined for theDictionary in ZELMAccountEntrySplit:initWithDictionary")) {
    for (std::size_t i = 0; i < array->size(); ++i) {
      SetAmount((*array)[i].doubleValue(), static_cast<std::int32_t>(i));
    }
  }
}

plist::Dictionary ZELMAccountEntrySplit::asDictionary() const {
  plist::Array descriptions(descriptions_.begin(), descriptions_.end());
  plist::Array toFroms(toFroms_.begin(), toFroms_.end());
  plist::Array amounts(amounts_.begin(), amounts_.end());
  plist::Dictionary dict;
  dict.append("descriptions", std::move(descriptions));
  dict.append("toFrom", std::move(toFroms));
  dict.append("amounts", std::move(amounts));
  return dict;
}

void ZELMAccountEntrySplit::SetDescription(std::optional<std::string_view> description,
                                           std::int32_t index) {
  if (description && InSlots(index)) descriptions_[index] = std::string(*description);
}

void ZELMAccountEntrySplit::SetToFrom(std::optional<std::string_view> toFrom, std::int32_t index) {
  if (toFrom && InSlots(index)) toFroms_[index] = std::string(*toFrom);
}

void ZELMAccountEntrySplit::SetAmount(double amount, std::int32_t index) {
  if (!InSlots(index)) {
    ZELMLog("Split index out of range of split array in ZELMAccountEntrySplit:SetAmount");
    return;
  }
  amounts_[index] = RoundAmount(amount);
}

void ZELMAccountEntrySplit::SetEnabled(bool enabled, std::int32_t index) {
  if (index >= 0 && index <= kSlotCount) states_[index] = enabled;
}

std::string ZELMAccountEntrySplit::GetDescription(std::int32_t index) const {
  return InSlots(index) ? descriptions_[index] : std::string();
}

std::string ZELMAccountEntrySplit::GetToFrom(std::int32_t index) const {
  return InSlots(index) ? toFroms_[index] : std::string();
}

double ZELMAccountEntrySplit::GetAmount(std::int32_t index) const {
  return InSlots(index) ? amounts_[index] : 0.0;
}

bool ZELMAccountEntrySplit::GetEnabled(std::int32_t index) const {
  return InSlots(index) && states_[index];
}

double ZELMAccountEntrySplit::GetTotal() const {
  double total = 0.0;
  for (double amount : amounts_) total += amount;
  return total;
}

}  // namespace folvant
