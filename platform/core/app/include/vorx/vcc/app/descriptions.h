#ifndef VORX_VCC_APP_DESCRIPTIONS_H
#define VORX_VCC_APP_DESCRIPTIONS_H

#include <map>
#include <memory>
#include <vector>

#include "vorx/vcc/api/types/e2e_config.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/handle_type.h"

// The core's entity descriptions of a deployed service: what the core hands to the DFX plug-in
// when an entity comes up or goes away, and what its proxies and skeletons are built from.
//
// Every description is filled completely from the deployment: ids, names, role (server for a
// provided service, client for a required one), binding, instance, network, resource
// attributes, and the binding's own settings (topics, QoS, SOME/IP ids and versions,
// serialization, E2E). Only the bindings that maintenance reports carry appear in the maps: DDS
// (DDSEventInfo, DDSMethodInfo) and SOME/IP (SomeipEventInfo, SomeipMethodInfo). A service
// deployed on the process-local binding only gets empty maps.
namespace vorx::vcc::app {

using EventInfoMap = std::map<api::types::DriverType, std::shared_ptr<api::types::EventInfo>>;
using MethodInfoMap = std::map<api::types::DriverType, std::shared_ptr<api::types::MethodInfo>>;
using FieldInfoMap = std::map<api::types::DriverType, std::shared_ptr<api::types::FieldInfo>>;

// `isFieldNotifier` marks the event as the notifier of a field (EventInfo::IsField).
VCC_EXPORT EventInfoMap DescribeEvent(const ServiceDeployment& service,
                                      const EventDeployment& event, bool isFieldNotifier = false);
// `isFieldMethod` marks the method as a field's getter or setter (MethodInfo::IsFieldMethod 1).
VCC_EXPORT MethodInfoMap DescribeMethod(const ServiceDeployment& service,
                                        const MethodDeployment& method, bool isFieldMethod = false);
VCC_EXPORT FieldInfoMap DescribeField(const ServiceDeployment& service,
                                      const FieldDeployment& field);
// The E2E settings of an event, one entry per reported binding; empty without E2E protection.
// isPub is true for a provided service.
VCC_EXPORT std::vector<api::types::EventE2EConfigInfo> DescribeE2E(const ServiceDeployment& service,
                                                                   const EventDeployment& event);

// The description of a method on the binding that carries the traffic, for creating its method
// proxy (a DDSMethodInfo on DDS, a plain MethodInfo on the process-local binding).
VCC_EXPORT std::shared_ptr<api::types::MethodInfo> TrafficMethodInfo(
    const ServiceDeployment& service, const MethodDeployment& method, bool isFieldMethod = false);
// What an offer announces and a search asks for, on the traffic binding. REQUIRES: the service
// has a traffic binding (ServiceDeployment::TrafficBinding).
VCC_EXPORT ServiceDescription DescribeService(const ServiceDeployment& service);

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_DESCRIPTIONS_H
