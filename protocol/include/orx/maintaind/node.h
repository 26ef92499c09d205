// Records describing the reporting process: node pid and state, and its E2E settings.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/common.h"
#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// E2E settings of one event, as the E2E client reports them.
struct EventE2EConfigInfo {
    uint16_t serviceId{};
    uint16_t instanceId{};
    uint16_t eventId{};
    uint16_t nodePid{};
    String eventName;
    E2EConfigInfo e2eConfig;
    DriverType driverType{};  // binding of the configuration
    bool isPub{};

    ORX_MAINTAIND_RECORD(EventE2EConfigInfo, serviceId, instanceId, eventId, nodePid, eventName,
                         e2eConfig, driverType, isPub)
};

// E2E settings of a process: publisher-side configurations, then subscriber-side ones.
struct AppE2EConfigInfo {
    std::vector<EventE2EConfigInfo> pubE2EConfigs;
    std::vector<EventE2EConfigInfo> subE2EConfigs;

    ORX_MAINTAIND_RECORD(AppE2EConfigInfo, pubE2EConfigs, subE2EConfigs)
};

// The node pid that the node registration carries, and the state reported with it.
struct NodePidInfo {
    uint16_t nodePid{};
    bool isOnline{};

    ORX_MAINTAIND_RECORD(NodePidInfo, nodePid, isOnline)
};

// The reporting process itself.
struct NodeCommonRegisterInfo {
    int32_t pid{};
    String appName;
    NodePidInfo nodePidInfo;
    bool isUnregister{};
    AppE2EConfigInfo appE2EConfig;

    ORX_MAINTAIND_RECORD(NodeCommonRegisterInfo, pid, appName, nodePidInfo, isUnregister,
                         appE2EConfig)
};

}  // namespace orx::maintaind
