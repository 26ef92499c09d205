#include "commands/latency_commands.h"

#include <time.h>

#include <chrono>

#include "commands/list_command.h"
#include "orx/maintaind/tools/replies.h"
#include "output/json_output.h"
#include "output/latency_views.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

namespace {

constexpr std::chrono::milliseconds kWatchPeriod{1000};
// Moves the cursor home and clears the terminal, so each refresh replaces the previous one.
constexpr const char* kClearScreen = "\x1b[H\x1b[2J";

uint64_t NowEpochMs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
}

// The filters an event name was resolved under, as typed: "--app radar, --service 0x1234".
std::string NarrowedBy(const Options& options) {
    std::string text;
    if (!options.app.empty()) {
        text = "--app " + options.app;
    }
    if (!options.service.empty()) {
        text += (text.empty() ? "" : ", ") + std::string("--service ") + options.service;
    }
    return text;
}

// One query and its output. Returns false (reason on err) when it failed.
bool ShowResults(CommandContext& context, const tools::QueryFilter& filter) {
    tools::LatencyResultListReply reply;
    if (!Query(context, tools::kQueryLatencyResultId, "QueryLatencyResult", filter, reply)) {
        return false;
    }
    if (context.options.json) {
        PrintEntries(reply.results, context.options.full, context.out);
        return true;
    }
    if (context.options.watch) {
        if (context.environment.terminal) {
            context.out << kClearScreen;
        }
        context.out << "Latency results at " << LocalTime(NowEpochMs())
                    << " (refreshed every second, Ctrl-C to stop)\n";
    }
    PrintLatencyResults(reply, context.out);
    if (context.options.watch && !context.environment.terminal) {
        context.out << '\n';
    }
    return true;
}

}  // namespace

int RunLatencyStatus(CommandContext& context) {
    return RunList(context, tools::kQueryLatencyStatusId, "QueryLatencyStatus",
                   &tools::LatencyStatusListReply::statuses, PrintLatencyStatuses);
}

int RunLatencySwitch(CommandContext& context, bool enable) {
    tools::LatencySwitchRequest request;
    request.event = context.options.name;
    request.mode = enable ? maintaind::LatencyMode::ENABLE : maintaind::LatencyMode::DISABLE;
    request.filter = FilterOf(context.options);
    tools::LatencySwitchReply reply;
    if (!Ask(context, tools::kSwitchLatencyModeId, "SwitchLatencyMode", request, reply)) {
        return kExitFailed;
    }
    if (reply.code != static_cast<uint8_t>(tools::ToolsCode::OK)) {
        PrintLatencySwitchRefused(reply, request.event, NarrowedBy(context.options), context.err);
        return kExitFailed;
    }
    if (context.options.json) {
        PrintSingleObject(
            [&](JsonWriter& json) {
                json.Key("eventName");
                json.Value(reply.eventName);
                json.Key("mode");
                json.Value(std::string(enable ? "enable" : "disable"));
                json.Key("latencyIndex");
                json.Value(reply.latencyIndex);
            },
            context.out);
    } else {
        PrintLatencySwitched(reply, request.mode, context.out);
    }
    return kExitOk;
}

int RunLatencyResults(CommandContext& context) {
    tools::QueryFilter filter = FilterOf(context.options);
    filter.latestOnly = !context.options.history;
    if (!context.options.watch) {
        return ShowResults(context, filter) ? kExitOk : kExitFailed;
    }
    // A daemon that cannot be reached at the start ends the command; later failures (a daemon
    // restart) are shown and watching goes on.
    if (!ShowResults(context, filter)) {
        return kExitFailed;
    }
    while (!context.environment.waitUnlessStopped(kWatchPeriod)) {
        ShowResults(context, filter);
        context.out.flush();
    }
    return kExitOk;
}

}  // namespace orx::orxmaint
