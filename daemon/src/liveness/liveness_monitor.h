// Finds processes on this host that ended without their offline report (crash, kill -9): every
// period it checks each online local node's pid and start time, and reports the gone ones.
//
// Processes on other hosts are followed through their participants instead (peer_tracker.h).
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

#include "ingest/ingest_item.h"
#include "liveness/process_probe.h"
#include "orx/sync/mutex.h"
#include "registry/registry.h"

namespace orx::maintaind::daemon {

class LivenessMonitor {
  public:
    using GoneSink = std::function<void(const NodeGone&)>;

    // The references must outlive the monitor. `sink` gets each gone node (on the monitor's
    // thread, or the caller's for CheckOnce).
    LivenessMonitor(const Registry& registry, std::shared_ptr<const ProcessProbe> probe,
                    GoneSink sink, std::chrono::milliseconds period);
    // Stop().
    ~LivenessMonitor();
    LivenessMonitor(const LivenessMonitor&) = delete;
    LivenessMonitor& operator=(const LivenessMonitor&) = delete;

    // Starts the periodic check (the first one right away). Once only.
    void Start();
    void Stop();

    // One check of every online local node; returns how many were found gone. The probes run
    // without the registry lock held.
    size_t CheckOnce();

  private:
    void Run();

    const Registry& registry_;
    const std::shared_ptr<const ProcessProbe> probe_;
    const GoneSink sink_;
    const std::chrono::milliseconds period_;
    orx::sync::Mutex mutex_;
    orx::sync::CondVar wake_;
    bool stopping_ GUARDED_BY(mutex_){false};
    std::thread thread_;
};

}  // namespace orx::maintaind::daemon
