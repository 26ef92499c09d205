#include "commands/daemon_commands.h"

#include "commands/list_command.h"
#include "orx/maintaind/tools/replies.h"
#include "output/daemon_views.h"
#include "output/json_output.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

int RunTimeouts(CommandContext& context) {
    return RunList(context, tools::kQuerySampleTimeoutId, "QuerySampleTimeout",
                   &tools::SampleTimeoutListReply::timeouts, PrintSampleTimeouts);
}

int RunStatus(CommandContext& context) {
    tools::DaemonStatusReply reply;
    if (!Query(context, tools::kQueryDaemonStatusId, "QueryDaemonStatus", tools::QueryFilter{},
               reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        PrintSingleObject(
            [&](JsonWriter& json) {
                json.Members(reply, {"code", "message"});
            },
            context.out);
    } else {
        PrintDaemonStatus(reply, context.out);
    }
    return kExitOk;
}

}  // namespace orx::orxmaint
