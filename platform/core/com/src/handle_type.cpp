#include "vorx/vcc/handle_type.h"

#include <tuple>

namespace vorx::vcc {

bool ServiceDescription::IsAnyInstance(const std::string& instanceId) {
    return instanceId.empty() || instanceId == kAnyInstanceId || instanceId == kUndefinedInstanceId;
}

bool ServiceDescription::Matches(const ServiceDescription& offer) const {
    return driverType == offer.driverType && serviceId == offer.serviceId &&
           (serviceName.empty() || serviceName == offer.serviceName) &&
           (IsAnyInstance(instanceId) || instanceId == offer.instanceId);
}

HandleType::HandleType(const ServiceDescription& offer, uint64_t providerId)
    : desc_(offer), providerId_(providerId) {}

bool HandleType::operator==(const HandleType& other) const {
    return providerId_ == other.providerId_ && desc_.driverType == other.desc_.driverType &&
           desc_.serviceId == other.desc_.serviceId &&
           desc_.serviceName == other.desc_.serviceName &&
           desc_.instanceId == other.desc_.instanceId;
}

bool HandleType::operator<(const HandleType& other) const {
    return std::tie(desc_.driverType, desc_.serviceId, desc_.serviceName, desc_.instanceId,
                    providerId_) < std::tie(other.desc_.driverType, other.desc_.serviceId,
                                            other.desc_.serviceName, other.desc_.instanceId,
                                            other.providerId_);
}

}  // namespace vorx::vcc
