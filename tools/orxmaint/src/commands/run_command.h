// Runs one parsed command against maintaind's tools service.
#pragma once

#include <ostream>

#include "cli/options.h"
#include "client/tools_client.h"
#include "commands/command_context.h"

namespace orx::orxmaint {

// Connects to the tools service described by `settings`, runs `options.command` and returns the
// exit code: 0 on success, 1 when maintaind could not be reached, did not answer or refused.
// Tables and JSON go to `out`, errors to `err`.
int RunCommand(const Options& options, const ClientSettings& settings,
               const RunEnvironment& environment, std::ostream& out, std::ostream& err);

}  // namespace orx::orxmaint
