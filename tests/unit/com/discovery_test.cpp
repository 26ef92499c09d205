#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "com_test_util.h"
#include "orx/test/log_capture.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::test {
namespace {

class DiscoveryTest : public orx::test::LogCaptureTest {};

TEST_F(DiscoveryTest, HandlerGetsTheCurrentListOnOfferWithdrawAndReoffer) {
    FoundLists found;
    ServiceDescription anyInstance = TestService(kAnyInstanceId);
    const FindServiceHandle handle = Proxy::StartFindService(found.Handler(), anyInstance);
    ASSERT_NE(handle.id, 0u);

    Skeleton first(TestService("7"));
    Skeleton second(TestService("8"));
    ASSERT_TRUE(first.OfferService());
    ASSERT_TRUE(found.WaitForSize(1));
    ASSERT_TRUE(second.OfferService());
    ASSERT_TRUE(found.WaitForSize(2));
    const ServiceHandleContainer both = found.All().back();
    EXPECT_EQ(both[0].GetServiceId(), 0x1234);
    EXPECT_EQ(both[0].GetServiceName(), "/test/RadarService");
    EXPECT_EQ(both[0].GetDriverType(), api::types::DriverType::PROLOC);
    EXPECT_NE(both[0].GetInstanceId(), both[1].GetInstanceId());

    first.StopOfferService();
    ASSERT_TRUE(found.WaitForLast([](const ServiceHandleContainer& l) {
        return l.size() == 1 && l[0].GetInstanceId() == "8";
    }));
    second.StopOfferService();
    ASSERT_TRUE(found.WaitForSize(0));

    // A new offer of a withdrawn instance is a new handle.
    ASSERT_TRUE(first.OfferService());
    ASSERT_TRUE(found.WaitForSize(1));
    EXPECT_NE(found.All().back()[0], both[0]);
    Proxy::StopFindService(handle);
}

TEST_F(DiscoveryTest, SearchStartedAfterTheOfferGetsItAndOtherInstancesAreIgnored) {
    Skeleton wanted(TestService("7"));
    Skeleton other(TestService("9"));
    ASSERT_TRUE(wanted.OfferService());
    ASSERT_TRUE(other.OfferService());
    Skeleton otherBinding(TestService("7", api::types::DriverType::SOMEIP));
    ASSERT_TRUE(otherBinding.OfferService());

    FoundLists found;
    const FindServiceHandle handle = Proxy::StartFindService(found.Handler(), TestService("7"));
    ASSERT_TRUE(found.WaitForSize(1));
    EXPECT_EQ(found.All().back()[0].GetInstanceId(), "7");
    EXPECT_EQ(found.All().back()[0].GetDriverType(), api::types::DriverType::PROLOC);

    // Changes of services it does not ask for do not call it.
    other.StopOfferService();
    otherBinding.StopOfferService();
    wanted.StopOfferService();
    ASSERT_TRUE(found.WaitForSize(0));
    EXPECT_EQ(found.Calls(), 2u);
    Proxy::StopFindService(handle);
}

TEST_F(DiscoveryTest, StoppedSearchIsNeverCalledAgainAndMayStopFromInsideItsHandler) {
    FoundLists found;
    const FindServiceHandle stopped = Proxy::StartFindService(found.Handler(), TestService());
    Proxy::StopFindService(stopped);

    std::atomic<int> selfStopCalls{0};
    auto selfStop = std::make_shared<FindServiceHandle>();
    *selfStop = Proxy::StartFindService(
        [&selfStopCalls, selfStop](ServiceHandleContainer) {
            ++selfStopCalls;
            Proxy::StopFindService(*selfStop);  // must not deadlock
        },
        TestService());

    FoundLists witness;  // a later search proves the offers have been announced
    const FindServiceHandle witnessHandle =
        Proxy::StartFindService(witness.Handler(), TestService());
    Skeleton skeleton(TestService());
    ASSERT_TRUE(skeleton.OfferService());
    ASSERT_TRUE(witness.WaitForSize(1));
    skeleton.StopOfferService();
    ASSERT_TRUE(witness.WaitForSize(0));

    EXPECT_EQ(found.Calls(), 0u);
    EXPECT_EQ(selfStopCalls.load(), 1);
    Proxy::StopFindService(witnessHandle);
    Proxy::StopFindService(FindServiceHandle{});  // unknown handles are ignored
}

}  // namespace
}  // namespace vorx::vcc::test
