#include "transport_setup.h"

#include <string>

#include "ara/kelda/common/log/log.h"
#include "vorx/vcc/app/process_settings.h"

namespace orx::orxmaint {

namespace {

using vorx::vcc::api::types::DriverType;

// How the transport is named in messages.
std::string Where(const vorx::vcc::app::ProcessSettings& settings) {
    const std::string& driver = settings.drivers.NameOf(DriverType::DDS);
    if (driver == "dds") {
        return "DDS domain " + std::to_string(settings.dds.domainId);
    }
    return "the \"" + driver + "\" driver";
}

}  // namespace

ClientSettings SetUpTransport(const Options& options) {
    const auto process =
        vorx::vcc::app::SetUpMaintenanceProcess([&options](vorx::vcc::app::ProcessSettings& s) {
            if (options.domain) {
                s.dds.domainId = *options.domain;
                s.report.origins["dds.domainId"] =
                    ara::kelda::common::orxConfigParser::SettingOrigin::Option("--domain");
            }
        });
    if (!process.pluginLoaded) {
        ara::kelda::common::log::Log::GetDefaultLog()->LogWarn()
            << "[orxmaint][DFX plug-in not loaded: the maintenance services are looked for "
               "with the driver's default DDS settings]";
    }

    ClientSettings settings;
    settings.instanceId =
        !options.instanceId.empty() ? options.instanceId : process.settings.maintenanceInstanceId;
    settings.binding = DriverType::DDS;
    settings.where = Where(process.settings);
    settings.timeout = std::chrono::milliseconds(options.timeoutMs);
    return settings;
}

}  // namespace orx::orxmaint
