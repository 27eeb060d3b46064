#include "folvant/model/ZELMEditingAccountEntryCategory.h"

namespace folvant {

namespace {

std::shared_ptr<ZELMAccountEntryCategory> MakeEditingChild(const plist::Dictionary* dict) {
  return std::make_shared<ZELMEditingAccountEntryCategory>(dict);
}

}  // namespace

ZELMEditingAccountEntryCategory::ZELMEditingAccountEntryCategory(const plist::Dictionary* dict,
                                                                 ZELMAccountEntryCategory* parent)
    : ZELMAccountEntryCategory(dict, parent, &MakeEditingChild) {}

}  // namespace folvant
