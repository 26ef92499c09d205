#include "orxmaintaind/orx_maintaind_bind_index.h"

#include <tuple>
#include <utility>

namespace orx {
namespace orxcm {
namespace orxmaintaind {

OrxMaintaindBindIndex::OrxMaintaindBindIndex(
    uint16_t serviceIdValue, std::string instanceIdValue, uint32_t entityIdValue,
    std::set<vorx::vcc::api::types::DriverType> driverTypesValue, bool isPubValue,
    bool isRegisterValue)
    : serviceId(serviceIdValue),
      instanceId(std::move(instanceIdValue)),
      entityId(entityIdValue),
      driverTypes(std::move(driverTypesValue)),
      isPub(isPubValue),
      isRegister(isRegisterValue) {}

bool OrxMaintaindBindIndex::operator<(const OrxMaintaindBindIndex& other) const {
    // std::set compares element by element, a shorter prefix first.
    return std::tie(serviceId, instanceId, driverTypes, entityId) <
           std::tie(other.serviceId, other.instanceId, other.driverTypes, other.entityId);
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
