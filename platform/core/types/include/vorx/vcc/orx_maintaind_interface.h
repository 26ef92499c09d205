#ifndef VORX_VCC_ORX_MAINTAIND_INTERFACE_H
#define VORX_VCC_ORX_MAINTAIND_INTERFACE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/e2e_config.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/api/types/latency.h"
#include "vorx/vcc/api/types/subscriber_listener.h"
#include "vorx/vcc/export.h"

namespace vorx {
namespace vcc {

// What the core calls on the maintenance plug-in. The plug-in registers one
// implementation at load time (RegisterDfxInterface); the core calls
// InitializeAll once it is up, then reports its entities as they come and go.
// Every report operation only schedules work and returns at once; it may be
// called from any application thread.
class VCC_EXPORT OrxMaintaindInterface {
  public:
    using DriverType = api::types::DriverType;
    template <typename Info>
    using BindingMap = std::map<DriverType, std::shared_ptr<Info>>;
    // Withdrawals carry several entities at once, keyed by entity id.
    template <typename Info>
    using EntityBindingMap = std::map<uint32_t, BindingMap<Info>>;

    virtual ~OrxMaintaindInterface();

    virtual void InitializeAll() = 0;
    // The process offers or uses a service; the first call reports the process.
    virtual void RegisterNodePid(const uint16_t& serviceId) = 0;
    virtual void RegisterNodePid(const std::string& serviceName) = 0;
    // isPub: true on the offering side (publisher, method server).
    virtual void RegisterEventInfoToMaintaind(const BindingMap<api::types::EventInfo>& infos,
                                              const bool& isPub) = 0;
    virtual void UnregisterEventInfoToMaintaind(
        const EntityBindingMap<api::types::EventInfo>& infos, const bool& isPub) = 0;
    virtual void RegisterMethodInfoToMaintaind(const BindingMap<api::types::MethodInfo>& infos,
                                               const bool& isPub) = 0;
    virtual void UnregisterMethodInfoToMaintaind(
        const EntityBindingMap<api::types::MethodInfo>& infos, const bool& isPub) = 0;
    virtual void RegisterFieldInfoToMaintaind(const BindingMap<api::types::FieldInfo>& infos,
                                              const bool& isPub) = 0;
    virtual void UnregisterFieldInfoToMaintaind(
        const EntityBindingMap<api::types::FieldInfo>& infos, const bool& isPub) = 0;
    // The handler switches latency measurement of one event on or off.
    virtual void RegisterLatencyMode(
        const std::function<void(const api::types::LatencyAnalysisMode&)>& handler,
        const BindingMap<api::types::EventInfo>& infos, const bool& isPub) = 0;
    // The handler returns the latency measured since its previous call.
    virtual void RegisterLatencyQuery(const std::function<api::types::LatencyResult()>& handler,
                                      const std::shared_ptr<api::types::EventInfo>& info,
                                      const DriverType& driverType) = 0;
    virtual void RegisterE2EInfoToMaintaind(
        const std::vector<api::types::EventE2EConfigInfo>& configs) = 0;
    // The listener the core installs on subscribers to report sample
    // timeouts; an empty descriptor when there is none.
    virtual api::types::ListenerDescriptor GetMaintaindClientListener();
};

}  // namespace vcc
}  // namespace vorx

#endif
