// Events, methods, fields and E2E configurations: one entry per process, side and entity, the
// newest report of it winning.
#include <tuple>
#include <type_traits>
#include <utility>

#include "registry/entry_builder.h"
#include "registry/registry_updater.h"

namespace orx::maintaind::daemon {

namespace {

size_t EntityCount(const RegistryState& state) {
    return state.events.size() + state.methods.size() + state.fields.size();
}

size_t EntityCountOf(const RegistryState& state, const NodeKey& key) {
    auto it = state.nodes.find(key);
    if (it == state.nodes.end()) {
        return 0;
    }
    const tools::NodeEntry& node = it->second.entry;
    return size_t{node.eventCount} + node.methodCount + node.fieldCount;
}

}  // namespace

template <class Entry>
ApplyOutcome RegistryUpdater::StoreEntity(Entry entry, const ReportSender& sender,
                                          std::map<EntityKey, Entry>& entities,
                                          uint32_t tools::NodeEntry::*count,
                                          std::set<EntityKey>& changed, RegistryState& state,
                                          ChangeSet& changes) const {
    const EntityKey key = KeyOf(entry, sender.host);
    const NodeKey nodeKey = NodeOf(key);
    auto existing = entities.find(key);
    if (existing == entities.end()) {
        if (EntityCount(state) >= limits_.maxEntities) {
            return ApplyOutcome::Refused("too many entities (" +
                                         std::to_string(limits_.maxEntities) + ")");
        }
        if (EntityCountOf(state, nodeKey) >= limits_.maxEntitiesPerNode) {
            return ApplyOutcome::Refused("too many entities for one process (" +
                                         std::to_string(limits_.maxEntitiesPerNode) + ")");
        }
    }
    std::string refusal;
    NodeState* node =
        TouchNode(nodeKey, sender, entry.online ? NodeReport::kOnline : NodeReport::kWithdrawal,
                  state, changes, refusal);
    if (node == nullptr) {
        return ApplyOutcome::Refused(refusal);
    }
    const uint64_t now = clock_();
    entry.lastSeen = now;
    if (existing == entities.end()) {
        entry.firstSeen = now;
        entities.emplace(key, std::move(entry));
        ++(node->entry.*count);
    } else {
        entry.firstSeen = existing->second.firstSeen;
        existing->second = std::move(entry);
    }
    changed.insert(key);
    if constexpr (std::is_same_v<Entry, tools::EventEntry>) {
        const tools::EventEntry& event = entities.at(key);
        auto status = state.latencyStatuses.find(LatencyKeyOf(event));
        if (event.online && status != state.latencyStatuses.end() && status->second.requested &&
            status->second.requestedMode == LatencyMode::ENABLE) {
            changes.latencyResend[status->first] = status->second.latencyIndex;
        }
    }
    return {};
}

ApplyOutcome RegistryUpdater::ApplyEvent(const AppRegisterInfo& report, const ReportSender& sender,
                                         RegistryState& state, ChangeSet& changes) const {
    return StoreEntity(MakeEventEntry(report.eventRegisterInfo, report.isPub), sender, state.events,
                       &tools::NodeEntry::eventCount, changes.events, state, changes);
}

ApplyOutcome RegistryUpdater::ApplyMethod(const AppRegisterInfo& report, const ReportSender& sender,
                                          RegistryState& state, ChangeSet& changes) const {
    return StoreEntity(MakeMethodEntry(report.methodRegisterInfo, report.isPub), sender,
                       state.methods, &tools::NodeEntry::methodCount, changes.methods, state,
                       changes);
}

ApplyOutcome RegistryUpdater::ApplyField(const AppRegisterInfo& report, const ReportSender& sender,
                                         RegistryState& state, ChangeSet& changes) const {
    return StoreEntity(MakeFieldEntry(report.fieldRegisterInfo, report.isPub), sender, state.fields,
                       &tools::NodeEntry::fieldCount, changes.fields, state, changes);
}

namespace {

// Two reports of the same configuration replace each other.
auto E2EIdentity(const tools::E2EEntry& entry) {
    const EventE2EConfigInfo& config = entry.config;
    return std::make_tuple(entry.isPub, config.serviceId, config.instanceId, config.eventId,
                           config.eventName, config.driverType);
}

}  // namespace

ApplyOutcome RegistryUpdater::ApplyE2E(const NodeCommonRegisterInfo& report,
                                       const ReportSender& sender, RegistryState& state,
                                       ChangeSet& changes) const {
    const NodeKey key{report.appName, report.pid, sender.host};
    const uint64_t now = clock_();
    std::vector<tools::E2EEntry> merged;
    auto current = state.e2e.find(key);
    if (current != state.e2e.end()) {
        merged = current->second.configs;
    }
    auto add = [&](const EventE2EConfigInfo& config, bool isPub) {
        tools::E2EEntry entry;
        entry.appName = key.appName;
        entry.pid = key.pid;
        entry.isPub = isPub;
        entry.binding = ToString(config.driverType);
        entry.updatedAt = now;
        entry.config = config;
        for (tools::E2EEntry& known : merged) {
            if (E2EIdentity(known) == E2EIdentity(entry)) {
                known = std::move(entry);
                return;
            }
        }
        merged.push_back(std::move(entry));
    };
    for (const EventE2EConfigInfo& config : report.appE2EConfig.pubE2EConfigs) {
        add(config, true);
    }
    for (const EventE2EConfigInfo& config : report.appE2EConfig.subE2EConfigs) {
        add(config, false);
    }
    if (merged.size() > limits_.maxE2EConfigsPerNode) {
        return ApplyOutcome::Refused("too many E2E configurations for one process (" +
                                     std::to_string(limits_.maxE2EConfigsPerNode) + ")");
    }
    std::string refusal;
    if (TouchNode(key, sender, NodeReport::kOnline, state, changes, refusal) == nullptr) {
        return ApplyOutcome::Refused(refusal);
    }
    state.e2e[key].configs = std::move(merged);
    changes.e2e.insert(key);
    return {};
}

}  // namespace orx::maintaind::daemon
