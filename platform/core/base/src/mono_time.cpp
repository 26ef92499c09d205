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

    void WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& cv,
                   long deadline) override {
        // steady_clock is CLOCK_MONOTONIC on Linux, the same clock as GetCurMonoTime().
        cv.wait_until(lock,
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

void ManualMonoClock::WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& cv,
                                long deadline) {
    const auto waiter = std::make_shared<Waiter>(Waiter{lock.mutex(), &cv});
    bool released = false;
    {
        std::lock_guard<std::mutex> guard(mutex_);
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
        cv.wait_for(lock, std::chrono::nanoseconds(deadline - Now()));
        return;
    }
    cv.wait(lock);
    // Leave the list without the caller's lock: an Advance may be about to take it.
    lock.unlock();
    {
        std::unique_lock<std::mutex> guard(mutex_);
        idle_.wait(guard, [this] { return notifying_ == 0; });
        waiters_.erase(std::remove(waiters_.begin(), waiters_.end(), waiter), waiters_.end());
    }
    lock.lock();
}

bool ManualMonoClock::WaitFor(long deadline, const RealWait& wait) {
    const auto poller = std::make_shared<uint64_t>(0);
    uint64_t advances = 0;
    {
        std::lock_guard<std::mutex> guard(mutex_);
        *poller = advances_;
        pollers_.push_back(poller);
    }
    const auto seen = [&] {
        {
            std::lock_guard<std::mutex> guard(mutex_);
            *poller = advances;
        }
        seen_.notify_all();
    };
    bool result = false;
    for (;;) {
        {
            std::lock_guard<std::mutex> guard(mutex_);
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
        std::lock_guard<std::mutex> guard(mutex_);
        pollers_.erase(std::remove(pollers_.begin(), pollers_.end(), poller), pollers_.end());
    }
    seen_.notify_all();
    return result;
}

void ManualMonoClock::Advance(std::chrono::nanoseconds step) {
    std::vector<std::shared_ptr<Waiter>> toWake;
    uint64_t advance = 0;
    {
        std::lock_guard<std::mutex> guard(mutex_);
        base_.fetch_add(std::max(0L, static_cast<long>(step.count())));
        advance = ++advances_;
        toWake = waiters_;
        ++notifying_;
    }
    // Waiters stay in the list, and so stay alive, until notifying_ is back at 0.
    for (const auto& waiter : toWake) {
        std::lock_guard<std::mutex> lock(*waiter->mutex);
        waiter->cv->notify_all();
    }
    std::unique_lock<std::mutex> guard(mutex_);
    --notifying_;
    idle_.notify_all();
    seen_.wait(guard, [this, advance] {
        return std::all_of(pollers_.begin(), pollers_.end(),
                           [advance](const auto& poller) { return *poller >= advance; });
    });
}

void ManualMonoClock::Release() {
    {
        std::lock_guard<std::mutex> guard(mutex_);
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
