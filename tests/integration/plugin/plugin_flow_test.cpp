// The DFX plug-in in the demo applications, reporting over DDS to the maintenance daemon double
// in another process. Each test has a DDS domain of its own.
#include <gtest/gtest.h>
#include <signal.h>

#include "plugin_system.h"

namespace orx::test::plugin {
namespace {

// Generous: the machine may be busy, and discovery plus the plug-in's 2 s replay take a while.
constexpr auto kLong = 30s;

class PluginFlowTest : public ::testing::Test {
  protected:
    // Prints what every process said when the test failed.
    void TearDown() override {
        if (HasFailure()) {
            for (const auto* process : {daemon_.get(), radar_.get(), fusion_.get()}) {
                if (process != nullptr) {
                    std::cout << process->Output();
                }
            }
        }
    }

    void StartDaemon(uint32_t domain, bool offer = true) {
        daemon_ = plugin::StartDaemon({domain, "", ""}, offer);
        ASSERT_TRUE(daemon_->WaitForText("READY", kLong)) << "the daemon double did not start";
    }
    void StartRadar(uint32_t domain) {
        radar_ = StartApp("radar", {domain, "", ""});
        ASSERT_TRUE(radar_->WaitForText("[radar] offering", kLong)) << "the radar did not start";
    }
    void StartFusion(uint32_t domain) {
        fusion_ = StartApp("fusion", {domain, "", ""});
        ASSERT_TRUE(fusion_->WaitForText("[fusion] looking for", kLong));
    }
    std::optional<Json> Wait(const std::function<bool(const Json&)>& match, size_t skip = 0) {
        return WaitForReport(*daemon_, match, kLong, skip);
    }

    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ChildProcess> radar_;
    std::unique_ptr<ChildProcess> fusion_;
};

TEST_F(PluginFlowTest, AppStartedBeforeTheMaintenanceServiceIsDeliveredCompletely) {
    StartRadar(211);
    StartDaemon(211);

    EXPECT_TRUE(Wait(NodeReport("radar", true)));
    EXPECT_TRUE(Wait(EventReport("radar", "ObjectList", true, true)));
    EXPECT_TRUE(Wait(MethodReport("radar", true)));
    EXPECT_TRUE(Wait(FieldReport("radar", true)));
    const auto e2e = Wait(E2EReport("radar"));
    ASSERT_TRUE(e2e);
    const Json& config = (*e2e)["nodeCommonRegisterInfo"]["appE2EConfig"]["pubE2EConfigs"][0];
    EXPECT_EQ(config["serviceId"], 4660);
    EXPECT_EQ(config["instanceId"], 1);
    EXPECT_EQ(config["e2eConfig"]["profile"], 4);
}

TEST_F(PluginFlowTest, ServiceThatDisappearsAndComesBackGetsWhatWasMissed) {
    StartDaemon(213);
    StartRadar(213);
    // The plug-in sends one report after the other and waits for each reply, so once the last
    // one arrived the node registration has been answered.
    ASSERT_TRUE(Wait(NodeReport("radar", true)));
    ASSERT_TRUE(Wait(EventReport("radar", "ObjectList", true, true)));
    ASSERT_TRUE(Wait(MethodReport("radar", true)));
    ASSERT_TRUE(Wait(FieldReport("radar", true)));

    daemon_->Send("withdraw");
    ASSERT_TRUE(daemon_->WaitForText("WITHDRAWN", kLong));
    // The fusion comes up while the maintenance service is away: its reports wait.
    StartFusion(213);
    ASSERT_TRUE(fusion_->WaitForText("[fusion] found the radar service", kLong));
    EXPECT_FALSE(WaitForReport(*daemon_, NodeReport("fusion", true), 0ms));

    daemon_->Send("offer");
    EXPECT_TRUE(Wait(NodeReport("fusion", true)));
    EXPECT_TRUE(Wait(EventReport("fusion", "ObjectList", false, true)));

    // The radar knew the first offer; at its clean exit its withdrawals and its offline report
    // reach the service that came back.
    ASSERT_TRUE(radar_->WaitForText("Repeated discovery maintaindServer.", kLong));
    radar_->Signal(SIGTERM);
    EXPECT_EQ(radar_->WaitForExit(kLong), std::optional<int>(0));
    EXPECT_TRUE(Wait(EventReport("radar", "ObjectList", true, false)));
    EXPECT_TRUE(Wait(NodeReport("radar", false)));
}

TEST_F(PluginFlowTest, LatencySwitchReachesTheAppsAndResultsFlowEverySecond) {
    StartDaemon(214);
    StartRadar(214);
    StartFusion(214);
    ASSERT_TRUE(Wait(EventReport("fusion", "ObjectList", false, true)));
    ASSERT_TRUE(fusion_->WaitForText("[fusion] ObjectList frame", kLong));

    // The order may go out before the switch event's subscription has matched; repeat it.
    std::optional<Json> ack;
    for (int attempt = 0; attempt < 10 && !ack; ++attempt) {
        daemon_->Send("latency 0 4660 1 RadarObjectList");
        ack = WaitForReport(*daemon_, LatencyReport("fusion", 0), 3s);
    }
    ASSERT_TRUE(ack) << "the fusion never acknowledged the switch";
    EXPECT_EQ((*ack)["latencyInfo"]["ackInfo"]["mode"], 0);
    EXPECT_EQ((*ack)["latencyInfo"]["ackInfo"]["isSubMatched"], true);
    const auto radarAck = Wait(LatencyReport("radar", 0));
    ASSERT_TRUE(radarAck);
    EXPECT_EQ((*radarAck)["latencyInfo"]["ackInfo"]["isPubMatched"], true);

    std::vector<Json> results;
    for (size_t i = 0; i < 3; ++i) {
        const auto result = Wait(LatencyReport("fusion", 1), i);
        ASSERT_TRUE(result) << "latency result " << i << " missing";
        results.push_back(*result);
    }
    for (size_t i = 0; i < results.size(); ++i) {
        const Json& info = results[i]["latencyInfo"];
        EXPECT_EQ(info["latencyIndex"]["eventName"], "RadarObjectList");
        const Json& figures = info["resultInfo"]["result"];
        EXPECT_GE(figures["maxLatency"].get<uint64_t>(), figures["minLatency"].get<uint64_t>());
        EXPECT_GE(figures["minLatency"].get<uint64_t>(), 1U);
        if (i > 0) {
            const auto gap =
                info["resultInfo"]["notifyTime"].get<uint64_t>() -
                results[i - 1]["latencyInfo"]["resultInfo"]["notifyTime"].get<uint64_t>();
            EXPECT_GE(gap, 500U) << "one result per second";
            EXPECT_LE(gap, 3000U) << "one result per second";
        }
    }
}

TEST_F(PluginFlowTest, SampleTimeoutIsForwardedToTheService) {
    StartDaemon(215);
    StartRadar(215);
    StartFusion(215);
    ASSERT_TRUE(fusion_->WaitForText("[fusion] ObjectList frame", kLong));
    ASSERT_TRUE(Wait(NodeReport("fusion", true)));

    radar_->Signal(SIGUSR1);
    ASSERT_TRUE(radar_->WaitForText("[radar] publishing paused", kLong));
    const auto first = Wait(SampleTimeoutReport(1));
    ASSERT_TRUE(first);
    const Json& params = (*first)["listenerParams"][0];
    EXPECT_EQ(params["key"], 0);
    EXPECT_EQ(params["value"]["listenerName"], "/demo/RadarService:1:ObjectList");
    EXPECT_EQ(params["value"]["sampleTimeout"], 500);
    EXPECT_TRUE(Wait(SampleTimeoutReport(2))) << "a running count while the radar stays silent";
    EXPECT_TRUE(
        fusion_->WaitForText("[fusion] no ObjectList for 500 ms (sample timeout #1)", kLong));

    radar_->Signal(SIGUSR1);
    EXPECT_TRUE(radar_->WaitForText("[radar] publishing resumed", kLong));
}

}  // namespace
}  // namespace orx::test::plugin
