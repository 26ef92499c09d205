#include "commands/daemon_commands.h"

#include "orx/maintaind/tools/replies.h"
#include "output/daemon_views.h"
#include "output/json_output.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

int RunTimeouts(CommandContext& context) {
    tools::SampleTimeoutListReply reply;
    if (!Query(context, tools::kQuerySampleTimeoutId, "QuerySampleTimeout",
               FilterOf(context.options), reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        PrintEntries(reply.timeouts, context.options.full, context.out);
    } else {
        PrintSampleTimeouts(reply, context.out);
    }
    return kExitOk;
}

int RunStatus(CommandContext& context) {
    tools::DaemonStatusReply reply;
    if (!Query(context, tools::kQueryDaemonStatusId, "QueryDaemonStatus", tools::QueryFilter{},
               reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        std::string text;
        JsonWriter json(text);
        json.BeginArray();
        json.BeginObject();
        json.Members(reply, {"code", "message"});
        json.EndObject();
        json.EndArray();
        PrintJsonLine(text, context.out);
    } else {
        PrintDaemonStatus(reply, context.out);
    }
    return kExitOk;
}

}  // namespace orx::orxmaint
