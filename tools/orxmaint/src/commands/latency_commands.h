// latency status, latency enable/disable EVENT and latency results [--watch]. Each returns the
// process exit code.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

int RunLatencyStatus(CommandContext& context);
// Asks maintaind to switch latency analysis of the event named by the command line on
// (`enable`) or off in every application.
int RunLatencySwitch(CommandContext& context, bool enable);
// Prints the latency results once, or with --watch every second until the environment says stop.
int RunLatencyResults(CommandContext& context);

}  // namespace orx::orxmaint
