// What one batch of updates changed: the keys the store must write (their current value, or a
// delete when the key is gone from the registry), the notices to log once it is stored, and the
// timeline entries to store with it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include <map>

#include "orx/maintaind/latency.h"
#include "orx/maintaind/tools/timeline.h"
#include "registry/keys.h"

namespace orx::maintaind::daemon {

// A node came online or went offline.
struct NodeNotice {
    NodeKey node;
    bool online{};
    std::string host;
    std::string reason;  // why it went offline
};

struct ChangeSet {
    std::set<NodeKey> nodes;
    std::set<EntityKey> events;
    std::set<EntityKey> methods;
    std::set<EntityKey> fields;
    std::set<NodeKey> e2e;
    std::set<LatencyKey> latencyStatuses;
    std::set<LatencyHistoryKey> latencyResults;
    std::set<ListenerKey> sampleTimeouts;
    std::vector<NodeNotice> notices;
    // Events whose analysis is on and that a process registered: the switch is published again
    // once the batch is stored, so that processes started after it measure too.
    std::map<LatencyKey, LatencyIndex> latencyResend;
    // Timeline entries in the order they happened. The updater adds those that notices do not
    // carry (latency switches and acknowledgements, sample timeouts); the ingest pipeline adds one
    // per notice.
    std::vector<tools::TimelineEntry> timeline;

    bool Empty() const {
        return nodes.empty() && events.empty() && methods.empty() && fields.empty() &&
               e2e.empty() && latencyStatuses.empty() && latencyResults.empty() &&
               sampleTimeouts.empty() && notices.empty() && latencyResend.empty() &&
               timeline.empty();
    }

    // Adds the keys and notices of `other`.
    void Merge(const ChangeSet& other) {
        nodes.insert(other.nodes.begin(), other.nodes.end());
        events.insert(other.events.begin(), other.events.end());
        methods.insert(other.methods.begin(), other.methods.end());
        fields.insert(other.fields.begin(), other.fields.end());
        e2e.insert(other.e2e.begin(), other.e2e.end());
        latencyStatuses.insert(other.latencyStatuses.begin(), other.latencyStatuses.end());
        latencyResults.insert(other.latencyResults.begin(), other.latencyResults.end());
        sampleTimeouts.insert(other.sampleTimeouts.begin(), other.sampleTimeouts.end());
        notices.insert(notices.end(), other.notices.begin(), other.notices.end());
        latencyResend.insert(other.latencyResend.begin(), other.latencyResend.end());
        timeline.insert(timeline.end(), other.timeline.begin(), other.timeline.end());
    }
};

}  // namespace orx::maintaind::daemon
