#include "transport_setup.h"

#include <iostream>
#include <string>

#include "ara/kelda/common/log/log.h"
#include "vorx/vcc/app/process_settings.h"
#ifdef ORXMAINT_WITH_DDS
#include "vorx/driver/dds/dds_driver.h"
#endif

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

std::optional<ClientSettings> SetUpTransport(const Options& options, int& exitCode) {
    const auto process =
        vorx::vcc::app::SetUpMaintenanceProcess([&options](vorx::vcc::app::ProcessSettings& s) {
            if (options.domain) {
                s.dds.domainId = *options.domain;
                s.report.origins["dds.domainId"] =
                    ara::kelda::common::orxConfigParser::SettingOrigin::Option("--domain");
            }
        });
    if (process.refusal) {
        // Its error line is written; never look for maintaind in another domain or instance.
        std::cerr << "orxmaint: not started: invalid " << process.refusal->origin.Describe()
                  << "\n";
        exitCode = 2;
        return std::nullopt;
    }
    if (!process.pluginLoaded) {
        ara::kelda::common::log::Log::GetDefaultLog()->LogWarn()
            << "[orxmaint][DFX plug-in not loaded: the maintenance services are looked for "
               "with the driver's default DDS settings]";
    }

#ifdef ORXMAINT_WITH_DDS
    // Our own participant first: when it cannot start, maintaind is not to blame.
    if (process.settings.drivers.NameOf(DriverType::DDS) == "dds" &&
        !vorx::driver::dds::DdsDriver::GetShared()) {
        std::cerr << "orxmaint: cannot start its own DDS participant on " << Where(process.settings)
                  << " (the reason is in the line above); maintaind was not asked\n";
        exitCode = 1;
        return std::nullopt;
    }
#endif
    ClientSettings settings;
    settings.instanceId =
        !options.instanceId.empty() ? options.instanceId : process.settings.maintenanceInstanceId;
    settings.binding = DriverType::DDS;
    settings.where = Where(process.settings);
    settings.timeout = std::chrono::milliseconds(options.timeoutMs);
    return settings;
}

}  // namespace orx::orxmaint
