// What the daemon knows about the running system, as plain maps. The registry (registry.h) guards
// one instance with its lock; the updater changes it, the query engine reads it, the store saves
// and loads it. Every value is a record, so the store keeps it as CDR bytes.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "orx/maintaind/record.h"
#include "orx/maintaind/tools/entries.h"
#include "registry/keys.h"

namespace orx::maintaind::daemon {

// A process, with what the liveness checks need beyond what tools see.
struct NodeState {
    tools::NodeEntry entry;
    // The DDS participant (driver peer) that carried the process's reports, as hex; "" unknown.
    // Its loss takes the node offline ("lease expired"), its return brings it back.
    String peer;
    String hostId;  // the peer's host id (vorx::vcc::ProcessIdentity::hostId)
    bool local{};   // the peer runs on the daemon's host: its pid is checked through /proc
    // The process's start time in clock ticks after boot, as its peer gave it; 0 unknown.
    uint64_t startTicks{};
    // A later run of the same application on the same host was counted as its restart.
    bool succeeded{};
    // This run was counted as the restart of an earlier one.
    bool succeeds{};

    ORX_MAINTAIND_RECORD(NodeState, entry, peer, hostId, local, startTicks, succeeded, succeeds)
};

// The E2E configurations one process reported, merged over its reports.
struct E2EState {
    std::vector<tools::E2EEntry> configs;

    ORX_MAINTAIND_RECORD(E2EState, configs)
};

// The latency results of one application for one event, newest first.
struct LatencyHistory {
    std::vector<tools::LatencyResultEntry> results;

    ORX_MAINTAIND_RECORD(LatencyHistory, results)
};

struct RegistryState {
    std::map<NodeKey, NodeState> nodes;
    // Entries hold `online` = registered and not withdrawn; whether the node is online is looked
    // up in `nodes` when they are listed.
    std::map<EntityKey, tools::EventEntry> events;
    std::map<EntityKey, tools::MethodEntry> methods;
    std::map<EntityKey, tools::FieldEntry> fields;
    std::map<NodeKey, E2EState> e2e;
    std::map<LatencyKey, tools::LatencyStatusEntry> latencyStatuses;
    std::map<LatencyHistoryKey, LatencyHistory> latencyResults;
    std::map<ListenerKey, tools::SampleTimeoutEntry> sampleTimeouts;
};

// The first entity key of a node in an entity map (its entities follow in order).
EntityKey FirstEntityKeyOf(const NodeKey& node);
bool BelongsTo(const EntityKey& key, const NodeKey& node);
// The node an entity belongs to.
NodeKey NodeOf(const EntityKey& key);

// True when the node is known and online.
bool IsNodeOnline(const RegistryState& state, const NodeKey& node);

// Sets every node's eventCount, methodCount and fieldCount from the entity maps (after loading).
void RecountEntities(RegistryState& state);

}  // namespace orx::maintaind::daemon
