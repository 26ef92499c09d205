#ifndef VORX_VCC_DRIVER_DRIVER_SETTINGS_H
#define VORX_VCC_DRIVER_DRIVER_SETTINGS_H

#include <array>
#include <string>

#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "ara/kelda/common/orxConfigParser/setting.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/payload.h"

namespace vorx::vcc {

// The name of the in-process driver, the default of every binding.
inline constexpr const char* kInProcessDriverName = "inprocess";

// Which driver carries each binding, and how the in-process driver hands payloads over: what
// DriverRegistry is given at start-up.
struct VCC_EXPORT DriverSettings {
    // Driver name per binding, indexed by DriverType (PROLOC, DDS, SOMEIP): "inprocess" or a name
    // registered with DriverRegistry::RegisterFactory.
    std::array<std::string, 3> names{kInProcessDriverName, kInProcessDriverName,
                                     kInProcessDriverName};
    PayloadMode inProcessPayload{PayloadMode::kBytes};

    const std::string& NameOf(api::types::DriverType binding) const;
    std::string& NameOf(api::types::DriverType binding);
    bool operator==(const DriverSettings& other) const;
};

// "proloc", "dds", "someip": a binding's name in orx.json ("drivers.dds") and, in upper case, in
// its environment variable (ORX_DDS_DRIVER).
VCC_EXPORT const char* BindingKey(api::types::DriverType binding);

// Reads the driver settings from their sources over `settings`, each overriding the one before:
//   1. `file` (may be null): "drivers.proloc", "drivers.dds", "drivers.someip" of orx.json;
//   2. `env`: ORX_PROLOC_DRIVER, ORX_DDS_DRIVER, ORX_SOMEIP_DRIVER (when not empty), and
//      ORX_INPROCESS_PAYLOAD, "bytes" or "objects".
// A refused value (a name that is not a text, an empty name, another payload word) gives one
// error line and is recorded in `report` (may be null), as is where each value came from
// ("drivers.<binding>", "ORX_INPROCESS_PAYLOAD"). Whether a name is a known driver is decided
// when the driver is made (DriverRegistry).
VCC_EXPORT void LoadDriverSettings(DriverSettings& settings,
                                   ara::kelda::common::orxConfigParser::ConfigReader* file,
                                   const ara::kelda::common::orxConfigParser::EnvLookup& env,
                                   ara::kelda::common::orxConfigParser::SettingsReport* report);

}  // namespace vorx::vcc

#endif  // VORX_VCC_DRIVER_DRIVER_SETTINGS_H
