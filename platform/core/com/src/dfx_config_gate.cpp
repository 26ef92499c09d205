#include "dfx_config_gate.h"

#include "com_log.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/register_dfx_interface.h"
#include "vorx/vcc/reserve_service.h"

namespace vorx::vcc {
namespace {

// The provider to ask for `serviceName` on `binding`, or nullptr when nobody needs asking.
std::shared_ptr<DDSDfxConfigInterface> ProviderFor(api::types::DriverType binding,
                                                   const std::string& serviceName) {
    if (binding != api::types::DriverType::DDS || !CheckIsReserveServiceName(serviceName)) {
        return nullptr;
    }
    return RegisterDfxInterface::GetDfxConfigInterface();
}

void LogRefused(const char* what, const ara::com::internal::BindIndex& index) {
    ComLog().LogWarn() << "[DfxConfig][" << what
                       << " refused by the DFX configuration][serviceName=" << index.serviceName
                       << ", instanceId=" << index.instanceId << ", entityId=" << index.entityId
                       << "]";
}

}  // namespace

bool AcceptServiceDiscovery(const ServiceDescription& search) {
    auto provider = ProviderFor(search.driverType, search.serviceName);
    if (!provider) {
        return true;
    }
    const ara::com::internal::BindIndex index{search.serviceName, search.instanceId, 0};
    driver::dds::DDSServiceDiscoveryInfo settings;
    settings.SetServiceId(search.serviceId);
    settings.SetServiceName(search.serviceName);
    if (!provider->ReadServiceDiscoveryData(index, settings)) {
        LogRefused("Service discovery", index);
        return false;
    }
    return true;
}

bool AcceptMethod(const HandleType& handle, const api::types::MethodInfo& info) {
    auto provider = ProviderFor(handle.GetDriverType(), handle.GetServiceName());
    if (!provider) {
        return true;
    }
    const ara::com::internal::BindIndex index{handle.GetServiceName(), handle.GetInstanceId(),
                                              info.GetEntityId()};
    driver::dds::DDSMethodInfo settings;
    if (const auto* dds = dynamic_cast<const driver::dds::DDSMethodInfo*>(&info)) {
        settings = *dds;
    }
    if (!provider->ReadMethodData(index, settings)) {
        LogRefused("Method", index);
        return false;
    }
    return true;
}

bool AcceptEvent(const HandleType& handle, uint32_t entityId, const api::types::EventInfo* info) {
    auto provider = ProviderFor(handle.GetDriverType(), handle.GetServiceName());
    if (!provider) {
        return true;
    }
    const ara::com::internal::BindIndex index{handle.GetServiceName(), handle.GetInstanceId(),
                                              entityId};
    driver::dds::DDSEventInfo settings;
    if (const auto* dds = dynamic_cast<const driver::dds::DDSEventInfo*>(info)) {
        settings = *dds;
    }
    if (!provider->ReadEventData(index, settings)) {
        LogRefused("Event", index);
        return false;
    }
    return true;
}

}  // namespace vorx::vcc
