#include "app/cli/TextOutput.h"

#include <cstdio>

#include "folvant/values/LVCurrency.h"
#include "folvant/values/ZELMNumberFormatter.h"
#include "folvant/values/ZELMUtilities.h"

namespace folvant::app {

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20) {
          char escape[8];
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          out += escape;
        } else {
          out.push_back(static_cast<char>(c));
        }
    }
  }
  out += '"';
  return out;
}

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  for (unsigned char c : text) {
    if ((c & 0xC0) != 0x80) ++width;
  }
  return width;
}

std::string Pad(std::string_view text, std::size_t width) {
  if (width == 0) return {};
  if (DisplayWidth(text) <= width) {
    return std::string(text) + std::string(width - DisplayWidth(text), ' ');
  }
  // Cut at a character boundary, leaving room for the ellipsis.
  std::string cut;
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if ((c & 0xC0) != 0x80) {
      if (characters + 1 == width) break;
      ++characters;
    }
    cut.push_back(text[i]);
  }
  return cut + "…";
}

std::string PadLeft(std::string_view text, std::size_t width) {
  const std::size_t w = DisplayWidth(text);
  return w >= width ? std::string(text) : std::string(width - w, ' ') + std::string(text);
}

std::string FormatAmount(const LVCurrency& currency, double amount) {
  return currency.formatter()->stringForObjectValue(amount).value_or(std::string());
}

std::string PlainAmount(double amount) { return FormatFixed2(amount); }

}  // namespace folvant::app
