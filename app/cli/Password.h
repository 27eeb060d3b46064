#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/cli/Program.h"

namespace folvant::app {

// Reads a password: the first line of standard input with `fromStdin`, else from the terminal
// without echo after `prompt` (on the error stream). nullopt when standard input is not a
// terminal and `fromStdin` is not set, or when nothing could be read. Never shown or logged.
std::optional<std::string> ReadPassword(Context& context, std::string_view prompt,
                                        bool fromStdin);

}  // namespace folvant::app
