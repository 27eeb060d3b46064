#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "folvant/model/ZELMAccountEntryCategory.h"
#include "folvant/platform/plist/Value.h"
#include "folvant/values/AttributedText.h"

namespace folvant {

// The formatter of the category fields. It shows a category by its full name (Auto:Fuel) but
// accepts only a category's own name (Fuel), looked up in the list it is given; typing a full
// name finds nothing. A value type owned by its field; it shares the categories it is given.
class LVCategoryFormatter {
 public:
  LVCategoryFormatter() = default;

  const std::vector<std::shared_ptr<ZELMAccountEntryCategory>>& categories() const {
    return categories_;
  }
  void setCategories(std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories) {
    categories_ = std::move(categories);
  }

  // The category's full name; "" for no category.
  std::string stringForObjectValue(const ZELMAccountEntryCategory* category) const;
  // The first category of the list whose own name equals the text exactly (case included);
  // nullptr (failure, without a description) when none does.
  std::shared_ptr<ZELMAccountEntryCategory> getObjectValue(std::string_view text) const;
  // The printed text with the given attributes.
  AttributedText attributedStringForObjectValue(const ZELMAccountEntryCategory* category,
                                                const plist::Dictionary& attributes) const;

 private:
  std::vector<std::shared_ptr<ZELMAccountEntryCategory>> categories_;
};

}  // namespace folvant
