#include "folvant/platform/Localized.h"

#include <libintl.h>

namespace folvant {

std::string Localized(std::string_view key) {
  const std::string text(key);
  // dgettext returns its argument unchanged when there is no catalog or no translation.
  return std::string(dgettext("folvant", text.c_str()));
}

}  // namespace folvant
