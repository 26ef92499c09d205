#include "cli/options.h"

#include <cctype>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/command_word.h"
#include "cli/duration.h"
#include "cli/service_selector.h"

namespace orx::orxmaint {

namespace {

constexpr uint32_t kMaxTimeoutMs = 3600000U;
constexpr uint32_t kMaxDomainId = 232U;  // highest domain Cyclone's default port mapping allows

std::string CheckService(const std::string& text) {
    ServiceSelector selector;
    return ParseServiceSelector(text, selector);
}

std::string CheckInstanceId(const std::string& text) {
    const bool digits = !text.empty() && text.size() <= 5 &&
                        text.find_first_not_of("0123456789") == std::string::npos;
    if (!digits || std::stoul(text) > 65535UL) {
        return "instance id \"" + text + "\" must be a number from 0 to 65535";
    }
    return "";
}

void AddAppOption(CLI::App& command, Options& options) {
    command.add_option("--app", options.app, "Only this application (exact name)");
}

void AddServiceOption(CLI::App& command, Options& options) {
    command
        .add_option("--service", options.service,
                    "Only this service: id (0x1234 or 4660) or service path")
        ->check(CheckService, "ID|NAME");
}

void AddEntityFilters(CLI::App& command, Options& options) {
    AddAppOption(command, options);
    AddServiceOption(command, options);
    command.add_option("--side", options.side, "Only the offering (pub) or using (sub) side")
        ->check(CLI::IsMember({"pub", "sub"}));
    command.add_flag("--online", options.onlineOnly, "Only entities of running applications");
}

struct Commands {
    CLI::App* nodes;
    CLI::App* events;
    CLI::App* methods;
    CLI::App* fields;
    CLI::App* e2e;
    CLI::App* types;
    CLI::App* latencyStatus;
    CLI::App* latencyEnable;
    CLI::App* latencyDisable;
    CLI::App* latencyResults;
    CLI::App* timeouts;
    CLI::App* status;
    CLI::App* check;
    CLI::App* graph;
    CLI::App* history;
    CLI::App* watch;
};

void AddGlobalOptions(CLI::App& app, Options& options) {
    app.add_flag("--json", options.json,
                 "Print one JSON array for scripts instead of tables (times in ms since the "
                 "epoch, latencies in microseconds)");
    app.add_flag("--full", options.full,
                 "With --json: also print each entity's registration record as it was reported");
    app.add_option("--timeout-ms", options.timeoutMs,
                   "How long to wait for maintaind to be found and to answer, in ms")
        ->check(CLI::Range(1U, kMaxTimeoutMs))
        ->capture_default_str();
    app.add_option("--instance-id", options.instanceId,
                   "Instance id of maintaind; default orx.json maintenance.instanceId, else 1")
        ->check(CheckInstanceId, "ID");
    app.add_option("--domain", options.domain,
                   "DDS domain id; default orx.json dds.domainId or ORX_DDS_DOMAIN, else 0")
        ->check(CLI::Range(0U, kMaxDomainId));
    app.add_flag("-v,--verbose", options.verbose, "Log what the tool and the core do");
}

Commands AddCommands(CLI::App& app, Options& options) {
    Commands c{};
    c.nodes = app.add_subcommand("nodes", "Application processes known to maintaind");
    AddAppOption(*c.nodes, options);
    c.nodes->add_flag("--online", options.onlineOnly, "Only running applications");

    c.events = app.add_subcommand("events", "Events offered (pub) and subscribed (sub)");
    AddEntityFilters(*c.events, options);
    c.methods = app.add_subcommand("methods", "Methods served (pub) and called (sub)");
    AddEntityFilters(*c.methods, options);
    c.fields = app.add_subcommand("fields", "Fields offered (pub) and used (sub)");
    AddEntityFilters(*c.fields, options);
    c.e2e = app.add_subcommand("e2e", "E2E protection settings of events");
    AddEntityFilters(*c.e2e, options);

    c.types = app.add_subcommand("types", "Data types, or the events and methods using one");
    c.types->add_option("DATATYPE", options.name, "Show the events and methods of this type");
    AddAppOption(*c.types, options);
    AddServiceOption(*c.types, options);

    CLI::App* latency = app.add_subcommand("latency", "Latency analysis of events");
    latency->require_subcommand(1);
    c.latencyStatus = latency->add_subcommand("status", "What was switched and who acknowledged");
    AddAppOption(*c.latencyStatus, options);
    AddServiceOption(*c.latencyStatus, options);
    const char* eventHelp =
        "Event name as `orxmaint events` lists it, its last path component, or its DDS topic";
    c.latencyEnable = latency->add_subcommand("enable", "Switch latency analysis of an event on");
    c.latencyDisable =
        latency->add_subcommand("disable", "Switch latency analysis of an event off");
    for (CLI::App* command : {c.latencyEnable, c.latencyDisable}) {
        command->add_option("EVENT", options.name, eventHelp)->required();
        command->add_option("--app", options.app,
                            "Resolve EVENT among this application's registrations only");
        AddServiceOption(*command, options);
    }
    c.latencyResults = latency->add_subcommand("results", "Latency measured by subscribers");
    AddAppOption(*c.latencyResults, options);
    AddServiceOption(*c.latencyResults, options);
    c.latencyResults->add_flag("-w,--watch", options.watch, "Refresh every second until Ctrl-C");
    c.latencyResults->add_flag("--history", options.history,
                               "Every stored result, not only the newest per event");

    c.timeouts = app.add_subcommand("timeouts", "Sample timeouts seen by subscriber listeners");
    AddAppOption(*c.timeouts, options);
    c.status = app.add_subcommand("status", "maintaind's own state and counters");

    c.check = app.add_subcommand(
        "check",
        "Compare every provider with every consumer (DDS topics, types, QoS, SOME/IP ids and "
        "versions, serialization, E2E); exit 1 when an error is found");
    AddAppOption(*c.check, options);
    AddServiceOption(*c.check, options);
    c.check->add_flag("--strict", options.strict, "Exit 1 on warnings too");
    c.graph = app.add_subcommand(
        "graph", "The system as a graph: applications, services, and who offers and uses what");
    c.graph->add_option("--format", options.format, "dot, svg (needs Graphviz's dot) or mermaid")
        ->check(CLI::IsMember({"dot", "svg", "mermaid"}))
        ->capture_default_str();
    c.graph->add_flag("--online", options.onlineOnly, "Only running applications");
    c.history = app.add_subcommand("history",
                                   "What happened, oldest first: nodes coming and "
                                   "going, latency switches, sample timeouts");
    c.history
        ->add_option("--since", options.since, "Only the last DURATION (e.g. 90s, 10m, 2h, 7d)")
        ->check(
            [](const std::string& text) {
                return ParseDurationMs(text) ? std::string()
                                             : "\"" + text +
                                                   "\" is not a duration such as 500ms, 30s, "
                                                   "10m, 2h or 7d";
            },
            "DURATION");
    AddAppOption(*c.history, options);
    c.watch = app.add_subcommand(
        "watch", "Print what happens as it happens (the last 10 s first) until Ctrl-C");
    AddAppOption(*c.watch, options);
    return c;
}

Command Selected(const Commands& c) {
    const std::vector<std::pair<CLI::App*, Command>> table = {
        {c.nodes, Command::kNodes},
        {c.events, Command::kEvents},
        {c.methods, Command::kMethods},
        {c.fields, Command::kFields},
        {c.e2e, Command::kE2E},
        {c.types, Command::kTypes},
        {c.latencyStatus, Command::kLatencyStatus},
        {c.latencyEnable, Command::kLatencyEnable},
        {c.latencyDisable, Command::kLatencyDisable},
        {c.latencyResults, Command::kLatencyResults},
        {c.timeouts, Command::kTimeouts},
        {c.status, Command::kStatus},
        {c.check, Command::kCheck},
        {c.graph, Command::kGraph},
        {c.history, Command::kHistory},
        {c.watch, Command::kWatch},
    };
    for (const auto& [command, value] : table) {
        if (command->parsed()) {
            return value;
        }
    }
    return Command::kStatus;  // not reached: one command is required
}

}  // namespace

std::optional<int> ParseCommandLine(int argc, const char* const* argv, Options& options,
                                    std::ostream& out, std::ostream& err) {
    CLI::App app{
        "orxmaint: shows the running system as maintaind knows it (applications, their events, "
        "methods, fields, E2E settings, latency and sample timeouts), switches latency "
        "analysis of events, checks that every user asks for what its provider offers, and "
        "draws the system as a graph.",
        "orxmaint"};
    app.fallthrough();  // global options are accepted after the command too
    app.require_subcommand(1);
    AddGlobalOptions(app, options);
    const Commands commands = AddCommands(app, options);
    app.footer(
        "Exit codes: 0 success, 1 maintaind not reachable, the query failed or the tool's own "
        "DDS participant cannot start (check: a contract error was found, with --strict also a "
        "warning), 2 usage error or an invalid DDS domain or instance id in the environment or "
        "orx.json.");
    const std::string unknown = FindUnknownCommand(app, argc, argv);
    if (!unknown.empty()) {
        err << unknown << "\nRun with --help for more information.\n";
        return 2;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int code = app.exit(e, out, err);
        return code == 0 ? 0 : 2;
    }
    if (options.full && !options.json) {
        err << "--full only applies together with --json\nRun with --help for more "
               "information.\n";
        return 2;
    }
    options.command = Selected(commands);
    if (options.command == Command::kWatch) {
        options.watch = true;  // runs until Ctrl-C
    }
    return std::nullopt;
}

}  // namespace orx::orxmaint
