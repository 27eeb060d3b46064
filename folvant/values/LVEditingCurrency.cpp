#include "folvant/values/LVEditingCurrency.h"

#include "folvant/platform/Localized.h"
#include "folvant/platform/Text.h"

namespace folvant {
namespace {

// Characters of UTF-8 text: every byte except continuation bytes starts one.
std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (char c : text) {
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++count;
  }
  return count;
}

}  // namespace

std::optional<CurrencyCodeProblem> ValidateCurrencyCode(
    std::string_view code, const std::vector<std::shared_ptr<LVCurrency>>& list,
    const LVCurrency* editing) {
  if (CharacterCount(code) != 3) {
    return CurrencyCodeProblem{Localized("The entered Currency code is not the correct length."),
                               Localized("Please enter a 3-character code for this Currency."),
                               Localized("OK")};
  }
  for (const auto& currency : list) {
    if (!currency || currency.get() == editing) continue;
    if (platform::CaseInsensitiveEqual(currency->code(), code)) {
      return CurrencyCodeProblem{Localized("The entered Currency code is already in use."),
                                 Localized("Please enter another code for this Currency."),
                                 Localized("OK")};
    }
  }
  return std::nullopt;
}

}  // namespace folvant
