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

// Parses argv. Returns the command line, or std::nullopt with `exitCode` set when the process
// should end now (--help: 0 after printing the help; a usage error: non-zero after printing it).
std::optional<CommandLine> ParseCommandLine(int argc, char** argv, int& exitCode);

// $XDG_STATE_HOME/orx/maintaind.db, else $HOME/.local/state/orx/maintaind.db, else
// ./maintaind.db.
std::string DefaultDbPath();

}  // namespace orx::maintaind::daemon
