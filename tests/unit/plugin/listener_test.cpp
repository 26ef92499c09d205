// The sample-timeout listener: one request per notice, answered without blocking the core.
#include "ara/com/com_error_domain.h"
#include "maintaind/maintaind_listener.h"
#include "plugin_fixture.h"

namespace orx::test::plugin {
namespace {

using orx::orxcm::maintaind::MaintaindListener;
using vorx::vcc::api::types::ListenerTimeoutInfo;

ListenerTimeoutInfo Notice(uint32_t count) {
    ListenerTimeoutInfo info;
    info.serviceId = 20;
    info.instanceId = "1";
    info.entityId = 7;
    info.name = "/demo/Radar/1/Objects";
    info.sampleTimeout = 10;
    info.sampleTimeoutCount = count;
    return info;
}

TEST_F(PluginTest, ANoticeWithoutTheDaemonIsDroppedWithAWarning) {
    StartDaemon();
    MaintaindListener().OnSampleTimeout(Notice(1), DriverType::DDS);
    EXPECT_EQ(Log().Count(LogLevel::kWarn, "Proxy is not created, register event info fail."), 1U);
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);
}

TEST_F(PluginTest, EachNoticeIsOneRequestWithOneListenerEntryAnsweredLater) {
    StartDaemon();
    StartClient();
    MaintaindListener listener;
    auto release = HoldReplies();
    listener.OnSampleTimeout(Notice(3), DriverType::DDS);  // returns while its reply is held
    ASSERT_TRUE(WaitForReceived(1));
    release();
    ASSERT_TRUE(WaitFor([this] { return daemon_->RepliesSent() == 1U; }, kWait));
    daemon_->Script(ScriptedReply::Code(1));
    daemon_->Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));
    listener.OnSampleTimeout(Notice(3), DriverType::SOMEIP);
    listener.OnSampleTimeout(Notice(3), DriverType::DDS);

    const char* const kProblem =
        "[MaintaindListener][Get Maintaind reply, but maybe has some problem with notify "
        "listener data]";
    const char* const kFailed =
        "[MaintaindListener][OrxMaintaindClient cannot notify listener data]";
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kWarn, kProblem, 1, kWait));
    ASSERT_TRUE(Log().WaitForContaining(LogLevel::kWarn, kFailed, 1, kWait));
    ASSERT_TRUE(WaitForReceived(3));
    // Replies come in order on one thread: the first one (0) was checked, silently, before.
    EXPECT_EQ(Log().CountContaining(LogLevel::kWarn, "[MaintaindListener]"), 2U);

    AppRegisterInfo expected;
    auto& params = expected.listenerParams[orx::maintaind::ListenerType::SAMPLE_TIMEOUT];
    params.listenerName = "/demo/Radar/1/Objects";
    params.sampleTimeout = 10;
    params.sampleTimeoutCount = 3;
    EXPECT_EQ(Received(), std::vector<AppRegisterInfo>(3, expected));
}

}  // namespace
}  // namespace orx::test::plugin
