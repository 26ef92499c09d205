// check: the daemon compares every provider with every consumer and the tool gates on the result.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

// Exit 0 when no error was found (with --strict: no error and no warning), 1 when one was or
// maintaind could not answer.
int RunCheck(CommandContext& context);

}  // namespace orx::orxmaint
