#pragma once

#include <memory>
#include <string>

#include "folvant/model/ZELMAccountEntry.h"
#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/model/ZELMAccountEntryType.h"

namespace folvant {

// A record shown for review before it is imported: an entry that is in no account yet, holding
// its type and category as objects (they may not be in the account yet) and a tick "import".
// The entry's type and category numbers always follow the objects (-1 for none).
class ZELMImportEntry : public ZELMAccountEntry {
 public:
  ZELMImportEntry() { SetActualType(nullptr); }

  void SetActualType(std::shared_ptr<ZELMAccountEntryType> type);
  const std::shared_ptr<ZELMAccountEntryType>& GetActualType() const { return actualType_; }
  void SetActualCategory(std::shared_ptr<ZELMAccountEntryCategory> category);
  const std::shared_ptr<ZELMAccountEntryCategory>& GetActualCategory() const {
    return actualCategory_;
  }
  void SetImport(bool import) { import_ = import; }
  bool GetImport() const { return import_; }

  // -1, 0 or 1; the _Reversed twins negate every step.
  //   TypePrimaryDateSecondary:      type name ignoring case ("" for none), date, number
  //   CategoryPrimaryDateSecondary:  category full name ignoring case, date, number
  //   Import:                        the tick (unticked first), number
  int TypePrimaryDateSecondaryIsGreaterThan(const ZELMImportEntry& other) const;
  int TypePrimaryDateSecondaryIsGreaterThan_Reversed(const ZELMImportEntry& other) const;
  int CategoryPrimaryDateSecondaryIsGreaterThan(const ZELMImportEntry& other) const;
  int CategoryPrimaryDateSecondaryIsGreaterThan_Reversed(const ZELMImportEntry& other) const;
  int ImportIsGreaterThan(const ZELMImportEntry& other) const;
  int ImportIsGreaterThan_Reversed(const ZELMImportEntry& other) const;

  // A sentence for speech: date, amount, type, check number, payee or payer, description and
  // resolved state.
  std::string asSpeakableString() const;

 private:
  std::shared_ptr<ZELMAccountEntryType> actualType_;
  std::shared_ptr<ZELMAccountEntryCategory> actualCategory_;
  bool import_ = false;
};

}  // namespace folvant
