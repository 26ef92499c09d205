#include "vorx/vcc/event_controller.h"

#include <sys/prctl.h>

#include <chrono>
#include <cstdlib>
#include <exception>
#include <set>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "ara/kelda/common/log/log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

using ara::kelda::common::log::Log;

struct Job {
    Job(EventHandle h, EventScheduleMode m, std::function<void()> t, long s, long p)
        : handle(h), mode(m), task(std::move(t)), start(s), period(p) {}
    const EventHandle handle;
    const EventScheduleMode mode;
    const std::function<void()> task;
    // The members below belong to the controller's mutex: only its functions that hold it
    // (REQUIRES(mutex_)) touch them.
    long start;             // next start, absolute monotonic ns
    const long period;      // ns, cyclic jobs only
    std::uint64_t seq = 0;  // insertion order, breaks ties between equal starts
    bool queued = false;    // in the queue right now
};

// Queue position of a job: start first, then insertion order.
using QueueKey = std::tuple<long, std::uint64_t, EventHandle>;

QueueKey KeyOf(const Job& job) {
    return QueueKey(job.start, job.seq, job.handle);
}

}  // namespace

class EventController::Impl {
  public:
    explicit Impl(std::shared_ptr<MonoClock> clock)
        : log_(Log::GetLog("CM")), clock_(std::move(clock)) {}

    const std::shared_ptr<MonoClock>& Clock() const { return clock_; }

    bool OnWorkerThread() const EXCLUDES(mutex_) {
        orx::sync::MutexLock lock(mutex_);
        return std::this_thread::get_id() == workerId_;
    }

    void Start(const std::shared_ptr<Impl>& self) EXCLUDES(mutex_) {
        // The worker keeps the state alive, so a controller destroyed from inside one of its
        // own jobs can detach the worker and let it finish on its own.
        worker_ = std::thread([self] { self->Run(); });
        orx::sync::MutexLock lock(mutex_);
        workerId_ = worker_.get_id();
    }

    void Stop() EXCLUDES(mutex_) {
        std::unordered_map<EventHandle, std::shared_ptr<Job>> dropped;
        bool onWorker = false;
        {
            orx::sync::MutexLock lock(mutex_);
            stop_ = true;
            dropped.swap(jobs_);
            queue_.clear();
            wakeCv_.NotifyAll();
            onWorker = std::this_thread::get_id() == workerId_;
        }
        dropped.clear();  // tasks die outside the lock
        if (onWorker) {
            worker_.detach();
        } else if (worker_.joinable()) {
            worker_.join();
        }
    }

    EventHandle NewEvent(EventScheduleMode mode, const std::function<void()>& task, long start,
                         long period) EXCLUDES(mutex_) {
        if (!task) {
            log_->LogWarn() << "[EventController][Refused to create a job without a task]";
            return kInvalidEventHandle;
        }
        if (mode == EventScheduleMode::kCyclic && period <= 0) {
            log_->LogWarn() << "[EventController][Refused to create a cyclic job][period=" << period
                            << "]";
            return kInvalidEventHandle;
        }
        orx::sync::MutexLock lock(mutex_);
        const EventHandle handle = NextHandleLocked();
        jobs_.emplace(handle, std::make_shared<Job>(handle, mode, task, start, period));
        return handle;
    }

    bool InsertEvent(EventHandle handle) EXCLUDES(mutex_) {
        orx::sync::MutexLock lock(mutex_);
        auto it = jobs_.find(handle);
        if (it == jobs_.end()) {
            return false;
        }
        Job& job = *it->second;
        if (!job.queued) {
            QueueLocked(job);
        }
        return true;
    }

    void DelEvent(EventHandle handle) EXCLUDES(mutex_) {
        if (handle == kInvalidEventHandle) {
            return;  // also the value of running_ while nothing runs: never wait for it
        }
        std::shared_ptr<Job> victim;  // declared first: dies after the lock is released
        orx::sync::MutexLock lock(mutex_);
        auto it = jobs_.find(handle);
        if (it != jobs_.end()) {
            victim = std::move(it->second);
            jobs_.erase(it);
            if (victim->queued) {
                queue_.erase(KeyOf(*victim));
                victim->queued = false;
            }
        }
        if (std::this_thread::get_id() != workerId_) {
            doneCv_.Wait(mutex_, [this, handle]() REQUIRES(mutex_) { return running_ != handle; });
        }
    }

    std::size_t PendingCount() const EXCLUDES(mutex_) {
        orx::sync::MutexLock lock(mutex_);
        return queue_.size();
    }

    bool WaitForDueJobs(std::chrono::milliseconds timeout, bool cyclicToo) EXCLUDES(mutex_) {
        orx::sync::MutexLock lock(mutex_);
        if (std::this_thread::get_id() == workerId_) {
            return false;
        }
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        return doneCv_.WaitUntil(mutex_, deadline, [this, cyclicToo]() REQUIRES(mutex_) {
            return !busy_ && !DueLocked(cyclicToo);
        });
    }

  private:
    void Run() EXCLUDES(mutex_) {
        // The kernel may otherwise let the worker's timed waits expire up to 50 us late (the
        // default timer slack), which would be most of the dispatch delay of every timed job.
        (void)prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
        orx::sync::MutexLock lock(mutex_);
        while (!stop_) {
            if (queue_.empty()) {
                wakeCv_.Wait(mutex_);
                continue;
            }
            const QueueKey first = *queue_.begin();
            if (std::get<0>(first) > clock_->Now()) {
                clock_->WaitUntil(mutex_, wakeCv_, std::get<0>(first));
                continue;
            }
            queue_.erase(queue_.begin());
            std::shared_ptr<Job> job = jobs_.at(std::get<2>(first));
            job->queued = false;
            running_ = job->handle;
            busy_ = true;
            lock.Unlock();

            RunGuarded(*job);

            lock.Lock();
            running_ = kInvalidEventHandle;
            FinishLocked(job);
            doneCv_.NotifyAll();
            lock.Unlock();
            job.reset();  // may destroy the task: never under the lock
            lock.Lock();
            busy_ = false;
            doneCv_.NotifyAll();
        }
    }

    // A job that should have started by now waits in the queue (a one-shot one, or any).
    bool DueLocked(bool cyclicToo) const REQUIRES(mutex_) {
        const long now = clock_->Now();
        for (const QueueKey& key : queue_) {
            if (std::get<0>(key) > now) {
                return false;  // the queue is ordered by start
            }
            const auto it = jobs_.find(std::get<2>(key));
            if (it != jobs_.end() &&
                (cyclicToo || it->second->mode != EventScheduleMode::kCyclic)) {
                return true;
            }
        }
        return false;
    }

    void RunGuarded(const Job& job) EXCLUDES(mutex_) {
        try {
            job.task();
        } catch (const std::exception& e) {
            log_->LogError() << "[EventController][Job threw an exception, the worker goes on]"
                             << "[handle=" << job.handle << ", what=" << e.what() << "]";
        } catch (...) {
            log_->LogError() << "[EventController][Job threw an exception, the worker goes on]"
                             << "[handle=" << job.handle << ", what=unknown]";
        }
    }

    // After a run: requeue a cyclic job on its grid, forget a one-shot job. A job that was
    // deleted or re-inserted while it ran is left as it is.
    void FinishLocked(const std::shared_ptr<Job>& job) REQUIRES(mutex_) {
        auto it = jobs_.find(job->handle);
        if (it == jobs_.end() || it->second != job || job->queued) {
            return;
        }
        if (job->mode != EventScheduleMode::kCyclic) {
            jobs_.erase(it);
            return;
        }
        long next = job->start + job->period;
        const long now = clock_->Now();
        if (now - next >= job->period) {
            // Fell behind by more than a period: skip to the latest slot that is due.
            next += ((now - next) / job->period) * job->period;
        }
        job->start = next;
        QueueLocked(*job);
    }

    void QueueLocked(Job& job) REQUIRES(mutex_) {
        job.seq = nextSeq_++;
        job.queued = true;
        const auto pos = queue_.insert(KeyOf(job)).first;
        if (pos == queue_.begin()) {
            wakeCv_.NotifyOne();  // the worker may sleep until a later start
        }
    }

    EventHandle NextHandleLocked() REQUIRES(mutex_) {
        for (;;) {
            const EventHandle candidate = nextHandle_++;
            if (candidate != kInvalidEventHandle && candidate != 0xFFFFFFFFU &&
                jobs_.count(candidate) == 0 && candidate != running_) {
                return candidate;
            }
        }
    }

    const std::shared_ptr<Log> log_;
    const std::shared_ptr<MonoClock> clock_;
    std::thread worker_;

    mutable orx::sync::Mutex mutex_;
    orx::sync::CondVar wakeCv_;  // worker: new front job, or stop
    orx::sync::CondVar doneCv_;  // DelEvent: the running job ended
    std::unordered_map<EventHandle, std::shared_ptr<Job>> jobs_ GUARDED_BY(mutex_);
    std::set<QueueKey> queue_ GUARDED_BY(mutex_);
    std::uint64_t nextSeq_ GUARDED_BY(mutex_) = 0;
    EventHandle nextHandle_ GUARDED_BY(mutex_) = 1;
    EventHandle running_ GUARDED_BY(mutex_) = kInvalidEventHandle;
    std::thread::id workerId_ GUARDED_BY(mutex_);
    bool stop_ GUARDED_BY(mutex_) = false;
    bool busy_ GUARDED_BY(mutex_) = false;  // a job runs or its task is being destroyed
};

namespace {

// Longest wait at process exit for reports scheduled just before it.
constexpr std::chrono::milliseconds kExitDrainTimeout{5000};

void DrainAtExit() {
    (void)EventController::GetInstance()->WaitForDueOneShotJobs(kExitDrainTimeout);
}

}  // namespace

std::shared_ptr<EventController> EventController::GetInstance() {
    // Leaked on purpose, see the header: it must outlive every static destructor.
    static auto* const instance = [] {
        auto* created = new std::shared_ptr<EventController>(std::make_shared<EventController>());
        // Runs before the static destructors of everything that existed when the controller
        // was first asked for, after those of anything created later.
        (void)std::atexit(DrainAtExit);
        return created;
    }();
    return *instance;
}

EventController::EventController() : EventController(MonoClock::Real()) {}

EventController::EventController(std::shared_ptr<MonoClock> clock)
    : impl_(std::make_shared<Impl>(std::move(clock))) {
    impl_->Start(impl_);
}

long EventController::GetCurMonoTime() const {
    return impl_->Clock()->Now();
}

const std::shared_ptr<MonoClock>& EventController::Clock() const {
    return impl_->Clock();
}

EventController::~EventController() {
    impl_->Stop();
}

EventHandle EventController::NewEvent(EventScheduleMode mode, const std::function<void()>& task,
                                      long start, long period) {
    return impl_->NewEvent(mode, task, start, period);
}

bool EventController::InsertEvent(const EventHandle& handle) {
    return impl_->InsertEvent(handle);
}

void EventController::DelEvent(const EventHandle& handle) {
    impl_->DelEvent(handle);
}

std::size_t EventController::PendingCount() const {
    return impl_->PendingCount();
}

bool EventController::WaitForDueOneShotJobs(std::chrono::milliseconds timeout) {
    return impl_->WaitForDueJobs(timeout, false);
}

bool EventController::WaitForDueJobs(std::chrono::milliseconds timeout) {
    return impl_->WaitForDueJobs(timeout, true);
}

bool EventController::OnWorkerThread() const {
    return impl_->OnWorkerThread();
}

}  // namespace vorx::vcc
