#include "vorx/vcc/app/internal/sample_timeout_monitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

namespace {

using namespace std::chrono_literals;
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

// Collects the counts the monitor reports.
class Counts {
  public:
    void Add(uint32_t count) {
        std::lock_guard<std::mutex> lock(mutex_);
        counts_.push_back(count);
        changed_.notify_all();
    }
    bool WaitFor(size_t size, std::chrono::milliseconds timeout) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return counts_.size() >= size; });
    }
    std::vector<uint32_t> Get() {
        std::lock_guard<std::mutex> lock(mutex_);
        return counts_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<uint32_t> counts_;
};

TEST(SampleTimeoutMonitorTest, ChecksOnTheControllerAndStopsForGood) {
    auto controller = std::make_shared<EventController>();
    Counts counts;
    auto monitor = std::make_shared<SampleTimeoutMonitor>(
        20, [&counts](uint32_t count) { counts.Add(count); }, controller);

    monitor->Start();
    ASSERT_TRUE(counts.WaitFor(2, 5s));
    monitor->Stop();
    const size_t atStop = counts.Get().size();
    EXPECT_FALSE(monitor->Watching());
    EXPECT_EQ(counts.Get()[0], 1U);
    EXPECT_EQ(counts.Get()[1], 2U);
    EXPECT_EQ(controller->PendingCount(), 0U) << "no check is left behind";
    EXPECT_EQ(counts.Get().size(), atStop) << "nothing runs after Stop returned";

    monitor->Start();
    ASSERT_TRUE(counts.WaitFor(atStop + 1, 5s));
    EXPECT_EQ(counts.Get()[atStop], atStop + 1) << "a restart keeps counting";
    monitor.reset();  // the destructor stops it
    EXPECT_EQ(controller->PendingCount(), 0U);
}

}  // namespace
