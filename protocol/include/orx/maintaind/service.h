// The maintenance daemon's services as every side sees them: their ids, names and service paths,
// the method table with each method's DDS topics, and the event that carries latency switches.
// This is the one place these values are written; the plug-in, the core, the daemon, the tool,
// the tests and the benchmarks all read them from here.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace orx::maintaind::service {

// Application side: every application reports to it (RegisterApp) and receives latency switches
// from it (SwitchApplicationLatency).
inline constexpr uint16_t kAppServiceId = 0xE000U;
// Tools side: the query, latency and timeline methods that orxmaint and the dashboard call.
inline constexpr uint16_t kToolsServiceId = 0xE001U;

// Short name of the daemon's service; the applications look for it by this name.
inline constexpr std::string_view kShortName = "MAINTAIND";
inline constexpr std::string_view kAppServicePath = "/velmar/ap/orx/ORXMaintaindAppService";
inline constexpr std::string_view kToolsServicePath = "/velmar/ap/orx/ORXMaintaindToolsService";
// Services of the platform's own management that the daemon watches.
inline constexpr std::array<std::string_view, 3> kPlatformServiceNames{
    "ExecutionService", "StateService", "RecoveryService"};

// The method that carries every report of an application, and the event of latency switches.
inline constexpr uint32_t kRegisterAppMethodId = 0xECCDU;   // 60621
inline constexpr uint32_t kSwitchLatencyEventId = 0x75D1U;  // 30161
inline constexpr std::string_view kSwitchLatencyEventName = "SwitchApplicationLatency";

// The query and latency methods of the table, served on the tools side.
inline constexpr uint32_t kQueryAllDataTypeId = 0xDE83U;
inline constexpr uint32_t kQueryDataTypeListId = 0xEBEAU;
inline constexpr uint32_t kQueryDataTypeId = 0x8009U;
inline constexpr uint32_t kQueryEventInfoId = 0x9E5AU;
inline constexpr uint32_t kQueryEventShowId = 0x5A44U;
inline constexpr uint32_t kQueryMethodTypeId = 0x30A4U;
inline constexpr uint32_t kQueryMethodInfoId = 0x94BEU;
inline constexpr uint32_t kQueryNodeInfoId = 0xB805U;
inline constexpr uint32_t kQuerySubEventInfoId = 0x1CDFU;
inline constexpr uint32_t kQueryLatencyResultId = 0xE3BCU;
inline constexpr uint32_t kQueryLatencyStatusId = 0x0DEAU;
inline constexpr uint32_t kSwitchLatencyModeId = 0xF723U;

// Tools-side methods the table has no row for; their ids lie outside it, and on DDS they use the
// driver's default topic names.
inline constexpr uint32_t kQueryFieldInfoId = 0xE101U;
inline constexpr uint32_t kQueryE2EInfoId = 0xE102U;
inline constexpr uint32_t kQuerySampleTimeoutId = 0xE103U;
inline constexpr uint32_t kQueryDaemonStatusId = 0xE104U;
inline constexpr uint32_t kQueryTimelineId = 0xE105U;
// Tools-side event: each new timeline entry, published once it is stored.
inline constexpr uint32_t kTimelineEventId = 0xE106U;
// Compares every provider with every consumer (tools/check.h).
inline constexpr uint32_t kCheckContractsId = 0xE110U;

// Keys of a method's topic map.
inline constexpr std::string_view kRequestTopicKey = "Request";
inline constexpr std::string_view kReplyTopicKey = "Reply";

// The table keys methods by 16 bits; every id of it fits.
constexpr uint16_t Id16(uint32_t entityId) {
    return static_cast<uint16_t>(entityId);
}

// One row of the method table: a method's entity id and its DDS request and reply topics.
struct MethodRow {
    uint16_t entityId;
    std::string_view requestTopic;
    std::string_view replyTopic;
};

// Every method of the maintenance interface. Topics are named after the method; RegisterApp is
// the exception: the daemon answers it on its request topic, so both columns name that topic.
inline constexpr std::array<MethodRow, 13> kMethodTable{{
    {Id16(kQueryAllDataTypeId), "QueryAllDataTypeRequestTopic", "QueryAllDataTypeReplyTopic"},
    {Id16(kQueryDataTypeListId), "QueryDataTypeListRequestTopic", "QueryDataTypeListReplyTopic"},
    {Id16(kQueryDataTypeId), "QueryDataTypeRequestTopic", "QueryDataTypeReplyTopic"},
    {Id16(kQueryEventInfoId), "QueryEventInfoRequestTopic", "QueryEventInfoReplyTopic"},
    {Id16(kQueryEventShowId), "QueryEventShowRequestTopic", "QueryEventShowReplyTopic"},
    {Id16(kQueryMethodTypeId), "QueryMethodTypeRequestTopic", "QueryMethodTypeReplyTopic"},
    {Id16(kQueryMethodInfoId), "QueryMethodInfoRequestTopic", "QueryMethodInfoReplyTopic"},
    {Id16(kQueryNodeInfoId), "QueryNodeInfoRequestTopic", "QueryNodeInfoReplyTopic"},
    {Id16(kQuerySubEventInfoId), "QuerySubEventInfoRequestTopic", "QuerySubEventInfoReplyTopic"},
    {Id16(kQueryLatencyResultId), "QueryLatencyResultRequestTopic", "QueryLatencyResultReplyTopic"},
    {Id16(kQueryLatencyStatusId), "QueryLatencyStatusRequestTopic", "QueryLatencyStatusReplyTopic"},
    {Id16(kSwitchLatencyModeId), "SwitchLatencyModeRequestTopic", "SwitchLatencyModeReplyTopic"},
    {Id16(kRegisterAppMethodId), "RegisterAppRequestTopic", "RegisterAppRequestTopic"},
}};

// The row of `entityId`, or nullptr when the table has none.
constexpr const MethodRow* FindMethod(uint32_t entityId) {
    for (const MethodRow& row : kMethodTable) {
        if (row.entityId == entityId) {
            return &row;
        }
    }
    return nullptr;
}

// True for the ids of the daemon's own services, which never report themselves to it.
constexpr bool IsMaintenanceServiceId(uint16_t serviceId) {
    return serviceId == kAppServiceId || serviceId == kToolsServiceId;
}

// True for the names the daemon's services go by (exact, case-sensitive).
constexpr bool IsMaintenanceServiceName(std::string_view name) {
    return name == kShortName || name == kAppServicePath || name == kToolsServicePath;
}

}  // namespace orx::maintaind::service
