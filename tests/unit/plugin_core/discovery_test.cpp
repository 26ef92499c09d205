// Finding the daemon: reports made before it is found wait in the caches and the first pass
// delivers them; later offers of the same daemon do not make a second proxy.
#include "maintaind/maintaind_listener.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindClient;

class DiscoveryTest : public PluginFixture {};

TEST_F(DiscoveryTest, ReportsBeforeDiscoveryAreCachedAndDeliveredByTheFirstPass) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    Core()->RegisterNodePid(uint16_t{0x1234});
    Core()->RegisterEventInfoToMaintaind(DdsEventMap(0x10, 1, "Speed"), true);
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kVerbose, "Maintaind Proxy is not create, push EventInfo to cache.", 1, kWait));
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), nullptr);
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);

    ASSERT_TRUE(daemon_->Offer());
    WaitForFirstPass();
    ASSERT_TRUE(WaitForKind(ReportKind::EVENT, 1));
    ASSERT_TRUE(WaitForKind(ReportKind::E2E_AND_NODE, 1));

    EXPECT_TRUE(Log().Contains(
        LogLevel::kInfo, "Find maintaind service and create proxy successfully[instanceId=1]"));
    const auto node = ReceivedOfKind(ReportKind::E2E_AND_NODE).front().nodeCommonRegisterInfo;
    EXPECT_EQ(node.appName, kAppName);
    EXPECT_EQ(node.pid, static_cast<int32_t>(getpid()));
    EXPECT_TRUE(node.nodePidInfo.isOnline);
    // The first pass reports quietly.
    EXPECT_TRUE(
        Log().Contains(LogLevel::kDebug, "Register node pid info successfully[appname=" + kAppName +
                                             ", pid=" + std::to_string(getpid()) + "]"));
    const auto event = ReceivedOfKind(ReportKind::EVENT).front();
    EXPECT_TRUE(event.isPub);
    EXPECT_EQ(event.eventRegisterInfo.eventName, "Speed");
    EXPECT_TRUE(event.eventRegisterInfo.isOnline);
    EXPECT_EQ(daemon_->ReceivedCount(), 2U);
}

TEST_F(DiscoveryTest, LaterOffersKeepTheOneProxyAndItsReplayJobs) {
    StartDaemon();
    StartClient();
    const auto proxy = OrxMaintaindClient::GetInstance()->GetMaintaindProxy();
    ASSERT_NE(proxy, nullptr);

    daemon_->Withdraw();
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kWarn, "Cannot find any maintaindServer service",
                                        1, kWait));
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), proxy);

    ASSERT_TRUE(daemon_->Offer());
    ASSERT_TRUE(
        Log().WaitForContaining(LogLevel::kInfo, "Repeated discovery maintaindServer.", 1, kWait));
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), proxy);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug,
                                    "Begin to insert first time register cache info event["),
              1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug,
                                    "Begin to insert periodic register cache info event["),
              1U);

    // The kept proxy reaches the daemon again.
    Core()->RegisterEventInfoToMaintaind(DdsEventMap(0x10, 1, "Speed"), false);
    EXPECT_TRUE(WaitForKind(ReportKind::EVENT, 1));
}

class ListenerThresholdTest : public PluginFixture {
  protected:
    void Configure(uint32_t thresholdMs) {
        WriteConfig(R"({"dfx": {"sampleTimeoutThresholdMs": )" + std::to_string(thresholdMs) +
                    "}}");
    }
};

TEST_F(ListenerThresholdTest, NoThresholdGivesNoListener) {
    Configure(0);
    const auto descriptor = Core()->GetMaintaindClientListener();
    EXPECT_EQ(descriptor.listener, nullptr);
    EXPECT_EQ(descriptor.kind, 0U);
    EXPECT_EQ(Log().Count(LogLevel::kDebug,
                          "[OrxMaintaindClient][Cannot read timeout threshold from orx.json]"),
              1U);
}

TEST_F(ListenerThresholdTest, ThresholdBelowFiveMillisecondsIsRefused) {
    Configure(4);
    const auto descriptor = Core()->GetMaintaindClientListener();
    EXPECT_EQ(descriptor.listener, nullptr);
    EXPECT_EQ(descriptor.kind, 0U);
    EXPECT_EQ(
        Log().Count(LogLevel::kWarn,
                    "[OrxMaintaindClient][Minimum timeout threshold exceeded][minimumThreshold="
                    "5ms, acutalThreshold=4]"),
        1U);
}

TEST_F(ListenerThresholdTest, FiveMillisecondsGivesOneSharedListener) {
    Configure(5);
    const auto first = Core()->GetMaintaindClientListener();
    ASSERT_NE(first.listener, nullptr);
    EXPECT_EQ(first.kind, 2U);
    const auto listener =
        std::dynamic_pointer_cast<orx::orxcm::maintaind::MaintaindListener>(first.listener);
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(listener->GetTimeoutThreshold(), 5U);
    const auto second = Core()->GetMaintaindClientListener();
    EXPECT_EQ(second.listener, first.listener);
    EXPECT_EQ(Log().CountContaining(LogLevel::kWarn, "[OrxMaintaindClient]"), 0U);
}

}  // namespace
}  // namespace orx::test::plugin
