// Records describing one event and its DDS and SOME/IP bindings.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "orx/maintaind/common.h"
#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// DDS binding of one event.
struct DDSEventInfo {
    uint16_t serviceId{};
    uint16_t instanceId{};
    uint16_t domainId{};
    String topicName;
    String dataTypeName;
    uint32_t historyDepth{};
    uint32_t queueSize{};
    DurabilityQos durability{};
    HistoryQos history{};
    std::vector<TransportQos> transportQos;
    uint32_t fragSize{};
    uint32_t listenQueueSize{};
    String networkName;
    std::map<String, String> attributes;  // further DDS settings, key to value
    uint8_t ddsMode{};
    E2EConfigInfo e2eConfig;
    ReliabilityKind reliability{};
    bool isLatencyEnabled{};

    ORX_MAINTAIND_RECORD(DDSEventInfo, serviceId, instanceId, domainId, topicName, dataTypeName,
                         historyDepth, queueSize, durability, history, transportQos, fragSize,
                         listenQueueSize, networkName, attributes, ddsMode, e2eConfig, reliability,
                         isLatencyEnabled)
};

// One signal of a signal-based SOME/IP PDU.
struct IsignalInfo {
    String signalName;
    String signalType;
    bool isBigEndian{};
    uint64_t startPosition{};
    uint64_t signalLength{};
    String initValue;

    ORX_MAINTAIND_RECORD(IsignalInfo, signalName, signalType, isBigEndian, startPosition,
                         signalLength, initValue)
};

// Signal-based payload description of a SOME/IP event.
struct PduConfigInfo {
    String pduName;
    uint64_t pduLength{};
    bool isDynamicLength{};
    std::vector<IsignalInfo> isignals;

    ORX_MAINTAIND_RECORD(PduConfigInfo, pduName, pduLength, isDynamicLength, isignals)
};

// SOME/IP binding of one event.
struct SomeipEventInfo {
    uint16_t serviceId{};
    uint16_t instanceId{};
    uint32_t majorVersion{};
    uint16_t eventId{};
    std::vector<uint16_t> eventGroupIds;
    String networkName;
    uint16_t minorVersion{};
    uint32_t udpTtl{};
    uint16_t port{};
    bool isReliable{};
    E2EConfigInfo e2eConfig;
    std::vector<uint8_t> serializeTag;
    PduConfigInfo pduConfig;

    ORX_MAINTAIND_RECORD(SomeipEventInfo, serviceId, instanceId, majorVersion, eventId,
                         eventGroupIds, networkName, minorVersion, udpTtl, port, isReliable,
                         e2eConfig, serializeTag, pduConfig)
};

// One binding entry of an event: only the member matching the map key is meaningful, the other
// stays default.
struct EventInfo {
    DDSEventInfo ddsEventInfo;
    SomeipEventInfo someipEventInfo;

    ORX_MAINTAIND_RECORD(EventInfo, ddsEventInfo, someipEventInfo)
};

// Registration of one event.
struct EventRegisterInfo {
    String serviceName;
    String instanceName;
    std::map<DriverType, EventInfo> eventInfos;  // one entry per binding
    String eventName;
    String dataTypeName;
    int32_t role{};
    SerializeConfig serializeConfig;
    String shortName;
    bool isField{};
    String appName;
    int32_t pid{};
    bool isOnline{};

    ORX_MAINTAIND_RECORD(EventRegisterInfo, serviceName, instanceName, eventInfos, eventName,
                         dataTypeName, role, serializeConfig, shortName, isField, appName, pid,
                         isOnline)
};

}  // namespace orx::maintaind
