#include "output/latency_views.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <vector>

#include "orx/maintaind/tools/method_ids.h"
#include "output/summary.h"
#include "output/table.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

namespace {

using Align = Table::Align;

std::string ModeWord(maintaind::LatencyMode mode) {
    return mode == maintaind::LatencyMode::ENABLE ? "enable" : "disable";
}

// Binding names in the order of the enumeration (DDS first), whatever order the index has.
std::vector<std::string> BindingNames(std::vector<maintaind::DriverType> types) {
    std::sort(types.begin(), types.end());
    std::vector<std::string> names;
    for (const maintaind::DriverType type : types) {
        names.emplace_back(maintaind::ToString(type));
    }
    return names;
}

// How an event is addressed: its DDS topic and/or its SOME/IP event id.
std::string Address(const maintaind::LatencyIndex& index) {
    std::string text = index.eventName;
    if (index.eventId != 0) {
        text += (text.empty() ? "" : " / ") + HexId(index.eventId);
    }
    return OrDash(text);
}

std::string AckSides(const tools::LatencyAckEntry& ack) {
    if (ack.isPubMatched && ack.isSubMatched) {
        return "pub+sub";
    }
    if (ack.isPubMatched || ack.isSubMatched) {
        return ack.isPubMatched ? "pub" : "sub";
    }
    return "no match";
}

std::string Acks(const std::vector<tools::LatencyAckEntry>& acks) {
    std::string text;
    for (const tools::LatencyAckEntry& ack : acks) {
        text += (text.empty() ? "" : ", ") + ack.appName + ": " + ModeWord(ack.mode) + " (" +
                AckSides(ack) + ")";
    }
    return OrDash(text);
}

std::string Joined(const std::vector<std::string>& items) {
    std::string text;
    for (const std::string& item : items) {
        text += (text.empty() ? "" : ", ") + item;
    }
    return text;
}

std::string LastOrder(const tools::LatencyStatusEntry& status) {
    if (!status.requested) {
        return "-";
    }
    return ModeWord(status.requestedMode) + " at " + LocalTime(status.requestedAt);
}

}  // namespace

void PrintLatencyStatuses(const tools::LatencyStatusListReply& reply, std::ostream& out) {
    size_t enabled = 0;
    if (!reply.statuses.empty()) {
        std::vector<const tools::LatencyStatusEntry*> sorted;
        for (const auto& status : reply.statuses) {
            sorted.push_back(&status);
        }
        std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
            return std::tie(a->eventName, a->latencyIndex.serviceId, a->latencyIndex.instanceId) <
                   std::tie(b->eventName, b->latencyIndex.serviceId, b->latencyIndex.instanceId);
        });
        Table table({{"EVENT"},
                     {"ID"},
                     {"INST", Align::kRight},
                     {"TOPIC / EVENT ID"},
                     {"BINDINGS"},
                     {"ENABLED"},
                     {"LAST ORDER"},
                     {"ACKNOWLEDGED BY"},
                     {"NOT ACKNOWLEDGED BY"}});
        for (const tools::LatencyStatusEntry* s : sorted) {
            enabled += s->enabled ? 1U : 0U;
            table.AddRow({OrDash(s->eventName), HexId(s->latencyIndex.serviceId),
                          std::to_string(s->latencyIndex.instanceId), Address(s->latencyIndex),
                          Bindings(BindingNames(s->latencyIndex.driverTypes)), YesNo(s->enabled),
                          LastOrder(*s), Acks(s->acks), OrDash(Joined(s->unacknowledged))});
        }
        table.Print(out);
    }
    out << Count(reply.statuses.size(), "event", "events") << ", " << enabled
        << " with latency analysis enabled\n";
    PrintTruncation(reply.truncated, reply.statuses.size(), reply.total, out);
}

void PrintLatencyResults(const tools::LatencyResultListReply& reply, std::ostream& out) {
    std::set<std::string> apps;
    if (!reply.results.empty()) {
        std::vector<const tools::LatencyResultEntry*> sorted;
        for (const auto& result : reply.results) {
            sorted.push_back(&result);
        }
        // Newest first within each application and event.
        std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) {
            return std::make_tuple(std::cref(a->appName), std::cref(a->eventName), b->receivedAt) <
                   std::make_tuple(std::cref(b->appName), std::cref(b->eventName), a->receivedAt);
        });
        Table table({{"APP"},
                     {"EVENT"},
                     {"MIN", Align::kRight},
                     {"AVG", Align::kRight},
                     {"MAX", Align::kRight},
                     {"RECEIVED"}});
        for (const tools::LatencyResultEntry* r : sorted) {
            apps.insert(r->appName);
            table.AddRow({r->appName, OrDash(r->eventName), Latency(r->minLatency),
                          Latency(r->averageLatency), Latency(r->maxLatency),
                          LocalTime(r->receivedAt)});
        }
        table.Print(out);
    }
    out << Count(reply.results.size(), "result", "results") << " from "
        << Count(apps.size(), "application", "applications") << '\n';
    PrintTruncation(reply.truncated, reply.results.size(), reply.total, out);
}

void PrintLatencySwitched(const tools::LatencySwitchReply& reply, maintaind::LatencyMode mode,
                          std::ostream& out) {
    const maintaind::LatencyIndex& index = reply.latencyIndex;
    out << "Latency analysis " << (mode == maintaind::LatencyMode::ENABLE ? "enabled" : "disabled")
        << " for " << OrDash(reply.eventName) << " (service " << HexId(index.serviceId)
        << ", instance " << index.instanceId << ", " << Address(index) << ", "
        << Bindings(BindingNames(index.driverTypes)) << ").\n"
        << "The applications acknowledge the switch on their own; see `orxmaint latency "
           "status`.\n";
}

void PrintLatencySwitchRefused(const tools::LatencySwitchReply& reply, const std::string& event,
                               const std::string& narrowedBy, std::ostream& err) {
    const auto code = static_cast<tools::ToolsCode>(reply.code);
    switch (code) {
        case tools::ToolsCode::UNKNOWN_EVENT:
            err << "No registered event is named \"" << event << "\""
                << (narrowedBy.empty() ? "" : " (with " + narrowedBy + ")")
                << ".\nList the events with `orxmaint events`; use the name it shows, its last "
                   "part, or the DDS topic name.\n";
            return;
        case tools::ToolsCode::AMBIGUOUS_EVENT:
            err << "\"" << event << "\" fits " << reply.candidates.size() << " events:\n";
            for (const std::string& candidate : reply.candidates) {
                err << "  " << candidate << '\n';
            }
            err << "Name one by its full name or its DDS topic name, or narrow the choice with "
                   "--app or --service.\n";
            return;
        case tools::ToolsCode::NOT_DELIVERED:
            err << "maintaind could not publish the latency switch for \"" << event << "\"";
            break;
        default:
            err << "maintaind refused the latency switch for \"" << event << "\" ("
                << tools::ToString(code) << ")";
            break;
    }
    err << (reply.message.empty() ? "" : ": " + reply.message) << ".\n";
}

}  // namespace orx::orxmaint
