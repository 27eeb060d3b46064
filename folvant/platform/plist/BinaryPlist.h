#pragma once

#include <string>
#include <string_view>

#include "folvant/platform/Expected.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/platform/plist/Value.h"

namespace folvant::plist {

// The binary encoding of property lists ("bplist00"): a header, the objects, a table of object
// offsets and a 32-byte trailer. Containers refer to their members by index in that table, so
// one object may be used from many places (and a damaged file may make one contain itself).

// Reads a binary property list. Shared objects are read once per use; a file whose shared
// objects would expand far beyond its own size, a cycle, nesting deeper than kMaxNestingDepth
// or any offset or count outside the file is refused with the offset of the object at fault.
Expected<Value, ReadError> ReadBinary(std::string_view bytes);
// The same, streaming the members of one array of the top dictionary (see StreamedRead).
Expected<Value, ReadError> ReadBinary(std::string_view bytes, const StreamedRead& stream);

// The binary property list of `value`. Equal strings (keys included), numbers, dates and data
// are stored once; dictionary keys are written sorted.
std::string WriteBinary(const Value& value);
// The same, with one array of the top dictionary made member by member (see StreamedWrite).
std::string WriteBinary(const Value& value, const StreamedWrite& stream);

}  // namespace folvant::plist
