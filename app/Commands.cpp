#include "app/Program.h"

namespace folvant::app {

void RegisterCommands(CLI::App& /*app*/, Context& /*context*/,
                      std::vector<std::pair<CLI::App*, CommandAction>>& /*actions*/) {}

}  // namespace folvant::app
