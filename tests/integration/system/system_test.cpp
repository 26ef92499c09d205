// The whole chain as processes over DDS on loopback: maintaind, the demo applications with the
// DFX plug-in, and orxmaint asking the daemon what it knows. Every test uses a DDS domain of its
// own (176 to 178).
#include <gtest/gtest.h>
#include <signal.h>

#include <iostream>
#include <memory>
#include <set>
#include <tuple>

#include <nlohmann/json.hpp>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"
#include "orx/test/wait.h"

namespace orx::test {
namespace {

using Json = nlohmann::json;
using namespace std::chrono_literals;

const std::string kBin = ORX_BIN_DIR;

class SystemTest : public ::testing::Test {
  protected:
    void TearDown() override {
        // Asked to stop first, so the applications send their offline reports.
        for (auto* process : {&apps_["fusion"], &apps_["fusion2"], &apps_["radar"], &daemon_}) {
            if (*process) {
                (*process)->Signal(SIGTERM);
                (*process)->WaitForExit(5s);
                if (HasFailure()) {
                    std::cout << (*process)->Output();
                }
                process->reset();
            }
        }
        if (HasFailure()) {
            dir_.Keep();
            std::cout << "registry kept in " << dir_.Path() << "\n";
        }
    }

    void StartDaemon(unsigned domain, bool fresh) {
        domain_ = std::to_string(domain);
        std::vector<std::string> argv = {kBin + "/maintaind", "--db", dir_.File("registry.db"),
                                         "--liveness-period-ms", "2000"};
        if (fresh) {
            argv.push_back("--fresh");
        }
        daemon_ = std::make_unique<ChildProcess>(ChildProcess::Options{
            argv,
            {{"ORX_DDS_DOMAIN", domain_}, {"ORX_CONFIG", dir_.File("none.json")}},
            "",
            "maintaind"});
        ASSERT_TRUE(daemon_->WaitForText("Maintaind started", 20s)) << daemon_->Output();
    }

    // The demo application `role` with the example's orx.json, or with the example `config`
    // (then it is known by that name).
    ChildProcess& StartApp(const std::string& role, const std::string& config = "") {
        const std::string name = config.empty() ? role : config;
        std::map<std::string, std::string> env = {{"ORX_DDS_DOMAIN", domain_},
                                                  {"ORX_DFX_PLUGIN", ORX_TEST_PLUGIN_PATH}};
        if (!config.empty()) {
            env["ORX_CONFIG"] = std::string(ORX_TEST_EXAMPLES_DIR) + "/" + config + "/orx.json";
        }
        apps_[name] = std::make_unique<ChildProcess>(
            ChildProcess::Options{{kBin + "/orx-demo", role}, env, "", name});
        return *apps_[name];
    }

    // orxmaint on the test's domain with `args`.
    RunResult Orxmaint(std::vector<std::string> args) const {
        args.insert(args.begin(), {kBin + "/orxmaint", "--domain", domain_});
        return RunToEnd(args, {{"ORX_DDS_DRIVER", ""}, {"ORX_DDS_DOMAIN", ""}}, 15s);
    }

    // What `orxmaint --json args` prints once `accept` takes it (within `timeout`); the last
    // array seen otherwise.
    Json JsonUntil(std::vector<std::string> args, const std::function<bool(const Json&)>& accept,
                   std::chrono::milliseconds timeout = 20s) const {
        args.insert(args.begin(), "--json");
        Json last = Json::array();
        WaitFor(
            [&] {
                const RunResult run = Orxmaint(args);
                const Json json = Json::parse(run.out, nullptr, false);
                if (run.exitCode == 0 && !json.is_discarded()) {
                    last = json;
                }
                return accept(last);
            },
            timeout);
        return last;
    }

    // The daemon's entry of `app` once `accept` takes it; null when it never did.
    Json NodeWhen(const std::string& app, const std::function<bool(const Json&)>& accept,
                  std::chrono::milliseconds timeout = 30s) const {
        Json found;
        JsonUntil(
            {"nodes", "--app", app},
            [&](const Json& nodes) {
                found = nodes.empty() ? Json() : nodes[0];
                return !found.is_null() && accept(found);
            },
            timeout);
        return found.is_null() || !accept(found) ? Json() : found;
    }

    // Who offers or uses what, as the daemon lists it.
    std::set<std::tuple<std::string, std::string, bool>> Entities() const {
        std::set<std::tuple<std::string, std::string, bool>> ids;
        for (const auto& [kind, name] : {std::pair<std::string, std::string>{"events", "eventName"},
                                         {"methods", "methodName"},
                                         {"fields", "fieldName"}}) {
            for (const Json& entry :
                 JsonUntil({kind}, [](const Json& list) { return !list.empty(); })) {
                ids.emplace(entry["appName"], entry[name], entry["isPub"]);
            }
        }
        return ids;
    }

    TempDir dir_{"orx-system-test"};
    std::string domain_;
    std::unique_ptr<ChildProcess> daemon_;
    std::map<std::string, std::unique_ptr<ChildProcess>> apps_;
};

bool OnlineWithEntities(const Json& node) {
    return node["online"] == true && node["eventCount"] > 0 && node["methodCount"] > 0 &&
           node["fieldCount"] > 0;
}

TEST_F(SystemTest, ReportsShowInOrxmaintSurviveAKilledDaemonAndEndWithTheirProcesses) {
    StartDaemon(176, /*fresh=*/true);
    StartApp("radar");
    StartApp("fusion");
    const Json radar = NodeWhen("radar", OnlineWithEntities);
    ASSERT_FALSE(radar.is_null());
    EXPECT_EQ(radar["pid"], apps_["radar"]->Pid());
    ASSERT_FALSE(NodeWhen("fusion", OnlineWithEntities).is_null());

    const Json events = JsonUntil({"events", "--app", "radar", "--side", "pub"},
                                  [](const Json& list) { return !list.empty(); });
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events[0]["serviceId"], 4660);
    EXPECT_EQ(events[0]["instanceId"], 1);
    EXPECT_NE(events[0]["eventName"].get<std::string>().find("ObjectList"), std::string::npos);
    EXPECT_NE(events[0]["bindings"].dump().find("DDS"), std::string::npos);
    const RunResult table = Orxmaint({"nodes"});
    EXPECT_EQ(table.exitCode, 0) << table.err;
    EXPECT_NE(table.out.find("2 nodes, 2 online"), std::string::npos) << table.out;

    // A stopped application says so.
    apps_["radar"]->Signal(SIGTERM);
    ASSERT_EQ(apps_["radar"]->WaitForExit(15s), std::optional<int>(0));
    const Json stopped =
        NodeWhen("radar", [](const Json& node) { return node["online"] == false; });
    ASSERT_FALSE(stopped.is_null());
    EXPECT_EQ(stopped["offlineReason"], "offline report");
    const auto before = Entities();

    // A killed daemon comes back with its registry, and watches the processes it loaded: one
    // that vanishes goes offline.
    daemon_->Signal(SIGKILL);
    ASSERT_EQ(daemon_->WaitForExit(10s), std::optional<int>(128 + SIGKILL));
    StartDaemon(176, /*fresh=*/false);
    EXPECT_TRUE(
        daemon_->WaitForText("Registry loaded[file=" + dir_.File("registry.db") + ", nodes=2", 1s));
    EXPECT_EQ(NodeWhen("radar", [](const Json&) { return true; }), stopped);
    EXPECT_EQ(Entities(), before);
    apps_["fusion"]->Signal(SIGKILL);
    const auto killed = std::chrono::steady_clock::now();
    const Json fusion =
        NodeWhen("fusion", [](const Json& node) { return node["online"] == false; });
    ASSERT_FALSE(fusion.is_null());
    EXPECT_LT(std::chrono::steady_clock::now() - killed, 10s);
    EXPECT_EQ(fusion["offlineReason"], "process gone");
    EXPECT_TRUE(daemon_->WaitForText("Node offline[appName=fusion", 5s));

    // Killed and started again while an application runs: the application's clean exit right
    // after reaches the new daemon, although the killed one's offer is still listed.
    const int radarPid = StartApp("radar").Pid();
    auto radarEntry = [&](const Json& nodes) {
        for (const Json& node : nodes) {
            if (node["pid"] == radarPid) {
                return node;
            }
        }
        return Json();
    };
    ASSERT_FALSE(JsonUntil({"nodes", "--app", "radar"}, [&](const Json& nodes) {
                     return radarEntry(nodes)["online"] == true;
                 }).empty());
    daemon_->Signal(SIGKILL);
    ASSERT_EQ(daemon_->WaitForExit(10s), std::optional<int>(128 + SIGKILL));
    StartDaemon(176, /*fresh=*/false);
    // Once a tool is answered, the new daemon's offer is known on the domain (the application
    // discovers it no later than the tool, which starts after it).
    ASSERT_EQ(Orxmaint({"status"}).exitCode, 0);
    apps_["radar"]->Signal(SIGTERM);
    ASSERT_EQ(apps_["radar"]->WaitForExit(15s), std::optional<int>(0));
    const Json after = JsonUntil({"nodes", "--app", "radar"}, [&](const Json& nodes) {
        return radarEntry(nodes)["online"] == false;
    });
    EXPECT_EQ(radarEntry(after)["offlineReason"], "offline report") << after.dump();
}

TEST_F(SystemTest, LatencySwitchReachesTheApplicationsAndResultsComeBack) {
    StartDaemon(177, /*fresh=*/true);
    StartApp("radar");
    StartApp("fusion");
    // Both sides of the event must be registered before the switch can name it.
    ASSERT_FALSE(JsonUntil({"events", "--app", "fusion", "--side", "sub"}, [](const Json& list) {
                     return !list.empty();
                 }).empty());
    ASSERT_FALSE(JsonUntil({"events", "--app", "radar", "--side", "pub"}, [](const Json& list) {
                     return !list.empty();
                 }).empty());

    const RunResult enable = Orxmaint({"latency", "enable", "ObjectList"});
    ASSERT_EQ(enable.exitCode, 0) << enable.err;
    EXPECT_NE(enable.out.find("Latency analysis enabled"), std::string::npos) << enable.out;
    EXPECT_TRUE(daemon_->WaitForText("Latency switch published[event=", 1s));

    // Both sides acknowledge; the subscriber then reports results.
    const Json statuses = JsonUntil({"latency", "status"}, [](const Json& list) {
        return list.size() == 1 && list[0]["enabled"] == true && list[0]["acks"].size() == 2;
    });
    EXPECT_EQ(statuses.size(), 1U) << statuses.dump();
    const Json results = JsonUntil({"latency", "results"}, [](const Json& list) {
        return !list.empty() && list[0]["appName"] == "fusion";
    });
    ASSERT_FALSE(results.empty());
    EXPECT_EQ(results[0]["latencyIndex"]["eventName"], "RadarObjectList");

    // A subscriber started after the order measures too, and acknowledges as its own process.
    apps_["fusion"]->Signal(SIGTERM);
    ASSERT_EQ(apps_["fusion"]->WaitForExit(15s), std::optional<int>(0));
    const auto restartedAt = std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::system_clock::now().time_since_epoch())
                                 .count();
    const int fusionPid = StartApp("fusion").Pid();
    EXPECT_TRUE(daemon_->WaitForText("Latency switch published again[mode=enable", 20s));
    const Json acked = JsonUntil({"latency", "status"}, [&](const Json& list) {
        return list.size() == 1 && list[0]["unacknowledged"].empty() &&
               list[0]["acks"].dump().find("\"pid\":" + std::to_string(fusionPid)) !=
                   std::string::npos;
    });
    EXPECT_TRUE(acked.size() == 1 && acked[0]["unacknowledged"].empty()) << acked.dump();
    const Json later = JsonUntil({"latency", "results"}, [&](const Json& list) {
        return !list.empty() && list[0]["appName"] == "fusion" &&
               list[0]["receivedAt"].get<int64_t>() > restartedAt;
    });
    ASSERT_FALSE(later.empty());
    EXPECT_GT(later[0]["receivedAt"].get<int64_t>(), restartedAt) << later.dump();

    // An unknown name is refused with the name, exit code 1.
    const RunResult unknown = Orxmaint({"latency", "enable", "NoSuchEvent"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("NoSuchEvent"), std::string::npos) << unknown.err;
}

TEST_F(SystemTest, CheckFindsWhereTwoDeploymentsDisagreeAndGatesOnIt) {
    StartDaemon(178, /*fresh=*/true);
    StartApp("radar");
    StartApp("fusion");
    // Same service as fusion, with another E2E data id and a best-effort reader of ObjectList.
    StartApp("fusion", "fusion2");
    RunResult run;
    Json findings;
    const auto find = [&](const std::string& check) {
        for (const Json& finding : findings) {
            if (finding["check"] == check && finding["binding"] == "DDS") {
                return finding;
            }
        }
        return Json();
    };
    WaitFor(
        [&] {
            run = Orxmaint({"--json", "check"});
            findings = Json::parse(run.out, nullptr, false);
            return findings.is_array() && !find("e2e.dataIds").is_null() &&
                   !find("dds.reliability").is_null();
        },
        30s);
    EXPECT_EQ(run.exitCode, 1) << run.out << run.err;
    const Json e2e = find("e2e.dataIds");
    ASSERT_FALSE(e2e.is_null()) << run.out;
    EXPECT_EQ(e2e["severity"], "error");
    EXPECT_EQ(e2e["serviceId"], 0x1234);
    EXPECT_EQ(e2e["instanceId"], 1);
    EXPECT_EQ(e2e["entityName"], "ObjectList");
    EXPECT_EQ(e2e["kind"], "event");
    EXPECT_EQ(e2e["provider"]["appName"], "radar");
    EXPECT_EQ(e2e["provider"]["value"], "[4097]");
    EXPECT_EQ(e2e["consumer"]["appName"], "fusion2");
    EXPECT_EQ(e2e["consumer"]["value"], "[4098]");
    EXPECT_FALSE(e2e["message"].get<std::string>().empty());
    EXPECT_EQ(find("dds.reliability")["severity"], "warning");
    // fusion's own contract with radar is clean; the graph marks fusion2's edge only.
    EXPECT_EQ(Orxmaint({"check", "--app", "fusion"}).exitCode, 0);
    const RunResult dot = Orxmaint({"graph", "--format", "dot"});
    EXPECT_EQ(dot.exitCode, 0) << dot.err;
    EXPECT_EQ(dot.out.find(" color=red"), dot.out.rfind(" color=red")) << dot.out;
    EXPECT_NE(dot.out.find(" color=red"), std::string::npos) << dot.out;
}

}  // namespace
}  // namespace orx::test
