// maintaind: the maintenance daemon's process. Sets up logging, reads its settings once (orx.json
// and the environment, as every process of the core does), loads the DFX plug-in (for the
// maintenance service's DDS settings only), runs the daemon until SIGINT or SIGTERM.
#include <signal.h>
#include <unistd.h>

#include <string>

#include "app/maintaind.h"
#include "app/options.h"
#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/log_sink.h"
#include "daemon_log.h"
#include "vorx/vcc/app/process_settings.h"

namespace {

using orx::maintaind::daemon::DaemonLog;
namespace log = ara::kelda::common::log;

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

    const auto process = vorx::vcc::app::SetUpMaintenanceProcess();
    if (!process.pluginLoaded) {
        DaemonLog().LogWarn() << "[Maintaind][DFX plug-in not loaded: the maintenance services "
                                 "use the driver's default DDS settings]";
    }

    orx::maintaind::daemon::DaemonSettings settings;
    settings.dbPath = line->dbPath;
    settings.fresh = line->fresh;
    settings.instanceId =
        !line->instanceId.empty() ? line->instanceId : process.settings.maintenanceInstanceId;
    settings.livenessPeriod = std::chrono::milliseconds(line->livenessPeriodMs);
    settings.timeline.maxEntries = line->historyMaxEntries;
    settings.timeline.maxAge = std::chrono::hours(line->historyMaxAgeHours);

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
