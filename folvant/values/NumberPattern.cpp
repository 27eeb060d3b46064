#include "folvant/values/NumberPattern.h"

#include <algorithm>
#include <vector>

namespace folvant {
namespace {

bool IsPlaceholder(char c) { return c == '#' || c == '0' || c == ',' || c == '.'; }

}  // namespace

std::array<NumberSection, 3> ParseNumberPattern(std::string_view pattern) {
  std::vector<NumberSection> parsed;
  std::string_view rest = pattern;
  while (parsed.size() < 3) {
    const std::size_t semicolon = rest.find(';');
    const std::string_view text = rest.substr(0, semicolon);
    NumberSection section;
    // The placeholder: the first run of placeholder characters that holds a 0 or #.
    std::size_t start = 0, end = 0;
    bool found = false;
    for (std::size_t i = 0; i < text.size() && !found;) {
      if (!IsPlaceholder(text[i])) {
        ++i;
        continue;
      }
      std::size_t j = i;
      while (j < text.size() && IsPlaceholder(text[j])) ++j;
      const std::string_view run = text.substr(i, j - i);
      if (run.find_first_of("#0") != std::string_view::npos) {
        start = i;
        end = j;
        found = true;
      }
      i = j;
    }
    if (found) {
      section.prefix = text.substr(0, start);
      section.suffix = text.substr(end);
      const std::string_view core = text.substr(start, end - start);
      const std::size_t point = core.find('.');
      const std::string_view integer = core.substr(0, point);
      const std::string_view fraction =
          point == std::string_view::npos ? std::string_view{} : core.substr(point + 1);
      section.minIntegerDigits = static_cast<int>(std::count(integer.begin(), integer.end(), '0'));
      const std::size_t comma = integer.rfind(',');
      if (comma != std::string_view::npos) {
        const std::string_view group = integer.substr(comma + 1);
        section.groupingSize = static_cast<int>(std::count(group.begin(), group.end(), '0') +
                                                std::count(group.begin(), group.end(), '#'));
      }
      section.minFractionDigits =
          static_cast<int>(std::count(fraction.begin(), fraction.end(), '0'));
      section.maxFractionDigits =
          section.minFractionDigits +
          static_cast<int>(std::count(fraction.begin(), fraction.end(), '#'));
    } else {
      // No placeholder: the text is a prefix of a plain whole number.
      section.prefix = text;
    }
    parsed.push_back(std::move(section));
    if (semicolon == std::string_view::npos) break;
    rest.remove_prefix(semicolon + 1);
  }

  if (parsed.size() == 1) {
    NumberSection negative = parsed[0];
    negative.prefix.insert(0, "-");
    return {parsed[0], parsed[0], std::move(negative)};
  }
  if (parsed.size() == 2) return {parsed[0], parsed[0], parsed[1]};
  return {parsed[0], parsed[1], parsed[2]};
}

}  // namespace folvant
