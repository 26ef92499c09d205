// The tools-side service of the maintenance daemon: its identity and the entity id of each of its
// methods. The daemon serves these; the command-line tool calls them.
//
// Every method takes one request record and returns one reply record (see requests.h and
// replies.h). Every reply starts with `code` (a ToolsCode value) and `message` (a readable text,
// empty on success), so a client can always report why a call failed.
#pragma once

#include <cstdint>

namespace orx::maintaind::tools {

// Service id of the tools-side service. Its service path is the core's
// OrxMaintaindType::GetToolsServicePath(); its instance id is the daemon's instance id.
inline constexpr uint16_t kToolsServiceId = 0xE001U;

// Methods of the maintenance service's method table, request record -> reply record:
inline constexpr uint32_t kQueryAllDataTypeId = 0xDE83U;    // QueryFilter -> AllDataReply
inline constexpr uint32_t kQueryDataTypeListId = 0xEBEAU;   // QueryFilter -> DataTypeListReply
inline constexpr uint32_t kQueryDataTypeId = 0x8009U;       // DataTypeRequest -> DataTypeReply
inline constexpr uint32_t kQueryEventInfoId = 0x9E5AU;      // QueryFilter -> EventListReply
inline constexpr uint32_t kQueryEventShowId = 0x5A44U;      // EventShowRequest -> EventShowReply
inline constexpr uint32_t kQueryMethodTypeId = 0x30A4U;     // QueryFilter -> MethodTypeListReply
inline constexpr uint32_t kQueryMethodInfoId = 0x94BEU;     // QueryFilter -> MethodListReply
inline constexpr uint32_t kQueryNodeInfoId = 0xB805U;       // QueryFilter -> NodeListReply
inline constexpr uint32_t kQuerySubEventInfoId = 0x1CDFU;   // QueryFilter -> EventListReply
inline constexpr uint32_t kQueryLatencyResultId = 0xE3BCU;  // QueryFilter -> LatencyResultListReply
inline constexpr uint32_t kQueryLatencyStatusId = 0x0DEAU;  // QueryFilter -> LatencyStatusListReply
inline constexpr uint32_t kSwitchLatencyModeId =
    0xF723U;  // LatencySwitchRequest -> LatencySwitchReply

// Methods the table has no row for; their ids lie outside it. On DDS they use the driver's
// default topic names.
inline constexpr uint32_t kQueryFieldInfoId = 0xE101U;      // QueryFilter -> FieldListReply
inline constexpr uint32_t kQueryE2EInfoId = 0xE102U;        // QueryFilter -> E2EListReply
inline constexpr uint32_t kQuerySampleTimeoutId = 0xE103U;  // QueryFilter -> SampleTimeoutListReply
inline constexpr uint32_t kQueryDaemonStatusId = 0xE104U;   // QueryFilter -> DaemonStatusReply

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
