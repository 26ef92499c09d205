// Records describing one method and its DDS and SOME/IP bindings.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "orx/maintaind/common.h"
#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// DDS binding of one method.
struct DDSMethodInfo {
    String requestTopicName;
    String replyTopicName;
    String requestDataTypeName;
    String replyDataTypeName;
    uint16_t domainId{};
    uint32_t requestQueueSize{};
    uint32_t replyQueueSize{};
    DurabilityQos requestDurability{};
    DurabilityQos replyDurability{};
    HistoryQos requestHistory{};
    HistoryQos replyHistory{};
    std::vector<TransportQos> transportQos;
    uint32_t requestHistoryDepth{};
    uint32_t replyHistoryDepth{};
    uint32_t fragSize{};
    uint32_t listenQueueSize{};
    E2EConfigInfo e2eConfig;
    ReliabilityKind reliability{};
    String methodName;
    String instanceShortName;

    ORX_MAINTAIND_RECORD(DDSMethodInfo, requestTopicName, replyTopicName, requestDataTypeName,
                         replyDataTypeName, domainId, requestQueueSize, replyQueueSize,
                         requestDurability, replyDurability, requestHistory, replyHistory,
                         transportQos, requestHistoryDepth, replyHistoryDepth, fragSize,
                         listenQueueSize, e2eConfig, reliability, methodName, instanceShortName)
};

// SOME/IP binding of one method.
struct SomeipMethodInfo {
    uint16_t methodId{};
    String networkName;
    uint32_t majorVersion{};
    uint16_t minorVersion{};
    bool isReliable{};
    E2EConfigInfo e2eConfig;
    std::vector<uint8_t> requestSerializeTag;
    std::vector<uint8_t> replySerializeTag;
    String instanceShortName;
    std::vector<TransportQos> transportQos;

    ORX_MAINTAIND_RECORD(SomeipMethodInfo, methodId, networkName, majorVersion, minorVersion,
                         isReliable, e2eConfig, requestSerializeTag, replySerializeTag,
                         instanceShortName, transportQos)
};

// One binding entry of a method: only the member matching the map key is meaningful.
struct MethodInfo {
    DDSMethodInfo ddsMethodInfo;
    SomeipMethodInfo someipMethodInfo;

    ORX_MAINTAIND_RECORD(MethodInfo, ddsMethodInfo, someipMethodInfo)
};

// Registration of one method.
struct MethodRegisterInfo {
    String serviceName;
    String instanceName;
    std::map<DriverType, MethodInfo> methodInfos;  // one entry per binding
    uint16_t serviceId{};
    uint16_t instanceId{};
    std::vector<String> inputParamNames;
    std::vector<String> outputParamNames;
    int32_t role{};
    SerializeConfig requestSerializeConfig;
    SerializeConfig replySerializeConfig;
    String methodName;
    std::vector<ErrorDomainInfo> errorDomains;
    String shortName;
    bool isFireAndForget{};
    bool isField{};
    String appName;
    int32_t pid{};
    String hostDomainName;
    bool isOnline{};

    ORX_MAINTAIND_RECORD(MethodRegisterInfo, serviceName, instanceName, methodInfos, serviceId,
                         instanceId, inputParamNames, outputParamNames, role,
                         requestSerializeConfig, replySerializeConfig, methodName, errorDomains,
                         shortName, isFireAndForget, isField, appName, pid, hostDomainName,
                         isOnline)
};

}  // namespace orx::maintaind
