// Reads fuzzed bytes as a property list (binary or XML, any encoding). Properties: a refusal
// names its problem at an offset inside the input; a value read survives a binary write and
// read exactly, and an XML write and read with dates cut to whole seconds (XML's precision);
// writing what was read back gives the same bytes again.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "folvant/platform/plist/PropertyList.h"

namespace {

using folvant::plist::Array;
using folvant::plist::Date;
using folvant::plist::Dictionary;
using folvant::plist::Format;
using folvant::plist::Value;

void Check(bool condition) {
  if (!condition) std::abort();
}

Value WithWholeSecondDates(const Value& value) {
  if (const std::optional<Date> date = value.asDate()) {
    return Date{std::floor(date->secondsSinceReferenceDate)};
  }
  if (const Array* array = value.asArray()) {
    Array copy;
    for (const Value& member : *array) copy.push_back(WithWholeSecondDates(member));
    return copy;
  }
  if (const Dictionary* dictionary = value.asDictionary()) {
    Dictionary copy;
    for (const auto& [key, member] : *dictionary) copy.append(key, WithWholeSecondDates(member));
    return copy;
  }
  return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > (1 << 20)) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto read = folvant::plist::Read(bytes);
  if (!read) {
    Check(!read.error().what.empty());
    Check(read.error().offset <= size);
    return 0;
  }

  const std::string binary = folvant::plist::Write(*read, Format::kBinary);
  const auto from_binary = folvant::plist::Read(binary);
  Check(from_binary.has_value() && *from_binary == *read);
  Check(folvant::plist::Write(*from_binary, Format::kBinary) == binary);

  const std::string xml = folvant::plist::Write(*read, Format::kXml);
  const auto from_xml = folvant::plist::Read(xml);
  Check(from_xml.has_value() && *from_xml == WithWholeSecondDates(*read));
  Check(folvant::plist::Write(*from_xml, Format::kXml) == xml);
  return 0;
}
