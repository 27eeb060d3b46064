#pragma once

#include <pugixml.hpp>
#include <string_view>

namespace folvant {

// The element reached from `tree` by a path of element names joined by "/", taking at each
// step the first child element with that exact name (names are case-sensitive, as XML's are).
// Empty components are skipped, so "/OFX/BANKMSGSRSV1" and "OFX/BANKMSGSRSV1" are the same
// path and an empty path gives `tree` itself. A null node when a step finds no such child.
// Example: BKXMLTreeAtPath(statement, "BANKACCTFROM/ACCTID").
pugi::xml_node BKXMLTreeAtPath(const pugi::xml_node& tree, std::string_view path);

}  // namespace folvant
