#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

// Writes one document as WriteJson does, piece by piece, so that a document of a million rows
// is never held as a tree: open objects and arrays, give keys and values in order, close them.
// The text goes to the stream in pieces of about 64 KiB, and the last with a newline when the
// writer goes.
class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out);
  ~JsonWriter();
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  // The key of the next value, in an object.
  void Key(std::string_view key);

  // Strings with each invalid UTF-8 byte replaced by U+FFFD.
  void String(std::string_view text);
  void Number(std::int64_t n);
  void Amount(double amount);  // as JsonAmount writes
  void Bool(bool value);
  void Null();
  // A whole tree at this place.
  void Value(const Json& value);

 private:
  using Serializer = nlohmann::detail::serializer<Json>;
  struct Level {
    std::size_t count = 0;
    bool keyed = false;  // a key was given; its value comes next
  };

  void Place();
  void Open(char bracket);
  void Close(char bracket);
  void Text(std::string_view text);
  void Flush();

  std::ostream& stream_;
  std::string buffer_;
  std::unique_ptr<Serializer> scalars_;
  std::vector<Level> open_;
};

}  // namespace folvant::render
