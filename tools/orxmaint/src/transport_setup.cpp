#include "transport_setup.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/driver/driver_registry.h"
#if ORXMAINT_WITH_DDS
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/driver/dds/participant_settings.h"
#endif

namespace orx::orxmaint {

namespace {

using ara::kelda::common::orxConfigParser::ParseJsonToGetConfig;
using vorx::vcc::api::types::DriverType;

constexpr const char* kDefaultInstanceId = "1";

// The plug-in next to this executable: <exe dir>/../lib/liborxcm_dfx.so.
std::string PluginNextToExecutable() {
    char path[PATH_MAX] = {};
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (size <= 0) {
        return "";
    }
    const std::string exe(path, static_cast<size_t>(size));
    const auto slash = exe.rfind('/');
    return slash == std::string::npos ? "" : exe.substr(0, slash) + "/../lib/liborxcm_dfx.so";
}

// maintaind is reached from other processes: unless the environment or orx.json chooses a driver
// for the DDS binding, use the DDS driver.
void ChooseDdsDriver(const ParseJsonToGetConfig& config) {
    const nlohmann::json& document = config.Document();
    const bool configured = document.is_object() && document.contains("drivers") &&
                            document["drivers"].is_object() && document["drivers"].contains("dds");
    if (std::getenv("ORX_DDS_DRIVER") == nullptr && !configured) {
        ::setenv("ORX_DDS_DRIVER", "dds", 0);
    }
#if ORXMAINT_WITH_DDS
    vorx::driver::dds::RegisterDdsDriver();
#endif
}

// How the transport is named in messages.
std::string Where() {
    const std::string driver =
        vorx::vcc::DriverRegistry::GetInstance()->ConfiguredName(DriverType::DDS);
#if ORXMAINT_WITH_DDS
    if (driver == "dds") {
        return "DDS domain " +
               std::to_string(vorx::driver::dds::ProcessParticipantSettings().domainId);
    }
#endif
    return "the \"" + driver + "\" driver";
}

}  // namespace

ClientSettings SetUpTransport(const Options& options) {
    if (options.domain) {
        ::setenv("ORX_DDS_DOMAIN", std::to_string(*options.domain).c_str(), 1);
    }
    const auto config = ParseJsonToGetConfig::GetInstance();
    ChooseDdsDriver(*config);
    if (!vorx::vcc::DfxPluginLoader::Load(PluginNextToExecutable()) &&
        !vorx::vcc::DfxPluginLoader::Load()) {
        ara::kelda::common::log::Log::GetDefaultLog()->LogWarn()
            << "[orxmaint][DFX plug-in not loaded: the maintenance services are looked for "
               "with the driver's default DDS settings]";
    }

    ClientSettings settings;
    settings.instanceId = !options.instanceId.empty()        ? options.instanceId
                          : !config->GetInstanceId().empty() ? config->GetInstanceId()
                                                             : kDefaultInstanceId;
    settings.binding = DriverType::DDS;
    settings.where = Where();
    settings.timeout = std::chrono::milliseconds(options.timeoutMs);
    return settings;
}

}  // namespace orx::orxmaint
