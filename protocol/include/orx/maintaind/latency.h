// Latency-analysis records: the daemon's switch order, acknowledgements and results.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// Names one event by its bindings and ids.
struct LatencyIndex {
    std::vector<DriverType> driverTypes;  // bindings concerned
    uint16_t serviceId{};
    uint16_t instanceId{};
    String eventName;    // DDS topic name
    uint16_t eventId{};  // SOME/IP event id

    ORX_MAINTAIND_RECORD(LatencyIndex, driverTypes, serviceId, instanceId, eventName, eventId)
};

// Acknowledgement of a mode switch: which side of the event matched a handler.
struct LatencyModeAckInfo {
    LatencyMode mode{};
    bool isPubMatched{};
    bool isSubMatched{};

    ORX_MAINTAIND_RECORD(LatencyModeAckInfo, mode, isPubMatched, isSubMatched)
};

struct LatencyResult {
    uint64_t minLatency{};
    uint64_t maxLatency{};
    uint64_t averageLatency{};

    ORX_MAINTAIND_RECORD(LatencyResult, minLatency, maxLatency, averageLatency)
};

struct LatencyResultInfo {
    LatencyResult result;
    uint64_t notifyTime{};  // last notification, milliseconds of the monotonic clock

    ORX_MAINTAIND_RECORD(LatencyResultInfo, result, notifyTime)
};

// One latency report of an application: an acknowledgement (type 0) or a result (type 1).
struct LatencyInfo {
    uint8_t type{};
    String appName;
    LatencyIndex latencyIndex;
    LatencyModeAckInfo ackInfo;
    LatencyResultInfo resultInfo;

    ORX_MAINTAIND_RECORD(LatencyInfo, type, appName, latencyIndex, ackInfo, resultInfo)
};

// Payload of the daemon's "SwitchApplicationLatency" event: switch analysis of one event.
struct LatencySwitch {
    LatencyMode mode{};
    LatencyIndex latencyIndex;

    ORX_MAINTAIND_RECORD(LatencySwitch, mode, latencyIndex)
};

}  // namespace orx::maintaind
