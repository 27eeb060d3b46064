#include "app/cli/Commands.h"

namespace folvant::app {

void RegisterCommands(CLI::App& app, Context& context, CommandList& actions) {
  RegisterInitCommand(app, context, actions);
  RegisterAccountCommand(app, context, actions);
  RegisterRegisterCommand(app, context, actions);
  RegisterScheduleCommand(app, context, actions);
  RegisterUpgradeCommand(app, context, actions);
  RegisterFolderCommand(app, context, actions);
  RegisterSmartFolderCommand(app, context, actions);
  RegisterRepairCommand(app, context, actions);
  RegisterCategoryCommand(app, context, actions);
  RegisterTypeCommand(app, context, actions);
  RegisterCurrencyCommand(app, context, actions);
  RegisterReconcileCommand(app, context, actions);
  RegisterEntryCommand(app, context, actions);
  RegisterTransferCommand(app, context, actions);
  RegisterSuggestCommand(app, context, actions);
  RegisterSummaryCommand(app, context, actions);
  RegisterImportCommand(app, context, actions);
  RegisterServeCommand(app, context, actions);
}

}  // namespace folvant::app
