#pragma once

#include <string>

#include "folvant/platform/plist/Value.h"

namespace folvant {

// Styled text as the editing fields exchange it with their formatters: the plain text and the
// attributes that apply to all of it (font, colour and the like, by name). The library never
// interprets the attributes; it hands them back with the text.
struct AttributedText {
  std::string text;
  plist::Dictionary attributes;
  bool operator==(const AttributedText&) const = default;
};

}  // namespace folvant
