#ifndef VORX_VCC_HANDLE_TYPE_H
#define VORX_VCC_HANDLE_TYPE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// Instance ids that match every instance when a service is searched: 65534 is the wildcard "any
// instance", 65535 (and the empty text) mean "not configured", which searches every instance too.
inline constexpr const char* kAnyInstanceId = "65534";
inline constexpr const char* kUndefinedInstanceId = "65535";

// What names one service on one binding: the identity an offer announces and a search asks for.
struct VCC_EXPORT ServiceDescription {
    uint16_t serviceId{0};
    std::string instanceId{kUndefinedInstanceId};  // decimal text, e.g. "1"
    std::string serviceName;                       // service path, e.g. "/demo/RadarService"
    api::types::DriverType driverType{api::types::DriverType::PROLOC};
    std::string network;  // network the binding uses; informative for the in-process binding

    // True when `offer` is what this search asks for: same binding, service id and name, and the
    // same instance unless this description's instance is a wildcard (see above). An empty
    // service name in the search matches any name.
    bool Matches(const ServiceDescription& offer) const;
    // True for the instance texts that match every instance.
    static bool IsAnyInstance(const std::string& instanceId);
};

// One found offer of a service. Made by the drivers; two handles are equal when they name the same
// offer of the same provider.
class VCC_EXPORT HandleType {
  public:
    HandleType() = default;
    HandleType(const ServiceDescription& offer, uint64_t providerId);

    uint16_t GetServiceId() const { return desc_.serviceId; }
    const std::string& GetInstanceId() const { return desc_.instanceId; }
    const std::string& GetServiceName() const { return desc_.serviceName; }
    api::types::DriverType GetDriverType() const { return desc_.driverType; }
    // The driver's id of the offering provider (unique per driver and offer, never 0 for a handle
    // a driver made).
    uint64_t GetProviderId() const { return providerId_; }
    const ServiceDescription& GetDescription() const { return desc_; }

    bool operator==(const HandleType& other) const;
    bool operator!=(const HandleType& other) const { return !(*this == other); }
    // Orders by binding, service id, service name, instance id, then provider id.
    bool operator<(const HandleType& other) const;

  private:
    ServiceDescription desc_;
    uint64_t providerId_{0};
};

using ServiceHandleContainer = std::vector<HandleType>;
// Gets the current list of matching offers; see Proxy::StartFindService.
using FindServiceHandler = std::function<void(ServiceHandleContainer)>;

// Names one running service search; id 0 names none (a search that could not start).
struct FindServiceHandle {
    uint64_t id = 0;
};

// One received event sample, owned by the receiver.
template <class T>
using SamplePtr = std::unique_ptr<T>;

}  // namespace vorx::vcc

#endif  // VORX_VCC_HANDLE_TYPE_H
