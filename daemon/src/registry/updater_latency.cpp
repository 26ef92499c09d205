// Latency acknowledgements, latency results, latency switches and sample timeouts.
#include <algorithm>
#include <set>

#include "registry/entry_builder.h"
#include "registry/registry_updater.h"
#include "timeline/entries.h"

namespace orx::maintaind::daemon {

namespace {

constexpr uint8_t kLatencyAck = 0;

// True when the event entry is the event `key` addresses.
bool Addresses(const tools::EventEntry& entry, const LatencyKey& key) {
    if (entry.serviceId != key.serviceId || entry.instanceId != key.instanceId) {
        return false;
    }
    if (!key.topicName.empty()) {
        return entry.topicName == key.topicName;
    }
    return entry.topicName.empty() && entry.eventId == key.eventId;
}

// Removes the entry of `map` whose activity time is the oldest, to make room.
template <class Map, class Activity>
void EvictIdlest(Map& map, Activity activity, std::set<typename Map::key_type>& changed) {
    auto idlest = map.end();
    for (auto it = map.begin(); it != map.end(); ++it) {
        if (idlest == map.end() || activity(it->second) < activity(idlest->second)) {
            idlest = it;
        }
    }
    if (idlest != map.end()) {
        changed.insert(idlest->first);
        map.erase(idlest);
    }
}

// The pid of the process that acknowledged: the sender's when it is a node of that application,
// else that of the one online node of the application on the sender's host.
int32_t AckingPid(const RegistryState& state, const String& appName, const ReportSender& sender) {
    if (state.nodes.count(NodeKey{appName, sender.pid, sender.host}) > 0) {
        return sender.pid;
    }
    int32_t only = 0;
    for (const auto& [key, node] : state.nodes) {
        if (key.appName == appName && key.host == sender.host && node.entry.online) {
            if (only != 0) {
                return sender.pid;
            }
            only = key.pid;
        }
    }
    return only != 0 ? only : sender.pid;
}

uint64_t StatusActivity(const tools::LatencyStatusEntry& status) {
    uint64_t newest = status.requestedAt;
    for (const tools::LatencyAckEntry& ack : status.acks) {
        newest = std::max(newest, ack.ackedAt);
    }
    return newest;
}

}  // namespace

LatencyKey CanonicalLatencyKey(const RegistryState& state, const LatencyIndex& index) {
    LatencyKey key;
    key.serviceId = index.serviceId;
    key.instanceId = index.instanceId;
    key.topicName = index.eventName;
    key.eventId = index.eventName.empty() ? index.eventId : uint16_t{0};
    if (key.topicName.empty()) {
        // A SOME/IP report of an event that also runs on DDS: name it by its topic like the rest.
        for (const auto& [entityKey, entry] : state.events) {
            if (entry.serviceId == key.serviceId && entry.instanceId == key.instanceId &&
                entry.eventId == key.eventId && !entry.topicName.empty()) {
                key.topicName = entry.topicName;
                key.eventId = 0;
                break;
            }
        }
    }
    return key;
}

String EventNameFor(const RegistryState& state, const LatencyKey& key) {
    for (const auto& [entityKey, entry] : state.events) {
        if (!entry.eventName.empty() && Addresses(entry, key)) {
            return entry.eventName;
        }
    }
    if (!key.topicName.empty()) {
        return key.topicName;
    }
    return "eventId=" + std::to_string(key.eventId);
}

String AttributeListener(const RegistryState& state, const String& listenerName) {
    std::set<String> apps;
    for (const auto& [entityKey, entry] : state.events) {
        if (entry.isPub) {
            continue;
        }
        const bool byTopic =
            !entry.topicName.empty() && listenerName.find(entry.topicName) != String::npos;
        const bool byName =
            !entry.eventName.empty() && listenerName.find(entry.eventName) != String::npos;
        if (byTopic || byName) {
            apps.insert(entry.appName);
        }
    }
    return apps.size() == 1 ? *apps.begin() : String();
}

tools::LatencyStatusEntry& RegistryUpdater::StatusOf(const LatencyKey& key, RegistryState& state,
                                                     ChangeSet& changes) const {
    auto it = state.latencyStatuses.find(key);
    if (it == state.latencyStatuses.end()) {
        if (state.latencyStatuses.size() >= limits_.maxLatencyStatuses) {
            EvictIdlest(state.latencyStatuses, StatusActivity, changes.latencyStatuses);
        }
        it = state.latencyStatuses.emplace(key, tools::LatencyStatusEntry{}).first;
    }
    if (it->second.eventName.empty()) {
        it->second.eventName = EventNameFor(state, key);
    }
    changes.latencyStatuses.insert(key);
    return it->second;
}

ApplyOutcome RegistryUpdater::ApplyLatency(const LatencyInfo& info, const ReportSender& sender,
                                           RegistryState& state, ChangeSet& changes) const {
    const LatencyKey key = CanonicalLatencyKey(state, info.latencyIndex);
    const uint64_t now = clock_();
    if (info.type == kLatencyAck) {
        tools::LatencyStatusEntry& status = StatusOf(key, state, changes);
        if (!status.requested) {
            status.latencyIndex = info.latencyIndex;
        }
        // Kept per process: a restarted application must acknowledge again.
        const int32_t pid = AckingPid(state, info.appName, sender);
        auto ack = std::find_if(status.acks.begin(), status.acks.end(),
                                [&](const tools::LatencyAckEntry& known) {
                                    return known.appName == info.appName && known.pid == pid &&
                                           known.host == sender.host;
                                });
        if (ack == status.acks.end()) {
            ack = status.acks.insert(status.acks.end(), tools::LatencyAckEntry{});
            ack->appName = info.appName;
            ack->pid = pid;
            ack->host = sender.host;
        }
        ack->mode = info.ackInfo.mode;
        ack->isPubMatched = info.ackInfo.isPubMatched;
        ack->isSubMatched = info.ackInfo.isSubMatched;
        ack->ackedAt = now;
        status.enabled = std::any_of(
            status.acks.begin(), status.acks.end(),
            [](const tools::LatencyAckEntry& known) { return known.mode == LatencyMode::ENABLE; });
        changes.timeline.push_back(LatencyAckEntry(info, status.eventName, now));
        return {};
    }

    const LatencyHistoryKey historyKey{info.appName, key};
    auto it = state.latencyResults.find(historyKey);
    if (it == state.latencyResults.end()) {
        if (state.latencyResults.size() >= limits_.maxLatencyHistories) {
            EvictIdlest(
                state.latencyResults,
                [](const LatencyHistory& history) {
                    return history.results.empty() ? uint64_t{0}
                                                   : history.results.front().receivedAt;
                },
                changes.latencyResults);
        }
        it = state.latencyResults.emplace(historyKey, LatencyHistory{}).first;
    }
    tools::LatencyResultEntry result;
    result.appName = info.appName;
    result.eventName = EventNameFor(state, key);
    result.latencyIndex = info.latencyIndex;
    result.minLatency = info.resultInfo.result.minLatency;
    result.maxLatency = info.resultInfo.result.maxLatency;
    result.averageLatency = info.resultInfo.result.averageLatency;
    result.notifyTime = info.resultInfo.notifyTime;
    result.receivedAt = now;
    std::vector<tools::LatencyResultEntry>& results = it->second.results;
    results.insert(results.begin(), std::move(result));
    if (results.size() > limits_.latencyHistoryDepth) {
        results.resize(limits_.latencyHistoryDepth);
    }
    changes.latencyResults.insert(historyKey);
    return {};
}

void RegistryUpdater::ApplyLatencyRequest(const LatencyRequest& request, RegistryState& state,
                                          ChangeSet& changes) const {
    tools::LatencyStatusEntry& status = StatusOf(request.key, state, changes);
    status.eventName = request.eventName;
    status.latencyIndex = request.index;
    status.requested = true;
    status.requestedMode = request.mode;
    status.requestedAt = clock_();
    changes.timeline.push_back(
        LatencySwitchEntry(request.eventName, request.mode, status.requestedAt));
}

ApplyOutcome RegistryUpdater::ApplyListener(const AppRegisterInfo& report, RegistryState& state,
                                            ChangeSet& changes) const {
    const ListenerParams& params = report.listenerParams.begin()->second;
    const ListenerKey key{params.listenerName};
    const uint64_t now = clock_();
    auto it = state.sampleTimeouts.find(key);
    if (it == state.sampleTimeouts.end()) {
        if (state.sampleTimeouts.size() >= limits_.maxSampleTimeoutListeners) {
            EvictIdlest(
                state.sampleTimeouts,
                [](const tools::SampleTimeoutEntry& entry) { return entry.lastSeen; },
                changes.sampleTimeouts);
        }
        tools::SampleTimeoutEntry entry;
        entry.listenerName = params.listenerName;
        entry.firstSeen = now;
        it = state.sampleTimeouts.emplace(key, std::move(entry)).first;
    }
    tools::SampleTimeoutEntry& entry = it->second;
    if (entry.appName.empty()) {
        entry.appName = AttributeListener(state, params.listenerName);
    }
    entry.sampleTimeout = params.sampleTimeout;
    entry.sampleTimeoutCount = params.sampleTimeoutCount;
    ++entry.reportCount;
    entry.lastSeen = now;
    changes.sampleTimeouts.insert(key);
    changes.timeline.push_back(SampleTimeoutEntry(
        params.listenerName, entry.appName, params.sampleTimeout, params.sampleTimeoutCount, now));
    return {};
}

}  // namespace orx::maintaind::daemon
