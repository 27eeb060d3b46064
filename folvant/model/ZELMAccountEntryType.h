#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// An entry type of one account ("ATM", "Check", "Direct Deposit", …): its name, its number
// (what entries store) and whether entries of the type are checks and deposits. Owned by the
// account's active or inactive type list through std::shared_ptr.
class ZELMAccountEntryType {
 public:
  ZELMAccountEntryType() = default;
  // "name", "isCheck", "isDeposit" and "number" read without checks or messages: a missing
  // name stays empty, a missing flag is false, a missing number is 0. nullptr: a fresh type.
  explicit ZELMAccountEntryType(const plist::Dictionary* dict);

  // "name", "isCheck" (boolean), "isDeposit" (boolean), "number".
  plist::Dictionary asDictionary() const;

  // nullopt is ignored.
  void SetName(std::optional<std::string_view> name);
  void SetIsCheck(bool isCheck) { isCheck_ = isCheck; }
  void SetIsDeposit(bool isDeposit) { isDeposit_ = isDeposit; }
  void SetNumber(std::int32_t number) { number_ = number; }
  std::string GetName() const { return name_; }
  bool GetIsCheck() const { return isCheck_; }
  bool GetIsDeposit() const { return isDeposit_; }
  std::int32_t GetNumber() const { return number_; }

  // -1, 0 or 1 comparing the names without regard to case; no tie-break.
  int NameIsGreaterThan(const ZELMAccountEntryType& other) const;

 private:
  std::string name_;
  std::int32_t number_ = 0;
  bool isCheck_ = false;
  bool isDeposit_ = false;
};

}  // namespace folvant
