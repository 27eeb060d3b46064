// Reads fuzzed text with the date formatter. The first byte picks a pattern (or, with its top
// bit set, takes a fuzzed pattern from the text up to the first newline). Properties: reading
// never fails; a date of a four-digit year read under a fixed pattern prints to a text that
// reads back to the same date; printing any date read does not fail.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "folvant/values/ZELMDateFormatter.h"
#include "folvant/values/ZELMUtilities.h"

namespace {

constexpr const char* kPatterns[] = {"%m/%d/%y", "%m/%d/%Y",  "%Y-%m-%d",
                                     "%d.%m.%Y", "%b %d, %Y", "%Y%m%d"};

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 1024) return 0;
  std::string_view input(reinterpret_cast<const char*>(data + 1), size - 1);
  const bool fuzzed_pattern = (data[0] & 0x80) != 0;
  std::string pattern = kPatterns[data[0] % (sizeof kPatterns / sizeof kPatterns[0])];
  if (fuzzed_pattern) {
    const std::size_t newline = input.find('\n');
    pattern = input.substr(0, newline);
    input = newline == std::string_view::npos ? std::string_view{} : input.substr(newline + 1);
  }

  folvant::ZELMDateFormatter formatter(pattern, false);
  const auto fallback = folvant::dateWithDateNumber(19991231);
  formatter.setDefaultObjectValue(fallback);
  const auto date = formatter.getObjectValue(input);
  Check(date.has_value());
  const std::optional<std::string> printed = formatter.stringForObjectValue(*date);
  Check(printed.has_value());
  // Years below 1000 print without padding, which "%Y%m%d" cannot read back.
  const std::int32_t number = folvant::dateNumber(*date);
  if (!fuzzed_pattern && *date != fallback && number >= 10000101 && number <= 99991231) {
    const auto again = formatter.getObjectValue(*printed);
    Check(again.has_value() && *again == *date);
  }
  return 0;
}
