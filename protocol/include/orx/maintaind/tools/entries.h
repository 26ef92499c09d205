// What the tools-side service lists: one record per node, entity, configuration or result.
//
// Times named ...At, firstSeen and lastSeen are milliseconds since the Unix epoch on the daemon's
// clock. `bindings` lists binding names as the enumeration DriverType spells them ("DDS",
// "SOMEIP"), in that order.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/app.h"
#include "orx/maintaind/enums.h"
#include "orx/maintaind/event.h"
#include "orx/maintaind/field.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/method.h"
#include "orx/maintaind/node.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind::tools {

// One application process.
struct NodeEntry {
    String appName;
    int32_t pid{};
    String host;  // host name the process's own participant gave, "" when unknown
    bool online{};
    uint64_t firstSeen{};  // first report of this process
    uint64_t lastSeen{};   // last report, or when it was found gone
    // "" while online; "offline report", "process gone", "lease expired" or "restarted"
    String offlineReason;
    uint32_t eventCount{};
    uint32_t methodCount{};
    uint32_t fieldCount{};
    // Restarts of this application on this host counted up to this run (earlier runs included).
    uint32_t restarts{};

    ORX_MAINTAIND_RECORD(NodeEntry, appName, pid, host, online, firstSeen, lastSeen, offlineReason,
                         eventCount, methodCount, fieldCount, restarts)
};

// One event as one application offers (isPub) or subscribes it.
struct EventEntry {
    String appName;
    int32_t pid{};
    String eventName;
    String serviceName;
    String instanceName;
    uint16_t serviceId{};  // from the DDS binding, else the SOME/IP binding
    uint16_t instanceId{};
    bool isPub{};
    bool online{};  // registered and not withdrawn, and the node is online
    std::vector<String> bindings;
    String topicName;    // DDS topic, "" without a DDS binding
    uint16_t eventId{};  // SOME/IP event id, 0 without a SOME/IP binding
    String dataTypeName;
    uint64_t firstSeen{};
    uint64_t lastSeen{};
    EventRegisterInfo record;  // the registration as the application sent it, last version

    ORX_MAINTAIND_RECORD(EventEntry, appName, pid, eventName, serviceName, instanceName, serviceId,
                         instanceId, isPub, online, bindings, topicName, eventId, dataTypeName,
                         firstSeen, lastSeen, record)
};

// One method as one application serves (isPub) or calls it.
struct MethodEntry {
    String appName;
    int32_t pid{};
    String methodName;
    String serviceName;
    String instanceName;
    uint16_t serviceId{};
    uint16_t instanceId{};
    bool isPub{};
    bool online{};
    std::vector<String> bindings;
    String requestTopicName;  // DDS, "" without a DDS binding
    String replyTopicName;
    uint16_t methodId{};  // SOME/IP method id, 0 without a SOME/IP binding
    uint64_t firstSeen{};
    uint64_t lastSeen{};
    MethodRegisterInfo record;

    ORX_MAINTAIND_RECORD(MethodEntry, appName, pid, methodName, serviceName, instanceName,
                         serviceId, instanceId, isPub, online, bindings, requestTopicName,
                         replyTopicName, methodId, firstSeen, lastSeen, record)
};

// One field as one application offers (isPub) or uses it.
struct FieldEntry {
    String appName;
    int32_t pid{};
    String fieldName;
    String serviceName;
    String instanceName;
    uint16_t serviceId{};
    uint16_t instanceId{};
    bool isPub{};
    bool online{};
    std::vector<String> bindings;
    bool hasNotifier{};
    bool hasGetter{};
    bool hasSetter{};
    uint64_t firstSeen{};
    uint64_t lastSeen{};
    FieldRegisterInfo record;

    ORX_MAINTAIND_RECORD(FieldEntry, appName, pid, fieldName, serviceName, instanceName, serviceId,
                         instanceId, isPub, online, bindings, hasNotifier, hasGetter, hasSetter,
                         firstSeen, lastSeen, record)
};

// One E2E configuration of one event of one application.
struct E2EEntry {
    String appName;
    int32_t pid{};
    bool online{};
    bool isPub{};
    String binding;        // "DDS" or "SOMEIP"
    uint64_t updatedAt{};  // when the application last reported its E2E configurations
    EventE2EConfigInfo config;

    ORX_MAINTAIND_RECORD(E2EEntry, appName, pid, online, isPub, binding, updatedAt, config)
};

// One application's acknowledgement of a latency switch.
struct LatencyAckEntry {
    String appName;
    LatencyMode mode{};  // the mode the application acknowledged
    bool isPubMatched{};
    bool isSubMatched{};
    uint64_t ackedAt{};
    int32_t pid{};  // the acknowledging process (0 when its transport did not name it)
    String host;

    ORX_MAINTAIND_RECORD(LatencyAckEntry, appName, mode, isPubMatched, isSubMatched, ackedAt, pid,
                         host)
};

// Latency analysis of one event: what was last ordered and who acknowledged what.
struct LatencyStatusEntry {
    String eventName;           // as registered; the topic name or id when not registered
    LatencyIndex latencyIndex;  // how the event is addressed in switches and reports
    bool requested{};           // a switch was ordered through this daemon
    LatencyMode requestedMode{};
    uint64_t requestedAt{};
    bool enabled{};  // the newest acknowledgement of some application says ENABLE
    std::vector<LatencyAckEntry> acks;  // newest acknowledgement per process
    // Running processes with the event that have not acknowledged the last order since it was
    // given, as "app/pid@host" (filled in query answers only).
    std::vector<String> unacknowledged;

    ORX_MAINTAIND_RECORD(LatencyStatusEntry, eventName, latencyIndex, requested, requestedMode,
                         requestedAt, enabled, acks, unacknowledged)
};

// One latency result reported by a subscribing application.
struct LatencyResultEntry {
    String appName;
    String eventName;  // as registered; the topic name or id when not registered
    LatencyIndex latencyIndex;
    uint64_t minLatency{};
    uint64_t maxLatency{};
    uint64_t averageLatency{};
    uint64_t notifyTime{};  // the application's own clock (monotonic milliseconds)
    uint64_t receivedAt{};

    ORX_MAINTAIND_RECORD(LatencyResultEntry, appName, eventName, latencyIndex, minLatency,
                         maxLatency, averageLatency, notifyTime, receivedAt)
};

// Sample timeouts of one subscriber listener.
struct SampleTimeoutEntry {
    String appName;  // the one application subscribing a matching event; "" when not known
    String listenerName;
    uint32_t sampleTimeout{};       // threshold in milliseconds, as last reported
    uint32_t sampleTimeoutCount{};  // the listener's own count, as last reported
    uint32_t reportCount{};         // reports received by the daemon
    uint64_t firstSeen{};
    uint64_t lastSeen{};

    ORX_MAINTAIND_RECORD(SampleTimeoutEntry, appName, listenerName, sampleTimeout,
                         sampleTimeoutCount, reportCount, firstSeen, lastSeen)
};

// One data type and who uses it.
struct DataTypeEntry {
    String dataTypeName;
    uint32_t eventCount{};         // event registrations with this data type
    uint32_t methodCount{};        // method registrations with it as request or reply type
    std::vector<String> appNames;  // applications using it, sorted, each once

    ORX_MAINTAIND_RECORD(DataTypeEntry, dataTypeName, eventCount, methodCount, appNames)
};

// One method across applications.
struct MethodTypeEntry {
    String serviceName;
    String methodName;
    uint16_t serviceId{};
    uint16_t instanceId{};
    uint32_t serverCount{};
    uint32_t clientCount{};
    String requestDataTypeName;  // DDS request type, "" when not known
    String replyDataTypeName;

    ORX_MAINTAIND_RECORD(MethodTypeEntry, serviceName, methodName, serviceId, instanceId,
                         serverCount, clientCount, requestDataTypeName, replyDataTypeName)
};

// Counters of the daemon since it started.
struct DaemonCounters {
    uint64_t requests{};          // RegisterApp requests received
    uint64_t accepted{};          // reports stored and answered with 0
    uint64_t undecodable{};       // requests that could not be decoded (answered 1)
    uint64_t inconsistent{};      // decoded but inconsistent reports (answered 1)
    uint64_t overLimit{};         // reports refused by a size or count limit (answered 1)
    uint64_t unanswered{};        // requests left unanswered because the queue was full
    uint64_t toolsRequests{};     // tools-side requests received
    uint64_t toolsBadRequests{};  // tools-side requests answered BAD_REQUEST
    uint64_t latencySwitches{};   // latency switches published
    uint64_t nodesGone{};         // nodes found gone by the liveness check
    uint64_t storeErrors{};       // failed writes to the registry file

    ORX_MAINTAIND_RECORD(DaemonCounters, requests, accepted, undecodable, inconsistent, overLimit,
                         unanswered, toolsRequests, toolsBadRequests, latencySwitches, nodesGone,
                         storeErrors)
};

}  // namespace orx::maintaind::tools
