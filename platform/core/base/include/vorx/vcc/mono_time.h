// The core's time base: nanoseconds of CLOCK_MONOTONIC, and clocks that measure it. The core
// runs on the real clock; tests hand a ManualMonoClock to the objects they build (an
// EventController, and through it the DFX plug-in) and move its time themselves.
#ifndef VORX_VCC_MONO_TIME_H
#define VORX_VCC_MONO_TIME_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "orx/sync/mutex.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// Nanoseconds of CLOCK_MONOTONIC: the time base of every start time the core schedules with.
VCC_EXPORT long GetCurMonoTime();

// A monotonic time line in nanoseconds, and the two kinds of waits measured on it.
//
// Threads: every operation may be called from any thread.
class VCC_EXPORT MonoClock {
  public:
    // Waits for something the clock cannot see (a future, say): called with a span of real
    // time, it blocks at most that long and returns true once what the caller waits for has
    // happened.
    using RealWait = std::function<bool(std::chrono::nanoseconds)>;

    // The real clock (GetCurMonoTime), shared by the whole process. Never destroyed, so it may
    // be used from static destructors.
    static const std::shared_ptr<MonoClock>& Real();

    virtual ~MonoClock();

    virtual long Now() const = 0;

    // Blocks on `cv` with `mutex` held (as CondVar::Wait does), until `cv` is notified or Now()
    // has reached `deadline`. May return early and may release and retake the lock: callers
    // check again what they wait for.
    virtual void WaitUntil(orx::sync::Mutex& mutex, orx::sync::CondVar& cv, long deadline)
        REQUIRES(mutex) = 0;

    // Waits until `wait` reports that what the caller waits for has happened, or until Now()
    // has reached `deadline`, and returns `wait`'s last answer. The real clock calls `wait`
    // once, with the time left until `deadline`.
    virtual bool WaitFor(long deadline, const RealWait& wait) = 0;
};

// A clock for tests: its time stands still until the test moves it with Advance. Starts at 0.
class VCC_EXPORT ManualMonoClock final : public MonoClock {
  public:
    ManualMonoClock() = default;
    ~ManualMonoClock() override;
    ManualMonoClock(const ManualMonoClock&) = delete;
    ManualMonoClock& operator=(const ManualMonoClock&) = delete;

    long Now() const override;
    void WaitUntil(orx::sync::Mutex& mutex, orx::sync::CondVar& cv, long deadline)
        REQUIRES(mutex) override;
    // Asks `wait` about one millisecond of real time at a time, and after each answer that is
    // not yet true, holds `deadline` against Now().
    bool WaitFor(long deadline, const RealWait& wait) override;

    // Moves the time forward by `step` (negative steps are ignored). Wakes every WaitUntil, and
    // returns only once every WaitFor has held its deadline against the new time: a test that
    // moves the clock to just before a deadline and then lets the awaited thing happen knows it
    // happened in time, and one that moves it past knows the wait has given up.
    void Advance(std::chrono::nanoseconds step);

    // From now on the time also runs by itself, at real speed, from where it stands: every wait
    // then ends as it would on the real clock. Tests call this before they end, so that what
    // still runs (replies nobody gives any more, exit-time reports) does not wait for a hand
    // that no longer moves the clock.
    void Release();

  private:
    struct Waiter {
        orx::sync::Mutex* mutex;
        orx::sync::CondVar* cv;
    };

    long ReleasedFor() const;

    std::atomic<long> base_{0};
    std::atomic<bool> released_{false};
    std::atomic<long> releasedAt_{0};  // real time of Release
    orx::sync::Mutex mutex_;
    orx::sync::CondVar idle_;  // no Advance is notifying waiters
    orx::sync::CondVar seen_;  // a WaitFor held its deadline against the time, or left
    std::vector<std::shared_ptr<Waiter>> waiters_ GUARDED_BY(mutex_);
    // Per running WaitFor, the number of the last Advance it held its deadline against.
    std::vector<std::shared_ptr<uint64_t>> pollers_ GUARDED_BY(mutex_);
    uint64_t advances_ GUARDED_BY(mutex_) = 0;
    int notifying_ GUARDED_BY(mutex_) = 0;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_MONO_TIME_H
