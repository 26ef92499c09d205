#include "commands/history_commands.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cli/duration.h"
#include "orx/maintaind/tools/timeline.h"
#include "orx/sync/mutex.h"
#include "output/json_output.h"
#include "output/table.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace {

namespace tools = maintaind::tools;
using tools::TimelineEntry;

// The part of the past a watch starts with, so nothing is missed between a query and the watch.
constexpr std::chrono::milliseconds kWatchLookBack{10000};
// A second look at the past once the subscription surely matched the daemon's publisher: entries
// stored while the subscription was being set up arrive through it.
constexpr std::chrono::milliseconds kWatchCatchUp{1500};
constexpr std::chrono::milliseconds kWatchPoll{50};
constexpr size_t kMaxRememberedIds = 100000;

uint64_t NowMs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
}

const char* KindName(const TimelineEntry& entry) {
    return tools::ToString(static_cast<tools::TimelineKind>(entry.kind));
}

void WriteEntry(JsonWriter& json, const TimelineEntry& entry) {
    json.BeginObject();
    json.Key("id");
    json.Value(entry.id);
    json.Key("time");
    json.Value(entry.time);
    json.Key("kind");
    json.Value(std::string(KindName(entry)));
    json.Key("appName");
    json.Value(entry.appName);
    json.Key("pid");
    json.Value(entry.pid);
    json.Key("host");
    json.Value(entry.host);
    json.Key("reason");
    json.Value(entry.reason);
    json.Key("event");
    json.Value(entry.event);
    json.Key("detail");
    json.Value(entry.detail);
    json.EndObject();
}

// What happened to what, for the DETAIL column: the event or listener, then the specifics.
std::string Detail(const TimelineEntry& entry) {
    if (entry.event.empty()) {
        return entry.detail;
    }
    return entry.detail.empty() ? entry.event : entry.event + " (" + entry.detail + ")";
}

void PrintTable(const std::vector<TimelineEntry>& entries, std::ostream& out) {
    Table table({{"TIME"},
                 {"KIND"},
                 {"APP"},
                 {"PID", Table::Align::kRight},
                 {"HOST"},
                 {"REASON"},
                 {"DETAIL"}});
    for (const TimelineEntry& entry : entries) {
        table.AddRow({LocalTime(entry.time), KindName(entry), OrDash(entry.appName),
                      entry.pid == 0 ? "-" : std::to_string(entry.pid), OrDash(entry.host),
                      OrDash(entry.reason), OrDash(Detail(entry))});
    }
    table.Print(out);
}

// One entry on one line, for watch: JSON object or text.
void PrintLine(const TimelineEntry& entry, bool json, std::ostream& out) {
    std::string text;
    if (json) {
        JsonWriter writer(text);
        WriteEntry(writer, entry);
    } else {
        text = LocalTime(entry.time) + "  " + KindName(entry) + "  " + OrDash(entry.appName);
        if (entry.pid != 0) {
            text += " pid=" + std::to_string(entry.pid);
        }
        if (!entry.host.empty()) {
            text += " host=" + entry.host;
        }
        if (!entry.reason.empty()) {
            text += "  " + entry.reason;
        }
        const std::string detail = Detail(entry);
        if (!detail.empty()) {
            text += "  " + detail;
        }
    }
    PrintJsonLine(text, out);
    out.flush();
}

// Entries pushed by maintaind, filled on the core's event thread and emptied by the watch.
struct Inbox {
    orx::sync::Mutex mutex;
    std::vector<TimelineEntry> entries GUARDED_BY(mutex);

    void Put(const TimelineEntry& entry) {
        orx::sync::MutexLock lock(mutex);
        entries.push_back(entry);
    }
    std::vector<TimelineEntry> Take() {
        orx::sync::MutexLock lock(mutex);
        return std::exchange(entries, {});
    }
};

// Prints each entry of `entries` not printed before, in id order.
class WatchPrinter {
  public:
    explicit WatchPrinter(const CommandContext& context) : context_(context) {}

    void Print(std::vector<TimelineEntry> entries) {
        std::sort(entries.begin(), entries.end(),
                  [](const TimelineEntry& a, const TimelineEntry& b) { return a.id < b.id; });
        for (const TimelineEntry& entry : entries) {
            const std::string& app = context_.options.app;
            if ((!app.empty() && entry.appName != app) || !seen_.insert(entry.id).second) {
                continue;
            }
            if (seen_.size() > kMaxRememberedIds) {
                seen_.erase(seen_.begin());
            }
            PrintLine(entry, context_.options.json, context_.out);
        }
    }

  private:
    const CommandContext& context_;
    std::set<uint64_t> seen_;
};

tools::TimelineRequest RecentRequest(const CommandContext& context, uint64_t since) {
    tools::TimelineRequest request;
    request.since = since;
    request.appName = context.options.app;
    return request;
}

}  // namespace

int RunHistory(CommandContext& context) {
    uint64_t since = 0;
    if (!context.options.since.empty()) {
        const uint64_t back = ParseDurationMs(context.options.since).value_or(0);
        const uint64_t now = NowMs();
        since = now > back ? now - back : 0;
    }
    tools::TimelineReply reply;
    if (!Query(context, tools::kQueryTimelineId, "QueryTimeline", RecentRequest(context, since),
               reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        std::string text;
        JsonWriter json(text);
        json.BeginArray();
        for (const TimelineEntry& entry : reply.entries) {
            WriteEntry(json, entry);
        }
        json.EndArray();
        PrintJsonLine(text, context.out);
    } else {
        PrintTable(reply.entries, context.out);
        if (reply.truncated) {
            context.out << "(" << reply.entries.size() << " newest of " << reply.total
                        << " entries)\n";
        }
    }
    return kExitOk;
}

int RunWatch(CommandContext& context) {
    const uint64_t since = NowMs() - static_cast<uint64_t>(kWatchLookBack.count());
    // Subscribed before the first query, so every entry is either in the answer or pushed.
    auto inbox = std::make_shared<Inbox>();
    const bool subscribed = context.client.Subscribe<TimelineEntry>(
        tools::kTimelineEventId, [inbox](const TimelineEntry& entry) { inbox->Put(entry); },
        Clock::now() + context.client.Settings().timeout);
    tools::TimelineReply reply;
    if (!Query(context, tools::kQueryTimelineId, "QueryTimeline", RecentRequest(context, since),
               reply)) {
        return kExitFailed;
    }
    if (!subscribed) {
        context.err << "maintaind's timeline events could not be subscribed (see the log with "
                       "--verbose)\n";
        return kExitFailed;
    }
    WatchPrinter printer(context);
    printer.Print(std::move(reply.entries));
    const Clock::time_point catchUpAt = Clock::now() + kWatchCatchUp;
    bool caughtUp = false;
    for (;;) {
        printer.Print(inbox->Take());
        if (!caughtUp && Clock::now() >= catchUpAt) {
            caughtUp = true;
            tools::TimelineReply again;
            const CallOutcome outcome = context.client.Call(
                tools::kQueryTimelineId, "QueryTimeline", RecentRequest(context, since), again,
                Clock::now() + context.client.Settings().timeout);
            if (outcome.ok() && again.code == static_cast<uint8_t>(tools::ToolsCode::OK)) {
                printer.Print(std::move(again.entries));
            }
        }
        if (context.environment.waitUnlessStopped(kWatchPoll)) {
            break;
        }
    }
    printer.Print(inbox->Take());
    return kExitOk;
}

}  // namespace orx::orxmaint
