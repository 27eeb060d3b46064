#pragma once

#include <array>
#include <string>
#include <string_view>

namespace folvant {

// One section of a number pattern such as "$ #,##0.00": the literal text around the number and
// the number's digits.
struct NumberSection {
  std::string prefix;
  std::string suffix;
  int minIntegerDigits = 1;
  int minFractionDigits = 0;
  int maxFractionDigits = 0;
  int groupingSize = 0;  // 0: no grouping
};

// The sections of a pattern, positive, zero and negative in that order. A pattern has up to
// three sections "positive;zero;negative" ("positive;negative" with two; with one, the negative
// section is the positive one with "-" in front). In each, the number is the first run of
// 0 # , . that holds a 0 or #; a section without one is literal text before a whole number.
std::array<NumberSection, 3> ParseNumberPattern(std::string_view pattern);

}  // namespace folvant
