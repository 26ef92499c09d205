#include "vorx/vcc/event_controller.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "ara/kelda/common/log/testing.h"
#include "wait_for.h"

namespace vorx::vcc {
namespace {

using ara::kelda::common::log::LogLevel;
using ara::kelda::common::log::ScopedCaptureSink;
using test::BusyFor;
using test::WaitFor;

constexpr long kMs = 1000000L;

// Records run order and times of jobs, thread-safely.
class Recorder {
  public:
    void Add(int id) {
        std::lock_guard<std::mutex> lock(mutex_);
        ids_.push_back(id);
        times_.push_back(GetCurMonoTime());
    }
    std::vector<int> Ids() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ids_;
    }
    std::vector<long> Times() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return times_;
    }
    size_t Size() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ids_.size();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<int> ids_;
    std::vector<long> times_;
};

// Runs a one-shot job on `controller` `delay` ns from now and waits for it. Jobs run in start
// order, so once it ran every job due before it has run too.
bool Barrier(EventController& controller, long delay = 0) {
    auto done = std::make_shared<std::atomic<bool>>(false);
    const EventHandle h = controller.NewEvent(
        EventScheduleMode::kOneShot, [done] { done->store(true); }, GetCurMonoTime() + delay, -1);
    return controller.InsertEvent(h) && WaitFor([&] { return done->load(); });
}

TEST(EventControllerTest, RunsDueJobsInStartOrderThenInsertionOrder) {
    EventController controller;
    Recorder recorder;
    std::atomic<bool> gateEntered{false};
    std::atomic<bool> gateOpen{false};
    const long now = GetCurMonoTime();
    // Holds the worker until every job below is queued, so all of them are due together.
    const EventHandle gate = controller.NewEvent(
        EventScheduleMode::kOneShot,
        [&] {
            gateEntered = true;
            WaitFor([&] { return gateOpen.load(); });
        },
        now, -1);
    ASSERT_TRUE(controller.InsertEvent(gate));
    ASSERT_TRUE(WaitFor([&] { return gateEntered.load(); }));

    const std::vector<std::pair<int, long>> jobs = {{3, now + 3 * kMs},  {1, now + 1 * kMs},
                                                    {20, now + 2 * kMs}, {4, now + 4 * kMs},
                                                    {21, now + 2 * kMs}, {22, now + 2 * kMs}};
    for (const auto& [id, start] : jobs) {
        const int jobId = id;
        const EventHandle h = controller.NewEvent(
            EventScheduleMode::kOneShot, [&recorder, jobId] { recorder.Add(jobId); }, start, -1);
        ASSERT_NE(h, kInvalidEventHandle);
        ASSERT_NE(h, 0xFFFFFFFFU);
        ASSERT_TRUE(controller.InsertEvent(h));
        EXPECT_TRUE(controller.InsertEvent(h)) << "a second insert is accepted, not duplicated";
    }
    EXPECT_EQ(controller.PendingCount(), jobs.size());
    BusyFor(5 * kMs);
    gateOpen = true;

    ASSERT_TRUE(WaitFor([&] { return recorder.Size() == jobs.size(); }));
    ASSERT_TRUE(Barrier(controller));
    EXPECT_EQ(recorder.Ids(), (std::vector<int>{1, 20, 21, 22, 3, 4}));
    EXPECT_EQ(controller.PendingCount(), 0U);
}

TEST(EventControllerTest, RefusesBadJobsAndUnknownHandles) {
    EventController controller;
    EXPECT_EQ(controller.NewEvent(EventScheduleMode::kOneShot, {}, 0, -1), kInvalidEventHandle);
    EXPECT_EQ(controller.NewEvent(
                  EventScheduleMode::kCyclic, [] {}, 0, 0),
              kInvalidEventHandle);
    EXPECT_EQ(controller.NewEvent(
                  EventScheduleMode::kCyclic, [] {}, 0, -1),
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
    ASSERT_TRUE(Barrier(controller));
    EXPECT_FALSE(controller.InsertEvent(once)) << "a one-shot job is gone once it has run";

    const EventHandle deleted = controller.NewEvent(
        EventScheduleMode::kOneShot, [&] { ++runs; }, GetCurMonoTime(), -1);
    controller.DelEvent(deleted);
    EXPECT_FALSE(controller.InsertEvent(deleted));
    ASSERT_TRUE(Barrier(controller, 2 * kMs));
    EXPECT_EQ(runs, 1);
}

TEST(EventControllerTest, CyclicJobKeepsToItsGridWithoutDrift) {
    EventController controller;
    Recorder recorder;
    constexpr long kPeriod = 10 * kMs;
    constexpr int kRuns = 25;
    const long start = GetCurMonoTime() + kPeriod;
    // Each run works for 2 ms: a controller that schedules "end of run + period" would fall
    // behind by 2 ms per run, 50 ms in total.
    const EventHandle h = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            recorder.Add(0);
            BusyFor(2 * kMs);
        },
        start, kPeriod);
    ASSERT_TRUE(controller.InsertEvent(h));
    ASSERT_TRUE(WaitFor([&] { return recorder.Size() >= kRuns; }));
    controller.DelEvent(h);

    const std::vector<long> times = recorder.Times();
    int onGrid = 0;
    for (int i = 0; i < kRuns; ++i) {
        EXPECT_GE(times[i], start + i * kPeriod) << "run " << i << " started early";
        // With drift every gap would be at least period + 2 ms. On the grid, gaps are about a
        // period, shorter after a run that a busy machine delayed.
        if (i > 0 && times[i] - times[i - 1] < kPeriod + kMs) {
            ++onGrid;
        }
    }
    EXPECT_GE(onGrid, kRuns / 4);
}

TEST(EventControllerTest, CyclicJobSkipsMissedSlotsInsteadOfBursting) {
    EventController controller;
    Recorder recorder;
    std::atomic<long> stallEnd{0};
    constexpr long kPeriod = 5 * kMs;
    const long start = GetCurMonoTime() + kMs;
    const EventHandle h = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            recorder.Add(0);
            if (recorder.Size() == 1) {
                BusyFor(23 * kMs);  // misses four slots or more
                stallEnd = GetCurMonoTime();
            }
        },
        start, kPeriod);
    ASSERT_TRUE(controller.InsertEvent(h));
    ASSERT_TRUE(WaitFor([&] { return recorder.Size() >= 4; }));
    controller.DelEvent(h);

    // After the stall the job catches up once, at once; the next run waits for the first slot
    // of its grid after the stall, and so does every later one.
    const std::vector<long> t = recorder.Times();
    const long nextSlot = start + ((stallEnd - start) / kPeriod + 1) * kPeriod;
    EXPECT_GE(t[1], stallEnd);
    EXPECT_GE(t[2], nextSlot) << "missed slots were run in a burst";
    EXPECT_GE(t[3], nextSlot + kPeriod);
}

TEST(EventControllerTest, DeletedJobNeverRunsAgainAndDeleteWaitsForTheRunningOne) {
    EventController controller;
    std::atomic<int> runs{0};
    std::atomic<bool> deleting{false};
    std::atomic<bool> inRun{false};
    // A long run that is still going on when DelEvent is called from another thread.
    const EventHandle h = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            inRun = true;
            ++runs;
            WaitFor([&] { return deleting.load(); });
            BusyFor(20 * kMs);
            inRun = false;
        },
        GetCurMonoTime(), kMs);
    ASSERT_TRUE(controller.InsertEvent(h));
    ASSERT_TRUE(WaitFor([&] { return inRun.load(); }));
    deleting = true;
    controller.DelEvent(h);
    EXPECT_FALSE(inRun) << "DelEvent returned while the job was still running";
    const int runsAtDelete = runs;
    ASSERT_TRUE(Barrier(controller, 5 * kMs));
    EXPECT_EQ(runs, runsAtDelete);

    // The same race, many times over, with short jobs and periods.
    for (int round = 0; round < 100; ++round) {
        auto count = std::make_shared<std::atomic<int>>(0);
        const EventHandle fast = controller.NewEvent(
            EventScheduleMode::kCyclic, [count] { ++*count; }, GetCurMonoTime(), 100000);
        ASSERT_TRUE(controller.InsertEvent(fast));
        ASSERT_TRUE(WaitFor([&] { return count->load() >= 1 + round % 3; }));
        controller.DelEvent(fast);
        const int atDelete = *count;
        ASSERT_TRUE(Barrier(controller, 300000));
        ASSERT_EQ(*count, atDelete) << "round " << round;
    }
}

TEST(EventControllerTest, JobsMayCallBackIntoTheController) {
    EventController controller;
    std::atomic<int> selfRuns{0};
    std::atomic<bool> followUpRan{false};
    EventHandle self = kInvalidEventHandle;
    // A cyclic job that deletes itself on its third run and schedules a follow-up job.
    self = controller.NewEvent(
        EventScheduleMode::kCyclic,
        [&] {
            if (++selfRuns == 3) {
                controller.DelEvent(self);
                const EventHandle next = controller.NewEvent(
                    EventScheduleMode::kOneShot, [&] { followUpRan = true; }, GetCurMonoTime(), -1);
                controller.InsertEvent(next);
            }
        },
        GetCurMonoTime(), kMs);
    ASSERT_TRUE(controller.InsertEvent(self));
    ASSERT_TRUE(WaitFor([&] { return followUpRan.load(); }));
    ASSERT_TRUE(Barrier(controller, 5 * kMs));
    EXPECT_EQ(selfRuns, 3);
}

TEST(EventControllerTest, ThrowingJobIsLoggedAndTheWorkerGoesOn) {
    ScopedCaptureSink sink;
    EventController controller;
    const long now = GetCurMonoTime();
    const EventHandle a = controller.NewEvent(
        EventScheduleMode::kOneShot, [] { throw std::runtime_error("boom"); }, now, -1);
    const EventHandle b = controller.NewEvent(
        EventScheduleMode::kOneShot, [] { throw 42; }, now, -1);
    ASSERT_TRUE(controller.InsertEvent(a));
    ASSERT_TRUE(controller.InsertEvent(b));
    ASSERT_TRUE(Barrier(controller));
    EXPECT_EQ(sink->CountContaining(LogLevel::kError, "what=boom"), 1U) << sink->Dump();
    EXPECT_EQ(sink->CountContaining(LogLevel::kError, "what=unknown"), 1U) << sink->Dump();
}

TEST(EventControllerTest, DestroyingAControllerDropsPendingJobsAndWorksFromItsOwnJob) {
    auto token = std::make_shared<int>(0);
    std::atomic<int> runs{0};
    {
        EventController controller;
        const long later = GetCurMonoTime() + 3600L * 1000 * kMs;
        const EventHandle h = controller.NewEvent(
            EventScheduleMode::kOneShot, [token, &runs] { ++runs; }, later, -1);
        ASSERT_TRUE(controller.InsertEvent(h));
        EXPECT_EQ(token.use_count(), 2);
    }
    EXPECT_EQ(token.use_count(), 1) << "the pending task was not released";
    EXPECT_EQ(runs, 0);

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

TEST(EventControllerTest, SingletonIsSharedAndClockIsMonotonic) {
    const auto a = EventController::GetInstance();
    const auto b = EventController::GetInstance();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a, b);
    const long t1 = GetCurMonoTime();
    const long t2 = GetCurMonoTime();
    EXPECT_GT(t1, 0);
    EXPECT_GE(t2, t1);
    EXPECT_TRUE(Barrier(*a));
}

}  // namespace
}  // namespace vorx::vcc
