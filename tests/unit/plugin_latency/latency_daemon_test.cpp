// Latency analysis end to end: the daemon double publishes switch orders, the plug-in's client
// calls the handlers the core registered, and the double records the acknowledgements and the
// results.
#include <gtest/gtest.h>

#include "ara/com/com_error_domain.h"
#include "daemon_fixture.h"
#include "latency_test_support.h"

namespace {

using namespace orx::test::latency;
using LogLevel = ara::kelda::common::log::LogLevel;
using orx::maintaind::LatencyInfo;
using orx::maintaind::ReportKind;
using orx::test::ScriptedReply;

orx::maintaind::LatencySwitch Order(orx::maintaind::LatencyMode mode,
                                    const orx::maintaind::LatencyIndex& index) {
    orx::maintaind::LatencySwitch order;
    order.mode = mode;
    order.latencyIndex = index;
    return order;
}

class LatencyDaemonTest : public DaemonFixture {
  protected:
    std::vector<LatencyInfo> LatencyReports(uint8_t type) const {
        std::vector<LatencyInfo> out;
        for (const auto& request : ReceivedOfKind(ReportKind::LATENCY)) {
            if (request.latencyInfo.type == type) {
                out.push_back(request.latencyInfo);
            }
        }
        return out;
    }
};

TEST_F(LatencyDaemonTest, OrderIsAppliedAndAcknowledgedWithBothFlags) {
    StartClient();
    ModeRecorder pub;
    ModeRecorder sub;
    const auto event = DdsEvent(20, "1", "LatTopic");
    client_->RegisterLatencyMode(pub.Handler(), {{CoreDriverType::DDS, event}}, true);
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, event}}, false);

    const auto index = Index({kDds}, 20, 1, "LatTopic", 9);
    ASSERT_TRUE(daemon_->PublishLatencySwitch(Order(kEnable, index)));
    ASSERT_TRUE(WaitForKind(ReportKind::LATENCY, 1));

    EXPECT_EQ(pub.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(sub.Modes(), (std::vector<int>{1}));
    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Find latency index of dds pub, will deal event latency mode"),
              1U);
    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Find latency index of dds sub, will deal event latency mode"),
              1U);
    const auto acks = LatencyReports(0);
    ASSERT_EQ(acks.size(), 1U);
    EXPECT_EQ(acks[0].appName, kAppName);
    EXPECT_EQ(acks[0].latencyIndex, index);
    EXPECT_EQ(acks[0].ackInfo.mode, kEnable);
    EXPECT_TRUE(acks[0].ackInfo.isPubMatched);
    EXPECT_TRUE(acks[0].ackInfo.isSubMatched);
    EXPECT_EQ(acks[0].resultInfo, orx::maintaind::LatencyResultInfo{});
    const auto request = ReceivedOfKind(ReportKind::LATENCY).front();
    EXPECT_TRUE(request.listenerParams.empty());
    EXPECT_EQ(request.eventRegisterInfo, orx::maintaind::EventRegisterInfo{});
}

TEST_F(LatencyDaemonTest, EnabledSubscribersReportDdsAndSomeipResults) {
    StartClient();
    ModeRecorder sub;
    QueryStub ddsQuery({10, 30, 20});
    QueryStub someipQuery({1, 2, 3});
    const auto ddsEvent = DdsEvent(20, "1", "LatTopic");
    const auto someipEvent = SomeipEvent(21, "1", 300);
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, ddsEvent}}, false);
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::SOMEIP, someipEvent}}, false);
    client_->RegisterLatencyQuery(ddsQuery.Handler(), ddsEvent, CoreDriverType::DDS);
    client_->RegisterLatencyQuery(someipQuery.Handler(), someipEvent, CoreDriverType::SOMEIP);

    ASSERT_TRUE(daemon_->PublishLatencySwitch(Order(kEnable, Index({kDds}, 20, 1, "LatTopic"))));
    ASSERT_TRUE(daemon_->PublishLatencySwitch(Order(kEnable, Index({kSomeip}, 21, 1, "", 300))));
    ASSERT_TRUE(daemon_->WaitFor(
        [](const std::vector<orx::maintaind::AppRegisterInfo>& all) {
            bool dds = false;
            bool someip = false;
            for (const auto& request : all) {
                if (request.latencyInfo.type == 1U) {
                    dds = dds || request.latencyInfo.latencyIndex.eventName == "LatTopic";
                    someip = someip || request.latencyInfo.latencyIndex.eventId == 300U;
                }
            }
            return dds && someip;
        },
        kWait));

    bool checkedDds = false;
    bool checkedSomeip = false;
    for (const LatencyInfo& result : LatencyReports(1)) {
        EXPECT_EQ(result.appName, kAppName);
        EXPECT_GT(result.resultInfo.notifyTime, 0U);
        EXPECT_EQ(result.ackInfo, orx::maintaind::LatencyModeAckInfo{});
        if (result.latencyIndex.driverTypes == std::vector<orx::maintaind::DriverType>{kDds}) {
            EXPECT_EQ(result.latencyIndex, Index({kDds}, 20, 1, "LatTopic", 0));
            EXPECT_EQ(result.resultInfo.result, (orx::maintaind::LatencyResult{10, 30, 20}));
            checkedDds = true;
        } else {
            EXPECT_EQ(result.latencyIndex, Index({kSomeip}, 21, 1, "", 300));
            EXPECT_EQ(result.resultInfo.result, (orx::maintaind::LatencyResult{1, 2, 3}));
            checkedSomeip = true;
        }
    }
    EXPECT_TRUE(checkedDds && checkedSomeip);
    EXPECT_GE(capture_->Count(LogLevel::kDebug,
                              "Notify application : LatencyApp Event serviceId : 20 instanceId :1 "
                              "topName : LatTopic"),
              1U);
    EXPECT_GE(capture_->Count(LogLevel::kDebug,
                              "Notify application : LatencyApp Event serviceId : 21 instanceId :1 "
                              "eventId : 300"),
              1U);
    EXPECT_GE(capture_->Count(LogLevel::kDebug,
                              "Send latency result by dds, serviceId is : 20 instanceId is : 1 "
                              "topicName is LatTopic"),
              1U);
    EXPECT_GE(capture_->Count(LogLevel::kDebug,
                              "Send latency result by someip, serviceId is : 21 instanceId is : 1 "
                              "eventId is :300"),
              1U);
}

TEST_F(LatencyDaemonTest, PeriodWithoutSamplesSendsNothing) {
    StartClient();
    ModeRecorder sub;
    QueryStub query({4, 0, 4});
    const auto event = DdsEvent(20, "1", "LatTopic");
    client_->RegisterLatencyMode(sub.Handler(), {{CoreDriverType::DDS, event}}, false);
    client_->RegisterLatencyQuery(query.Handler(), event, CoreDriverType::DDS);

    ASSERT_TRUE(daemon_->PublishLatencySwitch(Order(kEnable, Index({kDds}, 20, 1, "LatTopic"))));
    ASSERT_TRUE(capture_->WaitForContaining(
        LogLevel::kDebug, "have not received timestamp during this query period", 2, kWait));
    ASSERT_TRUE(WaitForKind(ReportKind::LATENCY, 1));
    EXPECT_EQ(LatencyReports(1).size(), 0U);
    EXPECT_EQ(LatencyReports(0).size(), 1U);
    EXPECT_EQ(capture_->CountContaining(LogLevel::kDebug, "Notify application : "), 0U);
}

TEST_F(LatencyDaemonTest, ReplyOutcomesAreLoggedAndNothingIsRetried) {
    StartClient();
    ModeRecorder pub;
    client_->RegisterLatencyMode(pub.Handler(), {{CoreDriverType::DDS, DdsEvent(20, "1", "T")}},
                                 true);
    daemon_->Script(ScriptedReply::Code(1));
    daemon_->Script(ScriptedReply::NoReply());
    daemon_->Script(
        ScriptedReply::Error(ara::com::MakeErrorCode(ara::com::ComErrc::kServiceNotAvailable)));
    daemon_->Script(ScriptedReply::Code(0));
    const auto index = Index({kDds}, 20, 1, "T");
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(daemon_->PublishLatencySwitch(Order(i % 2 == 0 ? kEnable : kDisable, index)));
    }
    ASSERT_TRUE(WaitForKind(ReportKind::LATENCY, 4));
    ASSERT_TRUE(capture_->WaitForContaining(
        LogLevel::kWarn, "OrxMaintaindClient cannot send latency result", 1, kWait));

    EXPECT_EQ(capture_->Count(LogLevel::kDebug,
                              "Get Maintaind reply, but maybe has some problem with register "
                              "LatencyInfo"),
              1U);
    EXPECT_EQ(
        capture_->Count(LogLevel::kWarn, "Get maintaind reply fail, latency result send failed"),
        1U);
    EXPECT_EQ(capture_->Count(LogLevel::kWarn, "OrxMaintaindClient cannot send latency result"),
              1U);
    EXPECT_EQ(pub.Modes(), (std::vector<int>{1, 0, 1, 0}));
    // Each acknowledgement was sent once; the lost one is not repeated.
    EXPECT_EQ(ReceivedOfKind(ReportKind::LATENCY).size(), 4U);
}

}  // namespace
