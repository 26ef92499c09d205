#include "vorx/vcc/app/internal/sample_timeout_monitor.h"

#include <gtest/gtest.h>

#include "app_test_util.h"

namespace {

using orx::test::Inbox;
using orx::test::WaitFor;
using vorx::vcc::EventController;
using vorx::vcc::app::SampleTimeoutMonitor;
using vorx::vcc::app::TimeoutWatch;

constexpr long kMs = 1000000L;

TEST(TimeoutWatchTest, ReportsOncePerThresholdOfSilenceWithARunningCount) {
    TimeoutWatch watch(100 * kMs);
    watch.Start(1000 * kMs);

    auto verdict = watch.Check(1050 * kMs);
    EXPECT_FALSE(verdict.timedOut);
    EXPECT_EQ(verdict.nextCheckNs, 1100 * kMs) << "look again when the threshold is up";

    verdict = watch.Check(1100 * kMs);
    EXPECT_TRUE(verdict.timedOut);
    EXPECT_EQ(verdict.count, 1U);
    EXPECT_EQ(verdict.nextCheckNs, 1200 * kMs);

    EXPECT_FALSE(watch.Check(1150 * kMs).timedOut) << "not again before another threshold";
    verdict = watch.Check(1230 * kMs);
    EXPECT_TRUE(verdict.timedOut);
    EXPECT_EQ(verdict.count, 2U);

    // A sample resets the silence; the next check waits for a threshold after it.
    watch.Sample(1300 * kMs);
    verdict = watch.Check(1330 * kMs);
    EXPECT_FALSE(verdict.timedOut);
    EXPECT_EQ(verdict.nextCheckNs, 1400 * kMs);
    EXPECT_TRUE(watch.Check(1400 * kMs).timedOut);

    // A restart gives a full threshold again but keeps counting.
    watch.Start(2000 * kMs);
    EXPECT_FALSE(watch.Check(2099 * kMs).timedOut);
    verdict = watch.Check(2100 * kMs);
    EXPECT_TRUE(verdict.timedOut);
    EXPECT_EQ(verdict.count, 4U);
}

TEST(SampleTimeoutMonitorTest, ChecksOnTheControllerAndStopsForGood) {
    auto controller = std::make_shared<EventController>();
    Inbox<uint32_t> counts;
    auto monitor = std::make_shared<SampleTimeoutMonitor>(
        20, [&counts](uint32_t count) { counts.Put(count); }, controller);

    monitor->Start();
    ASSERT_TRUE(WaitFor(counts.HasAtLeast(2)));
    monitor->Stop();
    const size_t atStop = counts.Values().size();
    EXPECT_FALSE(monitor->Watching());
    EXPECT_EQ(counts.Values()[0], 1U);
    EXPECT_EQ(counts.Values()[1], 2U);
    EXPECT_EQ(controller->PendingCount(), 0U) << "no check is left behind";
    EXPECT_EQ(counts.Values().size(), atStop) << "nothing runs after Stop returned";

    monitor->Start();
    ASSERT_TRUE(WaitFor(counts.HasAtLeast(atStop + 1)));
    EXPECT_EQ(counts.Values()[atStop], atStop + 1) << "a restart keeps counting";
    monitor.reset();  // the destructor stops it
    EXPECT_EQ(controller->PendingCount(), 0U);
}

}  // namespace
