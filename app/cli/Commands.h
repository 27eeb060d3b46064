#pragma once

#include <utility>
#include <vector>

#include "app/cli/Program.h"

namespace folvant::app {

using CommandList = std::vector<std::pair<CLI::App*, CommandAction>>;

// One function per command file.
void RegisterInitCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterAccountCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterRegisterCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterScheduleCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterUpgradeCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterFolderCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterSmartFolderCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterRepairCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterCategoryCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterTypeCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterCurrencyCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterReconcileCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterEntryCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterTransferCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterSuggestCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterSummaryCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterImportCommand(CLI::App& app, Context& context, CommandList& actions);
void RegisterServeCommand(CLI::App& app, Context& context, CommandList& actions);

}  // namespace folvant::app
