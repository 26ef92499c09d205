// orxmaint: shows the running system as maintaind knows it and switches latency analysis.
#include <unistd.h>

#include <iostream>
#include <memory>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/log_sink.h"
#include "cli/interrupt.h"
#include "cli/options.h"
#include "commands/run_command.h"
#include "transport_setup.h"

namespace {

namespace log = ara::kelda::common::log;

// The tool's own output is its tables; log lines are for trouble: warnings only unless
// --verbose (or ORX_LOG_LEVEL) asks for more.
void SetUpLogging(bool verbose) {
    log::Log::InitLog("ORXMAINT", "ORXMAINT",
                      verbose ? log::LogLevel::kDebug : log::LogLevel::kWarn,
                      "maintenance command-line tool");
    if (verbose) {
        log::SetConsoleThreshold(log::LogLevel::kDebug);  // the command line wins
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    orx::orxmaint::Options options;
    if (const auto exitCode =
            orx::orxmaint::ParseCommandLine(argc, argv, options, std::cout, std::cerr)) {
        return *exitCode;
    }
    SetUpLogging(options.verbose);
    int setUpExit = 0;
    const auto transport = orx::orxmaint::SetUpTransport(options, setUpExit);
    if (!transport) {
        return setUpExit;
    }
    const orx::orxmaint::ClientSettings& settings = *transport;

    orx::orxmaint::RunEnvironment environment;
    environment.terminal = ::isatty(STDOUT_FILENO) == 1;
    std::unique_ptr<orx::orxmaint::InterruptibleWait> interrupt;
    if (options.watch) {
        interrupt = std::make_unique<orx::orxmaint::InterruptibleWait>();
        environment.waitUnlessStopped = [&interrupt](std::chrono::milliseconds timeout) {
            return interrupt->WaitUnlessStopped(timeout);
        };
    } else {
        environment.waitUnlessStopped = [](std::chrono::milliseconds) { return true; };
    }
    const int exitCode =
        orx::orxmaint::RunCommand(options, settings, environment, std::cout, std::cerr);
    std::cout.flush();
    return exitCode;
}
