// What every command runs with, and the query step they share: call maintaind, check the answer,
// explain a failure.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

#include "cli/options.h"
#include "client/tools_client.h"
#include "orx/maintaind/tools/method_ids.h"
#include "orx/maintaind/tools/requests.h"

namespace orx::orxmaint {

// Exit codes of a command.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;

// How the process waits between refreshes of a watching command.
struct RunEnvironment {
    // Waits up to the given time; returns true when the user asked to stop (Ctrl-C) meanwhile.
    std::function<bool(std::chrono::milliseconds)> waitUnlessStopped;
    // Standard output is a terminal: a watching command redraws the screen instead of appending.
    bool terminal = false;
};

struct CommandContext {
    const Options& options;
    ToolsClient& client;
    const RunEnvironment& environment;
    std::ostream& out;
    std::ostream& err;
};

// The filter the command line selects: --app, --service, --side, --online; entity records only
// with --full.
maintaind::tools::QueryFilter FilterOf(const Options& options);

// Prints that maintaind answered `methodName` with the error `code` and `message`.
void PrintRefusal(CommandContext& context, const char* methodName, uint8_t code,
                  const std::string& message);

// Calls `methodName` and waits for the answer within the command's timeout. Prints why on `err`
// and returns false when maintaind cannot be reached or does not answer; stores the reply, whatever
// its code, and returns true otherwise.
template <class Reply, class Request>
bool Ask(CommandContext& context, uint32_t entityId, const char* methodName, const Request& request,
         Reply& reply) {
    const Clock::time_point deadline = Clock::now() + context.client.Settings().timeout;
    const CallOutcome outcome = context.client.Call(entityId, methodName, request, reply, deadline);
    if (!outcome.ok()) {
        context.err << outcome.message() << '\n';
        return false;
    }
    return true;
}

// Like Ask, and also prints why and returns false when maintaind answers with a code other than
// OK.
template <class Reply, class Request>
bool Query(CommandContext& context, uint32_t entityId, const char* methodName,
           const Request& request, Reply& reply) {
    if (!Ask(context, entityId, methodName, request, reply)) {
        return false;
    }
    if (reply.code != static_cast<uint8_t>(maintaind::tools::ToolsCode::OK)) {
        PrintRefusal(context, methodName, reply.code, reply.message);
        return false;
    }
    return true;
}

}  // namespace orx::orxmaint
