// Reply records of the tools-side service. Each starts with `code` (a ToolsCode value) and
// `message` (why it failed; empty on success). Lists are sorted (nodes by application name and
// pid, entities by application, service, name and side) and `truncated` tells that entries were
// left out because of QueryFilter::maxEntries or the daemon's cap; `total` is the count before
// truncation.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/latency.h"
#include "orx/maintaind/record.h"
#include "orx/maintaind/tools/entries.h"
#include "orx/maintaind/tools/method_ids.h"

namespace orx::maintaind::tools {

struct NodeListReply {
    uint8_t code{};
    String message;
    std::vector<NodeEntry> nodes;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(NodeListReply, code, message, nodes, total, truncated)
};

struct EventListReply {
    uint8_t code{};
    String message;
    std::vector<EventEntry> events;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(EventListReply, code, message, events, total, truncated)
};

struct MethodListReply {
    uint8_t code{};
    String message;
    std::vector<MethodEntry> methods;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(MethodListReply, code, message, methods, total, truncated)
};

struct FieldListReply {
    uint8_t code{};
    String message;
    std::vector<FieldEntry> fields;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(FieldListReply, code, message, fields, total, truncated)
};

struct E2EListReply {
    uint8_t code{};
    String message;
    std::vector<E2EEntry> configs;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(E2EListReply, code, message, configs, total, truncated)
};

struct LatencyStatusListReply {
    uint8_t code{};
    String message;
    std::vector<LatencyStatusEntry> statuses;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(LatencyStatusListReply, code, message, statuses, total, truncated)
};

// Newest first within each application and event.
struct LatencyResultListReply {
    uint8_t code{};
    String message;
    std::vector<LatencyResultEntry> results;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(LatencyResultListReply, code, message, results, total, truncated)
};

struct SampleTimeoutListReply {
    uint8_t code{};
    String message;
    std::vector<SampleTimeoutEntry> timeouts;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(SampleTimeoutListReply, code, message, timeouts, total, truncated)
};

struct DataTypeListReply {
    uint8_t code{};
    String message;
    std::vector<DataTypeEntry> dataTypes;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(DataTypeListReply, code, message, dataTypes, total, truncated)
};

// UNKNOWN_EVENT when no event or method uses the data type.
struct DataTypeReply {
    uint8_t code{};
    String message;
    DataTypeEntry dataType;
    std::vector<EventEntry> events;
    std::vector<MethodEntry> methods;

    ORX_MAINTAIND_RECORD(DataTypeReply, code, message, dataType, events, methods)
};

struct MethodTypeListReply {
    uint8_t code{};
    String message;
    std::vector<MethodTypeEntry> methodTypes;
    uint32_t total{};
    bool truncated{};

    ORX_MAINTAIND_RECORD(MethodTypeListReply, code, message, methodTypes, total, truncated)
};

// The resolved event's registrations (publishers and subscribers) and its latency status.
// UNKNOWN_EVENT or AMBIGUOUS_EVENT (with `candidates`) when the name does not resolve to one event.
struct EventShowReply {
    uint8_t code{};
    String message;
    std::vector<String> candidates;  // AMBIGUOUS_EVENT: a description of each matching event
    std::vector<EventEntry> events;
    LatencyStatusEntry latency;

    ORX_MAINTAIND_RECORD(EventShowReply, code, message, candidates, events, latency)
};

// OK when the switch was published; `latencyIndex` is what it carried and `eventName` the event
// it names. UNKNOWN_EVENT, AMBIGUOUS_EVENT (with `candidates`) or NOT_DELIVERED otherwise.
struct LatencySwitchReply {
    uint8_t code{};
    String message;
    std::vector<String> candidates;
    String eventName;
    LatencyIndex latencyIndex;

    ORX_MAINTAIND_RECORD(LatencySwitchReply, code, message, candidates, eventName, latencyIndex)
};

// Everything the filter selects, in one reply.
struct AllDataReply {
    uint8_t code{};
    String message;
    std::vector<NodeEntry> nodes;
    std::vector<EventEntry> events;
    std::vector<MethodEntry> methods;
    std::vector<FieldEntry> fields;
    std::vector<E2EEntry> e2eConfigs;
    std::vector<LatencyStatusEntry> latencyStatuses;
    std::vector<LatencyResultEntry> latencyResults;
    std::vector<SampleTimeoutEntry> sampleTimeouts;
    bool truncated{};  // some list was cut by maxEntries or the daemon's cap

    ORX_MAINTAIND_RECORD(AllDataReply, code, message, nodes, events, methods, fields, e2eConfigs,
                         latencyStatuses, latencyResults, sampleTimeouts, truncated)
};

struct DaemonStatusReply {
    uint8_t code{};
    String message;
    String version;
    String dbPath;
    String host;
    uint64_t startedAt{};
    uint32_t nodeCount{};
    uint32_t onlineNodeCount{};
    uint32_t eventCount{};
    uint32_t methodCount{};
    uint32_t fieldCount{};
    uint32_t pendingReports{};  // accepted reports waiting to be stored and answered
    DaemonCounters counters;

    ORX_MAINTAIND_RECORD(DaemonStatusReply, code, message, version, dbPath, host, startedAt,
                         nodeCount, onlineNodeCount, eventCount, methodCount, fieldCount,
                         pendingReports, counters)
};

}  // namespace orx::maintaind::tools
