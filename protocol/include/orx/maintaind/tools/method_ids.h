// The tools-side service of the maintenance daemon: its identity and the entity id of each of its
// methods. The daemon serves these; the command-line tool calls them.
//
// Every method takes one request record and returns one reply record (see requests.h and
// replies.h). Every reply starts with `code` (a ToolsCode value) and `message` (a readable text,
// empty on success), so a client can always report why a call failed.
#pragma once

#include <cstdint>

#include "orx/maintaind/service.h"

namespace orx::maintaind::tools {

using service::kToolsServiceId;

// Methods of the maintenance service's method table, request record -> reply record:
using service::kQueryAllDataTypeId;    // QueryFilter -> AllDataReply
using service::kQueryDataTypeId;       // DataTypeRequest -> DataTypeReply
using service::kQueryDataTypeListId;   // QueryFilter -> DataTypeListReply
using service::kQueryEventInfoId;      // QueryFilter -> EventListReply
using service::kQueryEventShowId;      // EventShowRequest -> EventShowReply
using service::kQueryLatencyResultId;  // QueryFilter -> LatencyResultListReply
using service::kQueryLatencyStatusId;  // QueryFilter -> LatencyStatusListReply
using service::kQueryMethodInfoId;     // QueryFilter -> MethodListReply
using service::kQueryMethodTypeId;     // QueryFilter -> MethodTypeListReply
using service::kQueryNodeInfoId;       // QueryFilter -> NodeListReply
using service::kQuerySubEventInfoId;   // QueryFilter -> EventListReply
using service::kSwitchLatencyModeId;   // LatencySwitchRequest -> LatencySwitchReply

// Methods outside the table:
using service::kCheckContractsId;      // CheckRequest -> CheckReply
using service::kQueryDaemonStatusId;   // QueryFilter -> DaemonStatusReply
using service::kQueryE2EInfoId;        // QueryFilter -> E2EListReply
using service::kQueryFieldInfoId;      // QueryFilter -> FieldListReply
using service::kQuerySampleTimeoutId;  // QueryFilter -> SampleTimeoutListReply
using service::kQueryTimelineId;       // TimelineRequest -> TimelineReply

// Events of the tools side:
using service::kTimelineEventId;  // one TimelineEntry per new entry

// Outcome of a tools call, the `code` of every reply.
enum class ToolsCode : uint8_t {
    OK = 0,
    BAD_REQUEST = 1,      // the request could not be decoded or is inconsistent
    UNKNOWN_EVENT = 2,    // the named event is not registered
    AMBIGUOUS_EVENT = 3,  // the name fits several events; `candidates` lists them
    NOT_DELIVERED = 4,    // the latency switch could not be published
    INTERNAL_ERROR = 5,   // the daemon failed to answer (e.g. its store failed)
};

constexpr const char* ToString(ToolsCode value) {
    switch (value) {
        case ToolsCode::OK:
            return "OK";
        case ToolsCode::BAD_REQUEST:
            return "BAD_REQUEST";
        case ToolsCode::UNKNOWN_EVENT:
            return "UNKNOWN_EVENT";
        case ToolsCode::AMBIGUOUS_EVENT:
            return "AMBIGUOUS_EVENT";
        case ToolsCode::NOT_DELIVERED:
            return "NOT_DELIVERED";
        case ToolsCode::INTERNAL_ERROR:
            return "INTERNAL_ERROR";
    }
    return "UNKNOWN";
}

}  // namespace orx::maintaind::tools
