// The sample-timeout listener: one request per notice, answered asynchronously.
#include "maintaind/maintaind_listener.h"

#include <gtest/gtest.h>

#include <thread>

#include "ara/com/com_error_domain.h"
#include "daemon_fixture.h"

namespace {

using namespace orx::test::latency;
using LogLevel = ara::kelda::common::log::LogLevel;
using orx::maintaind::ListenerType;
using orx::maintaind::ReportKind;
using orx::orxcm::maintaind::MaintaindListener;
using orx::test::ScriptedReply;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::api::types::ListenerTimeoutInfo;

const char* const kProblem =
    "[MaintaindListener][Get Maintaind reply, but maybe has some problem with notify listener "
    "data]";
const char* const kFailed = "[MaintaindListener][OrxMaintaindClient cannot notify listener data]";

ListenerTimeoutInfo Notice(const std::string& name, uint32_t timeout, uint32_t count) {
    ListenerTimeoutInfo info;
    info.serviceId = 20;
    info.instanceId = "1";
    info.entityId = 7;
    info.name = name;
    info.sampleTimeout = timeout;
    info.sampleTimeoutCount = count;
    return info;
}

class MaintaindListenerTest : public DaemonFixture {
  protected:
    std::shared_ptr<MaintaindListener> listener_ = std::make_shared<MaintaindListener>();
};

TEST_F(MaintaindListenerTest, NoticeWithoutDaemonProxyIsDroppedWithAWarning) {
    // The client was never started, so it has no proxy even though a daemon is offered.
    listener_->OnSampleTimeout(Notice("/demo/Radar/1/Objects", 10, 1), DriverType::DDS);
    EXPECT_EQ(capture_->Count(LogLevel::kWarn, "Proxy is not created, register event info fail."),
              1U);
    EXPECT_EQ(capture_->CountContaining(LogLevel::kVerbose, "Proxy start to send method request"),
              0U);
    EXPECT_EQ(daemon_->ReceivedCount(), 0U);
}

TEST_F(MaintaindListenerTest, EachNoticeSendsOneRequestWithOneListenerEntry) {
    StartClient();
    listener_->SetTimeoutThreshold(10);
    EXPECT_EQ(listener_->GetTimeoutThreshold(), 10U);
    const auto notice = Notice("/demo/Radar/1/Objects", 10, 3);
    listener_->OnSampleTimeout(notice, DriverType::DDS);
    listener_->OnSampleTimeout(notice, DriverType::SOMEIP);
    ASSERT_TRUE(WaitForKind(ReportKind::LISTENER, 2));

    const auto requests = ReceivedOfKind(ReportKind::LISTENER);
    ASSERT_EQ(requests.size(), 2U);
    for (const auto& request : requests) {
        ASSERT_EQ(request.listenerParams.size(), 1U);
        const auto entry = request.listenerParams.find(ListenerType::SAMPLE_TIMEOUT);
        ASSERT_NE(entry, request.listenerParams.end());
        EXPECT_EQ(entry->second.listenerName, "/demo/Radar/1/Objects");
        EXPECT_EQ(entry->second.sampleTimeout, 10U);
        EXPECT_EQ(entry->second.sampleTimeoutCount, 3U);
        EXPECT_FALSE(request.isPub);
        EXPECT_EQ(request.latencyInfo, orx::maintaind::LatencyInfo{});
        EXPECT_EQ(request.nodeCommonRegisterInfo, orx::maintaind::NodeCommonRegisterInfo{});
    }
    EXPECT_EQ(requests[0], requests[1]);
    EXPECT_TRUE(capture_->WaitForContaining(
        LogLevel::kVerbose, "Proxy start to send method request[methodEntityId=60621]", 2, kWait));
}

TEST_F(MaintaindListenerTest, RepliesAreCheckedWithoutBlockingTheCaller) {
    StartClient();
    // The first reply is late: the notice must return long before it.
    daemon_->Script(ScriptedReply::Code(0, std::chrono::milliseconds(500)));
    daemon_->Script(ScriptedReply::Code(1));
    daemon_->Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));

    listener_->OnSampleTimeout(Notice("a", 10, 1), DriverType::DDS);
    // Returned before the daemon even answered.
    EXPECT_EQ(daemon_->RepliesSent(), 0U);
    listener_->OnSampleTimeout(Notice("a", 10, 2), DriverType::DDS);
    listener_->OnSampleTimeout(Notice("a", 10, 3), DriverType::DDS);

    ASSERT_TRUE(capture_->WaitForContaining(LogLevel::kWarn, kProblem, 1, kWait));
    ASSERT_TRUE(capture_->WaitForContaining(LogLevel::kWarn, kFailed, 1, kWait));
    // The late reply 0 arrives last and must stay silent. A further reply 1 marks the point by
    // which its continuation has run (replies come in on one thread, in order).
    const auto deadline = std::chrono::steady_clock::now() + kWait;
    while (daemon_->RepliesSent() < 3U && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_EQ(daemon_->RepliesSent(), 3U);
    daemon_->Script(ScriptedReply::Code(1));
    listener_->OnSampleTimeout(Notice("a", 10, 4), DriverType::DDS);
    ASSERT_TRUE(capture_->WaitForContaining(LogLevel::kWarn, kProblem, 2, kWait));
    EXPECT_EQ(capture_->Count(LogLevel::kWarn, kProblem), 2U);
    EXPECT_EQ(capture_->Count(LogLevel::kWarn, kFailed), 1U);
}

}  // namespace
