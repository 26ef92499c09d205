// The shape of every listing command: query one list, print it as a table or as JSON.
#pragma once

#include <chrono>
#include <cstdint>

#include "ara/kelda/common/log/log.h"
#include "commands/command_context.h"
#include "output/json_output.h"

namespace orx::orxmaint {

// Queries one list with the command line's filter and prints it as a table (`print`) or, with
// --json, as the JSON array of `entries`. Logs at debug level how long printing took.
template <class Reply, class Entries, class Printer>
int RunList(CommandContext& context, uint32_t entityId, const char* methodName,
            Entries Reply::*entries, Printer print) {
    Reply reply;
    if (!Query(context, entityId, methodName, FilterOf(context.options), reply)) {
        return kExitFailed;
    }
    const Clock::time_point start = Clock::now();
    if (context.options.json) {
        PrintEntries(reply.*entries, context.options.full, context.out);
    } else {
        print(reply, context.out);
    }
    context.out.flush();
    ara::kelda::common::log::Log::GetLog("ORXMAINT")->LogDebug()
        << "[orxmaint][" << methodName << " printed][entries=" << (reply.*entries).size()
        << ", ms=" << std::chrono::duration<double, std::milli>(Clock::now() - start).count()
        << "]";
    return kExitOk;
}

}  // namespace orx::orxmaint
