#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "daemon_fixture.h"
#include "orx/maintaind/json.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/driver/fault_injecting_driver.h"
#include "vorx/vcc/process_identity.h"

namespace orx::maintaind::daemon::test {
namespace {

using Level = ara::kelda::common::log::LogLevel;

class DaemonServiceTest : public DaemonFixture {
  protected:
    void SetUp() override {
        auto registry = vorx::vcc::DriverRegistry::GetInstance();
        faults_ = std::make_shared<vorx::vcc::FaultInjectingDriver>(registry->GetInProcessDriver());
        registry->SetDriver(CoreDriverType::PROLOC, faults_);
    }
    void TearDown() override {
        DaemonFixture::TearDown();
        faults_->SetRequestRewriter(nullptr);
        vorx::vcc::DriverRegistry::GetInstance()->SetDriver(CoreDriverType::PROLOC, nullptr);
    }

    // The next RegisterApp or tools request carries `bytes` instead of what was sent.
    void CorruptNextRequest(std::vector<uint8_t> bytes) {
        auto pending = std::make_shared<std::optional<std::vector<uint8_t>>>(std::move(bytes));
        faults_->SetRequestRewriter([pending](vorx::vcc::MethodCall& call) {
            if (*pending) {
                call.payload = vorx::vcc::Payload::FromBytes(std::move(**pending));
                pending->reset();
            }
        });
    }

    std::shared_ptr<vorx::vcc::FaultInjectingDriver> faults_;
};

TEST_F(DaemonServiceTest, EveryKindOfReportIsStoredAndListed) {
    StartDaemon();
    probe_->Run(100, 77);
    const std::vector<AppRegisterInfo> reports = {
        NodeReport("radar", 100, true),
        EventReport("radar", 100, "/demo/Brake", true, "BrakeTopic"),
        EventReport("hud", 200, "/demo/Brake", false, "BrakeTopic"),
        MethodReport("radar", 100, "Calibrate", true),
        FieldReport("radar", 100, "Mode", true),
        E2EReport("radar", 100, "/demo/Brake", 1, true),
        LatencyReport("hud", "BrakeTopic", 0),
        LatencyReport("hud", "BrakeTopic", 1, LatencyMode::ENABLE, 80),
        TimeoutReport("/demo/Service16/1/BrakeTopic", 4),
    };
    for (const AppRegisterInfo& report : reports) {
        EXPECT_EQ(Register(report), std::optional<uint8_t>(0))
            << ToJson(report).dump().substr(0, 200);
    }

    const tools::AllDataReply all =
        Tools<tools::AllDataReply>(tools::kQueryAllDataTypeId, tools::QueryFilter{});
    ASSERT_EQ(all.code, 0);
    ASSERT_EQ(all.nodes.size(), 2U);
    EXPECT_EQ(all.nodes[0].appName, "hud");
    // The in-process driver names this test's process as the sender of every request.
    const std::string host = vorx::vcc::CurrentProcessIdentity().hostName;
    EXPECT_EQ(all.nodes[1].host, host);
    EXPECT_EQ(all.nodes[1].eventCount, 1U);
    ASSERT_EQ(all.events.size(), 2U);
    EXPECT_EQ(all.events[1].record, reports[1].eventRegisterInfo);
    EXPECT_TRUE(all.events[1].online);
    EXPECT_EQ(all.methods.size(), 1U);
    EXPECT_EQ(all.fields.size(), 1U);
    EXPECT_EQ(all.e2eConfigs.size(), 1U);
    ASSERT_EQ(all.latencyStatuses.size(), 1U);
    EXPECT_TRUE(all.latencyStatuses[0].enabled);
    ASSERT_EQ(all.latencyResults.size(), 1U);
    EXPECT_EQ(all.latencyResults[0].maxLatency, 80U);
    ASSERT_EQ(all.sampleTimeouts.size(), 1U);
    EXPECT_EQ(all.sampleTimeouts[0].appName, "hud");

    // The dedicated queries answer the same.
    EXPECT_EQ(Tools<tools::FieldListReply>(tools::kQueryFieldInfoId, tools::QueryFilter{}).fields,
              all.fields);
    EXPECT_EQ(Tools<tools::E2EListReply>(tools::kQueryE2EInfoId, tools::QueryFilter{}).configs,
              all.e2eConfigs);
    EXPECT_EQ(
        Tools<tools::SampleTimeoutListReply>(tools::kQuerySampleTimeoutId, tools::QueryFilter{})
            .timeouts,
        all.sampleTimeouts);
    const auto status =
        Tools<tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, tools::QueryFilter{});
    EXPECT_EQ(status.counters.accepted, reports.size());
    EXPECT_EQ(status.counters.requests, reports.size());
    EXPECT_EQ(status.onlineNodeCount, 2U);
    EXPECT_EQ(status.dbPath, dir_.File("registry.db"));
    EXPECT_EQ(Log().CountContaining(Level::kInfo,
                                    "Node online[appName=radar, pid=100, host=" + host + "]"),
              1U);
    EXPECT_EQ(Log().CountContaining(Level::kError, "not served"), 0U)
        << "every method of the service's table has a handler";
}

TEST_F(DaemonServiceTest, BadRequestsAreAnsweredWithOneCountedAndLogged) {
    DaemonSettings settings = Settings();
    settings.limits.maxEntitiesPerNode = 1;
    StartDaemon(settings);

    CorruptNextRequest({0x01, 0x02, 0x03});
    EXPECT_EQ(Register(NodeReport("radar", 100, true)), std::optional<uint8_t>(1));
    AppRegisterInfo inconsistent = EventReport("radar", 100, "E", true, "T");
    inconsistent.methodRegisterInfo.methodName = "stray";
    EXPECT_EQ(Register(inconsistent), std::optional<uint8_t>(1));
    EXPECT_EQ(Register(EventReport("radar", 100, "E1", true, "T1")), std::optional<uint8_t>(0));
    EXPECT_EQ(Register(EventReport("radar", 100, "E2", true, "T2")), std::optional<uint8_t>(1))
        << "over the per-process limit";

    CorruptNextRequest({0xFF});
    const auto badQuery = Events();
    EXPECT_EQ(badQuery.code, static_cast<uint8_t>(tools::ToolsCode::BAD_REQUEST));
    EXPECT_NE(badQuery.message.find("request cannot be decoded"), std::string::npos);

    const auto status =
        Tools<tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, tools::QueryFilter{});
    EXPECT_EQ(status.counters.undecodable, 1U);
    EXPECT_EQ(status.counters.inconsistent, 1U);
    EXPECT_EQ(status.counters.overLimit, 1U);
    EXPECT_EQ(status.counters.accepted, 1U);
    EXPECT_EQ(status.counters.toolsBadRequests, 1U);
    EXPECT_EQ(Events().events.size(), 1U);
    EXPECT_EQ(
        Log().CountContaining(Level::kWarn, "[Maintaind][RegisterApp request cannot be decoded]"),
        1U);
    EXPECT_EQ(
        Log().CountContaining(Level::kWarn, "[Maintaind][Inconsistent report][kind=0, sessionId="),
        1U);
    EXPECT_EQ(Log().CountContaining(Level::kWarn, "too many entities for one process"), 1U);

    // A flood of bad requests: warnings stay rate-limited, every request is answered.
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(Register(inconsistent), std::optional<uint8_t>(1));
    }
    EXPECT_LE(Log().CountContaining(Level::kWarn, "[Maintaind][Inconsistent report]"), 6U);
}

TEST_F(DaemonServiceTest, MutatedReportsAreAllAnsweredAndNeverBreakTheDaemon) {
    StartDaemon();
    const std::vector<AppRegisterInfo> seeds = {
        NodeReport("radar", 100, true),
        EventReport("radar", 100, "E", true, "T", 1, 1, true, 9),
        MethodReport("radar", 100, "M", true),
        FieldReport("radar", 100, "F", false),
        E2EReport("radar", 100, "E", 1, true),
        LatencyReport("hud", "T", 0),
        LatencyReport("hud", "T", 1, LatencyMode::ENABLE, 5),
        TimeoutReport("listener", 2)};
    std::mt19937 random(12345);
    int answered = 0;
    constexpr int kRounds = 300;
    for (int round = 0; round < kRounds; ++round) {
        std::vector<uint8_t> bytes = vorx::serialize::Encode(seeds[round % seeds.size()]);
        const int flips = 1 + static_cast<int>(random() % 4);
        for (int i = 0; i < flips; ++i) {
            bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1u << (random() % 8));
        }
        if (round % 10 == 0) {
            bytes.resize(random() % bytes.size());  // cut short
        }
        CorruptNextRequest(std::move(bytes));
        const auto code = Register(NodeReport("carrier", 1, true));
        answered += code.has_value() ? 1 : 0;
    }
    EXPECT_EQ(answered, kRounds) << "every request gets an answer";
    const auto status =
        Tools<tools::DaemonStatusReply>(tools::kQueryDaemonStatusId, tools::QueryFilter{});
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(status.counters.requests, static_cast<uint64_t>(kRounds));
    EXPECT_EQ(status.counters.accepted + status.counters.undecodable +
                  status.counters.inconsistent + status.counters.overLimit,
              static_cast<uint64_t>(kRounds));
    EXPECT_EQ(Register(EventReport("radar", 100, "Fine", true, "FineTopic")),
              std::optional<uint8_t>(0));
}

TEST_F(DaemonServiceTest, ManyClientsAtOnceAreAllStored) {
    StartDaemon();
    constexpr int kClients = 8;
    constexpr int kReports = 60;
    AppProxy();  // made once, before the clients share it
    std::vector<std::thread> clients;
    std::atomic<int> accepted{0};
    for (int c = 0; c < kClients; ++c) {
        clients.emplace_back([&, c] {
            const std::string app = "app" + std::to_string(c);
            for (int i = 0; i < kReports; ++i) {
                if (Register(EventReport(app, 1000 + c, "E" + std::to_string(i), true,
                                         "T" + std::to_string(i))) == std::optional<uint8_t>(0)) {
                    ++accepted;
                }
            }
        });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    EXPECT_EQ(accepted.load(), kClients * kReports);
    const auto events = Events();
    EXPECT_EQ(events.total, static_cast<uint32_t>(kClients * kReports));
}

}  // namespace
}  // namespace orx::maintaind::daemon::test

namespace orx::maintaind::daemon::test {
namespace {

// Processes of another host, stood in for by the fault-injecting driver's peers.
TEST_F(DaemonServiceTest, NodesOfAnotherHostFollowTheirParticipants) {
    StartDaemon();
    auto peer = [](uint8_t id, int32_t pid) {
        vorx::vcc::PeerInfo info;
        info.key[0] = id;
        info.process.hostName = "ecu2";
        info.process.hostId = "ecu2-boot";
        info.process.pid = pid;
        info.process.startTicks = 10U * id;
        return info;
    };
    std::atomic<uint8_t> sender{1};
    faults_->SetRequestRewriter(
        [&sender](vorx::vcc::MethodCall& call) { call.sender = {sender.load()}; });
    faults_->AddPeer(peer(1, 100));
    ASSERT_EQ(Register(NodeReport("radar", 100, true)), std::optional<uint8_t>(0));
    auto radar = [this](int32_t pid) {
        tools::QueryFilter filter;
        filter.pid = pid;
        const auto nodes = Nodes(filter).nodes;
        return nodes.empty() ? tools::NodeEntry{} : nodes[0];
    };
    EXPECT_EQ(radar(100).host, "ecu2");
    EXPECT_EQ(daemon_->CheckLivenessNow(), 0U) << "not a process of this host";

    faults_->LosePeer(peer(1, 100).key);
    EXPECT_TRUE(WaitFor([&] { return radar(100).offlineReason == "lease expired"; }));
    faults_->AddPeer(peer(1, 100));
    EXPECT_TRUE(WaitFor([&] { return radar(100).online; }));
    EXPECT_EQ(
        Log().CountContaining(Level::kInfo,
                              "Node online[appName=radar, pid=100, host=ecu2, reason=reconnected]"),
        1U);

    // Crashed; the new run is counted, and the count survives a restart of the daemon.
    faults_->LosePeer(peer(1, 100).key);
    EXPECT_TRUE(WaitFor([&] { return !radar(100).online; }));
    faults_->AddPeer(peer(2, 101));
    sender = 2;
    ASSERT_EQ(Register(NodeReport("radar", 101, true)), std::optional<uint8_t>(0));
    EXPECT_EQ(radar(101).restarts, 1U);
    StartDaemon();
    EXPECT_EQ(radar(101).restarts, 1U);
    EXPECT_TRUE(radar(101).online);
    ASSERT_EQ(Register(NodeReport("radar", 101, false)), std::optional<uint8_t>(0));
    EXPECT_EQ(radar(101).offlineReason, "offline report");
}

}  // namespace
}  // namespace orx::maintaind::daemon::test
