// history and watch: maintaind's timeline, queried or followed as it grows. Each returns the
// process exit code.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

// Lists the timeline oldest first (--since, --app), as a table or, with --json, one JSON array.
// 0 on success, 1 when maintaind cannot be reached or refuses.
int RunHistory(CommandContext& context);

// Prints the entries of the last 10 s, then every new entry as it is stored, each once, until
// the user stops it (0). With --json one object per line. 1 when maintaind cannot be reached
// at the start or the subscription cannot be made.
int RunWatch(CommandContext& context);

}  // namespace orx::orxmaint
