// maintaind: the maintenance daemon's process. Sets up logging, reads its settings once (orx.json
// and the environment, as every process of the core does), loads the DFX plug-in (for the
// maintenance service's DDS settings only), runs the daemon until SIGINT, SIGTERM or SIGHUP (all
// three stop it cleanly with a stop line; the log file is never reopened). Under
// systemd it reports readiness, feeds the watchdog and keeps its registry in the service's state
// directory.
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "app/maintaind.h"
#include "app/options.h"
#include "app/systemd_notifier.h"
#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/log_sink.h"
#include "daemon_log.h"
#include "vorx/vcc/app/process_settings.h"

namespace {

using orx::maintaind::daemon::DaemonLog;
namespace log = ara::kelda::common::log;

// Under systemd with StateDirectory= the registry lives in the (first) state directory, unless
// --db names a file.
std::string DbPathOf(const std::string& fromCommandLine) {
    const char* state = std::getenv("STATE_DIRECTORY");
    if (state == nullptr || state[0] != '/' ||
        fromCommandLine != orx::maintaind::daemon::DefaultDbPath()) {
        return fromCommandLine;
    }
    const std::string dirs(state);
    return dirs.substr(0, dirs.find(':')) + "/maintaind.db";
}

// Waits for SIGINT, SIGTERM or SIGHUP, feeding systemd's watchdog meanwhile when it asks for that.
int WaitForStop(const sigset_t& stopSignals,
                const orx::maintaind::daemon::SystemdNotifier& notifier) {
    const auto period = notifier.FeedPeriod();
    if (!period) {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        return signal;
    }
    const timespec wait{static_cast<time_t>(period->count() / 1000),
                        static_cast<long>(period->count() % 1000) * 1000000L};
    while (true) {
        const int signal = sigtimedwait(&stopSignals, nullptr, &wait);
        if (signal > 0) {
            return signal;
        }
        notifier.FeedWatchdog();  // timed out (or interrupted): still alive
    }
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
    sigaddset(&stopSignals, SIGHUP);  // a closed terminal or a reload request: stop cleanly
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

    log::LogLevel level = log::LogLevel::kInfo;
    log::ParseLevel(line->logLevel, &level);
    log::Log::InitLog("MAINTAIND", "MAINTAIND", level, "maintenance daemon");
    if (!line->logLevel.empty()) {
        log::SetConsoleThreshold(level);  // the command line wins over ORX_LOG_LEVEL
    }

    const auto process = vorx::vcc::app::SetUpMaintenanceProcess();
    if (process.refusal) {
        // Its error line is written; never offer the services in another domain or instance.
        DaemonLog().LogFatal() << "[Maintaind][Not started][setting="
                               << process.refusal->origin.Describe()
                               << ", exitCode=" << orx::maintaind::daemon::kExitUsage << "]";
        return orx::maintaind::daemon::kExitUsage;
    }
    if (!process.pluginLoaded) {
        DaemonLog().LogWarn() << "[Maintaind][DFX plug-in not loaded: the maintenance services "
                                 "use the driver's default DDS settings]";
    }

    orx::maintaind::daemon::DaemonSettings settings;
    settings.dbPath = DbPathOf(line->dbPath);
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
    const orx::maintaind::daemon::SystemdNotifier notifier;
    notifier.Ready("maintenance services offered");
    const int signal = WaitForStop(stopSignals, notifier);
    notifier.Stopping();
    DaemonLog().LogInfo() << "Maintaind stopping[signal=" << signal << "]";
    daemon.Stop();
    return 0;
}
