// The daemon's command line.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace orx::maintaind::daemon {

struct CommandLine {
    std::string dbPath;      // --db, else DefaultDbPath()
    bool fresh = false;      // --fresh
    std::string instanceId;  // --instance-id, else orx.json maintenance.instanceId, else "1"
    std::string logLevel;    // --log-level, "" when not given
    uint32_t livenessPeriodMs = 500;
    uint32_t historyMaxEntries = 100000;  // --history-max-entries
    uint32_t historyMaxAgeHours = 168;    // --history-max-age-hours (7 days)
};

// The exit code of a usage error (as orxmaint's), and of an invalid DDS domain or instance id.
constexpr int kExitUsage = 2;

// Parses argv. Returns the command line, or std::nullopt with `exitCode` set when the process
// should end now (--help: 0 after printing the help; a usage error, an invalid --instance-id or
// an empty --db included: kExitUsage after printing it on stderr).
std::optional<CommandLine> ParseCommandLine(int argc, char** argv, int& exitCode);

// $XDG_STATE_HOME/orx/maintaind.db, else $HOME/.local/state/orx/maintaind.db, else
// ./maintaind.db.
std::string DefaultDbPath();

}  // namespace orx::maintaind::daemon
