// timeouts and status. Each returns the process exit code.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

int RunTimeouts(CommandContext& context);
int RunStatus(CommandContext& context);

}  // namespace orx::orxmaint
