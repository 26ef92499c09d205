// maintaind on one "host" and a demo application on another: network namespaces that this test
// creates and deletes itself, joined by a veth pair with addresses that exist only inside them.
// The remote application also has a host name and process ids of its own (a UTS and a pid
// namespace), so its pid collides with one on the daemon's host, as pids of other machines do.
#include <gtest/gtest.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include <fstream>

#include "orx/test/child_process.h"
#include "orx/test/temp_dir.h"
#include "orx/test/wait.h"
#include "two_hosts.h"

namespace orx::test {
namespace {

using Json = nlohmann::json;
using namespace std::chrono_literals;

const std::string kBin = ORX_BIN_DIR;
constexpr const char* kDomain = "219";
constexpr const char* kAddressA = "10.219.4.1";
constexpr const char* kAddressB = "10.219.4.2";
constexpr const char* kRemoteHost = "ecu-remote";

class LivenessTwoHostTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = hosts_.Create("orxliv", kAddressA, kAddressB);
            !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        if (Shell("unshare --uts --pid --fork --mount-proc true") != 0) {
            GTEST_SKIP() << "cannot make UTS and pid namespaces (unshare)";
        }
    }

    void TearDown() override {
        if (HasFailure()) {
            for (const auto* process : {daemon_.get(), remote_.get()}) {
                if (process != nullptr) {
                    std::cout << process->Output();
                }
            }
        }
        KillRemote();
        remote_.reset();
        if (daemon_) {
            daemon_->Signal(SIGTERM);
            daemon_->WaitForExit(10s);
        }
    }

    // DDS on `address`, both hosts as unicast peers, no multicast.
    std::string Config(const std::string& name, const std::string& address) {
        Json config;
        std::ifstream example(std::string(ORX_TEST_EXAMPLES_DIR) + "/" + name + "/orx.json");
        if (example) {
            config = Json::parse(example);
        }
        config["dds"] = {{"networkInterface", address},
                         {"peers", {kAddressA, kAddressB}},
                         {"allowMulticast", false}};
        const std::string path = dir_.File(name + ".json");
        std::ofstream(path) << config.dump(2);
        return path;
    }

    void StartDaemon() {
        daemon_ = std::make_unique<ChildProcess>(ChildProcess::Options{
            {kBin + "/maintaind", "--db", dir_.File("registry.db"), "--fresh"},
            {{"ORX_DDS_DOMAIN", kDomain}, {"ORX_CONFIG", Config("daemon", kAddressB)}},
            hosts_.B(),
            "maintaind"});
        ASSERT_TRUE(daemon_->WaitForText("Maintaind started", 30s)) << daemon_->Output();
    }

    // The radar on host A, as pid 1 of its own pid namespace under its own host name.
    void StartRemoteRadar() {
        remote_ = std::make_unique<ChildProcess>(ChildProcess::Options{
            {"unshare", "--uts", "--pid", "--fork", "--mount-proc", "/bin/sh", "-c",
             std::string("hostname ") + kRemoteHost + " && exec \"$0\" radar", kBin + "/orx-demo"},
            {{"ORX_DDS_DOMAIN", kDomain},
             {"ORX_DFX_PLUGIN", ORX_TEST_PLUGIN_PATH},
             {"ORX_CONFIG", Config("radar", kAddressA)}},
            hosts_.A(),
            "remote radar"});
    }

    // kill -9 of every demo application on host A.
    void KillRemote() {
        if (!hosts_.A().empty()) {
            Shell("for p in $(ip netns pids " + hosts_.A() +
                  "); do [ \"$(cat /proc/$p/comm 2>/dev/null)\" = orx-demo ] && kill -9 $p; done");
        }
    }

    // The daemon's entry of the radar once `accept` takes it, asked with orxmaint on the
    // daemon's host; null when it never did within `timeout`.
    Json RadarWhen(const std::function<bool(const Json&)>& accept,
                   std::chrono::milliseconds timeout = 30s) {
        Json found;
        WaitFor(
            [&] {
                const RunResult run =
                    RunToEnd({"ip", "netns", "exec", hosts_.B(), kBin + "/orxmaint", "--domain",
                              kDomain, "--json", "nodes", "--app", "radar"},
                             {{"ORX_CONFIG", dir_.File("daemon.json")}}, 15s);
                const Json nodes = Json::parse(run.out, nullptr, false);
                if (run.exitCode != 0 || !nodes.is_array() || nodes.empty()) {
                    return false;
                }
                found = nodes.back();  // the newest run lists last (sorted by pid, then host)
                return accept(found);
            },
            timeout);
        return accept(found) ? found : Json();
    }

    TwoHosts hosts_;
    TempDir dir_{"orx-liveness-it"};
    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ChildProcess> remote_;
};

TEST_F(LivenessTwoHostTest, RemoteNodesFollowTheirParticipant) {
    StartDaemon();
    StartRemoteRadar();
    Json radar = RadarWhen([](const Json& node) { return node["online"] == true; });
    ASSERT_FALSE(radar.is_null()) << "the remote radar never came online";
    EXPECT_EQ(radar["host"], kRemoteHost);
    EXPECT_EQ(radar["pid"], 1) << "pid 1 of its own namespace, which also runs on this host";

    // A network cut: offline when the lease runs out; back as reconnected, not restarted.
    ASSERT_TRUE(hosts_.SetLinkUp(false));
    radar = RadarWhen([](const Json& node) { return node["online"] == false; });
    ASSERT_FALSE(radar.is_null());
    EXPECT_EQ(radar["offlineReason"], "lease expired");
    ASSERT_TRUE(hosts_.SetLinkUp(true));
    radar = RadarWhen([](const Json& node) { return node["online"] == true; }, 60s);
    ASSERT_FALSE(radar.is_null()) << "the radar did not come back after the cut healed";
    EXPECT_EQ(radar["restarts"], 0);
    EXPECT_TRUE(daemon_->WaitForText(
        "Node online[appName=radar, pid=1, host=ecu-remote, reason=reconnected]", 1s));

    // kill -9: offline when the lease runs out (the daemon cannot look at that host's pids).
    KillRemote();
    radar = RadarWhen([](const Json& node) { return node["online"] == false; });
    ASSERT_FALSE(radar.is_null());
    EXPECT_EQ(radar["offlineReason"], "lease expired");

    // Started again (pid 1 again, a new start time): one restart.
    remote_.reset();
    StartRemoteRadar();
    radar = RadarWhen([](const Json& node) { return node["online"] == true; });
    ASSERT_FALSE(radar.is_null());
    EXPECT_EQ(radar["restarts"], 1);
}

}  // namespace
}  // namespace orx::test
