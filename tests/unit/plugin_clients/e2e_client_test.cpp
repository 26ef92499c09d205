// The E2E client: the process's E2E settings in one report, split by side.
#include "orxmaintaind/orx_maintaind_e2e_client.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindE2EClient;
using vorx::vcc::api::types::E2EXf_DataIDMode;
using vorx::vcc::api::types::E2EXf_Profile;
using vorx::vcc::api::types::E2EXfConfig;
using vorx::vcc::api::types::EventE2EConfigInfo;
namespace record = orx::maintaind;

EventE2EConfigInfo Config(const std::string& instanceId, uint32_t entityId, bool isPub,
                          E2EXf_Profile profile, E2EXf_DataIDMode mode) {
    EventE2EConfigInfo config;
    config.serviceId = 0x50;
    config.instanceId = instanceId;
    config.entityId = entityId;
    config.eventName = "Event" + std::to_string(entityId);
    config.driverType = DriverType::SOMEIP;
    config.isPub = isPub;
    config.e2eConfig = std::make_shared<E2EXfConfig>();
    config.e2eConfig->profile = profile;
    config.e2eConfig->dataIdMode = mode;
    config.e2eConfig->dataLength = 64;
    return config;
}

class E2EClientTest : public PluginFixture {};

TEST_F(E2EClientTest, AnEntryWithABadInstanceIdIsDroppedAlone) {
    StartDaemon();
    StartClient();
    Core()->RegisterE2EInfoToMaintaind({
        Config("1", 0x10001, true, E2EXf_Profile::PROFILE_4M, E2EXf_DataIDMode::E2E_DATAID_NIBBLE),
        Config("abc", 2, true, E2EXf_Profile::PROFILE_04, E2EXf_DataIDMode::E2E_DATAID_BOTH),
        Config("70000", 3, false, E2EXf_Profile::PROFILE_04, E2EXf_DataIDMode::E2E_DATAID_BOTH),
        Config("2", 4, false, E2EXf_Profile::PROFILE_01, E2EXf_DataIDMode::E2E_DATAID_ALT),
    });
    ASSERT_TRUE(WaitForKind(ReportKind::E2E_AND_NODE, 1));
    EXPECT_EQ(
        Log().Count(LogLevel::kWarn, "[OrxMaintaindE2EClient][Invalid instanceId][instanceId=abc]"),
        1U);
    EXPECT_EQ(Log().Count(LogLevel::kWarn,
                          "[OrxMaintaindE2EClient][Invalid instanceId][instanceId=70000]"),
              1U);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "Begin to register E2E info to maintaind[appname=" + kAppName +
                              ", nodePid=" + std::to_string(getpid()) + ", e2eConfigLength=4]"),
              1U);

    const auto node = ReceivedOfKind(ReportKind::E2E_AND_NODE).front().nodeCommonRegisterInfo;
    EXPECT_EQ(node.appName, kAppName);
    EXPECT_EQ(node.pid, static_cast<int32_t>(getpid()));
    ASSERT_EQ(node.appE2EConfig.pubE2EConfigs.size(), 1U);
    ASSERT_EQ(node.appE2EConfig.subE2EConfigs.size(), 1U);
    const auto& pub = node.appE2EConfig.pubE2EConfigs[0];
    EXPECT_EQ(pub.instanceId, 1);
    EXPECT_EQ(pub.eventId, 0x0001);  // 16 bits of the entity id
    EXPECT_EQ(pub.nodePid, static_cast<uint16_t>(getpid()));
    EXPECT_EQ(pub.serviceId, 0x50);
    EXPECT_EQ(pub.eventName, "Event65537");
    EXPECT_EQ(pub.driverType, record::DriverType::SOMEIP);
    EXPECT_TRUE(pub.isPub);
    EXPECT_EQ(pub.e2eConfig.profile, record::E2EProfile::PROFILE_4M);
    EXPECT_EQ(pub.e2eConfig.dataIdMode, record::E2EDataIDMode::NIBBLE);
    EXPECT_EQ(pub.e2eConfig.dataLength, 64U);
    const auto& sub = node.appE2EConfig.subE2EConfigs[0];
    EXPECT_EQ(sub.instanceId, 2);
    EXPECT_FALSE(sub.isPub);
    // Values the records do not carry stay at their defaults.
    EXPECT_EQ(sub.e2eConfig.profile, record::E2EProfile::NONE);
    EXPECT_EQ(sub.e2eConfig.dataIdMode, record::E2EDataIDMode::BOTH);
}

TEST_F(E2EClientTest, AnEmptyListIsNotScheduledButTheClientStillSendsIt) {
    StartDaemon();
    StartClient();
    Core()->RegisterE2EInfoToMaintaind({});
    EXPECT_EQ(Log().Count(LogLevel::kVerbose,
                          "No sub configuration E2E, ignore to registser E2E config info"),
              1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, "Begin to insert register e2e info event["),
              0U);

    OrxMaintaindE2EClient client;
    client.SetApplicationName(kAppName);
    EXPECT_EQ(client.RegisterE2EInfo({}),
              orx::orxcm::orxmaintaind::type::MaintaindClientErrorCode::kOk);
    const auto reports = ReceivedOfKind(ReportKind::E2E_AND_NODE);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_TRUE(reports[0].nodeCommonRegisterInfo.appE2EConfig.pubE2EConfigs.empty());
    EXPECT_TRUE(reports[0].nodeCommonRegisterInfo.appE2EConfig.subE2EConfigs.empty());
    EXPECT_TRUE(Log().Contains(LogLevel::kVerbose, "Register E2E info successfully"));
}

}  // namespace
}  // namespace orx::test::plugin
