#pragma once

#include <span>
#include <string_view>

namespace folvant::app::web {

// The bytes of a page of the web interface (a file of app/web/pages/, by its name with its
// extension: "index.html"), or an empty span when there is none by that name.
std::span<const unsigned char> Page(std::string_view name);

}  // namespace folvant::app::web
