// Node registration: the process reports itself once, only after InitializeAll, never for the
// daemon's own service, and again through the replay when the daemon answered too late.
#include "orx/maintaind/service.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

class NodeRegistrationTest : public PluginFixture {};

const std::string kJobLine = "Begin to insert register node pid event[";

TEST_F(NodeRegistrationTest, NothingBeforeInitializeAllAndOneReportForRepeatedRequests) {
    StartDaemon();
    Core()->RegisterNodePid(uint16_t{0x1234});
    Core()->RegisterNodePid(std::string{"/test/Service"});
    StartClient();
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, kJobLine), 0U);
    EXPECT_TRUE(ReceivedOfKind(ReportKind::E2E_AND_NODE).empty());

    Core()->RegisterNodePid(uint16_t{0x1234});
    Core()->RegisterNodePid(std::string{"/test/Service"});
    Core()->RegisterNodePid(uint16_t{0x2345});
    ASSERT_TRUE(WaitForKind(ReportKind::E2E_AND_NODE, 1));
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kDebug, kJobLine, 3, kWait));
    // Each request costs a job, but the daemon hears of the node once.
    ASSERT_TRUE(
        Log().WaitForContaining(LogLevel::kVerbose, "Register app : " + kAppName, 1, kWait));
    const auto reports = ReceivedOfKind(ReportKind::E2E_AND_NODE);
    ASSERT_EQ(reports.size(), 1U);
    const auto& node = reports.front().nodeCommonRegisterInfo;
    EXPECT_EQ(node.appName, kAppName);
    EXPECT_EQ(node.pid, static_cast<int32_t>(getpid()));
    EXPECT_EQ(node.nodePidInfo.nodePid, 0U);
    EXPECT_TRUE(node.nodePidInfo.isOnline);
    EXPECT_FALSE(reports.front().isPub);
    EXPECT_EQ(Log().Count(LogLevel::kVerbose, "Register app : " + kAppName + " of pid :" +
                                                  std::to_string(getpid()) + ", successfully."),
              1U);
}

TEST_F(NodeRegistrationTest, TheDaemonsOwnServiceIsNotRegistered) {
    StartDaemon();
    StartClient();
    Core()->RegisterNodePid(uint16_t{orx::maintaind::service::kAppServiceId});
    Core()->RegisterNodePid(std::string{"MAINTAIND"});
    EXPECT_EQ(
        Log().Count(LogLevel::kDebug, "The service is orxmaintaind, ingore to register pid info."),
        2U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, kJobLine), 0U);
}

TEST_F(NodeRegistrationTest, AnEmptyApplicationNameSchedulesNothing) {
    WriteConfig("{}");
    StartDaemon();
    StartClient();
    Core()->RegisterNodePid(uint16_t{0x1234});
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "AppName is empty, please check config."), 1U);
    EXPECT_EQ(Log().CountContaining(LogLevel::kDebug, kJobLine), 0U);
}

TEST_F(NodeRegistrationTest, ALateReplyIsATimeoutAndThePeriodicPassSendsAgain) {
    StartDaemon();
    StartClient();
    daemon_->Script(ScriptedReply::Code(0, std::chrono::milliseconds(600)));
    Core()->RegisterNodePid(uint16_t{0x1234});
    const std::string pid = std::to_string(getpid());
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kWarn,
        "Register node pid info failed[appname=" + kAppName + ", pid=" + pid + ", state=2]", 1,
        kWait));
    EXPECT_EQ(Log().Count(LogLevel::kDebug,
                          "Get maintaind reply fail, register node pid info timeout[isOnLine=1]"),
              1U);

    // A periodic pass delivers it, says so at info level and, with nothing left waiting, logs its
    // completion at info level too.
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kInfo,
        "Register node pid info successfully[appname=" + kAppName + ", pid=" + pid + "]", 1,
        kWait));
    ASSERT_TRUE(Log().WaitForContaining(
        LogLevel::kInfo, "Registered cache information completed[reriodicCount=", 1, kWait));
    EXPECT_EQ(ReceivedOfKind(ReportKind::E2E_AND_NODE).size(), 2U);
}

}  // namespace
}  // namespace orx::test::plugin
