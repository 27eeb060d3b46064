#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "folvant/platform/Expected.h"
#include "folvant/platform/plist/Value.h"

namespace folvant::plist {

// Property-list files: reading either encoding, writing the one asked for. Values are plain
// trees (plist::Value); files never share storage with the values read from them.
//
// What survives a write and a read in both encodings: every kind and value exactly (integers
// from INT64_MIN to UINT64_MAX, reals to the last bit including NaN and infinities, strings
// byte for byte), except that XML keeps dates to the whole second, as every XML writer does.
// A none value has no stored form: it is left out of arrays and dictionaries.
enum class Format { kXml, kBinary };

// Why a property list could not be read, and where: a byte offset from the start of the file
// (for UTF-16 XML, of the UTF-16 file).
struct ReadError {
  std::string what;
  std::size_t offset = 0;
};

// Arrays and dictionaries nested deeper than this are refused, so that no file can exhaust
// the stack.
inline constexpr int kMaxNestingDepth = 512;

// Dates hold seconds from 2001-01-01T00:00:00Z. Reading refuses dates farther than this from
// it (about 31,700 years) and NaN dates, so that every date read can be written as text.
inline constexpr double kMaxDateSeconds = 1e12;

// The encoding of a property list's bytes, judged from the first bytes only: kBinary for
// "bplist", kXml for anything else that starts (after a byte-order mark and blanks) with '<',
// nullopt otherwise.
std::optional<Format> DetectFormat(std::string_view bytes);

// Reads a property list in either encoding: binary ("bplist00") or XML in UTF-8 (with or
// without a byte-order mark) or UTF-16 (with a byte-order mark, or starting with '<').
//   auto value = plist::Read(bytes);
//   if (!value) Report(value.error().what, value.error().offset);
Expected<Value, ReadError> Read(std::string_view bytes);

// As Read, for bytes the caller hands over: XML is parsed inside them, which saves a copy of
// the whole file (what ReadFile does with the bytes it reads).
Expected<Value, ReadError> ReadInPlace(std::string bytes);

// Reads a property-list file; a file that cannot be opened or read gives an error naming the
// file and the reason.
Expected<Value, ReadError> ReadFile(const std::filesystem::path& path);

// The bytes of a property list holding `value`. XML is written as Apple writes it (tabs,
// sorted keys, base64 data in lines, dates as "2008-02-29T12:00:00Z"); binary stores each
// distinct string, number, date and data once, however often it is used.
std::string Write(const Value& value, Format format);

// A file whose top dictionary holds one very large array (an account's register) can be read
// and written member by member, so that the array never exists as values all at once.

// A read that hands the members of the array under `key` of the top dictionary to the caller.
// Once the rest of the file is read, `start` is called with the top dictionary, which holds an
// empty array under `key`, and the number of members; it returns the function that takes each
// member in turn (the dictionary read then keeps the empty array), or an empty function to
// have the array read as usual. Nothing is streamed when the top object is not a dictionary
// or `key` does not hold an array there (where a key repeats, the last value counts, as in any
// dictionary read).
//   MemberSink sink = [&](Value&& member) { list.push_back(Build(member)); };
//   auto start = [&](const Dictionary&, std::size_t) { return sink; };
//   auto value = plist::ReadFile(path, {"entries", start});
using MemberSink = std::function<void(Value&& member)>;
struct StreamedRead {
  std::string_view key;
  std::function<MemberSink(const Dictionary& rest, std::size_t size)> start;
};
Expected<Value, ReadError> Read(std::string_view bytes, const StreamedRead& stream);
Expected<Value, ReadError> ReadFile(const std::filesystem::path& path, const StreamedRead& stream);

// A write that takes the array under `key` of the top dictionary from `member(0)` to
// `member(size - 1)`, each made when it is written, in place of whatever `value` holds there.
// The bytes are those of Write on a value holding the whole array.
struct StreamedWrite {
  std::string_view key;
  std::size_t size = 0;
  std::function<Value(std::size_t index)> member;
};
std::string Write(const Value& value, Format format, const StreamedWrite& stream);

}  // namespace folvant::plist
