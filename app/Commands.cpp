#include "app/commands/Commands.h"

namespace folvant::app {

void RegisterCommands(CLI::App& app, Context& context, CommandList& actions) {
  RegisterInitCommand(app, context, actions);
  RegisterAccountCommand(app, context, actions);
  RegisterRegisterCommand(app, context, actions);
}

}  // namespace folvant::app
