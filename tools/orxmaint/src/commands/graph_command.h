// graph: the system as a picture, in DOT, Mermaid or SVG.
#pragma once

#include "commands/command_context.h"

namespace orx::orxmaint {

// Queries nodes, events, methods, fields and the contract check, and writes the graph in
// --format to `out`. Exit 0 when it was written, 1 when maintaind could not answer or the SVG
// could not be made (the reason on `err`).
int RunGraph(CommandContext& context);

}  // namespace orx::orxmaint
