#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// The split of old account files: exactly ten slots of description, payee and amount. Only the
// format upgrade reads it, to turn its slots into line items; a plain value owned by whoever
// loaded it.
//
// Index limits, kept as old files expect them: SetAmount refuses indexes above 9 with a logged
// message; SetEnabled accepts 10 as well (a write there changes nothing anyone can read); the
// getters answer 0-9 and give "", 0.0 or false elsewhere; the text setters ignore indexes
// outside 0-9.
class ZELMAccountEntrySplit {
 public:
  static constexpr int kSlotCount = 10;

  ZELMAccountEntrySplit() = default;
  // Fresh slots, then "descriptions", "toFrom" and "amounts" (arrays filled from slot 0); a
  // missing or ill-typed array is logged and leaves its slots. nullptr: fresh slots.
  explicit ZELMAccountEntrySplit(const plist::Dictionary* dict);
  // A copy through the stored form, so the enabled marks are not carried over.
  ZELMAccountEntrySplit(const ZELMAccountEntrySplit& split);
  ZELMAccountEntrySplit& operator=(const ZELMAccountEntrySplit&) = delete;

  // A copy of the split, or nullptr for no split.
  static std::shared_ptr<ZELMAccountEntrySplit> splitWithSplit(const ZELMAccountEntrySplit* split);

  // "descriptions", "toFrom" and "amounts", ten elements each.
  plist::Dictionary asDictionary() const;

  // nullopt leaves the slot as it was.
  void SetDescription(std::optional<std::string_view> description, std::int32_t index);
  void SetToFrom(std::optional<std::string_view> toFrom, std::int32_t index);
  // Rounds to two decimals, half away from zero, as an entry's amount.
  void SetAmount(double amount, std::int32_t index);
  void SetEnabled(bool enabled, std::int32_t index);

  std::string GetDescription(std::int32_t index) const;
  std::string GetToFrom(std::int32_t index) const;
  double GetAmount(std::int32_t index) const;
  bool GetEnabled(std::int32_t index) const;
  // The sum of all ten amounts, enabled or not.
  double GetTotal() const;

 private:
  void Load(const plist::Dictionary& dict);

  std::array<std::string, kSlotCount> descriptions_;
  std::array<std::string, kSlotCount> toFroms_;
  std::array<double, kSlotCount> amounts_{};
  // One spare mark: SetEnabled accepts index 10, which no getter reads.
  std::array<bool, kSlotCount + 1> states_{};
};

}  // namespace folvant
