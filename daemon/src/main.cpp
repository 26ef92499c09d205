// maintaind: the maintenance daemon's process. Sets up logging and the transport, loads the DFX
// plug-in (for the maintenance service's DDS settings only), runs the daemon until SIGINT or
// SIGTERM.
#include <signal.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "app/maintaind.h"
#include "app/options.h"
#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/log_sink.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "daemon_log.h"
#if MAINTAIND_WITH_DDS
#include "vorx/driver/dds/dds_driver.h"
#endif
#include "vorx/vcc/dfx_plugin_loader.h"

namespace {

using orx::maintaind::daemon::DaemonLog;
namespace log = ara::kelda::common::log;

// The plug-in next to this executable: <exe dir>/../lib/liborxcm_dfx.so.
std::string PluginNextToExecutable() {
    char path[PATH_MAX] = {};
    const ssize_t size = ::readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (size <= 0) {
        return "";
    }
    std::string exe(path, static_cast<size_t>(size));
    const auto slash = exe.rfind('/');
    return slash == std::string::npos ? "" : exe.substr(0, slash) + "/../lib/liborxcm_dfx.so";
}

// The maintenance services must be reachable from other processes: unless the environment or
// orx.json chooses a driver for the DDS binding, the daemon uses the DDS driver.
void ChooseDdsDriver(const ara::kelda::common::orxConfigParser::ParseJsonToGetConfig& config) {
    const nlohmann::json& document = config.Document();
    const bool configured = document.is_object() && document.contains("drivers") &&
                            document["drivers"].is_object() && document["drivers"].contains("dds");
    if (std::getenv("ORX_DDS_DRIVER") == nullptr && !configured) {
        ::setenv("ORX_DDS_DRIVER", "dds", 0);
    }
#if MAINTAIND_WITH_DDS
    vorx::driver::dds::RegisterDdsDriver();
#endif
}

}  // namespace

int main(int argc, char** argv) {
    int exitCode = 0;
    const auto line = orx::maintaind::daemon::ParseCommandLine(argc, argv, exitCode);
    if (!line) {
        return exitCode;
    }

    // Every thread started from here on inherits the blocked signals; main waits for them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    log::LogLevel level = log::LogLevel::kInfo;
    log::ParseLevel(line->logLevel, &level);
    log::Log::InitLog("MAINTAIND", "MAINTAIND", level, "maintenance daemon");
    if (!line->logLevel.empty()) {
        log::SetConsoleThreshold(level);  // the command line wins over ORX_LOG_LEVEL
    }

    const auto config = ara::kelda::common::orxConfigParser::ParseJsonToGetConfig::GetInstance();
    ChooseDdsDriver(*config);
    if (!vorx::vcc::DfxPluginLoader::Load(PluginNextToExecutable()) &&
        !vorx::vcc::DfxPluginLoader::Load()) {
        DaemonLog().LogWarn() << "[Maintaind][DFX plug-in not loaded: the maintenance services "
                                 "use the driver's default DDS settings]";
    }

    orx::maintaind::daemon::DaemonSettings settings;
    settings.dbPath = line->dbPath;
    settings.fresh = line->fresh;
    settings.instanceId = !line->instanceId.empty()          ? line->instanceId
                          : !config->GetInstanceId().empty() ? config->GetInstanceId()
                                                             : "1";
    settings.livenessPeriod = std::chrono::milliseconds(line->livenessPeriodMs);

    orx::maintaind::daemon::Maintaind daemon(std::move(settings));
    std::string error;
    if (!daemon.Start(error)) {
        DaemonLog().LogError() << "[Maintaind][Cannot start][reason=" << error << "]";
        return 1;
    }
    int signal = 0;
    sigwait(&stopSignals, &signal);
    DaemonLog().LogInfo() << "Maintaind stopping[signal=" << signal << "]";
    daemon.Stop();
    return 0;
}
