// What the core tells the maintenance plug-in as applications offer and use services, checked
// through a recording maintenance interface registered like the plug-in's client.
#include <gtest/gtest.h>

#include "app_test_util.h"
#include "orx/test/log_capture.h"
#include "recording_maintaind.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/app/service_consumer.h"
#include "vorx/vcc/app/service_provider.h"

namespace {

using namespace std::chrono_literals;
using orx::test::Inbox;
using orx::test::RecordingMaintaind;
using orx::test::SensorDeployment;
using orx::test::TestSample;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::api::types::LatencyAnalysisMode;
using vorx::vcc::app::ConsumerSettings;
using vorx::vcc::app::ServiceConsumer;
using vorx::vcc::app::ServiceProvider;

using Ops = std::vector<std::string>;

class MaintaindCallsTest : public orx::test::LogCaptureTest {
  protected:
    std::shared_ptr<RecordingMaintaind> recorder_ = RecordingMaintaind::Install();
};

TEST_F(MaintaindCallsTest, OfferReportsThePublisherSideAndStopOfferWithdrawsIt) {
    ServiceProvider provider(SensorDeployment("provided"));
    EXPECT_TRUE(recorder_->Calls().empty()) << "nothing is reported before the offer";

    ASSERT_TRUE(provider.Offer());
    EXPECT_EQ(recorder_->Ops(), (Ops{"RegisterNodePid", "RegisterEvent", "RegisterE2E",
                                     "RegisterMethod", "RegisterField", "RegisterLatencyMode"}));
    const auto calls = recorder_->Calls();
    EXPECT_EQ(calls[0].serviceId, 4660);
    for (const auto& call : calls) {
        if (call.op != "RegisterNodePid" && call.op != "RegisterE2E") {
            EXPECT_TRUE(call.isPub) << call.op;
        }
    }
    const auto& event = calls[1].events;
    ASSERT_EQ(event.size(), 2U) << "DDS and SOME/IP, the bindings maintenance hears of";
    const auto dds =
        std::dynamic_pointer_cast<vorx::driver::dds::DDSEventInfo>(event.at(DriverType::DDS));
    ASSERT_TRUE(dds);
    EXPECT_EQ(dds->GetTopicName(), "SensorObjects");
    EXPECT_FALSE(dds->GetIsField()) << "a field's notifier is reported with its field only";
    ASSERT_EQ(calls[2].e2e.size(), 2U);
    EXPECT_TRUE(calls[2].e2e[0].isPub);
    EXPECT_EQ(calls[3].methods.at(DriverType::DDS)->GetMethodName(), "Reset");
    EXPECT_EQ(calls[4].fields.at(DriverType::SOMEIP)->GetFieldName(), "Gain");
    EXPECT_EQ(calls[5].events.size(), 2U);

    recorder_->Clear();
    EXPECT_TRUE(provider.Offer()) << "offered already";
    EXPECT_TRUE(recorder_->Calls().empty());

    provider.StopOffer();
    EXPECT_EQ(recorder_->Ops(), (Ops{"UnregisterEvent", "UnregisterMethod", "UnregisterField"}));
    const auto withdrawals = recorder_->Calls();
    EXPECT_EQ(withdrawals[0].entityIds, (std::vector<uint32_t>{11}));
    EXPECT_EQ(withdrawals[1].entityIds, (std::vector<uint32_t>{12}));
    EXPECT_EQ(withdrawals[2].entityIds, (std::vector<uint32_t>{13}));
    EXPECT_TRUE(withdrawals[0].isPub);

    recorder_->Clear();
    provider.StopOffer();
    EXPECT_TRUE(recorder_->Calls().empty()) << "withdrawn once";
}

TEST_F(MaintaindCallsTest, ConsumerReportsTheUsingSideAndItsSubscriptions) {
    auto consumer = std::make_unique<ServiceConsumer>(SensorDeployment("required"));
    EXPECT_EQ(recorder_->Ops(), (Ops{"RegisterNodePid", "RegisterMethod", "RegisterField"}));
    for (const auto& call : recorder_->Calls()) {
        EXPECT_FALSE(call.isPub) << call.op;
    }

    recorder_->Clear();
    ASSERT_TRUE(consumer->Subscribe<TestSample>("Objects", nullptr));
    EXPECT_EQ(recorder_->Ops(), (Ops{"RegisterEvent", "RegisterE2E", "RegisterLatencyMode",
                                     "RegisterLatencyQuery", "RegisterLatencyQuery"}));
    const auto calls = recorder_->Calls();
    EXPECT_FALSE(calls[0].isPub);
    EXPECT_FALSE(calls[1].e2e.at(0).isPub);
    EXPECT_FALSE(calls[2].isPub);
    EXPECT_EQ(calls[3].queryDriver, DriverType::DDS);
    EXPECT_EQ(calls[3].queryInfo->GetEntityId(), 11U);
    EXPECT_EQ(calls[4].queryDriver, DriverType::SOMEIP);

    recorder_->Clear();
    EXPECT_FALSE(consumer->Subscribe<TestSample>("Objects", nullptr));
    EXPECT_FALSE(consumer->Subscribe<TestSample>("NoSuchEvent", nullptr));
    ASSERT_TRUE(consumer->SubscribeField<TestSample>("Gain", nullptr));
    EXPECT_TRUE(recorder_->Calls().empty()) << "refusals and field notifiers report nothing";

    consumer->Unsubscribe("Objects");
    EXPECT_EQ(recorder_->Ops(), (Ops{"UnregisterEvent"}));
    EXPECT_EQ(recorder_->Calls()[0].entityIds, (std::vector<uint32_t>{11}));
    EXPECT_FALSE(recorder_->Calls()[0].isPub);

    recorder_->Clear();
    consumer.reset();
    EXPECT_EQ(recorder_->Ops(), (Ops{"UnregisterMethod", "UnregisterField"}));
}

TEST_F(MaintaindCallsTest, LatencyIsMeasuredWhileTheDaemonHasItSwitchedOn) {
    Inbox<uint32_t> received;  // outlives the consumer that fills it
    ServiceProvider provider(SensorDeployment("provided"));
    ASSERT_TRUE(provider.Offer());
    ServiceConsumer consumer(SensorDeployment("required"));
    ASSERT_TRUE(consumer.Subscribe<TestSample>(
        "Objects", [&received](const TestSample& sample) { received.Put(sample.value); }));
    ASSERT_TRUE(consumer.WaitForService(5s));

    RecordingMaintaind::ModeHandler mode;
    for (const auto& call : recorder_->CallsOf("RegisterLatencyMode")) {
        if (!call.isPub) {
            mode = call.modeHandler;
        }
    }
    const auto query = recorder_->CallsOf("RegisterLatencyQuery").at(0).queryHandler;
    ASSERT_TRUE(mode && query);

    ASSERT_TRUE(provider.Publish("Objects", TestSample{1, "off"}));
    ASSERT_TRUE(received.WaitFor(1));
    EXPECT_EQ(query().maxLatency, 0U) << "nothing is measured while switched off";

    mode(LatencyAnalysisMode::ENABLE);
    for (uint32_t i = 2; i <= 6; ++i) {
        ASSERT_TRUE(provider.Publish("Objects", TestSample{i, "on"}));
    }
    ASSERT_TRUE(received.WaitFor(6));
    const auto result = query();
    EXPECT_GE(result.minLatency, 1U);
    EXPECT_GE(result.maxLatency, result.minLatency);
    EXPECT_GE(result.averageLatency, result.minLatency);
    EXPECT_LE(result.averageLatency, result.maxLatency);
    EXPECT_LT(result.maxLatency, 5000000U) << "microseconds, not nanoseconds";
    EXPECT_EQ(query().maxLatency, 0U) << "each query starts a new period";

    mode(LatencyAnalysisMode::DISABLE);
    ASSERT_TRUE(provider.Publish("Objects", TestSample{7, "off again"}));
    ASSERT_TRUE(received.WaitFor(7));
    EXPECT_EQ(query().maxLatency, 0U);
}

TEST_F(MaintaindCallsTest, SampleTimeoutsReachTheListenerAndTheApplication) {
    Inbox<std::pair<std::string, uint32_t>> timeouts;
    ServiceProvider provider(SensorDeployment("provided"));
    ASSERT_TRUE(provider.Offer());
    ConsumerSettings settings;
    settings.sampleTimeoutThresholdMs = 30;
    ServiceConsumer consumer(SensorDeployment("required"), settings);
    consumer.SetSampleTimeoutHandler([&timeouts](const std::string& event, uint32_t count) {
        timeouts.Put({event, count});
    });
    ASSERT_TRUE(consumer.Subscribe<TestSample>("Objects", nullptr));
    ASSERT_TRUE(consumer.WaitForService(5s));

    const auto& listener = recorder_->TimeoutListener();
    ASSERT_TRUE(listener->WaitForNotices(2, 5s));
    const auto notices = listener->Notices();
    EXPECT_EQ(notices[0].first.serviceId, 4660);
    EXPECT_EQ(notices[0].first.instanceId, "7");
    EXPECT_EQ(notices[0].first.entityId, 11U);
    EXPECT_EQ(notices[0].first.name, "/test/SensorService:7:Objects");
    EXPECT_EQ(notices[0].first.sampleTimeout, 30U);
    EXPECT_EQ(notices[0].first.sampleTimeoutCount, 1U);
    EXPECT_EQ(notices[1].first.sampleTimeoutCount, 2U);
    EXPECT_EQ(notices[0].second, DriverType::DDS);
    ASSERT_TRUE(timeouts.WaitFor(2));
    EXPECT_EQ(timeouts.Values()[0], std::make_pair(std::string("Objects"), 1U));
}

TEST_F(MaintaindCallsTest, WatchWorksForTheApplicationWhenThePluginHandsOutNoListener) {
    recorder_->WithoutListener();
    Inbox<uint32_t> timeouts;
    ServiceProvider provider(SensorDeployment("provided"));
    ASSERT_TRUE(provider.Offer());
    ConsumerSettings settings;
    settings.sampleTimeoutThresholdMs = 20;
    ServiceConsumer consumer(SensorDeployment("required"), settings);
    consumer.SetSampleTimeoutHandler(
        [&timeouts](const std::string&, uint32_t count) { timeouts.Put(count); });
    ASSERT_TRUE(consumer.Subscribe<TestSample>("Objects", nullptr));
    ASSERT_TRUE(timeouts.WaitFor(1));
    EXPECT_TRUE(recorder_->TimeoutListener()->Notices().empty());
}

}  // namespace
