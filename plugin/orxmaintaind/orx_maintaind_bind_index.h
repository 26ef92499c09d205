#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_BIND_INDEX_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_BIND_INDEX_H

#include <cstdint>
#include <set>
#include <string>

#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/driver_type.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Cache key of one reported entity (event, method, field or E2E configuration).
//
// Keys are ordered by service id, instance id text, the set of bindings and entity id. The two
// flags take no part in the order, so a registration and a withdrawal of the same entity share
// one cache slot: the later report replaces or cancels the earlier one.
struct ORXCM_DFX_EXPORT OrxMaintaindBindIndex {
    uint16_t serviceId{0};
    std::string instanceId;
    uint32_t entityId{0};
    std::set<vorx::vcc::api::types::DriverType> driverTypes;
    // Publisher (offering, server) side; handed on unchanged to the client that sends the entry.
    bool isPub{false};
    // true: a registration waits to be sent; false: a withdrawal that failed waits to be sent.
    bool isRegister{true};

    OrxMaintaindBindIndex() = default;
    OrxMaintaindBindIndex(uint16_t serviceIdValue, std::string instanceIdValue,
                          uint32_t entityIdValue,
                          std::set<vorx::vcc::api::types::DriverType> driverTypesValue,
                          bool isPubValue, bool isRegisterValue);

    bool operator<(const OrxMaintaindBindIndex& other) const;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
