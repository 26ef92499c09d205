#ifndef VORX_VCC_APP_INTERNAL_LATENCY_STATS_H
#define VORX_VCC_APP_INTERNAL_LATENCY_STATS_H

#include <atomic>
#include <cstdint>

#include "orx/sync/mutex.h"
#include "vorx/vcc/api/types/latency.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc::app {

// The latency of the samples of one subscribed event over one query period.
//
// A sample's latency is its receive time minus its send time, both nanoseconds of this host's
// CLOCK_MONOTONIC: the drivers stamp the send time, and the DDS driver turns a sender's stamp from
// another host into this host's monotonic time through the sender's realtime clock (so across
// hosts the figures are as good as the hosts' clock synchronisation). Figures are whole
// microseconds, rounded up, and at least 1, so that a period with samples never reports 0; a
// sample from the future (clocks out of step) counts as 1. Samples without a send time (0) are
// not counted.
//
// Thread-safe: samples come from the receiving thread, queries from the event controller.
class VCC_EXPORT LatencyStats {
  public:
    // While off, samples are not counted. Every switch starts a new, empty period.
    void SetEnabled(bool enabled);
    bool Enabled() const { return enabled_.load(std::memory_order_relaxed); }

    void AddSample(long sendTimeNs, long receiveTimeNs);

    // The figures of the period since the previous call (or switch) in microseconds: minimum,
    // maximum, average. All 0 when the period had no sample. Starts a new period.
    api::types::LatencyResult TakePeriod();

  private:
    void ResetLocked() REQUIRES(mutex_);

    std::atomic<bool> enabled_{false};
    orx::sync::Mutex mutex_;
    uint64_t count_ GUARDED_BY(mutex_){0};
    uint64_t sumUs_ GUARDED_BY(mutex_){0};
    uint64_t minUs_ GUARDED_BY(mutex_){0};
    uint64_t maxUs_ GUARDED_BY(mutex_){0};
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_INTERNAL_LATENCY_STATS_H
