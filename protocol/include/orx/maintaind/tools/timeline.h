// The daemon's timeline: what happened to the system (nodes coming and going, latency switches and
// acknowledgements, sample timeouts, the daemon's own start and stop), kept in its registry file
// and pushed to tools as it happens.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/record.h"

namespace orx::maintaind::tools {

// What a timeline entry tells. The names are what tools print (`kind` in JSON).
enum class TimelineKind : uint8_t {
    ONLINE = 0,          // a node came online (reason: "" or how it came back, e.g. "reconnected")
    OFFLINE = 1,         // a node went offline (reason: why)
    LATENCY_SWITCH = 2,  // the daemon ordered latency analysis of an event on or off
    LATENCY_ACK = 3,     // an application acknowledged a latency switch
    SAMPLE_TIMEOUT = 4,  // a subscriber listener reported sample timeouts
    DAEMON_START = 5,
    DAEMON_STOP = 6,
};

constexpr const char* ToString(TimelineKind kind) {
    switch (kind) {
        case TimelineKind::ONLINE:
            return "online";
        case TimelineKind::OFFLINE:
            return "offline";
        case TimelineKind::LATENCY_SWITCH:
            return "latency-switch";
        case TimelineKind::LATENCY_ACK:
            return "latency-ack";
        case TimelineKind::SAMPLE_TIMEOUT:
            return "sample-timeout";
        case TimelineKind::DAEMON_START:
            return "daemon-start";
        case TimelineKind::DAEMON_STOP:
            return "daemon-stop";
    }
    return "unknown";
}

// One entry. Ids grow with every entry the daemon stores and are never reused, so a tool that
// merges a query with the pushed entries drops duplicates by id.
struct TimelineEntry {
    uint64_t id{};
    uint64_t time{};  // ms since the Unix epoch, daemon's clock
    uint8_t kind{};   // a TimelineKind value
    String appName;   // "" for entries of the daemon itself and unattributed sample timeouts
    int32_t pid{};
    String host;
    String reason;  // offline: why; online: how it came back; "" where none
    String event;   // latency entries: the event's name; sample timeouts: the listener's name
    String detail;  // readable specifics, e.g. "mode=enable" or "count=3, timeoutMs=100"

    ORX_MAINTAIND_RECORD(TimelineEntry, id, time, kind, appName, pid, host, reason, event, detail)
};

// QueryTimeline: entries at or after `since`, oldest first.
struct TimelineRequest {
    uint64_t since{};       // ms since the Unix epoch; 0: from the oldest kept
    String appName;         // exact application name; empty: any (entries of the daemon too)
    uint32_t maxEntries{};  // at most this many, the newest ones; 0: the daemon's cap

    ORX_MAINTAIND_RECORD(TimelineRequest, since, appName, maxEntries)
};

struct TimelineReply {
    uint8_t code{};
    String message;
    std::vector<TimelineEntry> entries;  // oldest first
    uint32_t total{};                    // matching entries before truncation
    bool truncated{};                    // older matching entries were left out

    ORX_MAINTAIND_RECORD(TimelineReply, code, message, entries, total, truncated)
};

}  // namespace orx::maintaind::tools
