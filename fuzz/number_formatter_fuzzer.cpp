// Reads fuzzed text with the number formatter. The first byte picks a configuration (or, with
// its top bit set, takes a fuzzed pattern from the text up to the first newline). Properties:
// reading never fails; a value read is finite and within the limits; for the fixed patterns a
// value read, printed and read again is stable under further printing and reading.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "folvant/values/ZELMNumberFormatter.h"

namespace {

struct Config {
  const char* pattern;
  const char* thousands;
  const char* decimal;
  const char* symbol;
  int limit;  // 0 none, 1 maximum 0, 2 minimum 0
};

constexpr Config kConfigs[] = {
    {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", "$", 0},
    {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", "$", 1},
    {"$ #,##0.00;$ 0.00;-$ #,##0.00", ",", ".", "$", 2},
    {"#,##0.00 kr; 0.00 kr;-#,##0.00 kr", ".", ",", "kr", 0},
    {"#,##0.00 \xE2\x82\xAC; 0.00 \xE2\x82\xAC;-#,##0.00 \xE2\x82\xAC", "\xC2\xA0", ",", "", 0},
    {"###0.00", ",", ".", "", 0},
    {"0.00000; 0.00000;-0.00000", ",", ".", "", 0},
    {"#,##0.##", "'", ".", "", 0},
    {"#,##0.00;(#,##0.00)", ",", ".", "", 0},
};

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  std::string_view input(reinterpret_cast<const char*>(data + 1), size - 1);
  const std::uint8_t selector = data[0];
  const bool fuzzed_pattern = (selector & 0x80) != 0;
  const Config& config = kConfigs[selector % (sizeof kConfigs / sizeof kConfigs[0])];

  folvant::ZELMNumberFormatter formatter;
  formatter.setThousandSeparator(config.thousands);
  formatter.setDecimalSeparator(config.decimal);
  formatter.setCurrencySymbol(config.symbol);
  if (config.limit == 1) formatter.setMaximum(0.0);
  if (config.limit == 2) formatter.setMinimum(0.0);
  if ((selector & 0x40) != 0) formatter.setRoundingScale(2);
  formatter.setDefaultObjectValue(-0.25);
  if (fuzzed_pattern) {
    const std::size_t newline = input.find('\n');
    formatter.setFormat(input.substr(0, newline));
    input = newline == std::string_view::npos ? std::string_view{} : input.substr(newline + 1);
  } else {
    formatter.setFormat(config.pattern);
  }

  const std::optional<double> value = formatter.getObjectValue(input);
  Check(value.has_value());
  Check(std::isfinite(*value));
  if (config.limit == 1) Check(*value <= 0);
  if (config.limit == 2) Check(*value >= 0 || *value == -0.25);

  const std::optional<double> read = formatter.numberFromString(input);
  if (!read) return 0;
  Check(std::isfinite(*read));
  const std::string printed = formatter.stringForNumber(*read);
  Check(!printed.empty());
  if (!fuzzed_pattern && std::fabs(*read) < 1e9) {
    // Printing rounds, and a value that prints as zero may move to the zero section, so the
    // first reading of printed text settles the value: from then on it stays.
    const std::optional<double> settled = formatter.numberFromString(printed);
    Check(settled.has_value());
    const std::optional<double> again =
        formatter.numberFromString(formatter.stringForNumber(*settled));
    Check(again.has_value() && *again == *settled);
  }
  (void)formatter.editingStringForObjectValue(folvant::AttributedText{std::string(input), {}});
  return 0;
}
