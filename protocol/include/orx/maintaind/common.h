// Records shared by events and methods: error domains, serialization settings, E2E settings.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// One application error domain of a method.
struct ErrorDomainInfo {
    uint64_t domainId{};
    String domainName;

    ORX_MAINTAIND_RECORD(ErrorDomainInfo, domainId, domainName)
};

// Serialization settings of an event, a method argument or a method reply.
struct SerializeConfig {
    uint8_t serializeType{};  // serialization kind
    String serializeConfigText;

    ORX_MAINTAIND_RECORD(SerializeConfig, serializeType, serializeConfigText)
};

// One E2E protection configuration, carried per binding.
struct E2EConfigInfo {
    E2EProfile profile{};
    std::vector<uint32_t> dataIdList;
    bool isE2EEnabled{};
    bool isDisableE2ECheck{};
    uint32_t dataLength{};
    uint32_t maxDataLength{};
    uint16_t counterOffset{};
    uint32_t crcOffset{};
    E2EDataIDMode dataIdMode{};
    uint8_t maxDeltaCounter{};
    uint8_t maxErrorStateInit{};
    uint8_t minOkStateInit{};
    uint8_t windowSizeInit{};
    uint8_t maxErrorStateValid{};
    uint8_t minOkStateValid{};
    uint8_t windowSizeValid{};
    uint8_t maxErrorStateInvalid{};
    uint8_t minOkStateInvalid{};
    bool isCheckEnabled{};
    uint32_t windowSizeInvalid{};

    ORX_MAINTAIND_RECORD(E2EConfigInfo, profile, dataIdList, isE2EEnabled, isDisableE2ECheck,
                         dataLength, maxDataLength, counterOffset, crcOffset, dataIdMode,
                         maxDeltaCounter, maxErrorStateInit, minOkStateInit, windowSizeInit,
                         maxErrorStateValid, minOkStateValid, windowSizeValid, maxErrorStateInvalid,
                         minOkStateInvalid, isCheckEnabled, windowSizeInvalid)
};

}  // namespace orx::maintaind
