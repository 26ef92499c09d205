#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "com_test_util.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "orx/test/log_capture.h"
#include "orx/test/watched.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {
namespace {

using orx::maintaind::LatencyMode;
using orx::maintaind::LatencySwitch;
using Level = ara::kelda::common::log::LogLevel;

constexpr uint32_t kEventId = orx::maintaind::service::kSwitchLatencyEventId;
constexpr uint32_t kMarkerId = 30162;

LatencySwitch Order(uint16_t serviceId) {
    LatencySwitch order;
    order.mode = LatencyMode::DISABLE;
    order.latencyIndex.serviceId = serviceId;
    order.latencyIndex.eventName = "topic-" + std::to_string(serviceId);
    order.latencyIndex.driverTypes = {orx::maintaind::DriverType::DDS};
    return order;
}

class EventChannelTest : public orx::test::LogCaptureTest,
                         public ::testing::WithParamInterface<PayloadMode> {
  protected:
    void SetUp() override {
        DriverRegistry::GetInstance()->GetInProcessDriver()->SetPayloadMode(GetParam());
        skeleton_ = std::make_unique<Skeleton>(TestService());
        ASSERT_TRUE(skeleton_->OfferService());
        FoundLists found;
        const FindServiceHandle search = Proxy::StartFindService(found.Handler(), TestService());
        ASSERT_TRUE(found.WaitForSize(1));
        Proxy::StopFindService(search);
        proxy_ = std::make_unique<Proxy>(found.All().back()[0]);
    }

    // Everything GetNewSamples hands over, in order.
    std::vector<LatencySwitch> Drain(size_t maxCount, uint32_t entityId = kEventId) {
        std::vector<LatencySwitch> samples;
        const size_t count = proxy_->GetNewSamples<LatencySwitch>(
            [&samples](SamplePtr<const LatencySwitch> sample) { samples.push_back(*sample); },
            entityId, maxCount);
        EXPECT_EQ(count, samples.size());
        return samples;
    }

    // The threads the receive handler ran on. Declared before the proxy, so that a handler run
    // still queued when a test body ends finds it alive until the proxy has stopped.
    orx::test::Watched<std::vector<std::thread::id>> calls_;
    std::unique_ptr<Skeleton> skeleton_;
    std::unique_ptr<Proxy> proxy_;
};

TEST_P(EventChannelTest, CacheKeepsTheNewestInOrderAndMaxCountLimitsOneRead) {
    proxy_->SetEventThreadNumber(0, 1024);
    proxy_->SetReceiveHandler(
        [this] {
            calls_.Change([](auto& threads) { threads.push_back(std::this_thread::get_id()); });
        },
        kEventId);
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 3));
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kMarkerId, nullptr, 1));

    for (uint16_t i = 1; i <= 5; ++i) {
        ASSERT_TRUE(skeleton_->Send(kEventId, Order(i)));
    }
    // The driver delivers in publishing order: once the marker is there, so are the five.
    ASSERT_TRUE(skeleton_->Send(kMarkerId, Order(99)));
    ASSERT_TRUE(WaitFor([&] { return Drain(10, kMarkerId).size() == 1; }));

    const auto oldest = Drain(2);
    ASSERT_EQ(oldest.size(), 2u);
    EXPECT_EQ(oldest[0], Order(3));
    EXPECT_EQ(oldest[1], Order(4));
    const auto rest = Drain(10);
    ASSERT_EQ(rest.size(), 1u);
    EXPECT_EQ(rest[0], Order(5));
    EXPECT_TRUE(Drain(10).empty());

    // The handler ran, on the proxy's event thread, not on the publisher's.
    ASSERT_TRUE(calls_.WaitFor([](const auto& threads) { return !threads.empty(); }));
    for (const auto& thread : calls_.Get()) {
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

TEST_P(EventChannelTest, HandlerSetAfterSamplesArrivedIsCalledForThem) {
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 10));
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kMarkerId, nullptr, 1));
    ASSERT_TRUE(skeleton_->Send(kEventId, Order(1)));
    ASSERT_TRUE(skeleton_->Send(kMarkerId, Order(99)));
    ASSERT_TRUE(WaitFor([&] { return Drain(10, kMarkerId).size() == 1; }));

    orx::test::Watched<std::vector<LatencySwitch>> seen;
    proxy_->SetReceiveHandler(
        [&] {
            auto samples = Drain(10);  // on the event thread, as the plug-in reads them
            seen.Change([&](auto& all) { all.insert(all.end(), samples.begin(), samples.end()); });
        },
        kEventId);
    ASSERT_TRUE(seen.WaitFor([](const auto& all) { return all.size() == 1; }));
    EXPECT_EQ(seen.Get()[0], Order(1));
}

TEST_P(EventChannelTest, SecondSubscriptionIsRefusedAndUnsubscribeStopsDelivery) {
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 10));
    EXPECT_FALSE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 10));
    EXPECT_EQ(Log().Count(Level::kWarn,
                          "Event subscription alreay initialized " + std::to_string(kEventId)),
              1u);

    ASSERT_TRUE(skeleton_->Send(kEventId, Order(1)));
    ASSERT_TRUE(WaitFor([&] { return Drain(10).size() == 1; }));

    proxy_->Unsubscribe(kEventId);
    ASSERT_TRUE(skeleton_->Send(kEventId, Order(2)));
    EXPECT_TRUE(Drain(10).empty());
    // Subscribing again works and gets only new samples.
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 10));
    ASSERT_TRUE(skeleton_->Send(kEventId, Order(3)));
    std::vector<LatencySwitch> again;
    ASSERT_TRUE(WaitFor([&] {
        again = Drain(10);
        return !again.empty();
    }));
    ASSERT_EQ(again.size(), 1u);
    EXPECT_EQ(again[0], Order(3));
}

TEST_P(EventChannelTest, SubscriptionOutlivesWithdrawAndReoffer) {
    ASSERT_TRUE(proxy_->Subscribe<LatencySwitch>(kEventId, nullptr, 10));
    skeleton_->StopOfferService();
    EXPECT_FALSE(skeleton_->Send(kEventId, Order(1)));
    ASSERT_TRUE(skeleton_->OfferService());
    ASSERT_TRUE(skeleton_->Send(kEventId, Order(2)));
    std::vector<LatencySwitch> samples;
    ASSERT_TRUE(WaitFor([&] {
        samples = Drain(10);
        return !samples.empty();
    }));
    EXPECT_EQ(samples[0], Order(2));
}

INSTANTIATE_TEST_SUITE_P(PayloadModes, EventChannelTest,
                         ::testing::Values(PayloadMode::kBytes, PayloadMode::kObjects),
                         [](const ::testing::TestParamInfo<PayloadMode>& param) {
                             return param.param == PayloadMode::kBytes ? "Bytes" : "Objects";
                         });

}  // namespace
}  // namespace vorx::vcc::test
