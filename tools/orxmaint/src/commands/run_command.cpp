#include "commands/run_command.h"

#include "commands/check_commands.h"
#include "commands/daemon_commands.h"
#include "commands/entity_commands.h"
#include "commands/graph_command.h"
#include "commands/history_commands.h"
#include "commands/latency_commands.h"

namespace orx::orxmaint {

int RunCommand(const Options& options, const ClientSettings& settings,
               const RunEnvironment& environment, std::ostream& out, std::ostream& err) {
    ToolsClient client(settings);
    CommandContext context{options, client, environment, out, err};
    switch (options.command) {
        case Command::kNodes:
            return RunNodes(context);
        case Command::kEvents:
            return RunEvents(context);
        case Command::kMethods:
            return RunMethods(context);
        case Command::kFields:
            return RunFields(context);
        case Command::kE2E:
            return RunE2E(context);
        case Command::kTypes:
            return RunTypes(context);
        case Command::kLatencyStatus:
            return RunLatencyStatus(context);
        case Command::kLatencyEnable:
            return RunLatencySwitch(context, true);
        case Command::kLatencyDisable:
            return RunLatencySwitch(context, false);
        case Command::kLatencyResults:
            return RunLatencyResults(context);
        case Command::kTimeouts:
            return RunTimeouts(context);
        case Command::kStatus:
            return RunStatus(context);
        case Command::kCheck:
            return RunCheck(context);
        case Command::kGraph:
            return RunGraph(context);
        case Command::kHistory:
            return RunHistory(context);
        case Command::kWatch:
            return RunWatch(context);
    }
    return kExitFailed;
}

}  // namespace orx::orxmaint
