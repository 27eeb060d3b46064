#pragma once

#include <cstdint>
#include <limits>

#include "folvant/platform/plist/Value.h"

namespace folvant::plist::testing {

// A value that exercises every kind and the edges of each: integer widths and limits, reals
// that only survive in shortest round-trip form, text in many scripts with markup characters,
// data across base64 line breaks, dates far from 2001, nested and empty containers, repeated
// strings. PlistOracleTest builds the same value in Python; keep the two in step.
inline Value RichSample() {
  Data bytes(200);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7);
  const auto int64_max = std::numeric_limits<std::int64_t>::max();
  Dictionary nested{{"k", "v"}, {"n", 1}};
  return Dictionary{
      {"integers",
       Array{0, 1, -1, 255, 256, 65535, 65536, 4294967295LL, 4294967296LL, int64_max,
             std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::uint64_t>::max(),
             static_cast<std::uint64_t>(int64_max) + 1}},
      {"reals",
       Array{0.1, 1e-300, -0.0, 1.7976931348623157e308, 5e-324, 123456789.125, -2.5, 1e16, 1.0 / 3,
             100.0, std::numeric_limits<double>::infinity(),
             -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}},
      {"booleans", Array{true, false}},
      {"strings", Array{"", "plain", "Grüße aus Köln", "日本語のテキスト", "Ελληνικά", "עברית",
                        "العربية", "🙂 emoji 👍🏽", "<&>\"'", "  spaces  ",
                        "tab\there\nnewline", "repeated", "repeated"}},
      {"data", Array{Data{}, Data{0, 1, 2, 255}, bytes}},
      {"dates",
       Array{Date{0}, Date{225979200}, Date{-63113904000}, Date{-4165314208}, Date{6268237811}}},
      {"nested", Array{Array{}, Dictionary{}, Array{Array{nested}}, nested}},
      {"key with <&> and ünïcode", "value"},
      {"repeated", "repeated"},
  };
}

}  // namespace folvant::plist::testing
