#ifndef VORX_VCC_EVENT_CONTROLLER_H
#define VORX_VCC_EVENT_CONTROLLER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "vorx/vcc/export.h"
#include "vorx/vcc/mono_time.h"

namespace vorx::vcc {

// Identifies one job of an EventController. 0 and 0xFFFFFFFF are never handed out, so callers
// may use either to mean "no job".
using EventHandle = std::uint32_t;
inline constexpr EventHandle kInvalidEventHandle = 0U;

enum class EventScheduleMode : std::uint8_t { kOneShot = 0, kCyclic = 1 };

// The core's timer service: runs jobs at given times of its clock on one worker thread of its
// own. The process-wide controller runs on the real monotonic clock (GetCurMonoTime); a
// controller that a test builds may take a ManualMonoClock, whose Advance is what lets jobs
// become due.
//
// Order: due jobs run one after another in start order; jobs with the same start run in the
// order they were inserted. A job that throws is logged (logger "CM", error level) and the worker
// goes on. A cyclic job's next start is its previous start plus its period, so it does not
// drift; when the worker fell behind by more than a period, the missed slots are skipped (the
// job runs once, now, and then on its original grid) instead of being run in a burst.
//
// Threads: every operation may be called from any thread, including from inside a running job
// (no deadlock). The internal lock is never held while a job runs or while a job's task is
// destroyed, so tasks may own objects whose destructors call back into the controller.
//
// Lifetime: the process-wide instance (GetInstance) is created on first use and deliberately
// never destroyed, and its worker is never joined. Other singletons hold on to it and use it from
// their destructors during static destruction at process exit (the maintenance client schedules
// and waits for its last reports then); an instance that could already be gone at that point
// would turn those destructors into use-after-free. The worker simply ends with the process.
// The worker is not carried over by fork(): a child process must not use an instance that its
// parent had created.
class VCC_EXPORT EventController {
  public:
    // The process-wide controller. Never returns nullptr; safe to call during static
    // destruction.
    static std::shared_ptr<EventController> GetInstance();

    // A private controller with its own worker, for tests and benchmarks, on the real clock or
    // on `clock` (not null). Its destructor drops the jobs that have not started, waits for a
    // running job to end (unless it runs on the worker itself) and stops the worker.
    EventController();
    explicit EventController(std::shared_ptr<MonoClock> clock);
    ~EventController();
    EventController(const EventController&) = delete;
    EventController& operator=(const EventController&) = delete;

    // The time of this controller's clock in ns: what start times are measured against. For
    // the process-wide controller it is GetCurMonoTime().
    long GetCurMonoTime() const;
    const std::shared_ptr<MonoClock>& Clock() const;

    // Creates a job; nothing runs until InsertEvent. `start` is an absolute time in ns of Clock()
    // (a time in the past means "as soon as possible"); `period` is the interval in ns of a
    // cyclic job and is ignored (conventionally -1) for a one-shot job. Returns the new handle,
    // or kInvalidEventHandle (with a warning) for an empty task or a cyclic job whose period is
    // not positive. The controller owns `task` until the job is deleted or, for a one-shot job,
    // until it has run.
    EventHandle NewEvent(EventScheduleMode mode, const std::function<void()>& task, long start,
                         long period);

    // Queues the job for its start time. Returns false for an unknown handle (never created,
    // deleted, or a one-shot job that has run already); true otherwise, also when the job is
    // queued already (it is not queued twice).
    bool InsertEvent(const EventHandle& handle);

    // Deletes the job: afterwards it never starts again. Safe for a pending, running or unknown
    // handle. If the job is running right now on the worker, a call from another thread waits
    // until that run has ended; a call from inside a job (on the worker) returns at once.
    // REQUIRES: the caller holds no lock that the running job may take.
    void DelEvent(const EventHandle& handle);

    // Number of queued jobs waiting for their start (a cyclic job counts while it waits for its
    // next slot; the job running right now does not count).
    std::size_t PendingCount() const;

    // Waits until no one-shot job is due and nothing runs, or until `timeout` passes. Cyclic
    // jobs and jobs that start later do not count. Returns true when that state was reached.
    // From inside a job it returns false at once (it would wait for itself).
    //
    // The process-wide controller calls this at process exit, so reports that were scheduled
    // just before exit (withdrawals of services that were just stopped) still run, and objects
    // their jobs keep alive are destroyed while the rest of the process still works.
    bool WaitForDueOneShotJobs(std::chrono::milliseconds timeout);

    // Like WaitForDueOneShotJobs, but cyclic jobs that are due count as well. With a manual
    // clock this is how a test learns that everything its last Advance made due has run.
    bool WaitForDueJobs(std::chrono::milliseconds timeout);

    // True on this controller's worker thread, that is inside one of its jobs.
    bool OnWorkerThread() const;

  private:
    class Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_EVENT_CONTROLLER_H
