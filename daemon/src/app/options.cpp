#include "app/options.h"

#include <cstdlib>
#include <iostream>

#include <CLI/CLI.hpp>

#include "ara/kelda/common/log/log_level.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"

namespace orx::maintaind::daemon {

std::string DefaultDbPath() {
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && state[0] == '/') {
        return std::string(state) + "/orx/maintaind.db";
    }
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] != '\0') {
        return std::string(home) + "/.local/state/orx/maintaind.db";
    }
    return "maintaind.db";
}

std::optional<CommandLine> ParseCommandLine(int argc, char** argv, int& exitCode) {
    CommandLine line;
    CLI::App app{
        "maintaind: the maintenance daemon. Keeps the registry of the running applications "
        "(nodes, events, methods, fields, E2E settings, latency, sample timeouts) and answers "
        "the tools."};
    app.add_option("--db", line.dbPath, "Registry file (SQLite); default " + DefaultDbPath());
    app.add_flag("--fresh", line.fresh, "Start with an empty registry (deletes what is stored)");
    app.add_option("--instance-id", line.instanceId,
                   "Instance id of the maintenance services (0 to 65535); default orx.json "
                   "maintenance.instanceId, else 1")
        ->check([](const std::string& text) {
            return ara::kelda::common::orxConfigParser::IsInstanceId(text)
                       ? std::string()
                       : "instance id \"" + text + "\" must be a decimal number from 0 to 65535";
        });
    app.add_option("--log-level", line.logLevel,
                   "verbose, debug, info, warning, error, fatal or off; default info")
        ->check([](const std::string& text) {
            ara::kelda::common::log::LogLevel level;
            return ara::kelda::common::log::ParseLevel(text, &level)
                       ? std::string()
                       : "unknown log level \"" + text + "\"";
        });
    app.add_option(
           "--liveness-period-ms", line.livenessPeriodMs,
           "How often processes of this host are checked for having gone, in ms; default 500")
        ->check(CLI::Range(100U, 60000U));
    app.add_option("--history-max-entries", line.historyMaxEntries,
                   "Timeline entries kept; the oldest are dropped beyond it")
        ->check(CLI::Range(100U, 10000000U))
        ->capture_default_str();
    app.add_option("--history-max-age-hours", line.historyMaxAgeHours,
                   "Timeline entries older than this are dropped, in hours")
        ->check(CLI::Range(1U, 87600U))
        ->capture_default_str();
    app.footer(
        "Exit codes: 0 stopped by SIGINT, SIGTERM or SIGHUP (or --help); 1 cannot start (the "
        "registry or the services); 2 usage error or an invalid DDS domain or instance id in "
        "the environment or orx.json.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = app.exit(e) == 0 ? 0 : kExitUsage;
        return std::nullopt;
    }
    if (app.count("--db") > 0 && line.dbPath.empty()) {
        std::cerr << "--db: an empty path names no file; leave the option out for the default "
                  << DefaultDbPath() << "\n";
        exitCode = kExitUsage;
        return std::nullopt;
    }
    if (line.dbPath.empty()) {
        line.dbPath = DefaultDbPath();
    }
    return line;
}

}  // namespace orx::maintaind::daemon
