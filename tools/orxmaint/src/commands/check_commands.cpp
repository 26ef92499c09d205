#include "commands/check_commands.h"

#include "orx/maintaind/tools/check.h"
#include "output/findings_view.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

int RunCheck(CommandContext& context) {
    tools::CheckRequest request;
    request.filter = FilterOf(context.options);
    tools::CheckReply reply;
    if (!Query(context, tools::kCheckContractsId, "CheckContracts", request, reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        PrintFindingsJson(reply, context.out);
    } else {
        PrintFindings(reply, context.out);
    }
    context.out.flush();
    const bool failed = reply.errors > 0 || (context.options.strict && reply.warnings > 0);
    return failed ? kExitFailed : kExitOk;
}

}  // namespace orx::orxmaint
