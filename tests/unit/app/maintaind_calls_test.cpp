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

using orx::test::Inbox;
using orx::test::RecordingMaintaind;
using orx::test::SensorDeployment;
using orx::test::TestSample;
using orx::test::WaitFor;
using vorx::vcc::api::types::DriverType;
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

// Name, threshold and running count of the notices, and the application's handler, are covered
// end to end by PluginFlowTest.SampleTimeoutIsForwardedToTheService.
TEST_F(MaintaindCallsTest, SampleTimeoutsReachTheListenerAndWithoutOneStillTheApplication) {
    ServiceProvider provider(SensorDeployment("provided"));
    ASSERT_TRUE(provider.Offer());
    ConsumerSettings settings;
    settings.sampleTimeoutThresholdMs = 20;
    const auto& listener = recorder_->TimeoutListener();
    Inbox<uint32_t> timeouts;  // outlives the consumers that fill it
    {
        ServiceConsumer consumer(SensorDeployment("required"), settings);
        ASSERT_TRUE(consumer.Subscribe<TestSample>("Objects", nullptr));
        ASSERT_TRUE(WaitFor([&] { return !listener->Notices().empty(); }));
    }
    const auto notice = listener->Notices()[0];
    EXPECT_EQ(notice.first.serviceId, 4660);
    EXPECT_EQ(notice.first.instanceId, "7");
    EXPECT_EQ(notice.first.entityId, 11U);
    EXPECT_EQ(notice.second, DriverType::DDS);

    recorder_->WithoutListener();
    const size_t notices = listener->Notices().size();
    ServiceConsumer consumer(SensorDeployment("required"), settings);
    consumer.SetSampleTimeoutHandler(
        [&timeouts](const std::string&, uint32_t count) { timeouts.Put(count); });
    ASSERT_TRUE(consumer.Subscribe<TestSample>("Objects", nullptr));
    ASSERT_TRUE(WaitFor(timeouts.HasAtLeast(2)));
    EXPECT_EQ(timeouts.Values()[1], 2U);
    EXPECT_EQ(listener->Notices().size(), notices);
}

}  // namespace
