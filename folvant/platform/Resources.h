#pragma once

#include <span>
#include <string_view>

namespace folvant::platform {

// The bytes of a resource built into the library (the files of data/resources/, found by
// their name without extension), or an empty span when there is none by that name.
std::span<const unsigned char> Resource(std::string_view name);

}  // namespace folvant::platform
