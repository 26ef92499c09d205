#include "vorx/vcc/event_controller.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "ara/kelda/common/log/testing.h"
#include "wait_for.h"

namespace vorx::vcc {
namespace {

using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;
using test::WaitFor;

constexpr long kMs = 1000000L;

// Records the ids of jobs and the clock's time at each run, thread-safely.
class Recorder {
  public:
    explicit Recorder(const MonoClock& clock) : clock_(clock) {}
    void Add(int id) {
        std::lock_guard<std::mutex> lock(mutex_);
        ids_.push_back(id);
        times_.push_back(clock_.Now());
    }
    std::vector<int> Ids() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ids_;
    }
    std::vector<long> Times() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return times_;
    }

  private:
    const MonoClock& clock_;
    mutable std::mutex mutex_;
    std::vector<int> ids_;
    std::vector<long> times_;
};

// A controller on a clock that only the test moves.
class ManualControllerTest : public ::testing::Test {
  protected:
    EventHandle Add(EventScheduleMode mode, std::function<void()> task, long start,
                    long period = -1) {
        const EventHandle h = controller_.NewEvent(mode, std::move(task), start, period);
        EXPECT_TRUE(controller_.InsertEvent(h));
        return h;
    }
    // Moves the clock and waits until everything that became due has run.
    void Advance(long ns) {
        clock_->Advance(std::chrono::nanoseconds(ns));
        ASSERT_TRUE(controller_.WaitForDueJobs(std::chrono::seconds(5)));
    }

    std::shared_ptr<ManualMonoClock> clock_ = std::make_shared<ManualMonoClock>();
    EventController controller_{clock_};
    Recorder recorder_{*clock_};
};

TEST_F(ManualControllerTest, JobsRunWhenTheClockReachesThemInStartThenInsertionOrder) {
    EXPECT_EQ(controller_.GetCurMonoTime(), 0);
    for (const auto& [id, start] : std::vector<std::pair<int, long>>{
             {3, 3 * kMs}, {1, 1 * kMs}, {20, 2 * kMs}, {4, 4 * kMs}, {21, 2 * kMs}}) {
        const int jobId = id;
        const EventHandle h = Add(
            EventScheduleMode::kOneShot, [this, jobId] { recorder_.Add(jobId); }, start);
        ASSERT_NE(h, kInvalidEventHandle);
        EXPECT_TRUE(controller_.InsertEvent(h)) << "a second insert is accepted, not duplicated";
    }
    EXPECT_EQ(controller_.PendingCount(), 5U);
    Advance(2 * kMs - 1);
    EXPECT_EQ(recorder_.Ids(), (std::vector<int>{1}));
    Advance(1);  // the worker sleeps until the clock is moved, then wakes at once
    EXPECT_EQ(recorder_.Ids(), (std::vector<int>{1, 20, 21}));
    Advance(10 * kMs);
    EXPECT_EQ(recorder_.Ids(), (std::vector<int>{1, 20, 21, 3, 4}));
    EXPECT_EQ(recorder_.Times(),
              (std::vector<long>{2 * kMs - 1, 2 * kMs, 2 * kMs, 12 * kMs, 12 * kMs}));
    EXPECT_EQ(controller_.PendingCount(), 0U);
}

TEST_F(ManualControllerTest, CyclicJobKeepsToItsGridAndSkipsMissedSlots) {
    constexpr long kPeriod = 10 * kMs;
    // Each run "works" 2 ms; the third run stalls for 35 ms, missing three slots.
    int runs = 0;
    Add(
        EventScheduleMode::kCyclic,
        [&] {
            recorder_.Add(++runs);
            clock_->Advance(std::chrono::nanoseconds(runs == 3 ? 35 * kMs : 2 * kMs));
        },
        kPeriod, kPeriod);
    Advance(kPeriod);
    Advance(kPeriod - 2 * kMs);  // due again one period after its start, not after its end
    Advance(kPeriod - 2 * kMs);  // the stall: 30 -> 65
    // Caught up once, at once (65), then back on the grid (70), no burst of the missed slots.
    Advance(0);
    Advance(70 * kMs - clock_->Now());
    EXPECT_EQ(recorder_.Times(),
              (std::vector<long>{10 * kMs, 20 * kMs, 30 * kMs, 65 * kMs, 70 * kMs}));
}

TEST_F(ManualControllerTest, ReleasedClockRunsByItself) {
    std::atomic<bool> ran{false};
    Add(
        EventScheduleMode::kOneShot, [&] { ran = true; }, 5 * kMs);
    clock_->Release();
    EXPECT_TRUE(WaitFor([&] { return ran.load(); }));
    EXPECT_GE(clock_->Now(), 5 * kMs);
}

TEST(EventControllerTest, RefusesBadJobsAndUnknownHandles) {
    EventController controller;
    EXPECT_EQ(controller.NewEvent(EventScheduleMode::kOneShot, {}, 0, -1), kInvalidEventHandle);
    EXPECT_EQ(controller.NewEvent(
                  EventScheduleMode::kCyclic, [] {}, 0, 0),
              kInvalidEventHandle);
    EXPECT_FALSE(controller.InsertEvent(kInvalidEventHandle));
    EXPECT_FALSE(controller.InsertEvent(12345));
    controller.DelEvent(12345);  // unknown: no effect
    controller.DelEvent(kInvalidEventHandle);

    std::atomic<int> runs{0};
    const EventHandle once = controller.NewEvent(
        EventScheduleMode::kOneShot, [&] { ++runs; }, GetCurMonoTime(), -1);
    ASSERT_TRUE(controller.InsertEvent(once));
    ASSERT_TRUE(WaitFor([&] { return runs == 1; }));
    ASSERT_TRUE(controller.WaitForDueJobs(std::chrono::seconds(5)));
    EXPECT_FALSE(controller.InsertEvent(once)) << "a one-shot job is gone once it has run";

    const EventHandle deleted = controller.NewEvent(
        EventScheduleMode::kOneShot, [&] { ++runs; }, GetCurMonoTime(), -1);
    controller.DelEvent(deleted);
    EXPECT_FALSE(controller.InsertEvent(deleted));
    EXPECT_EQ(runs, 1);
}

TEST(EventControllerTest, DeleteWaitsForTheRunningJobAndJobsMayCallBackIn) {
    EventController controller;
    std::atomic<int> runs{0};
    std::atomic<bool> deleting{false};
    std::atomic<bool> inRun{false};
    // A run that is still going on when DelEvent is called from another thread.
    const EventHandle h = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            inRun = true;
            ++runs;
            WaitFor([&] { return deleting.load(); });
            inRun = false;
        },
        GetCurMonoTime(), kMs);
    ASSERT_TRUE(controller.InsertEvent(h));
    ASSERT_TRUE(WaitFor([&] { return inRun.load(); }));
    deleting = true;
    controller.DelEvent(h);
    EXPECT_FALSE(inRun) << "DelEvent returned while the job was still running";
    const int runsAtDelete = runs;

    // A cyclic job that deletes itself on its third run and schedules a follow-up.
    std::atomic<int> selfRuns{0};
    std::atomic<bool> followUpRan{false};
    EventHandle self = kInvalidEventHandle;
    self = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            if (++selfRuns == 3) {
                controller.DelEvent(self);
                EXPECT_TRUE(controller.OnWorkerThread());
                controller.InsertEvent(controller.NewEvent(
                    EventScheduleMode::kOneShot, [&] { followUpRan = true; }, GetCurMonoTime(),
                    -1));
            }
        },
        GetCurMonoTime(), kMs);
    ASSERT_TRUE(controller.InsertEvent(self));
    ASSERT_TRUE(WaitFor([&] { return followUpRan.load(); }));
    EXPECT_EQ(selfRuns, 3);
    EXPECT_EQ(runs, runsAtDelete);
    EXPECT_FALSE(controller.OnWorkerThread());
}

TEST(EventControllerTest, ThrowingJobIsLoggedAndTheWorkerGoesOn) {
    ScopedCaptureSink sink;
    EventController controller;
    const long now = GetCurMonoTime();
    controller.InsertEvent(controller.NewEvent(
        EventScheduleMode::kOneShot, [] { throw std::runtime_error("boom"); }, now, -1));
    controller.InsertEvent(controller.NewEvent(
        EventScheduleMode::kOneShot, [] { throw 42; }, now, -1));
    ASSERT_TRUE(WaitFor([&] { return sink->CountContaining(LogLevel::kError, "what=") == 2U; }));
    EXPECT_EQ(sink->CountContaining(LogLevel::kError, "what=boom"), 1U) << sink->Dump();
    EXPECT_EQ(sink->CountContaining(LogLevel::kError, "what=unknown"), 1U) << sink->Dump();
}

TEST(EventControllerTest, DestroyingAControllerDropsPendingJobsAndWorksFromItsOwnJob) {
    auto token = std::make_shared<int>(0);
    {
        EventController controller;
        const EventHandle h = controller.NewEvent(
            EventScheduleMode::kOneShot, [token] {}, GetCurMonoTime() + 3600L * 1000 * kMs, -1);
        ASSERT_TRUE(controller.InsertEvent(h));
        EXPECT_EQ(token.use_count(), 2);
    }
    EXPECT_EQ(token.use_count(), 1) << "the pending task was not released";

    // The last owner of a controller is its own job: the destructor runs on the worker.
    auto owned = std::make_shared<EventController>();
    std::atomic<bool> destroyed{false};
    auto holder = std::make_shared<std::shared_ptr<EventController>>(owned);
    const EventHandle h = owned->NewEvent(
        EventScheduleMode::kOneShot,
        [holder, &destroyed] {
            holder->reset();
            destroyed = true;
        },
        GetCurMonoTime() + kMs, -1);
    ASSERT_TRUE(owned->InsertEvent(h));
    owned.reset();
    holder.reset();
    ASSERT_TRUE(WaitFor([&] { return destroyed.load(); }));
}

TEST(EventControllerTest, SingletonIsSharedAndRunsOnTheMonotonicClock) {
    const auto a = EventController::GetInstance();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a, EventController::GetInstance());
    EXPECT_EQ(a->Clock(), MonoClock::Real());
    const long before = GetCurMonoTime();
    const long controllerNow = a->GetCurMonoTime();
    EXPECT_GT(before, 0);
    EXPECT_GE(controllerNow, before);
    EXPECT_GE(GetCurMonoTime(), controllerNow);
}

}  // namespace
}  // namespace vorx::vcc
