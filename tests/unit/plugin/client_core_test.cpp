// What loading leaves behind, the search for the daemon, the node report and the listener the
// client hands to the core.
#include <set>

#include "config/dds_dfx_config.h"
#include "maintaind/maintaind_listener.h"
#include "orx/maintaind/service.h"
#include "orxmaintaind/orx_maintaind_bind_index.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "plugin_fixture.h"
#include "vorx/vcc/api/types/e2e_config.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindBindIndex;
using orx::orxcm::orxmaintaind::type::OrxMaintaindType;
using vorx::vcc::RegisterDfxInterface;

TEST(LibraryEntryTest, LoadingRegistersOneProviderAndTheClientWithTheServiceTables) {
    EXPECT_EQ(RegisterDfxInterface::DfxConfigRegistrationCount(), 1U);
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), 1U);
    EXPECT_EQ(RegisterDfxInterface::GetDfxConfigInterface(),
              std::static_pointer_cast<vorx::vcc::DDSDfxConfigInterface>(
                  orx::orxcm::config::DDSDfxConfig::GetInstance()));
    EXPECT_EQ(Core(), OrxMaintaindClient::GetInstance());
    // Nothing is searched for or sent before the core initialises the client.
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), nullptr);
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetProcessPid(), -1);

    using orx::orxcm::orxmaintaind::kDriverTypeNames;
    EXPECT_EQ(kDriverTypeNames.at(DriverType::PROLOC), "PROLOC");
    EXPECT_EQ(kDriverTypeNames.at(DriverType::DDS), "DDS");
    EXPECT_EQ(kDriverTypeNames.at(DriverType::SOMEIP), "SOMEIP");

    const auto type = OrxMaintaindType::GetInstance();
    EXPECT_EQ(type->GetServiceShortName(), "MAINTAIND");
    const auto& methods = type->GetMethodTable();
    ASSERT_EQ(methods.size(), 13U);
    // The registration method answers on its request topic.
    EXPECT_EQ(methods.at(60621).at("Request"), "RegisterAppRequestTopic");
    EXPECT_EQ(methods.at(60621).at("Reply"), "RegisterAppRequestTopic");
    EXPECT_EQ(methods.at(0x0DEA).at("Reply"), "QueryLatencyStatusReplyTopic");
    EXPECT_EQ(type->GetEventTable().at(30161), "SwitchApplicationLatency");
}

TEST(BindIndexTest, OrdersByServiceInstanceBindingsThenEntityIgnoringTheFlags) {
    const OrxMaintaindBindIndex base(7, "2", 100, {DriverType::DDS}, true, true);
    // The flags take no part: a withdrawal finds the registration's slot.
    const OrxMaintaindBindIndex withdrawal(7, "2", 100, {DriverType::DDS}, false, false);
    EXPECT_FALSE(base < withdrawal);
    EXPECT_FALSE(withdrawal < base);
    EXPECT_TRUE(OrxMaintaindBindIndex(6, "9", 900, {DriverType::SOMEIP}, true, true) < base);
    // Instance ids compare as text: "10" sorts before "2".
    EXPECT_TRUE(OrxMaintaindBindIndex(7, "10", 100, {DriverType::DDS}, true, true) < base);
    // Binding sets element by element, a shorter prefix first, before the entity id.
    const OrxMaintaindBindIndex both(7, "2", 1, {DriverType::DDS, DriverType::SOMEIP}, true, true);
    EXPECT_TRUE(base < both);
    EXPECT_TRUE(OrxMaintaindBindIndex(7, "2", 999, {DriverType::PROLOC}, true, true) < base);
    EXPECT_TRUE(base < OrxMaintaindBindIndex(7, "2", 101, {DriverType::DDS}, true, true));
    EXPECT_EQ((std::set<OrxMaintaindBindIndex>{base, withdrawal, both}).size(), 2U);
}

TEST_F(PluginTest, TheNodeIsReportedOnceAfterInitializeAllAndNeverForTheDaemonsOwnService) {
    StartDaemon();
    Core()->RegisterNodePid(uint16_t{0x1234});  // before InitializeAll: ignored
    StartClient();
    Core()->RegisterNodePid(uint16_t{orx::maintaind::service::kAppServiceId});
    Core()->RegisterNodePid(std::string{"MAINTAIND"});
    EXPECT_EQ(controller_->PendingCount(), 1U) << "only the periodic replay is scheduled";
    Settle();
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);

    // Each request costs a job; the daemon hears of the node once.
    Core()->RegisterNodePid(uint16_t{0x1234});
    Core()->RegisterNodePid(std::string{"/test/Service"});
    Settle();
    AppRegisterInfo expected;
    expected.kind = static_cast<uint8_t>(ReportKind::E2E_AND_NODE);
    expected.nodeCommonRegisterInfo.pid = static_cast<int32_t>(getpid());
    expected.nodeCommonRegisterInfo.appName = kAppName;
    expected.nodeCommonRegisterInfo.nodePidInfo.isOnline = true;
    EXPECT_EQ(Received(), std::vector<AppRegisterInfo>{expected});
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetProcessPid(), getpid());

    // Without a threshold in orx.json the core gets no sample-timeout listener.
    const auto descriptor = Core()->GetMaintaindClientListener();
    EXPECT_EQ(descriptor.listener, nullptr);
    EXPECT_EQ(descriptor.kind, 0U);
}

TEST_F(PluginTest, AnEmptyApplicationNameSchedulesNoNodeReport) {
    WriteConfig("{}");
    StartDaemon();
    StartClient();
    Core()->RegisterNodePid(uint16_t{0x1234});
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "AppName is empty, please check config."), 1U);
    EXPECT_EQ(controller_->PendingCount(), 1U);
}

TEST_F(PluginTest, ReportsBeforeDiscoveryWaitAndTheFirstPassDeliversThemNodeFirst) {
    StartDaemon(/*offer=*/false);
    StartClient(/*waitForFirstPass=*/false);
    Core()->RegisterEventInfoToMaintaind({{DriverType::DDS, DdsEvent(0x10, 1, "Speed")}}, true);
    vorx::vcc::api::types::EventE2EConfigInfo e2e;
    e2e.serviceId = 0x10;
    e2e.instanceId = "1";
    e2e.entityId = 1;
    e2e.isPub = true;
    e2e.e2eConfig = std::make_shared<vorx::vcc::api::types::E2EXfConfig>();
    Core()->RegisterE2EInfoToMaintaind({e2e});
    Core()->RegisterNodePid(uint16_t{0x10});
    Settle();
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), nullptr);

    ASSERT_TRUE(daemon_->Offer());
    WaitForFirstPass();
    const auto reports = Received();
    ASSERT_EQ(reports.size(), 3U);
    EXPECT_TRUE(reports[0].nodeCommonRegisterInfo.nodePidInfo.isOnline);
    EXPECT_EQ(reports[1].nodeCommonRegisterInfo.appE2EConfig.pubE2EConfigs.size(), 1U);
    EXPECT_EQ(reports[2].eventRegisterInfo.eventName, "Speed");
    EXPECT_TRUE(reports[2].isPub);
    EXPECT_TRUE(Log().Contains(
        LogLevel::kInfo, "Find maintaind service and create proxy successfully[instanceId=1]"));
}

TEST_F(PluginTest, LaterOffersKeepTheOneProxyAndItsReplayJobs) {
    StartDaemon();
    StartClient();
    const auto proxy = OrxMaintaindClient::GetInstance()->GetMaintaindProxy();
    ASSERT_NE(proxy, nullptr);

    daemon_->Withdraw();
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kWarn, "Cannot find any maintaindServer service",
                                        1, kWait));
    ASSERT_TRUE(daemon_->Offer());
    ASSERT_TRUE(
        Log().WaitForContaining(LogLevel::kInfo, "Repeated discovery maintaindServer.", 1, kWait));
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), proxy);
    EXPECT_EQ(controller_->PendingCount(), 1U) << "one periodic replay";

    // The kept proxy reaches the daemon again (a send that still meets the end of the old offer
    // is replayed by the next pass).
    Core()->RegisterEventInfoToMaintaind({{DriverType::DDS, DdsEvent(0x10, 1, "Speed")}}, false);
    Settle();
    Advance(2000 * kMs);
    const size_t received = daemon_->ReceivedCount();
    EXPECT_GE(received, 1U);
    Advance(2000 * kMs);
    EXPECT_EQ(daemon_->ReceivedCount(), received) << "delivered: nothing waits any more";
}

TEST_F(PluginTest, AThresholdBelowFiveMillisecondsGivesNoListener) {
    WriteConfig(R"({"dfx": {"sampleTimeoutThresholdMs": 4}})");
    const auto descriptor = Core()->GetMaintaindClientListener();
    EXPECT_EQ(descriptor.listener, nullptr);
    EXPECT_EQ(descriptor.kind, 0U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn,
                          "[OrxMaintaindClient][Minimum timeout threshold exceeded]"
                          "[minimumThreshold=5ms, acutalThreshold=4]"),
              1U);
}

TEST_F(PluginTest, FiveMillisecondsGiveOneSharedListenerWithThatThreshold) {
    WriteConfig(R"({"dfx": {"sampleTimeoutThresholdMs": 5}})");
    const auto first = Core()->GetMaintaindClientListener();
    EXPECT_EQ(first.kind, 2U);
    const auto listener =
        std::dynamic_pointer_cast<orx::orxcm::maintaind::MaintaindListener>(first.listener);
    ASSERT_NE(listener, nullptr);
    EXPECT_EQ(listener->GetTimeoutThreshold(), 5U);  // milliseconds, as configured
    EXPECT_EQ(Core()->GetMaintaindClientListener().listener, first.listener);
}

}  // namespace
}  // namespace orx::test::plugin
