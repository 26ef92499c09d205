// The listing commands over the registry: nodes, events, methods, fields, e2e and types. Each
// returns the process exit code.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

int RunNodes(CommandContext& context);
int RunEvents(CommandContext& context);
int RunMethods(CommandContext& context);
int RunFields(CommandContext& context);
int RunE2E(CommandContext& context);
// Every data type, or with a DATATYPE argument the events and methods that use it.
int RunTypes(CommandContext& context);

}  // namespace orx::orxmaint
