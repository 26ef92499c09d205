#include "output/daemon_views.h"

#include <string>

#include "output/sorting.h"
#include "output/summary.h"
#include "output/table.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

void PrintSampleTimeouts(const tools::SampleTimeoutListReply& reply, std::ostream& out) {
    uint64_t timeouts = 0;
    if (!reply.timeouts.empty()) {
        using Align = Table::Align;
        Table table({{"APP"},
                     {"LISTENER"},
                     {"THRESHOLD", Align::kRight},
                     {"TIMEOUTS", Align::kRight},
                     {"REPORTS", Align::kRight},
                     {"FIRST SEEN"},
                     {"LAST SEEN"}});
        for (const tools::SampleTimeoutEntry* t : Sorted(reply.timeouts)) {
            timeouts += t->sampleTimeoutCount;
            table.AddRow({OrDash(t->appName), t->listenerName,
                          std::to_string(t->sampleTimeout) + " ms",
                          std::to_string(t->sampleTimeoutCount), std::to_string(t->reportCount),
                          LocalTime(t->firstSeen), LocalTime(t->lastSeen)});
        }
        table.Print(out);
    }
    out << Count(reply.timeouts.size(), "listener", "listeners") << ", "
        << Count(timeouts, "sample timeout", "sample timeouts") << '\n';
    PrintTruncation(reply.truncated, reply.timeouts.size(), reply.total, out);
}

void PrintDaemonStatus(const tools::DaemonStatusReply& reply, std::ostream& out) {
    const tools::DaemonCounters& c = reply.counters;
    Table table({{"WHAT"}, {"VALUE"}});
    table.AddRow({"version", OrDash(reply.version)});
    table.AddRow({"host", OrDash(reply.host)});
    table.AddRow({"registry file", OrDash(reply.dbPath)});
    table.AddRow({"started", LocalTime(reply.startedAt)});
    table.AddRow({"nodes", std::to_string(reply.nodeCount) + " (" +
                               std::to_string(reply.onlineNodeCount) + " online)"});
    table.AddRow({"events", std::to_string(reply.eventCount)});
    table.AddRow({"methods", std::to_string(reply.methodCount)});
    table.AddRow({"fields", std::to_string(reply.fieldCount)});
    table.AddRow({"reports waiting", std::to_string(reply.pendingReports)});
    table.AddRow({"reports received", std::to_string(c.requests)});
    table.AddRow({"reports accepted", std::to_string(c.accepted)});
    table.AddRow({"reports undecodable", std::to_string(c.undecodable)});
    table.AddRow({"reports inconsistent", std::to_string(c.inconsistent)});
    table.AddRow({"reports over a limit", std::to_string(c.overLimit)});
    table.AddRow({"reports unanswered", std::to_string(c.unanswered)});
    table.AddRow({"tool requests", std::to_string(c.toolsRequests)});
    table.AddRow({"bad tool requests", std::to_string(c.toolsBadRequests)});
    table.AddRow({"latency switches", std::to_string(c.latencySwitches)});
    table.AddRow({"nodes found gone", std::to_string(c.nodesGone)});
    table.AddRow({"registry write errors", std::to_string(c.storeErrors)});
    table.Print(out);
}

}  // namespace orx::orxmaint
