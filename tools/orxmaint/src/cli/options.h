// The command line of orxmaint: which command to run and how.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace orx::orxmaint {

enum class Command {
    kNodes,
    kEvents,
    kMethods,
    kFields,
    kE2E,
    kTypes,
    kLatencyStatus,
    kLatencyEnable,
    kLatencyDisable,
    kLatencyResults,
    kTimeouts,
    kStatus,
    kCheck,
    kGraph,
    kHistory,
    kWatch,
};

// Default of --timeout-ms: how long the daemon may take to be found and to answer.
inline constexpr uint32_t kDefaultTimeoutMs = 2000U;

struct Options {
    Command command{Command::kNodes};

    // Global options.
    bool json = false;     // one JSON array on standard output instead of tables
    bool full = false;     // with --json: keep each entity's registration record as reported
    bool verbose = false;  // log at debug level instead of warnings only
    uint32_t timeoutMs = kDefaultTimeoutMs;
    std::string instanceId;          // empty: orx.json maintenance.instanceId, else "1"
    std::optional<uint32_t> domain;  // DDS domain; empty: orx.json / ORX_DDS_DOMAIN

    // Filters, on the commands they apply to.
    std::string app;      // exact application name
    std::string service;  // service id (0x... or decimal) or service path, as typed
    std::string side;     // "", "pub" or "sub"
    bool onlineOnly = false;

    // Command arguments.
    std::string name;            // EVENT of latency enable/disable, DATATYPE of types
    bool watch = false;          // latency results: refresh every second until interrupted
    bool history = false;        // latency results: every stored result, not only the newest
    bool strict = false;         // check: warnings fail too
    std::string format = "dot";  // graph: "dot", "svg" or "mermaid"
    std::string since;           // history: only entries of this last duration (e.g. 10m), as typed
};

// Parses argv into `options`. Returns std::nullopt when the command should run; otherwise the
// exit code to end with: 0 after --help (printed to `out`), 2 after a usage error (explained on
// `err`, with a hint to --help).
std::optional<int> ParseCommandLine(int argc, const char* const* argv, Options& options,
                                    std::ostream& out, std::ostream& err);

}  // namespace orx::orxmaint
