#include "vorx/vcc/app/internal/latency_stats.h"

#include <algorithm>

#include "orx/sync/mutex.h"

namespace vorx::vcc::app {

void LatencyStats::SetEnabled(bool enabled) {
    orx::sync::MutexLock lock(mutex_);
    enabled_.store(enabled, std::memory_order_relaxed);
    ResetLocked();
}

void LatencyStats::AddSample(long sendTimeNs, long receiveTimeNs) {
    if (!Enabled() || sendTimeNs == 0) {
        return;
    }
    const long elapsedNs = std::max(receiveTimeNs - sendTimeNs, 0L);
    const uint64_t latencyUs =
        std::max<uint64_t>((static_cast<uint64_t>(elapsedNs) + 999U) / 1000U, 1U);
    orx::sync::MutexLock lock(mutex_);
    if (!enabled_.load(std::memory_order_relaxed)) {
        return;  // switched off while this sample was on its way in
    }
    minUs_ = count_ == 0 ? latencyUs : std::min(minUs_, latencyUs);
    maxUs_ = std::max(maxUs_, latencyUs);
    sumUs_ += latencyUs;
    ++count_;
}

api::types::LatencyResult LatencyStats::TakePeriod() {
    orx::sync::MutexLock lock(mutex_);
    api::types::LatencyResult result;
    if (count_ != 0) {
        result.minLatency = minUs_;
        result.maxLatency = maxUs_;
        result.averageLatency = sumUs_ / count_;
    }
    ResetLocked();
    return result;
}

void LatencyStats::ResetLocked() {
    count_ = 0;
    sumUs_ = 0;
    minUs_ = 0;
    maxUs_ = 0;
}

}  // namespace vorx::vcc::app
