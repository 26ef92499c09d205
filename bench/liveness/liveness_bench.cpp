// How long after kill -9 of an application maintaind lists it offline: for an application on the
// daemon's host (the /proc check) and for one on another host (the lease of its DDS participant;
// two network namespaces joined by a veth pair, the application with its own host name and pid
// namespace). The time runs from the kill to the daemon's "Node offline" line.
//
//   liveness_bench [--runs 10] [--domain 224] [--local-only]
//
// Prints each run, then median and worst per case, and ends with one line `RESULT {json}`.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"
#include "two_hosts.h"

namespace {

using namespace std::chrono_literals;
using orx::test::ChildProcess;
using Clock = std::chrono::steady_clock;

const std::string kBin = LIVENESS_BENCH_BIN_DIR;
constexpr const char* kAddressA = "10.224.5.1";
constexpr const char* kAddressB = "10.224.5.2";

struct Case {
    std::string name;
    std::vector<double> ms;
};

// The example's orx.json of `name` (if any) with DDS on `address`, both hosts as unicast peers
// and no multicast.
std::string DdsConfig(const orx::test::TempDir& dir, const std::string& name,
                      const std::string& address) {
    nlohmann::json config = nlohmann::json::object();
    std::ifstream example(std::string(LIVENESS_BENCH_EXAMPLES_DIR) + "/" + name + "/orx.json");
    if (example) {
        config = nlohmann::json::parse(example);
    }
    config["dds"] = {{"networkInterface", address},
                     {"peers", {kAddressA, kAddressB}},
                     {"allowMulticast", false}};
    const std::string path = dir.File(name + ".json");
    std::ofstream(path) << config.dump(2);
    return path;
}

// One case: the daemon runs already; `start` starts the application, `kill` kills it with
// SIGKILL. `pid` is the pid the daemon lists the application with (0: the child's own).
bool Measure(ChildProcess& daemon, Case& result, int runs,
             const std::function<std::unique_ptr<ChildProcess>()>& start,
             const std::function<void(ChildProcess&)>& kill, int listedPid) {
    for (int run = 0; run < runs; ++run) {
        auto app = start();
        const int pid = listedPid != 0 ? listedPid : app->Pid();
        const std::string node = "appName=radar, pid=" + std::to_string(pid) + ",";
        const size_t skip = static_cast<size_t>(listedPid != 0 ? run : 0);
        if (!daemon.WaitForText("Node online[" + node, 30s, skip)) {
            std::fprintf(stderr, "%s: run %d: the application never came online\n%s\n",
                         result.name.c_str(), run, app->Output().c_str());
            return false;
        }
        std::this_thread::sleep_for(500ms);  // let it finish its registrations
        const auto killed = Clock::now();
        kill(*app);
        if (!daemon.WaitForText("Node offline[" + node, 30s, skip)) {
            std::fprintf(stderr, "%s: run %d: never listed offline\n", result.name.c_str(), run);
            return false;
        }
        const double ms = std::chrono::duration<double, std::milli>(Clock::now() - killed).count();
        result.ms.push_back(ms);
        std::printf("%s run %d: %.0f ms\n", result.name.c_str(), run + 1, ms);
        std::fflush(stdout);
        app->WaitForExit(10s);
    }
    return true;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n == 0 ? 0 : (n % 2 == 1 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2);
}

double Worst(const std::vector<double>& values) {
    return values.empty() ? 0 : *std::max_element(values.begin(), values.end());
}

}  // namespace

int main(int argc, char** argv) {
    int runs = 10;
    std::string domain = "224";
    bool localOnly = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--runs" && i + 1 < argc) {
            runs = std::max(1, std::atoi(argv[++i]));
        } else if (arg == "--domain" && i + 1 < argc) {
            domain = argv[++i];
        } else if (arg == "--local-only") {
            localOnly = true;
        } else {
            std::fprintf(stderr, "usage: liveness_bench [--runs N] [--domain ID] [--local-only]\n");
            return arg == "--help" ? 0 : 2;
        }
    }
    orx::test::TempDir dir("orx-liveness-bench");
    std::vector<Case> cases;

    // On the daemon's host, over loopback.
    {
        ChildProcess daemon({{kBin + "/maintaind", "--db", dir.File("local.db"), "--fresh"},
                             {{"ORX_DDS_DOMAIN", domain}, {"ORX_CONFIG", dir.File("none.json")}},
                             "",
                             "maintaind"});
        if (!daemon.WaitForText("Maintaind started", 30s)) {
            std::fprintf(stderr, "maintaind did not start\n%s\n", daemon.Output().c_str());
            return 1;
        }
        Case local{"local", {}};
        const bool ok = Measure(
            daemon, local, runs,
            [&] {
                return std::make_unique<ChildProcess>(ChildProcess::Options{
                    {kBin + "/orx-demo", "radar"},
                    {{"ORX_DDS_DOMAIN", domain},
                     {"ORX_DFX_PLUGIN", LIVENESS_BENCH_PLUGIN_PATH},
                     {"ORX_CONFIG", std::string(LIVENESS_BENCH_EXAMPLES_DIR) + "/radar/orx.json"}},
                    "",
                    "radar"});
            },
            [](ChildProcess& app) { app.Signal(SIGKILL); }, 0);
        if (!ok) {
            return 1;
        }
        cases.push_back(local);
    }

    // On another host: network namespaces, the application in pid and UTS namespaces of its own.
    orx::test::TwoHosts hosts;
    std::string skipped;
    if (localOnly) {
        skipped = "--local-only";
    } else {
        skipped = hosts.Create("orxlbn", kAddressA, kAddressB);
    }
    if (skipped.empty()) {
        ChildProcess daemon(
            {{kBin + "/maintaind", "--db", dir.File("remote.db"), "--fresh"},
             {{"ORX_DDS_DOMAIN", domain}, {"ORX_CONFIG", DdsConfig(dir, "daemon", kAddressB)}},
             hosts.B(),
             "maintaind"});
        if (!daemon.WaitForText("Maintaind started", 30s)) {
            std::fprintf(stderr, "maintaind did not start\n%s\n", daemon.Output().c_str());
            return 1;
        }
        const std::string appConfig = DdsConfig(dir, "radar", kAddressA);
        Case remote{"remote", {}};
        const bool ok = Measure(
            daemon, remote, runs,
            [&] {
                return std::make_unique<ChildProcess>(ChildProcess::Options{
                    {"unshare", "--uts", "--pid", "--fork", "--mount-proc", "/bin/sh", "-c",
                     "hostname ecu-remote && exec \"$0\" radar", kBin + "/orx-demo"},
                    {{"ORX_DDS_DOMAIN", domain},
                     {"ORX_DFX_PLUGIN", LIVENESS_BENCH_PLUGIN_PATH},
                     {"ORX_CONFIG", appConfig}},
                    hosts.A(),
                    "remote radar"});
            },
            [&](ChildProcess&) {
                orx::test::Shell("for p in $(ip netns pids " + hosts.A() +
                                 "); do [ \"$(cat /proc/$p/comm)\" = orx-demo ] && kill -9 $p; "
                                 "done");
            },
            1);
        if (!ok) {
            return 1;
        }
        cases.push_back(remote);
    } else {
        std::printf("remote case skipped: %s\n", skipped.c_str());
    }

    std::string json = "{\"runs\":" + std::to_string(runs);
    for (const Case& c : cases) {
        std::printf("%s: median %.0f ms, worst %.0f ms over %zu runs\n", c.name.c_str(),
                    Median(c.ms), Worst(c.ms), c.ms.size());
        char figures[160];
        std::snprintf(figures, sizeof(figures), ",\"%sMedianMs\":%.0f,\"%sWorstMs\":%.0f",
                      c.name.c_str(), Median(c.ms), c.name.c_str(), Worst(c.ms));
        json += figures;
    }
    json += "}";
    std::printf("RESULT %s\n", json.c_str());
    return 0;
}
