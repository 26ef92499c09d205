#include "registry/registry_updater.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "registry/report_class.h"

namespace orx::maintaind::daemon {

namespace {

constexpr const char* kReasonOfflineReport = "offline report";

}  // namespace

RegistryUpdater::RegistryUpdater(RegistryLimits limits, WallClock clock,
                                 std::shared_ptr<const ProcessProbe> probe)
    : limits_(limits), clock_(std::move(clock)), probe_(std::move(probe)) {}

ApplyOutcome RegistryUpdater::ApplyReport(const AppRegisterInfo& report, RegistryState& state,
                                          ChangeSet& changes) const {
    switch (ClassifyReport(report)) {
        case ReportClass::kEvent:
            return ApplyEvent(report, state, changes);
        case ReportClass::kMethod:
            return ApplyMethod(report, state, changes);
        case ReportClass::kField:
            return ApplyField(report, state, changes);
        case ReportClass::kE2EOrNode: {
            const AppE2EConfigInfo& e2e = report.nodeCommonRegisterInfo.appE2EConfig;
            // Both reports share this kind; only E2E reports carry configurations. An E2E report
            // with an empty list cannot be told from an offline node report and is taken as one;
            // the node's next online report brings it back.
            if (!e2e.pubE2EConfigs.empty() || !e2e.subE2EConfigs.empty()) {
                return ApplyE2E(report.nodeCommonRegisterInfo, state, changes);
            }
            return ApplyNodeReport(report.nodeCommonRegisterInfo, state, changes);
        }
        case ReportClass::kLatency:
            return ApplyLatency(report.latencyInfo, state, changes);
        case ReportClass::kListener:
            return ApplyListener(report, state, changes);
        case ReportClass::kUnknown:
            break;
    }
    return ApplyOutcome::Refused("unknown report kind " + std::to_string(report.kind));
}

ApplyOutcome RegistryUpdater::ApplyNodeReport(const NodeCommonRegisterInfo& report,
                                              RegistryState& state, ChangeSet& changes) const {
    const NodeKey key{report.appName, report.pid};
    const bool online = report.nodePidInfo.isOnline;
    std::string refusal;
    NodeState* node = TouchNode(key, online ? NodeReport::kOnline : NodeReport::kOffline, state,
                                changes, refusal);
    if (node == nullptr) {
        return ApplyOutcome::Refused(refusal);
    }
    if (!online && node->entry.online) {
        SetOffline(key, *node, kReasonOfflineReport, changes);
        PruneOfflineNodes(state, changes);
    }
    return {};
}

NodeState* RegistryUpdater::TouchNode(const NodeKey& key, NodeReport report, RegistryState& state,
                                      ChangeSet& changes, std::string& refusal) const {
    const uint64_t now = clock_();
    auto it = state.nodes.find(key);
    if (it == state.nodes.end()) {
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
        node.entry.firstSeen = now;
        node.entry.lastSeen = now;
        Probe(key, node);
        // A node first heard of through a withdrawal is alive all the same: it just sent.
        node.entry.online = report != NodeReport::kOffline;
        if (!node.entry.online) {
            node.entry.offlineReason = kReasonOfflineReport;
        }
        it = state.nodes.emplace(key, std::move(node)).first;
        changes.notices.push_back(
            {key, it->second.entry.online, it->second.entry.host, it->second.entry.offlineReason});
        if (!it->second.entry.online) {
            PruneOfflineNodes(state, changes);
            it = state.nodes.find(key);
            if (it == state.nodes.end()) {
                refusal = "offline process not kept";
                return nullptr;
            }
        }
    } else if (report == NodeReport::kOnline && !it->second.entry.online) {
        NodeState& node = it->second;
        const uint64_t oldTicks = node.startTicks;
        Probe(key, node);
        if (oldTicks != 0 && node.startTicks != 0 && oldTicks != node.startTicks) {
            node.entry.firstSeen = now;  // the pid was reused by a new run of the application
        }
        node.entry.online = true;
        node.entry.offlineReason.clear();
        changes.notices.push_back({key, true, node.entry.host, ""});
    }
    it->second.entry.lastSeen = now;
    changes.nodes.insert(key);
    return &it->second;
}

void RegistryUpdater::Probe(const NodeKey& key, NodeState& node) const {
    node.local = false;
    node.startTicks = 0;
    node.entry.host.clear();
    if (!probe_) {
        return;
    }
    const auto ticks = probe_->StartTicks(key.pid);
    if (ticks && probe_->MapsPlugin(key.pid)) {
        node.local = true;
        node.startTicks = *ticks;
        node.entry.host = probe_->HostName();
    }
}

void RegistryUpdater::SetOffline(const NodeKey& key, NodeState& node, const std::string& reason,
                                 ChangeSet& changes) const {
    node.entry.online = false;
    node.entry.offlineReason = reason;
    node.entry.lastSeen = clock_();
    changes.nodes.insert(key);
    changes.notices.push_back({key, false, node.entry.host, reason});
}

void RegistryUpdater::ApplyNodeGone(const NodeKey& key, uint64_t startTicks, RegistryState& state,
                                    ChangeSet& changes) const {
    auto it = state.nodes.find(key);
    if (it == state.nodes.end() || !it->second.entry.online ||
        it->second.startTicks != startTicks) {
        return;
    }
    SetOffline(key, it->second, "process gone", changes);
    PruneOfflineNodes(state, changes);
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
