// The maintenance daemon assembled: registry and its file, the ingest worker, the application-
// and tools-side services, and the liveness check.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "daemon_stats.h"
#include "ingest/ingest_pipeline.h"
#include "ingest/ingest_queue.h"
#include "ingest/report_check.h"
#include "liveness/liveness_monitor.h"
#include "liveness/peer_tracker.h"
#include "liveness/process_probe.h"
#include "registry/limits.h"
#include "registry/registry.h"
#include "registry/wall_clock.h"
#include "service/app_service.h"
#include "service/method_server.h"
#include "service/tools_service.h"
#include "store/registry_store.h"
#include "timeline/timeline.h"
#include "tools/latency_switcher.h"
#include "vorx/vcc/api/types/driver_type.h"

namespace orx::maintaind::daemon {

struct DaemonSettings {
    std::string dbPath;            // registry file; empty keeps the registry in memory only
    bool fresh = false;            // start with an empty registry
    std::string instanceId = "1";  // instance of both services
    std::chrono::milliseconds livenessPeriod{500};  // local /proc check, and the peer sweep
    // After start, nodes of other hosts loaded from the file whose participant was not found in
    // this long are taken offline ("lease expired"): discovery and one lease must fit in it.
    std::chrono::milliseconds peerGrace{5000};
    vorx::vcc::api::types::DriverType binding = vorx::vcc::api::types::DriverType::DDS;
    RegistryLimits limits;
    TimelineLimits timeline;  // how much of the timeline is kept
    RequestLimits requestLimits;
    size_t queueCapacity = 100000;              // reports waiting to be stored
    size_t maxBatch = 4096;                     // reports per transaction
    uint32_t entryCap = 100000;                 // entries per listed query answer
    std::shared_ptr<const ProcessProbe> probe;  // nullptr: this host's /proc
    WallClock clock;                            // empty: the system clock
};

class Maintaind {
  public:
    explicit Maintaind(DaemonSettings settings);
    // Stop().
    ~Maintaind();
    Maintaind(const Maintaind&) = delete;
    Maintaind& operator=(const Maintaind&) = delete;

    // Opens and loads the registry file, starts the workers and offers both services. On
    // failure returns false with `error` set and leaves nothing running. Once only.
    bool Start(std::string& error);
    // Withdraws both services, answers what is queued, stops the workers. Idempotent.
    void Stop();

    // Runs one liveness check now (the periodic one runs on its own thread).
    size_t CheckLivenessNow();

    const Registry& GetRegistry() const { return registry_; }
    const DaemonStats& Stats() const { return stats_; }
    const IngestQueue& Queue() const { return *queue_; }
    const Timeline& GetTimeline() const { return timeline_; }

  private:
    // Stores (when there is a file) and keeps the daemon's own start or stop entry.
    void RecordDaemonEntry(bool start);

    DaemonSettings settings_;
    DaemonStats stats_;
    Registry registry_;
    Timeline timeline_;
    std::unique_ptr<RegistryStore> store_;
    std::unique_ptr<IngestPipeline> pipeline_;
    std::unique_ptr<IngestQueue> queue_;
    std::unique_ptr<MethodServer> appServer_;
    std::unique_ptr<MethodServer> toolsServer_;
    std::unique_ptr<AppService> appService_;
    std::unique_ptr<LatencySwitcher> switcher_;
    std::unique_ptr<ToolsService> toolsService_;
    std::unique_ptr<LivenessMonitor> liveness_;
    std::unique_ptr<PeerTracker> peers_;
    bool started_{false};
};

}  // namespace orx::maintaind::daemon
