#pragma once

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace folvant::render {

// JSON values of the front ends. Objects keep their keys in the order they were added, so
// output follows the documented shapes.
using Json = nlohmann::ordered_json;

// A JSON string of the text, with each byte that is not part of a valid UTF-8 sequence
// replaced by U+FFFD.
Json JsonText(std::string_view text);

// An amount of money, written as a number with exactly two decimals ("-1234.50", rounded as
// amounts are shown), or null when it is not finite. It is held as a tagged binary value
// that WriteJson and JsonDump write as that number; nlohmann's own dump would not, so always
// write through them. An amount beyond the largest one shown is written in full.
Json JsonAmount(double amount);
// The amount a JsonAmount value holds; nullopt for any other value.
std::optional<double> AmountOf(const Json& value);

// Writes the value indented by two spaces, then a newline. Invalid UTF-8 in strings and keys
// is replaced by U+FFFD rather than failing.
void WriteJson(std::ostream& out, const Json& value);
// The same text as a string.
std::string JsonDump(const Json& value);

}  // namespace folvant::render
