#include "registry/registry_updater.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "registry/report_class.h"

namespace orx::maintaind::daemon {

RegistryUpdater::RegistryUpdater(RegistryLimits limits, WallClock clock,
                                 std::shared_ptr<const ProcessProbe> probe)
    : limits_(limits), clock_(std::move(clock)), probe_(std::move(probe)) {}

ApplyOutcome RegistryUpdater::ApplyReport(const AppRegisterInfo& report, const ReportSender& sender,
                                          RegistryState& state, ChangeSet& changes) const {
    switch (ClassifyReport(report)) {
        case ReportClass::kEvent:
            return ApplyEvent(report, sender, state, changes);
        case ReportClass::kMethod:
            return ApplyMethod(report, sender, state, changes);
        case ReportClass::kField:
            return ApplyField(report, sender, state, changes);
        case ReportClass::kE2EOrNode: {
            const AppE2EConfigInfo& e2e = report.nodeCommonRegisterInfo.appE2EConfig;
            // Both reports share this kind; only E2E reports carry configurations. An E2E report
            // with an empty list cannot be told from an offline node report and is taken as one;
            // the node's next online report brings it back.
            if (!e2e.pubE2EConfigs.empty() || !e2e.subE2EConfigs.empty()) {
                return ApplyE2E(report.nodeCommonRegisterInfo, sender, state, changes);
            }
            return ApplyNodeReport(report.nodeCommonRegisterInfo, sender, state, changes);
        }
        case ReportClass::kLatency:
            return ApplyLatency(report.latencyInfo, sender, state, changes);
        case ReportClass::kListener:
            return ApplyListener(report, state, changes);
        case ReportClass::kUnknown:
            break;
    }
    return ApplyOutcome::Refused("unknown report kind " + std::to_string(report.kind));
}

ApplyOutcome RegistryUpdater::ApplyNodeReport(const NodeCommonRegisterInfo& report,
                                              const ReportSender& sender, RegistryState& state,
                                              ChangeSet& changes) const {
    const NodeKey key{report.appName, report.pid, sender.host};
    const bool online = report.nodePidInfo.isOnline;
    std::string refusal;
    NodeState* node = TouchNode(key, sender, online ? NodeReport::kOnline : NodeReport::kOffline,
                                state, changes, refusal);
    if (node == nullptr) {
        return ApplyOutcome::Refused(refusal);
    }
    if (!online && node->entry.online) {
        SetOffline(key, *node, kReasonOfflineReport, changes);
        PruneOfflineNodes(state, changes);
    }
    return {};
}

NodeState* RegistryUpdater::AddNode(const NodeKey& key, RegistryState& state, ChangeSet& changes,
                                    std::string& refusal) const {
    if (state.nodes.size() >= limits_.maxNodes) {
        PruneOfflineNodes(state, changes);  // frees room only when over the offline limit
    }
    if (state.nodes.size() >= limits_.maxNodes) {
        // Push out the offline node seen longest ago.
        auto oldest = state.nodes.end();
        for (auto node = state.nodes.begin(); node != state.nodes.end(); ++node) {
            if (!node->second.entry.online &&
                (oldest == state.nodes.end() ||
                 node->second.entry.lastSeen < oldest->second.entry.lastSeen)) {
                oldest = node;
            }
        }
        if (oldest == state.nodes.end()) {
            refusal = "too many processes (" + std::to_string(limits_.maxNodes) + ")";
            return nullptr;
        }
        EraseNode(NodeKey(oldest->first), state, changes);
    }
    NodeState node;
    node.entry.appName = key.appName;
    node.entry.pid = key.pid;
    node.entry.host = key.host;
    node.entry.firstSeen = clock_();
    return &state.nodes.emplace(key, std::move(node)).first->second;
}

NodeState* RegistryUpdater::TouchNode(const NodeKey& key, const ReportSender& sender,
                                      NodeReport report, RegistryState& state, ChangeSet& changes,
                                      std::string& refusal) const {
    const uint64_t now = clock_();
    // The pid is only probed here when the report comes from that very process on this host.
    const bool local = sender.local && sender.pid == key.pid;
    auto it = state.nodes.find(key);
    bool newRun = false;
    if (it == state.nodes.end()) {
        NodeState* added = AddNode(key, state, changes, refusal);
        if (added == nullptr) {
            return nullptr;
        }
        // A node first heard of through a withdrawal is alive all the same: it just sent.
        added->entry.online = report != NodeReport::kOffline;
        if (!added->entry.online) {
            added->entry.offlineReason = kReasonOfflineReport;
        }
        newRun = true;
        changes.notices.push_back({key, added->entry.online, key.host, added->entry.offlineReason});
    } else if (sender.startTicks != 0 && it->second.startTicks != 0 &&
               sender.startTicks != it->second.startTicks) {
        // The pid was reused by a new run of the application: the earlier one has ended.
        NodeState& node = it->second;
        if (node.entry.online) {
            SetOffline(key, node, kReasonRestarted, changes);
        }
        if (!node.succeeded) {
            ++node.entry.restarts;
        }
        node.succeeded = false;
        node.succeeds = true;
        node.entry.firstSeen = now;
        if (report != NodeReport::kOffline) {
            SetOnline(key, node, "", changes);
        }
    } else if (report == NodeReport::kOnline && !it->second.entry.online) {
        SetOnline(key, it->second, "", changes);
    }
    it = state.nodes.find(key);
    NodeState& node = it->second;
    if (!sender.peer.empty()) {
        node.peer = sender.peer;
        node.hostId = sender.hostId;
        node.local = local;
        node.startTicks = sender.startTicks;
    }
    node.entry.lastSeen = now;
    changes.nodes.insert(key);
    if (newRun && node.entry.online) {
        PairWithEarlierRun(key, state, changes);
    }
    if (!node.entry.online) {
        PruneOfflineNodes(state, changes);
        if (state.nodes.find(key) == state.nodes.end()) {
            refusal = "offline process not kept";
            return nullptr;
        }
    }
    return &state.nodes.find(key)->second;
}

bool RegistryUpdater::EndedHere(const NodeState& node) const {
    if (!node.local || !probe_) {
        return false;
    }
    const auto ticks = probe_->StartTicks(node.entry.pid);
    return !ticks || (node.startTicks != 0 && *ticks != node.startTicks);
}

void RegistryUpdater::PairWithEarlierRun(const NodeKey& key, RegistryState& state,
                                         ChangeSet& changes) const {
    NodeState& fresh = state.nodes.at(key);
    auto earlier = state.nodes.end();
    for (auto it = state.nodes.begin(); it != state.nodes.end(); ++it) {
        const NodeState& node = it->second;
        if (it->first.appName != key.appName || it->first.host != key.host || it->first == key ||
            node.succeeded || node.entry.firstSeen > fresh.entry.firstSeen) {
            continue;
        }
        if (node.entry.online && !EndedHere(node)) {
            continue;  // still running: another instance, not an earlier run
        }
        // A run still listed online is taken first, so that the listing is put right.
        const auto rank = [](const NodeState& run) {
            return std::make_pair(run.entry.online, run.entry.lastSeen);
        };
        if (earlier == state.nodes.end() || rank(node) > rank(earlier->second)) {
            earlier = it;
        }
    }
    if (earlier == state.nodes.end()) {
        return;
    }
    NodeState& ended = earlier->second;
    if (ended.entry.online) {
        SetOffline(earlier->first, ended, kReasonRestarted, changes);
    }
    ended.succeeded = true;
    changes.nodes.insert(earlier->first);
    fresh.entry.restarts = ended.entry.restarts + 1;
    fresh.succeeds = true;
}

void RegistryUpdater::SetLost(const NodeKey& key, const std::string& reason, RegistryState& state,
                              ChangeSet& changes) const {
    NodeState& lost = state.nodes.at(key);
    const uint64_t now = clock_();
    // A run of the same application on the same host that came online shortly before and was
    // not yet paired with an earlier run took this one's place.
    auto newer = state.nodes.end();
    for (auto it = state.nodes.begin(); it != state.nodes.end(); ++it) {
        const NodeState& node = it->second;
        if (it->first.appName != key.appName || it->first.host != key.host || it->first == key ||
            !node.entry.online || node.entry.firstSeen < lost.entry.firstSeen || node.succeeds ||
            node.entry.firstSeen + kRestartWindowMs < now) {
            continue;
        }
        if (newer == state.nodes.end() || node.entry.firstSeen < newer->second.entry.firstSeen) {
            newer = it;
        }
    }
    if (newer == state.nodes.end()) {
        SetOffline(key, lost, reason, changes);
        return;
    }
    SetOffline(key, lost, kReasonRestarted, changes);
    lost.succeeded = true;
    newer->second.succeeds = true;
    newer->second.entry.restarts = lost.entry.restarts + 1;
    changes.nodes.insert(newer->first);
}

void RegistryUpdater::SetOffline(const NodeKey& key, NodeState& node, const std::string& reason,
                                 ChangeSet& changes) const {
    node.entry.online = false;
    node.entry.offlineReason = reason;
    node.entry.lastSeen = clock_();
    changes.nodes.insert(key);
    changes.notices.push_back({key, false, key.host, reason});
}

void RegistryUpdater::SetOnline(const NodeKey& key, NodeState& node, const std::string& reason,
                                ChangeSet& changes) const {
    node.entry.online = true;
    node.entry.offlineReason.clear();
    node.entry.lastSeen = clock_();
    changes.nodes.insert(key);
    changes.notices.push_back({key, true, key.host, reason});
}

void RegistryUpdater::ApplyNodeGone(const NodeKey& key, uint64_t startTicks, RegistryState& state,
                                    ChangeSet& changes) const {
    auto it = state.nodes.find(key);
    if (it == state.nodes.end() || !it->second.entry.online ||
        it->second.startTicks != startTicks) {
        return;
    }
    SetLost(key, kReasonProcessGone, state, changes);
    PruneOfflineNodes(state, changes);
}

void RegistryUpdater::ApplyPeerLost(const String& peer, RegistryState& state,
                                    ChangeSet& changes) const {
    if (peer.empty()) {
        return;
    }
    std::vector<NodeKey> lost;
    for (const auto& [key, node] : state.nodes) {
        if (node.peer == peer && node.entry.online) {
            lost.push_back(key);
        }
    }
    for (const NodeKey& key : lost) {
        SetLost(key, kReasonLeaseExpired, state, changes);
    }
    if (!lost.empty()) {
        PruneOfflineNodes(state, changes);
    }
}

void RegistryUpdater::ApplyPeerAlive(const String& peer, RegistryState& state,
                                     ChangeSet& changes) const {
    if (peer.empty()) {
        return;
    }
    for (auto& [key, node] : state.nodes) {
        if (node.peer == peer && !node.entry.online &&
            node.entry.offlineReason == kReasonLeaseExpired) {
            SetOnline(key, node, kReasonReconnected, changes);
        }
    }
}

void RegistryUpdater::PruneOfflineNodes(RegistryState& state, ChangeSet& changes) const {
    std::vector<std::pair<uint64_t, NodeKey>> offline;
    for (const auto& [key, node] : state.nodes) {
        if (!node.entry.online) {
            offline.emplace_back(node.entry.lastSeen, key);
        }
    }
    if (offline.size() <= limits_.maxOfflineNodes) {
        return;
    }
    std::sort(offline.begin(), offline.end());
    const size_t excess = offline.size() - limits_.maxOfflineNodes;
    for (size_t i = 0; i < excess; ++i) {
        EraseNode(offline[i].second, state, changes);
    }
}

namespace {

template <class Map>
void EraseEntitiesOf(const NodeKey& node, Map& entities, std::set<EntityKey>& changed) {
    auto it = entities.lower_bound(FirstEntityKeyOf(node));
    while (it != entities.end() && BelongsTo(it->first, node)) {
        changed.insert(it->first);
        it = entities.erase(it);
    }
}

}  // namespace

void RegistryUpdater::EraseNode(const NodeKey& key, RegistryState& state,
                                ChangeSet& changes) const {
    EraseEntitiesOf(key, state.events, changes.events);
    EraseEntitiesOf(key, state.methods, changes.methods);
    EraseEntitiesOf(key, state.fields, changes.fields);
    if (state.e2e.erase(key) > 0) {
        changes.e2e.insert(key);
    }
    state.nodes.erase(key);
    changes.nodes.insert(key);
}

}  // namespace orx::maintaind::daemon
