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
#include "registry/report_sender.h"
#include "registry/wall_clock.h"

namespace orx::maintaind::daemon {

// Why a node went offline, or came back without registering again.
inline constexpr const char* kReasonOfflineReport = "offline report";  // clean exit
inline constexpr const char* kReasonProcessGone = "process gone";      // found gone through /proc
inline constexpr const char* kReasonLeaseExpired = "lease expired";    // its participant vanished
inline constexpr const char* kReasonRestarted = "restarted";      // a new run of it took its place
inline constexpr const char* kReasonReconnected = "reconnected";  // online: its participant is back

// A lost node is taken as restarted by a later run of the same application on its host only when
// that run came online at most this long before the loss (two instances that run side by side for
// longer are not restarts of each other).
inline constexpr uint64_t kRestartWindowMs = 10000;

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

    // Applies one report that passed CheckReport (report_check.h), sent by `sender`. Refuses
    // it, changing nothing, when it would break a limit. A node's host and liveness come from
    // the sender; a new run of an application (new pid, or same pid with a new start time) on a
    // host counts one restart when it pairs with an earlier run there that ended.
    ApplyOutcome ApplyReport(const AppRegisterInfo& report, const ReportSender& sender,
                             RegistryState& state, ChangeSet& changes) const;
    // The same from a sender the transport could not name (host unknown, never probed).
    ApplyOutcome ApplyReport(const AppRegisterInfo& report, RegistryState& state,
                             ChangeSet& changes) const {
        return ApplyReport(report, ReportSender{}, state, changes);
    }
    // The liveness check found process `node` gone. Takes effect only while the node is online
    // and still has `startTicks` (a report may have revived it as a new process meanwhile).
    void ApplyNodeGone(const NodeKey& node, uint64_t startTicks, RegistryState& state,
                       ChangeSet& changes) const;
    // The participant `peer` vanished: its online nodes go offline ("lease expired", or
    // "restarted" when a new run of the application took their place).
    void ApplyPeerLost(const String& peer, RegistryState& state, ChangeSet& changes) const;
    // The participant `peer` is reachable again: its nodes that went offline because it
    // vanished come back online ("reconnected"); no restart is counted.
    void ApplyPeerAlive(const String& peer, RegistryState& state, ChangeSet& changes) const;
    // Records a latency switch the daemon published.
    void ApplyLatencyRequest(const LatencyRequest& request, RegistryState& state,
                             ChangeSet& changes) const;

    const RegistryLimits& Limits() const { return limits_; }

  private:
    // Nodes (registry_updater.cpp).
    ApplyOutcome ApplyNodeReport(const NodeCommonRegisterInfo& report, const ReportSender& sender,
                                 RegistryState& state, ChangeSet& changes) const;
    // What a report says about the node that sent it.
    enum class NodeReport {
        kOnline,      // it is up: a new node is online, an offline one comes back
        kWithdrawal,  // it withdraws something: a new node is online, an offline one stays so
        kOffline,     // it goes offline: a new node is recorded offline
    };
    // Makes sure `key` is known and marks it seen now. nullptr (with `refusal` set) when a new
    // node would exceed the node limit.
    NodeState* TouchNode(const NodeKey& key, const ReportSender& sender, NodeReport report,
                         RegistryState& state, ChangeSet& changes, std::string& refusal) const;
    NodeState* AddNode(const NodeKey& key, RegistryState& state, ChangeSet& changes,
                       std::string& refusal) const;
    // Pairs the new run `key` with the earlier run of its application on its host that ended
    // (offline, or a local process that is gone): counts the restart, and takes that run
    // offline ("restarted") when it was still listed online.
    void PairWithEarlierRun(const NodeKey& key, RegistryState& state, ChangeSet& changes) const;
    // Takes online node `key` offline after its process was found gone or its participant
    // vanished; "restarted" instead of `reason` when a new run already took its place.
    void SetLost(const NodeKey& key, const std::string& reason, RegistryState& state,
                 ChangeSet& changes) const;
    bool EndedHere(const NodeState& node) const;
    void SetOffline(const NodeKey& key, NodeState& node, const std::string& reason,
                    ChangeSet& changes) const;
    void SetOnline(const NodeKey& key, NodeState& node, const std::string& reason,
                   ChangeSet& changes) const;
    void PruneOfflineNodes(RegistryState& state, ChangeSet& changes) const;
    void EraseNode(const NodeKey& key, RegistryState& state, ChangeSet& changes) const;

    // Entities (updater_entities.cpp).
    ApplyOutcome ApplyEvent(const AppRegisterInfo& report, const ReportSender& sender,
                            RegistryState& state, ChangeSet& changes) const;
    ApplyOutcome ApplyMethod(const AppRegisterInfo& report, const ReportSender& sender,
                             RegistryState& state, ChangeSet& changes) const;
    ApplyOutcome ApplyField(const AppRegisterInfo& report, const ReportSender& sender,
                            RegistryState& state, ChangeSet& changes) const;
    ApplyOutcome ApplyE2E(const NodeCommonRegisterInfo& report, const ReportSender& sender,
                          RegistryState& state, ChangeSet& changes) const;
    template <class Entry>
    ApplyOutcome StoreEntity(Entry entry, const ReportSender& sender,
                             std::map<EntityKey, Entry>& entities,
                             uint32_t tools::NodeEntry::*count, std::set<EntityKey>& changed,
                             RegistryState& state, ChangeSet& changes) const;

    // Latency and sample timeouts (updater_latency.cpp).
    ApplyOutcome ApplyLatency(const LatencyInfo& info, const ReportSender& sender,
                              RegistryState& state, ChangeSet& changes) const;
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
