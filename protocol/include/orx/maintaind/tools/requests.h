// Request records of the tools-side service.
#pragma once

#include <cstdint>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind::tools {

// Values of QueryFilter::side.
inline constexpr uint8_t kAnySide = 0U;
inline constexpr uint8_t kPubSide = 1U;  // offering side: event publishers, method servers
inline constexpr uint8_t kSubSide = 2U;  // using side: event subscribers, method clients

// Which entries a query returns. A default-constructed filter selects everything. Each member
// narrows the selection; members that do not apply to an entry type are ignored for it (e.g.
// `side` for nodes).
struct QueryFilter {
    String appName;       // exact application name; empty: any
    int32_t pid{};        // process id; 0: any
    bool hasServiceId{};  // when true, only entries of `serviceId`
    uint16_t serviceId{};
    bool hasInstanceId{};  // when true, only entries of `instanceId`
    uint16_t instanceId{};
    String serviceName;     // exact service name (path); empty: any
    String name;            // entity name: the full name, its last path component or (events)
                            // its DDS topic name; empty: any
    uint8_t side{};         // kAnySide, kPubSide or kSubSide
    bool onlineOnly{};      // only entries that are online (entities of online nodes)
    uint32_t maxEntries{};  // at most this many entries per list; 0: the daemon's cap
    bool latestOnly{};      // latency results: only the newest result per application and event
    bool withoutRecords{};  // event, method and field lists: leave each entry's `record` default
                            // (the summary members stay); much smaller answers

    ORX_MAINTAIND_RECORD(QueryFilter, appName, pid, hasServiceId, serviceId, hasInstanceId,
                         instanceId, serviceName, name, side, onlineOnly, maxEntries, latestOnly,
                         withoutRecords)
};

// QueryDataType: the events and methods that use one data type.
struct DataTypeRequest {
    String dataTypeName;  // exact data type name
    QueryFilter filter;   // further narrows the events and methods listed

    ORX_MAINTAIND_RECORD(DataTypeRequest, dataTypeName, filter)
};

// QueryEventShow: every registration (publishers and subscribers) of one event.
struct EventShowRequest {
    String event;        // event name, its last path component, or its DDS topic name
    QueryFilter filter;  // narrows which registrations count when resolving `event`

    ORX_MAINTAIND_RECORD(EventShowRequest, event, filter)
};

// SwitchLatencyMode: switch latency analysis of one event on or off in every application.
struct LatencySwitchRequest {
    String event;        // event name, its last path component, or its DDS topic name
    LatencyMode mode{};  // ENABLE or DISABLE
    QueryFilter filter;  // narrows which registrations count when resolving `event`

    ORX_MAINTAIND_RECORD(LatencySwitchRequest, event, mode, filter)
};

}  // namespace orx::maintaind::tools
