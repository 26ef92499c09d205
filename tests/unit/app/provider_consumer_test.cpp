// Traffic between a provider and a consumer of one process (the DDS binding runs on the
// in-process driver in unit tests), without any maintenance plug-in.
#include <gtest/gtest.h>

#include "app_test_util.h"
#include "orx/test/log_capture.h"
#include "recording_maintaind.h"
#include "vorx/vcc/app/service_consumer.h"
#include "vorx/vcc/app/service_provider.h"

namespace {

using namespace std::chrono_literals;
using ara::com::ComErrc;
using orx::test::Inbox;
using orx::test::SensorDeployment;
using orx::test::TestSample;
using orx::test::WaitFor;
using vorx::vcc::app::ServiceConsumer;
using vorx::vcc::app::ServiceProvider;

// The error a future ended with, or -1 when it holds a value or is not ready within 5 s.
template <class T>
int ErrorOf(ServiceConsumer::ResultFuture<T>& future) {
    if (future.wait_for(5s) != ara::core::future_status::ready) {
        return -1;
    }
    auto result = future.GetResult();
    return result.HasValue() ? -1 : static_cast<int>(result.Error().Value());
}

template <class T>
T ValueOf(ServiceConsumer::ResultFuture<T> future) {
    EXPECT_EQ(future.wait_for(5s), ara::core::future_status::ready);
    return future.GetResult().Value();
}

class ProviderConsumerTest : public orx::test::LogCaptureTest {};

TEST_F(ProviderConsumerTest, EventsMethodsAndFieldsTravel) {
    Inbox<TestSample> samples;  // outlive the consumer that fills them
    Inbox<TestSample> gains;
    ServiceProvider provider(SensorDeployment("provided"));
    const bool served = provider.ServeMethodSync<bool, uint8_t, std::string>(
        "Reset", [](const uint8_t& level, const std::string& reason) {
            return level == 2 && reason == "drift";
        });
    ASSERT_TRUE(served);
    auto gain =
        provider.ServeField<TestSample>("Gain", TestSample{1, "one"}, [](const TestSample& wanted) {
            return TestSample{wanted.value * 10, wanted.text};
        });
    ASSERT_TRUE(gain);
    ASSERT_TRUE(provider.Offer());

    ServiceConsumer consumer(SensorDeployment("required"));
    ASSERT_TRUE(consumer.Subscribe<TestSample>(
        "Objects", [&samples](const TestSample& sample) { samples.Put(sample); }));
    ASSERT_TRUE(consumer.SubscribeField<TestSample>(
        "Gain", [&gains](const TestSample& value) { gains.Put(value); }));
    ASSERT_TRUE(consumer.WaitForService(5s));

    ASSERT_TRUE(provider.Publish("Objects", TestSample{42, "forty-two"}));
    ASSERT_TRUE(WaitFor(samples.HasAtLeast(1)));
    EXPECT_EQ(samples.Values()[0], (TestSample{42, "forty-two"}));

    EXPECT_TRUE(ValueOf(consumer.Call<bool>("Reset", uint8_t{2}, std::string("drift"))));
    EXPECT_FALSE(ValueOf(consumer.Call<bool>("Reset", uint8_t{1}, std::string("drift"))));

    EXPECT_EQ(ValueOf(consumer.GetField<TestSample>("Gain")), (TestSample{1, "one"}));
    EXPECT_EQ(ValueOf(consumer.SetField<TestSample>("Gain", TestSample{3, "three"})),
              (TestSample{30, "three"}))
        << "the reply is the value the provider took";
    EXPECT_EQ(gain->Get(), (TestSample{30, "three"}));
    ASSERT_TRUE(WaitFor(gains.HasAtLeast(1)));
    EXPECT_EQ(gains.Values().back(), (TestSample{30, "three"})) << "changes are notified";

    EXPECT_FALSE(provider.Publish("NoSuchEvent", TestSample{}));
    EXPECT_FALSE(provider.ServeMethodSync<bool>("NoSuchMethod", [] { return true; }));
    EXPECT_FALSE(provider.ServeField<TestSample>("NoSuchField", TestSample{}));
}

TEST_F(ProviderConsumerTest, CallsThatCannotBeMadeFailAtOnce) {
    ServiceConsumer consumer(SensorDeployment("required"));
    auto beforeFound = consumer.Call<bool>("Reset", uint8_t{2}, std::string("x"));
    EXPECT_TRUE(beforeFound.is_ready());
    EXPECT_EQ(ErrorOf(beforeFound), static_cast<int>(ComErrc::kServiceNotAvailable));
    auto unknown = consumer.Call<bool>("NoSuchMethod");
    EXPECT_EQ(ErrorOf(unknown), static_cast<int>(ComErrc::kNetworkBindingFailure));
    auto noSetter = consumer.SetField<TestSample>("NoSuchField", TestSample{});
    EXPECT_EQ(ErrorOf(noSetter), static_cast<int>(ComErrc::kNetworkBindingFailure));
    EXPECT_FALSE(consumer.IsAvailable());
    EXPECT_FALSE(consumer.WaitForService(10ms));
}

TEST_F(ProviderConsumerTest, ConsumerFollowsTheServiceAwayAndBack) {
    Inbox<bool> availability;  // outlive the consumer that fills them
    Inbox<uint32_t> samples;
    Inbox<bool> late;
    auto provider = std::make_unique<ServiceProvider>(SensorDeployment("provided"));
    ServiceConsumer consumer(SensorDeployment("required"));
    consumer.SetAvailabilityHandler([&availability](bool up) { availability.Put(up); });
    ASSERT_TRUE(consumer.Subscribe<TestSample>(
        "Objects", [&samples](const TestSample& sample) { samples.Put(sample.value); }));

    ASSERT_TRUE(provider->Offer());
    ASSERT_TRUE(WaitFor(availability.HasAtLeast(1)));
    provider->StopOffer();
    ASSERT_TRUE(WaitFor(availability.HasAtLeast(2)));
    EXPECT_FALSE(consumer.IsAvailable());
    ASSERT_TRUE(provider->Offer());
    ASSERT_TRUE(WaitFor(availability.HasAtLeast(3)));
    EXPECT_EQ(availability.Values(), (std::vector<bool>{true, false, true}));

    ASSERT_TRUE(provider->Publish("Objects", TestSample{9, "again"}));
    ASSERT_TRUE(WaitFor(samples.HasAtLeast(1))) << "the subscription outlives the withdrawal";
    EXPECT_EQ(samples.Values()[0], 9U);

    consumer.SetAvailabilityHandler([&late](bool up) { late.Put(up); });
    EXPECT_EQ(late.Values(), (std::vector<bool>{true})) << "told at once when available";
}

TEST_F(ProviderConsumerTest, SomeipOnlyDeploymentIsReportedButCarriesNoTraffic) {
    auto recorder = orx::test::RecordingMaintaind::Install();
    auto deployment = SensorDeployment("provided");
    deployment.dds.reset();
    ServiceProvider provider(deployment);
    ASSERT_TRUE(provider.Offer());
    EXPECT_FALSE(provider.Publish("Objects", TestSample{1, "nowhere"}));
    const auto events = recorder->CallsOf("RegisterEvent");
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].events.size(), 1U);
    EXPECT_EQ(events[0].events.count(vorx::vcc::api::types::DriverType::SOMEIP), 1U);

    deployment.role = vorx::vcc::app::ServiceRole::kRequired;
    ServiceConsumer consumer(deployment);
    auto call = consumer.Call<bool>("Reset", uint8_t{1}, std::string());
    EXPECT_EQ(ErrorOf(call), static_cast<int>(ComErrc::kNetworkBindingFailure));
}

}  // namespace
