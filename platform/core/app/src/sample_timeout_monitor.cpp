#include "vorx/vcc/app/internal/sample_timeout_monitor.h"

#include <algorithm>

#include "orx/sync/mutex.h"

namespace vorx::vcc::app {

void TimeoutWatch::Start(long nowNs) {
    startNs_ = nowNs;
    lastTimeoutNs_ = 0;
}

TimeoutWatch::Verdict TimeoutWatch::Check(long nowNs) {
    const long reference =
        std::max({startNs_, lastTimeoutNs_, lastSampleNs_.load(std::memory_order_relaxed)});
    Verdict verdict;
    if (nowNs - reference >= thresholdNs_) {
        lastTimeoutNs_ = nowNs;
        verdict.timedOut = true;
        verdict.count = ++count_;
        verdict.nextCheckNs = nowNs + thresholdNs_;
    } else {
        verdict.count = count_;
        verdict.nextCheckNs = reference + thresholdNs_;
    }
    return verdict;
}

SampleTimeoutMonitor::SampleTimeoutMonitor(uint32_t thresholdMs, Notify notify,
                                           std::shared_ptr<EventController> controller)
    : thresholdMs_(thresholdMs),
      notify_(std::move(notify)),
      controller_(controller ? std::move(controller) : EventController::GetInstance()),
      watch_(static_cast<long>(thresholdMs) * 1000000L) {}

SampleTimeoutMonitor::~SampleTimeoutMonitor() {
    Stop();
}

void SampleTimeoutMonitor::Start() {
    orx::sync::MutexLock lock(mutex_);
    if (watching_) {
        return;
    }
    watching_ = true;
    ++generation_;
    const long now = GetCurMonoTime();
    watch_.Start(now);
    ScheduleLocked(now + static_cast<long>(thresholdMs_) * 1000000L);
}

void SampleTimeoutMonitor::Stop() {
    EventHandle handle = kInvalidEventHandle;
    {
        orx::sync::MutexLock lock(mutex_);
        watching_ = false;
        handle = handle_;
        handle_ = kInvalidEventHandle;
    }
    // Waits for a check that runs right now, so `notify` is over when Stop returns.
    controller_->DelEvent(handle);
}

bool SampleTimeoutMonitor::Watching() const {
    orx::sync::MutexLock lock(mutex_);
    return watching_;
}

uint32_t SampleTimeoutMonitor::Count() const {
    orx::sync::MutexLock lock(mutex_);
    return watch_.Count();
}

void SampleTimeoutMonitor::RunCheck(uint64_t generation) {
    TimeoutWatch::Verdict verdict;
    {
        orx::sync::MutexLock lock(mutex_);
        if (!watching_ || generation != generation_) {
            return;
        }
        verdict = watch_.Check(GetCurMonoTime());
    }
    if (verdict.timedOut && notify_) {
        notify_(verdict.count);
    }
    orx::sync::MutexLock lock(mutex_);
    if (watching_ && generation == generation_) {
        ScheduleLocked(verdict.nextCheckNs);
    }
}

void SampleTimeoutMonitor::ScheduleLocked(long startNs) {
    std::weak_ptr<SampleTimeoutMonitor> weak = weak_from_this();
    const uint64_t generation = generation_;
    handle_ = controller_->NewEvent(
        EventScheduleMode::kOneShot,
        [weak, generation] {
            if (auto self = weak.lock()) {
                self->RunCheck(generation);
            }
        },
        startNs, -1);
    controller_->InsertEvent(handle_);
}

}  // namespace vorx::vcc::app
