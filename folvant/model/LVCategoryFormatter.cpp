#include "folvant/model/LVCategoryFormatter.h"

namespace folvant {

std::string LVCategoryFormatter::stringForObjectValue(
    const ZELMAccountEntryCategory* category) const {
  return category != nullptr ? category->fullName() : std::string();
}

std::shared_ptr<ZELMAccountEntryCategory> LVCategoryFormatter::getObjectValue(
    std::string_view text) const {
  for (const auto& category : categories_) {
    if (category != nullptr && category->name() == text) return category;
  }
  return nullptr;
}

AttributedText LVCategoryFormatter::attributedStringForObjectValue(
    const ZELMAccountEntryCategory* category, const plist::Dictionary& attributes) const {
  return AttributedText{stringForObjectValue(category), attributes};
}

}  // namespace folvant
