#ifndef VORX_VCC_APP_INTERNAL_SAMPLE_TIMEOUT_MONITOR_H
#define VORX_VCC_APP_INTERNAL_SAMPLE_TIMEOUT_MONITOR_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "orx/sync/mutex.h"
#include "vorx/vcc/event_controller.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc::app {

// The decision of a sample-timeout watch, without threads or clocks: times are nanoseconds that
// the caller passes in.
//
// A timeout is due when no sample arrived for `threshold` since the later of: the start of the
// watch, the last sample, the last timeout. So a subscription that stays silent reports once per
// threshold, with a running count that a restart does not reset. Not thread-safe except Sample,
// which may race with Check.
class VCC_EXPORT TimeoutWatch {
  public:
    explicit TimeoutWatch(long thresholdNs) : thresholdNs_(thresholdNs) {}

    // (Re)starts the watch at `nowNs`; the count goes on.
    void Start(long nowNs);
    // A sample arrived at `nowNs`. Thread-safe, lock-free.
    void Sample(long nowNs) { lastSampleNs_.store(nowNs, std::memory_order_relaxed); }

    struct Verdict {
        bool timedOut{false};
        uint32_t count{0};    // timeouts so far, this one included
        long nextCheckNs{0};  // when the watch should look again
    };
    Verdict Check(long nowNs);

    uint32_t Count() const { return count_; }

  private:
    const long thresholdNs_;
    long startNs_{0};
    long lastTimeoutNs_{0};
    std::atomic<long> lastSampleNs_{0};
    uint32_t count_{0};
};

// Watches one subscription for samples that do not come in time and calls `notify` with the
// running count when one is overdue. The checks run as one-shot jobs on an EventController (the
// process's by default), never on the receiving thread; each check schedules the next one for the
// moment the next timeout could be due, so a steady stream of samples costs one job per threshold.
//
// Made with std::make_shared. Thread-safe. `notify` runs on the controller's thread.
class VCC_EXPORT SampleTimeoutMonitor : public std::enable_shared_from_this<SampleTimeoutMonitor> {
  public:
    using Notify = std::function<void(uint32_t count)>;

    SampleTimeoutMonitor(uint32_t thresholdMs, Notify notify,
                         std::shared_ptr<EventController> controller = nullptr);
    ~SampleTimeoutMonitor();
    SampleTimeoutMonitor(const SampleTimeoutMonitor&) = delete;
    SampleTimeoutMonitor& operator=(const SampleTimeoutMonitor&) = delete;

    // Starts watching now (again after Stop; the count goes on). No-op while watching.
    void Start();
    // A sample arrived (monotonic ns of its reception). Cheap; any thread.
    void OnSample(long receiveTimeNs) { watch_.Sample(receiveTimeNs); }
    // Stops watching: once it returns, `notify` is not running and does not run again before the
    // next Start (unless Stop is called from inside `notify`, which then finishes on its own).
    // The caller must hold no lock that `notify` takes.
    void Stop() EXCLUDES(mutex_);
    bool Watching() const;
    uint32_t Count() const;

  private:
    void RunCheck(uint64_t generation) EXCLUDES(mutex_);
    void ScheduleLocked(long startNs) REQUIRES(mutex_);

    const uint32_t thresholdMs_;
    const Notify notify_;
    const std::shared_ptr<EventController> controller_;
    TimeoutWatch watch_;
    mutable orx::sync::Mutex mutex_;
    bool watching_ GUARDED_BY(mutex_){false};
    uint64_t generation_ GUARDED_BY(mutex_){0};                   // counts Start calls
    EventHandle handle_ GUARDED_BY(mutex_){kInvalidEventHandle};  // the pending or running check
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_INTERNAL_SAMPLE_TIMEOUT_MONITOR_H
