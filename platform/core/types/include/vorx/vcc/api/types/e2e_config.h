#ifndef VORX_VCC_API_TYPES_E2E_CONFIG_H
#define VORX_VCC_API_TYPES_E2E_CONFIG_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vorx/vcc/api/types/driver_type.h"

namespace vorx {
namespace vcc {
namespace api {
namespace types {

// E2E transformer profile as configured in the deployment. The numbers are the
// profile numbers (41 is profile 4M); the core knows a few profiles that the
// maintenance records do not carry (1, 2).
enum class E2EXf_Profile : uint8_t {
    PROFILE_UNDEFINED = 0,
    PROFILE_01 = 1,
    PROFILE_02 = 2,
    PROFILE_04 = 4,
    PROFILE_05 = 5,
    PROFILE_06 = 6,
    PROFILE_07 = 7,
    PROFILE_11 = 11,
    PROFILE_22 = 22,
    PROFILE_4M = 41,
    PROFILE_44 = 44,
};

// How the data ID enters the CRC.
enum class E2EXf_DataIDMode : uint8_t {
    E2E_DATAID_BOTH = 0,
    E2E_DATAID_ALT = 1,
    E2E_DATAID_LOW = 2,
    E2E_DATAID_NIBBLE = 3,
};

// One E2E protection configuration of an event or method, with the state
// machine settings of the receiving side.
struct E2EXfConfig {
    E2EXf_Profile profile{E2EXf_Profile::PROFILE_UNDEFINED};
    std::vector<uint32_t> dataIdList;
    bool isE2EEnabled{false};
    bool isDisableE2ECheck{false};
    uint32_t dataLength{0};
    uint32_t maxDataLength{0};
    uint16_t counterOffset{0};
    uint32_t crcOffset{0};
    E2EXf_DataIDMode dataIdMode{E2EXf_DataIDMode::E2E_DATAID_BOTH};
    uint8_t maxDeltaCounter{0};
    uint8_t maxErrorStateInit{0};
    uint8_t minOkStateInit{0};
    uint8_t windowSizeInit{0};
    uint8_t maxErrorStateValid{0};
    uint8_t minOkStateValid{0};
    uint8_t windowSizeValid{0};
    uint8_t maxErrorStateInvalid{0};
    uint8_t minOkStateInvalid{0};
    bool isCheckEnabled{false};
    uint32_t windowSizeInvalid{0};
};

// The E2E settings of one event of this process, as the core reports them for
// maintenance. The instance id is text because that is how deployments name
// instances; it may be anything the deployment says, valid or not.
struct EventE2EConfigInfo {
    uint16_t serviceId{0};
    std::string instanceId;
    uint32_t entityId{0};
    std::string eventName;
    DriverType driverType{DriverType::DDS};
    bool isPub{false};  // true on the offering side, false on the subscribing side
    std::shared_ptr<E2EXfConfig> e2eConfig;
};

}  // namespace types
}  // namespace api
}  // namespace vcc
}  // namespace vorx

#endif
