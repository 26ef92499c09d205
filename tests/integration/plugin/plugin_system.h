#ifndef ORX_TESTS_INTEGRATION_PLUGIN_PLUGIN_SYSTEM_H
#define ORX_TESTS_INTEGRATION_PLUGIN_PLUGIN_SYSTEM_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "orx/test/child_process.h"

// The pieces of the multi-process tests: the demo applications with the DFX plug-in, and the
// maintenance daemon double in a process of its own, all on the DDS driver on one DDS domain per
// test (loopback only unless a test gives them a network of its own).
namespace orx::test::plugin {

using Json = nlohmann::json;
using namespace std::chrono_literals;

// What one process of the system is started with.
struct Placement {
    uint32_t domain{0};
    std::string netns;   // empty: the test's own network namespace
    std::string config;  // empty: the example's orx.json
};

std::unique_ptr<ChildProcess> StartDaemon(const Placement& placement, bool offer = true);
// `role` is "radar" or "fusion".
std::unique_ptr<ChildProcess> StartApp(const std::string& role, const Placement& placement);

// The example's orx.json for `role`, as JSON.
Json ExampleConfig(const std::string& role);
// Writes `config` to a file in a folder of the test process's own (removed at its exit) and
// returns its path.
std::string WriteConfig(const std::string& name, const Json& config);

// The RegisterApp requests the daemon double printed, in arrival order.
std::vector<Json> Reports(const ChildProcess& daemon);
// Waits for the `skip`+1-th report that `match` accepts.
std::optional<Json> WaitForReport(ChildProcess& daemon,
                                  const std::function<bool(const Json&)>& match,
                                  std::chrono::milliseconds timeout, size_t skip = 0);

// Matchers of the reports of one application.
std::function<bool(const Json&)> NodeReport(const std::string& app, bool online);
std::function<bool(const Json&)> EventReport(const std::string& app, const std::string& event,
                                             bool isPub, bool online);
std::function<bool(const Json&)> MethodReport(const std::string& app, bool online);
std::function<bool(const Json&)> FieldReport(const std::string& app, bool online);
std::function<bool(const Json&)> E2EReport(const std::string& app);
// Latency reports: type 0 acknowledgements, type 1 results.
std::function<bool(const Json&)> LatencyReport(const std::string& app, int type);
std::function<bool(const Json&)> SampleTimeoutReport(uint32_t count);

}  // namespace orx::test::plugin

#endif  // ORX_TESTS_INTEGRATION_PLUGIN_PLUGIN_SYSTEM_H
