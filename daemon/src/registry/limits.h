// Bounds that keep the daemon's memory and its registry file small whatever the applications send.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orx::maintaind::daemon {

struct RegistryLimits {
    // Processes known at once. A new process beyond it first pushes out the offline process seen
    // longest ago; with every known process online it is refused.
    size_t maxNodes = 4096;
    // Offline processes kept (with their entities) for inspection; the ones seen longest ago go.
    size_t maxOfflineNodes = 512;
    // Events, methods and fields of one process together, and of all processes.
    size_t maxEntitiesPerNode = 8192;
    size_t maxEntities = 200000;
    // E2E configurations of one process.
    size_t maxE2EConfigsPerNode = 8192;
    // Events with a latency status, and application/event pairs with latency results; the one
    // idle longest goes when a new one comes.
    size_t maxLatencyStatuses = 16384;
    size_t maxLatencyHistories = 16384;
    // Latency results kept per application and event (the newest).
    size_t latencyHistoryDepth = 64;
    // Subscriber listeners with sample timeouts; the one idle longest goes.
    size_t maxSampleTimeoutListeners = 16384;
};

}  // namespace orx::maintaind::daemon
