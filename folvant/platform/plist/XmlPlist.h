#pragma once

#include <string>

#include "folvant/platform/Expected.h"
#include "folvant/platform/plist/PropertyList.h"
#include "folvant/platform/plist/Value.h"

namespace folvant::plist {

// The XML encoding of property lists. Reading parses with pugixml, keeping entity references
// and whitespace under our control; writing emits the text directly, in Apple's layout.

// Reads an XML property list from UTF-8 text, parsing the buffer in place. Error offsets count
// bytes of `text`. The root element is <plist> holding one value, or a bare value element.
Expected<Value, ReadError> ReadXml(std::string text);

// The XML property list of `value`, UTF-8, with the DOCTYPE Apple writes.
std::string WriteXml(const Value& value);

}  // namespace folvant::plist
