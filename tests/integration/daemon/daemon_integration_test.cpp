// maintaind as a process, over DDS on loopback, with the demo applications reporting to it. Every
// test process uses a DDS domain of its own (171 to 174).
#include <gtest/gtest.h>
#include <signal.h>

#include <random>
#include <set>
#include <thread>
#include <tuple>

#include "child_process.h"
#include "daemon_client.h"

namespace orx::maintaind::daemon::itest {
namespace {

class MaintaindProcessTest : public ::testing::Test {
  protected:
    // `domain` is taken by the first test of the process: the core's DDS driver lives as long as
    // the process.
    void Prepare(uint32_t domain) {
        static const uint32_t processDomain = [domain] {
            DaemonClient::Prepare(domain, ORX_TEST_PLUGIN_PATH);
            return domain;
        }();
        domain_ = processDomain;
        char pattern[] = "/tmp/maintaind-itest-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }

    void TearDown() override {
        apps_.clear();
        daemon_.reset();
        if (!dir_.empty() && !HasFailure()) {
            ASSERT_EQ(std::system(("rm -rf '" + dir_ + "'").c_str()), 0);
        } else if (!dir_.empty()) {
            std::cout << "Logs and registry kept in " << dir_ << "\n";
        }
    }

    std::map<std::string, std::string> Env() const {
        return {{"ORX_DDS_DOMAIN", std::to_string(domain_)},
                {"ORX_DFX_PLUGIN", ORX_TEST_PLUGIN_PATH}};
    }

    void StartDaemon(bool fresh) {
        std::vector<std::string> argv = {ORX_TEST_MAINTAIND_PATH, "--db", dir_ + "/registry.db",
                                         "--liveness-period-ms", "2000"};
        if (fresh) {
            argv.push_back("--fresh");
        }
        // A log of its own per start, so waiting for its lines never sees an earlier run's.
        daemon_ = std::make_unique<ChildProcess>(
            argv, Env(), dir_ + "/maintaind-" + std::to_string(++daemonStarts_) + ".log");
        ASSERT_TRUE(daemon_->WaitForOutput("Maintaind started", 20s)) << daemon_->Output();
    }

    ChildProcess& StartApp(const std::string& role) {
        apps_[role] = std::make_unique<ChildProcess>(
            std::vector<std::string>{ORX_TEST_DEMO_PATH, role}, Env(), dir_ + "/" + role + ".log");
        return *apps_[role];
    }

    std::vector<tools::NodeEntry> Nodes() {
        auto reply =
            client_.Call<tools::NodeListReply>(tools::kQueryNodeInfoId, tools::QueryFilter{});
        return reply ? reply->nodes : std::vector<tools::NodeEntry>{};
    }

    std::optional<tools::NodeEntry> Node(const std::string& app) {
        for (const auto& node : Nodes()) {
            if (node.appName == app) {
                return node;
            }
        }
        return std::nullopt;
    }

    // Waits until the daemon lists `app` online with at least one event, method and field.
    bool WaitForApp(const std::string& app, std::chrono::seconds timeout = 30s) {
        return WaitUntil(
            [&] {
                auto node = Node(app);
                return node && node->online && node->eventCount > 0 && node->methodCount > 0 &&
                       node->fieldCount > 0;
            },
            timeout);
    }

    // Waits until the daemon lists `app` with the given online state.
    bool WaitForOnline(const std::string& app, bool online, std::chrono::seconds timeout) {
        return WaitUntil(
            [&] {
                auto node = Node(app);
                return node && node->online == online;
            },
            timeout);
    }

    template <class Condition>
    static bool WaitUntil(Condition condition, std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        while (!condition()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                return false;
            }
            std::this_thread::sleep_for(200ms);
        }
        return true;
    }

    uint32_t domain_ = 0;
    int daemonStarts_ = 0;
    std::string dir_;
    DaemonClient client_;
    std::unique_ptr<ChildProcess> daemon_;
    std::map<std::string, std::unique_ptr<ChildProcess>> apps_;
};

TEST_F(MaintaindProcessTest, RegistrySurvivesAKilledDaemon) {
    Prepare(171);
    StartDaemon(/*fresh=*/true);
    StartApp("radar");
    ASSERT_TRUE(WaitForApp("radar")) << daemon_->Output();
    auto before =
        client_.Call<tools::AllDataReply>(tools::kQueryAllDataTypeId, tools::QueryFilter{});
    ASSERT_TRUE(before);

    daemon_->Signal(SIGKILL);
    ASSERT_EQ(daemon_->WaitForExit(10s), std::optional<int>(128 + SIGKILL));
    client_.Reset();
    StartDaemon(/*fresh=*/false);
    EXPECT_NE(daemon_->Output().find("Registry loaded[file=" + dir_ + "/registry.db, nodes=1"),
              std::string::npos)
        << daemon_->Output();

    // The killed daemon's offer is listed until its DDS lease ends; a call that went to it
    // fails, and a new search finds the new daemon.
    std::optional<tools::AllDataReply> after;
    ASSERT_TRUE(WaitUntil(
        [&] {
            after = client_.Call<tools::AllDataReply>(tools::kQueryAllDataTypeId,
                                                      tools::QueryFilter{}, 2s);
            if (!after) {
                client_.Reset();
            }
            return after.has_value();
        },
        20s));
    auto identities = [](const tools::AllDataReply& all) {
        std::set<std::tuple<String, String, bool>> ids;
        for (const auto& event : all.events)
            ids.emplace(event.appName, event.eventName, event.isPub);
        for (const auto& method : all.methods)
            ids.emplace(method.appName, method.methodName, method.isPub);
        for (const auto& field : all.fields)
            ids.emplace(field.appName, field.fieldName, field.isPub);
        return ids;
    };
    EXPECT_EQ(identities(*after), identities(*before));
    ASSERT_EQ(after->nodes.size(), 1U);
    EXPECT_TRUE(after->nodes[0].online) << "the radar still runs";
    EXPECT_EQ(after->nodes[0].firstSeen, before->nodes[0].firstSeen);
}

TEST_F(MaintaindProcessTest, VanishedAndStoppedAppsGoOffline) {
    Prepare(172);
    StartDaemon(/*fresh=*/true);
    StartApp("radar");
    StartApp("fusion");
    ASSERT_TRUE(WaitForApp("radar")) << daemon_->Output();
    ASSERT_TRUE(WaitForOnline("fusion", true, 30s));

    apps_["fusion"]->Signal(SIGKILL);
    const auto killed = std::chrono::steady_clock::now();
    ASSERT_TRUE(WaitForOnline("fusion", false, 15s));
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - killed);
    EXPECT_LT(seconds.count(), 10.0);
    EXPECT_EQ(Node("fusion")->offlineReason, "process gone");
    EXPECT_TRUE(Node("radar")->online);
    EXPECT_TRUE(daemon_->WaitForOutput("Node offline[appName=fusion", 5s));

    apps_["radar"]->Signal(SIGTERM);
    ASSERT_TRUE(apps_["radar"]->WaitForExit(15s).has_value());
    ASSERT_TRUE(WaitForOnline("radar", false, 10s));
    EXPECT_EQ(Node("radar")->offlineReason, "offline report") << daemon_->Output();
}

TEST_F(MaintaindProcessTest, MalformedRequestsAreAnsweredAndTheDaemonStaysUp) {
    Prepare(173);
    StartDaemon(/*fresh=*/true);
    EXPECT_EQ(client_.RegisterRaw({0x01, 0x02, 0x03}), std::optional<uint8_t>(1));
    std::mt19937 random(7);
    int answeredOne = 0;
    constexpr int kGarbage = 50;
    for (int i = 0; i < kGarbage; ++i) {
        std::vector<uint8_t> bytes(1 + random() % 600);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(random());
        }
        answeredOne += client_.RegisterRaw(bytes) == std::optional<uint8_t>(1) ? 1 : 0;
    }
    EXPECT_EQ(answeredOne, kGarbage);

    AppRegisterInfo node;
    node.kind = static_cast<uint8_t>(ReportKind::E2E_AND_NODE);
    node.nodeCommonRegisterInfo.appName = "probe";
    node.nodeCommonRegisterInfo.pid = 99999;
    node.nodeCommonRegisterInfo.nodePidInfo.isOnline = true;
    EXPECT_EQ(client_.Register(node), std::optional<uint8_t>(0));
    node.nodeCommonRegisterInfo.pid = -5;
    EXPECT_EQ(client_.Register(node), std::optional<uint8_t>(1));

    auto status =
        client_.Call<tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, tools::QueryFilter{});
    ASSERT_TRUE(status);
    EXPECT_EQ(status->counters.undecodable, static_cast<uint64_t>(kGarbage + 1));
    EXPECT_EQ(status->counters.inconsistent, 1U);
    EXPECT_EQ(status->counters.accepted, 1U);
    EXPECT_TRUE(daemon_->Running());
    EXPECT_NE(daemon_->Output().find("[Maintaind][RegisterApp request cannot be decoded]"),
              std::string::npos);
}

TEST_F(MaintaindProcessTest, LatencySwitchReachesTheApplications) {
    Prepare(174);
    StartDaemon(/*fresh=*/true);
    StartApp("radar");
    StartApp("fusion");
    ASSERT_TRUE(WaitForApp("radar")) << daemon_->Output();
    ASSERT_TRUE(WaitForOnline("fusion", true, 30s));

    tools::LatencySwitchRequest request;
    request.event = "ObjectList";
    request.mode = LatencyMode::ENABLE;
    auto reply = client_.Call<tools::LatencySwitchReply>(tools::kSwitchLatencyModeId, request);
    ASSERT_TRUE(reply);
    ASSERT_EQ(reply->code, 0) << reply->message;
    EXPECT_EQ(reply->latencyIndex.eventName, "RadarObjectList");

    // Both sides acknowledge; the subscriber then reports results.
    EXPECT_TRUE(WaitUntil(
        [&] {
            auto statuses = client_.Call<tools::LatencyStatusListReply>(
                tools::kQueryLatencyStatusId, tools::QueryFilter{});
            return statuses && statuses->statuses.size() == 1 &&
                   statuses->statuses[0].acks.size() == 2 && statuses->statuses[0].enabled;
        },
        15s))
        << daemon_->Output();
    EXPECT_TRUE(WaitUntil(
        [&] {
            auto results = client_.Call<tools::LatencyResultListReply>(tools::kQueryLatencyResultId,
                                                                       tools::QueryFilter{});
            return results && !results->results.empty() && results->results[0].appName == "fusion";
        },
        15s));
    EXPECT_TRUE(daemon_->WaitForOutput("Latency switch published[event=", 1s));
}

}  // namespace
}  // namespace orx::maintaind::daemon::itest
