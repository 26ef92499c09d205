// Keys of the registry's tables. Each is a record, so it encodes with the CDR encoder (the store
// keeps its bytes as the row key) and orders by its members (the registry's maps and listings).
#pragma once

#include <cstdint>

#include "orx/maintaind/record.h"

namespace orx::maintaind::daemon {

// Orders a record by its members, in declaration order.
#define ORX_MAINTAIND_ORDERED(Type)                           \
    friend bool operator<(const Type& lhs, const Type& rhs) { \
        return lhs.Members() < rhs.Members();                 \
    }

// One application process: its name, pid and host. Pids collide across hosts all the time, so the
// host (as the process's own DDS participant names it) is part of the key; "" when not known.
struct NodeKey {
    String appName;
    int32_t pid{};
    String host;

    ORX_MAINTAIND_RECORD(NodeKey, appName, pid, host)
    ORX_MAINTAIND_ORDERED(NodeKey)
};

// One event, method or field of one process on one side. The leading members are the node's, so
// a node's entities are neighbours in a map and list in the order tools show them.
struct EntityKey {
    String appName;
    int32_t pid{};
    String host;
    String serviceName;
    String name;
    bool isPub{};
    String instanceName;
    uint16_t serviceId{};
    uint16_t instanceId{};

    ORX_MAINTAIND_RECORD(EntityKey, appName, pid, host, serviceName, name, isPub, instanceName,
                         serviceId, instanceId)
    ORX_MAINTAIND_ORDERED(EntityKey)
};

// One event as latency switches and reports address it: by its DDS topic when it has one (then
// eventId is 0), else by its SOME/IP event id (then topicName is empty).
struct LatencyKey {
    uint16_t serviceId{};
    uint16_t instanceId{};
    String topicName;
    uint16_t eventId{};

    ORX_MAINTAIND_RECORD(LatencyKey, serviceId, instanceId, topicName, eventId)
    ORX_MAINTAIND_ORDERED(LatencyKey)
};

// The latency results of one application for one event.
struct LatencyHistoryKey {
    String appName;
    LatencyKey event;

    ORX_MAINTAIND_RECORD(LatencyHistoryKey, appName, event)
    ORX_MAINTAIND_ORDERED(LatencyHistoryKey)
};

// The sample-timeout record of one subscriber listener.
struct ListenerKey {
    String listenerName;

    ORX_MAINTAIND_RECORD(ListenerKey, listenerName)
    ORX_MAINTAIND_ORDERED(ListenerKey)
};

}  // namespace orx::maintaind::daemon
