#pragma once

#include <memory>

#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/platform/plist/Value.h"

namespace folvant {

// The category the category editor works on: a category that can be marked as used by
// entries. A tree read from a dictionary is made of editing categories throughout. The mark
// is never stored, and copy() gives a plain category without it.
class ZELMEditingAccountEntryCategory : public ZELMAccountEntryCategory {
 public:
  ZELMEditingAccountEntryCategory() = default;
  explicit ZELMEditingAccountEntryCategory(const plist::Dictionary* dict,
                                           ZELMAccountEntryCategory* parent = nullptr);

  bool inUse() const { return inUse_; }
  void setInUse(bool inUse) { inUse_ = inUse; }

 private:
  bool inUse_ = false;
};

}  // namespace folvant
