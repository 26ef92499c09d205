#include "vorx/vcc/mono_time.h"

#include <algorithm>
#include <ctime>

namespace vorx::vcc {

namespace {

// How often a ManualMonoClock looks at a wait it cannot see.
constexpr std::chrono::milliseconds kManualWaitStep{1};

class RealMonoClock final : public MonoClock {
  public:
    long Now() const override { return GetCurMonoTime(); }

    void WaitUntil(orx::sync::Mutex& mutex, orx::sync::CondVar& cv, long deadline)
        REQUIRES(mutex) override {
        // steady_clock is CLOCK_MONOTONIC on Linux, the same clock as GetCurMonoTime().
        cv.WaitUntil(mutex,
                     std::chrono::steady_clock::time_point(std::chrono::nanoseconds(deadline)));
    }

    bool WaitFor(long deadline, const RealWait& wait) override {
        return wait(std::chrono::nanoseconds(deadline - Now()));
    }
};

}  // namespace

long GetCurMonoTime() {
    timespec now{};
    // CLOCK_MONOTONIC cannot fail on Linux with a valid pointer.
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long>(now.tv_sec) * 1000000000L + static_cast<long>(now.tv_nsec);
}

const std::shared_ptr<MonoClock>& MonoClock::Real() {
    // Leaked on purpose: static destructors (the maintenance client's) still measure time.
    static const auto* const clock =
        new std::shared_ptr<MonoClock>(std::make_shared<RealMonoClock>());
    return *clock;
}

MonoClock::~MonoClock() = default;

ManualMonoClock::~ManualMonoClock() = default;

long ManualMonoClock::ReleasedFor() const {
    return released_.load() ? GetCurMonoTime() - releasedAt_.load() : 0L;
}

long ManualMonoClock::Now() const {
    return base_.load() + ReleasedFor();
}

void ManualMonoClock::WaitUntil(orx::sync::Mutex& mutex, orx::sync::CondVar& cv, long deadline) {
    const auto waiter = std::make_shared<Waiter>(Waiter{&mutex, &cv});
    bool released = false;
    {
        orx::sync::MutexLock guard(mutex_);
        if (Now() >= deadline) {
            return;
        }
        released = released_.load();
        if (!released) {
            // From here on an Advance sees this waiter; it takes the caller's lock to notify,
            // so the notification cannot slip in before cv.wait below releases that lock.
            waiters_.push_back(waiter);
        }
    }
    if (released) {
        // The time runs by itself now; nobody advances it any more.
        cv.WaitUntil(mutex, std::chrono::steady_clock::now() +
                                std::chrono::nanoseconds(std::max(0L, deadline - Now())));
        return;
    }
    cv.Wait(mutex);
    // Leave the list without the caller's lock: an Advance may be about to take it.
    mutex.Unlock();
    {
        orx::sync::MutexLock guard(mutex_);
        idle_.Wait(mutex_, [this]() REQUIRES(mutex_) { return notifying_ == 0; });
        waiters_.erase(std::remove(waiters_.begin(), waiters_.end(), waiter), waiters_.end());
    }
    mutex.Lock();
}

bool ManualMonoClock::WaitFor(long deadline, const RealWait& wait) {
    const auto poller = std::make_shared<uint64_t>(0);
    uint64_t advances = 0;
    {
        orx::sync::MutexLock guard(mutex_);
        *poller = advances_;
        pollers_.push_back(poller);
    }
    const auto seen = [&] {
        {
            orx::sync::MutexLock guard(mutex_);
            *poller = advances;
        }
        seen_.NotifyAll();
    };
    bool result = false;
    for (;;) {
        {
            orx::sync::MutexLock guard(mutex_);
            advances = advances_;
        }
        if (released_.load()) {
            seen();
            result = wait(std::chrono::nanoseconds(std::max(0L, deadline - Now())));
            break;
        }
        if (wait(kManualWaitStep)) {
            result = true;
            break;
        }
        if (Now() >= deadline) {
            break;
        }
        seen();
    }
    {
        orx::sync::MutexLock guard(mutex_);
        pollers_.erase(std::remove(pollers_.begin(), pollers_.end(), poller), pollers_.end());
    }
    seen_.NotifyAll();
    return result;
}

void ManualMonoClock::Advance(std::chrono::nanoseconds step) {
    std::vector<std::shared_ptr<Waiter>> toWake;
    uint64_t advance = 0;
    {
        orx::sync::MutexLock guard(mutex_);
        base_.fetch_add(std::max(0L, static_cast<long>(step.count())));
        advance = ++advances_;
        toWake = waiters_;
        ++notifying_;
    }
    // Waiters stay in the list, and so stay alive, until notifying_ is back at 0.
    for (const auto& waiter : toWake) {
        orx::sync::MutexLock lock(*waiter->mutex);
        waiter->cv->NotifyAll();
    }
    orx::sync::MutexLock guard(mutex_);
    --notifying_;
    idle_.NotifyAll();
    seen_.Wait(mutex_, [this, advance]() REQUIRES(mutex_) {
        return std::all_of(pollers_.begin(), pollers_.end(),
                           [advance](const auto& poller) { return *poller >= advance; });
    });
}

void ManualMonoClock::Release() {
    {
        orx::sync::MutexLock guard(mutex_);
        if (released_.load()) {
            return;
        }
        releasedAt_.store(GetCurMonoTime());
        released_.store(true);
    }
    // Wakes the waiters so that they go on with timed waits.
    Advance(std::chrono::nanoseconds(0));
}

}  // namespace vorx::vcc
