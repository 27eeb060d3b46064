#pragma once

#include <string>
#include <string_view>

namespace folvant {

// The translation of an English user-visible text through the program's message catalog
// (gettext domain "folvant"), or the text itself when it has no translation.
std::string Localized(std::string_view key);

}  // namespace folvant
