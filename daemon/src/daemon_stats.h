// Counters of what the daemon received and did, shared by its parts. Lock-free; any thread.
#pragma once

#include <atomic>
#include <cstdint>

#include "orx/maintaind/tools/entries.h"

namespace orx::maintaind::daemon {

struct DaemonStats {
    std::atomic<uint64_t> requests{0};
    std::atomic<uint64_t> accepted{0};
    std::atomic<uint64_t> undecodable{0};
    std::atomic<uint64_t> inconsistent{0};
    std::atomic<uint64_t> overLimit{0};
    std::atomic<uint64_t> unanswered{0};
    std::atomic<uint64_t> toolsRequests{0};
    std::atomic<uint64_t> toolsBadRequests{0};
    std::atomic<uint64_t> latencySwitches{0};
    std::atomic<uint64_t> nodesGone{0};
    std::atomic<uint64_t> storeErrors{0};

    static void Add(std::atomic<uint64_t>& counter, uint64_t n = 1) {
        counter.fetch_add(n, std::memory_order_relaxed);
    }

    tools::DaemonCounters Snapshot() const {
        tools::DaemonCounters out;
        out.requests = requests.load(std::memory_order_relaxed);
        out.accepted = accepted.load(std::memory_order_relaxed);
        out.undecodable = undecodable.load(std::memory_order_relaxed);
        out.inconsistent = inconsistent.load(std::memory_order_relaxed);
        out.overLimit = overLimit.load(std::memory_order_relaxed);
        out.unanswered = unanswered.load(std::memory_order_relaxed);
        out.toolsRequests = toolsRequests.load(std::memory_order_relaxed);
        out.toolsBadRequests = toolsBadRequests.load(std::memory_order_relaxed);
        out.latencySwitches = latencySwitches.load(std::memory_order_relaxed);
        out.nodesGone = nodesGone.load(std::memory_order_relaxed);
        out.storeErrors = storeErrors.load(std::memory_order_relaxed);
        return out;
    }
};

}  // namespace orx::maintaind::daemon
