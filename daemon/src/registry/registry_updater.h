// The rules by which reports change the registry: who is online, which entities exist, what is
// kept and what is pushed out to stay within the limits.
#pragma once

#include <memory>
#include <string>

#include "liveness/process_probe.h"
#include "orx/maintaind/app.h"
#include "registry/change_set.h"
#include "registry/limits.h"
#include "registry/registry_state.h"
#include "registry/wall_clock.h"

namespace orx::maintaind::daemon {

// A latency switch the daemon published, to be shown as the event's requested mode.
struct LatencyRequest {
    LatencyKey key;
    LatencyIndex index;  // what the switch carried
    String eventName;
    LatencyMode mode{};
};

// Result of applying one report. A refused report left the registry unchanged.
struct ApplyOutcome {
    bool accepted = true;
    std::string reason;  // why it was refused

    static ApplyOutcome Refused(std::string why) { return {false, std::move(why)}; }
};

// Applies reports and the daemon's own findings to a RegistryState, recording in a ChangeSet what
// it touched. Holds no state of its own beyond its settings: the caller owns the RegistryState and
// serialises calls on it.
class RegistryUpdater {
  public:
    RegistryUpdater(RegistryLimits limits, WallClock clock,
                    std::shared_ptr<const ProcessProbe> probe);

    // Applies one report that passed CheckReport (report_check.h). Refuses it, changing nothing,
    // when it would break a limit.
    ApplyOutcome ApplyReport(const AppRegisterInfo& report, RegistryState& state,
                             ChangeSet& changes) const;
    // The liveness check found process `node` gone. Takes effect only while the node is online
    // and still has `startTicks` (a report may have revived it as a new process meanwhile).
    void ApplyNodeGone(const NodeKey& node, uint64_t startTicks, RegistryState& state,
                       ChangeSet& changes) const;
    // Records a latency switch the daemon published.
    void ApplyLatencyRequest(const LatencyRequest& request, RegistryState& state,
                             ChangeSet& changes) const;

    const RegistryLimits& Limits() const { return limits_; }

  private:
    // Nodes (registry_updater.cpp).
    ApplyOutcome ApplyNodeReport(const NodeCommonRegisterInfo& report, RegistryState& state,
                                 ChangeSet& changes) const;
    // What a report says about the node that sent it.
    enum class NodeReport {
        kOnline,      // it is up: a new node is online, an offline one comes back
        kWithdrawal,  // it withdraws something: a new node is online, an offline one stays so
        kOffline,     // it goes offline: a new node is recorded offline
    };
    // Makes sure `key` is known and marks it seen now. nullptr (with `refusal` set) when a new
    // node would exceed the node limit.
    NodeState* TouchNode(const NodeKey& key, NodeReport report, RegistryState& state,
                         ChangeSet& changes, std::string& refusal) const;
    void Probe(const NodeKey& key, NodeState& node) const;
    void SetOffline(const NodeKey& key, NodeState& node, const std::string& reason,
                    ChangeSet& changes) const;
    void PruneOfflineNodes(RegistryState& state, ChangeSet& changes) const;
    void EraseNode(const NodeKey& key, RegistryState& state, ChangeSet& changes) const;

    // Entities (updater_entities.cpp).
    ApplyOutcome ApplyEvent(const AppRegisterInfo& report, RegistryState& state,
                            ChangeSet& changes) const;
    ApplyOutcome ApplyMethod(const AppRegisterInfo& report, RegistryState& state,
                             ChangeSet& changes) const;
    ApplyOutcome ApplyField(const AppRegisterInfo& report, RegistryState& state,
                            ChangeSet& changes) const;
    ApplyOutcome ApplyE2E(const NodeCommonRegisterInfo& report, RegistryState& state,
                          ChangeSet& changes) const;
    template <class Entry>
    ApplyOutcome StoreEntity(Entry entry, std::map<EntityKey, Entry>& entities,
                             uint32_t tools::NodeEntry::*count, std::set<EntityKey>& changed,
                             RegistryState& state, ChangeSet& changes) const;

    // Latency and sample timeouts (updater_latency.cpp).
    ApplyOutcome ApplyLatency(const LatencyInfo& info, RegistryState& state,
                              ChangeSet& changes) const;
    ApplyOutcome ApplyListener(const AppRegisterInfo& report, RegistryState& state,
                               ChangeSet& changes) const;
    tools::LatencyStatusEntry& StatusOf(const LatencyKey& key, RegistryState& state,
                                        ChangeSet& changes) const;

    const RegistryLimits limits_;
    const WallClock clock_;
    const std::shared_ptr<const ProcessProbe> probe_;
};

// How `index` names an event in the registry's latency maps: by its DDS topic when it has one or
// when a registered event with its SOME/IP id has one, else by its SOME/IP event id.
LatencyKey CanonicalLatencyKey(const RegistryState& state, const LatencyIndex& index);
// The registered name of the event `key` addresses, else its topic name or "eventId=<id>".
String EventNameFor(const RegistryState& state, const LatencyKey& key);
// The single application with a subscribed event whose name or topic occurs in `listenerName`;
// "" when there is none or several.
String AttributeListener(const RegistryState& state, const String& listenerName);

}  // namespace orx::maintaind::daemon
