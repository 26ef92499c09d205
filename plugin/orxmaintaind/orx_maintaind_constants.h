#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_CONSTANTS_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_CONSTANTS_H

// Constants shared by every source file of the plug-in.
//
// They are deliberately `static const` objects: each source file gets its own private copy, built
// by that file's static initialisers and destroyed at unload in reverse order. Code that runs
// while the library is being loaded (the registrations with the core) therefore only ever sees
// the copies of its own, already initialised, source file, whatever the link order.

#include <map>
#include <string>
#include <utility>

#include "vorx/vcc/api/types/driver_type.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Names of the core's binding kinds, for log lines.
static const std::map<vorx::vcc::api::types::DriverType, std::string> kDriverTypeNames{
    {vorx::vcc::api::types::DriverType::PROLOC, "PROLOC"},
    {vorx::vcc::api::types::DriverType::DDS, "DDS"},
    {vorx::vcc::api::types::DriverType::SOMEIP, "SOMEIP"},
};

// Instance id text meaning "any instance".
static const std::string kWildcardId{"65534"};
// Instance id text meaning "not defined".
static const std::string kUndefinedId{"65535"};
static const std::string kUndefinedServiceName{"UNDEFINED_SERVICE_NAME"};
static const std::string kUndefinedQosProfile{"UNDEFINED_QOS_PROFILE"};
// Network used when the configuration names none.
static const std::pair<std::string, bool> kUndefinedNetwork{"UNDEFINED_NETWORK", false};
static const std::pair<std::string, bool> kBuiltinAppClientFlag{"BUILTIN_APP_CLIENT_FLAG", false};
static const std::pair<std::string, bool> kBuiltinAppServerFlag{"BUILTIN_APP_SERVER_FLAG", false};
static const std::string kDdsPartitionPath{"/Velmar/AP"};
static const std::string kPlatformHealthAppName{"PlatformHealthManagement"};
static const std::string kExecutionManagementAppName{"ExecutionManagement"};
static const std::string kDefaultMulticastAddrKey{"defaultMulticastAddr"};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
