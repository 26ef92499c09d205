#include "tools/query_engine.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "registry/entry_builder.h"
#include "tools/filter_match.h"

namespace orx::maintaind::daemon {

namespace {

// Appends `entry` unless the cap is reached; counts it either way.
template <class Entry>
void Keep(Entry&& entry, std::vector<std::decay_t<Entry>>& out, uint32_t cap, uint32_t& total,
          bool& truncated) {
    ++total;
    if (out.size() < cap) {
        out.push_back(std::forward<Entry>(entry));
    } else {
        truncated = true;
    }
}

template <class Entry, std::size_t... I>
void CopySummary(const Entry& from, Entry& to, std::index_sequence<I...>) {
    auto source = from.Members();
    auto target = to.Members();
    ((std::get<I>(target) = std::get<I>(source)), ...);
}

// A copy of an entity entry, without its record when `withRecord` is false. The record is the
// entry's last member.
template <class Entry>
Entry Listed(const Entry& entry, bool withRecord) {
    static_assert(Entry::kMemberNames.back() == "record", "the record must be the last member");
    if (withRecord) {
        return entry;
    }
    Entry listed;
    constexpr std::size_t kCount = Entry::kMemberNames.size();
    CopySummary(entry, listed, std::make_index_sequence<kCount - 1>{});
    return listed;
}

}  // namespace

template <class Entry>
void SelectEntities(const RegistryState& state, const std::map<EntityKey, Entry>& entities,
                    const tools::QueryFilter& filter, uint32_t cap, std::vector<Entry>& out,
                    uint32_t& total, bool& truncated) {
    NodeKey lastNode;
    bool lastOnline = false;
    bool first = true;
    for (const auto& [key, entry] : entities) {
        if (first || key.appName != lastNode.appName || key.pid != lastNode.pid) {
            lastNode = NodeOf(key);
            lastOnline = IsNodeOnline(state, lastNode);
            first = false;
        }
        const bool online = entry.online && lastOnline;
        if (!Matches(filter, entry, online)) {
            continue;
        }
        Entry listed = Listed(entry, !filter.withoutRecords);
        listed.online = online;
        Keep(std::move(listed), out, cap, total, truncated);
    }
}

template void SelectEntities(const RegistryState&, const std::map<EntityKey, tools::EventEntry>&,
                             const tools::QueryFilter&, uint32_t, std::vector<tools::EventEntry>&,
                             uint32_t&, bool&);
template void SelectEntities(const RegistryState&, const std::map<EntityKey, tools::MethodEntry>&,
                             const tools::QueryFilter&, uint32_t, std::vector<tools::MethodEntry>&,
                             uint32_t&, bool&);
template void SelectEntities(const RegistryState&, const std::map<EntityKey, tools::FieldEntry>&,
                             const tools::QueryFilter&, uint32_t, std::vector<tools::FieldEntry>&,
                             uint32_t&, bool&);

uint32_t QueryEngine::Cap(const tools::QueryFilter& filter) const {
    return filter.maxEntries == 0 ? entryCap_ : std::min(filter.maxEntries, entryCap_);
}

tools::NodeListReply QueryEngine::Nodes(const RegistryState& state,
                                        const tools::QueryFilter& filter) const {
    tools::NodeListReply reply;
    const uint32_t cap = Cap(filter);
    for (const auto& [key, node] : state.nodes) {
        if (Matches(filter, node.entry)) {
            Keep(tools::NodeEntry(node.entry), reply.nodes, cap, reply.total, reply.truncated);
        }
    }
    return reply;
}

tools::EventListReply QueryEngine::Events(const RegistryState& state,
                                          const tools::QueryFilter& filter,
                                          bool subscribersOnly) const {
    tools::EventListReply reply;
    tools::QueryFilter narrowed = filter;
    if (subscribersOnly) {
        // Publishers asked for among subscribers: a side value that selects nothing.
        narrowed.side = filter.side == tools::kPubSide ? uint8_t{0xFF} : tools::kSubSide;
    }
    SelectEntities(state, state.events, narrowed, Cap(filter), reply.events, reply.total,
                   reply.truncated);
    return reply;
}

tools::MethodListReply QueryEngine::Methods(const RegistryState& state,
                                            const tools::QueryFilter& filter) const {
    tools::MethodListReply reply;
    SelectEntities(state, state.methods, filter, Cap(filter), reply.methods, reply.total,
                   reply.truncated);
    return reply;
}

tools::FieldListReply QueryEngine::Fields(const RegistryState& state,
                                          const tools::QueryFilter& filter) const {
    tools::FieldListReply reply;
    SelectEntities(state, state.fields, filter, Cap(filter), reply.fields, reply.total,
                   reply.truncated);
    return reply;
}

tools::E2EListReply QueryEngine::E2EConfigs(const RegistryState& state,
                                            const tools::QueryFilter& filter) const {
    tools::E2EListReply reply;
    const uint32_t cap = Cap(filter);
    for (const auto& [key, e2e] : state.e2e) {
        const bool online = IsNodeOnline(state, key);
        for (const tools::E2EEntry& config : e2e.configs) {
            if (Matches(filter, config, online)) {
                tools::E2EEntry listed = config;
                listed.online = online;
                Keep(std::move(listed), reply.configs, cap, reply.total, reply.truncated);
            }
        }
    }
    return reply;
}

tools::LatencyStatusListReply QueryEngine::LatencyStatuses(const RegistryState& state,
                                                           const tools::QueryFilter& filter) const {
    tools::LatencyStatusListReply reply;
    const uint32_t cap = Cap(filter);
    for (const auto& [key, status] : state.latencyStatuses) {
        if (Matches(filter, status)) {
            tools::LatencyStatusEntry entry(status);
            if (entry.requested) {
                entry.unacknowledged = Unacknowledged(state, key, status);
            }
            Keep(std::move(entry), reply.statuses, cap, reply.total, reply.truncated);
        }
    }
    return reply;
}

std::vector<String> QueryEngine::Unacknowledged(const RegistryState& state, const LatencyKey& key,
                                                const tools::LatencyStatusEntry& status) {
    std::set<String> waiting;
    for (const auto& item : state.events) {
        const EntityKey& entityKey = item.first;  // a plain reference: lambdas capture it
        const tools::EventEntry& event = item.second;
        if (!event.online || LatencyKeyOf(event) != key ||
            !IsNodeOnline(state, NodeOf(entityKey))) {
            continue;
        }
        const bool acked = std::any_of(
            status.acks.begin(), status.acks.end(), [&](const tools::LatencyAckEntry& ack) {
                return ack.appName == entityKey.appName && ack.pid == entityKey.pid &&
                       ack.host == entityKey.host && ack.ackedAt >= status.requestedAt &&
                       ack.mode == status.requestedMode;
            });
        if (!acked) {
            waiting.insert(entityKey.appName + "/" + std::to_string(entityKey.pid) + "@" +
                           (entityKey.host.empty() ? "?" : entityKey.host));
        }
    }
    return {waiting.begin(), waiting.end()};
}

tools::LatencyResultListReply QueryEngine::LatencyResults(const RegistryState& state,
                                                          const tools::QueryFilter& filter) const {
    tools::LatencyResultListReply reply;
    const uint32_t cap = Cap(filter);
    for (const auto& [key, history] : state.latencyResults) {
        for (const tools::LatencyResultEntry& result : history.results) {
            if (Matches(filter, result)) {
                Keep(tools::LatencyResultEntry(result), reply.results, cap, reply.total,
                     reply.truncated);
            }
            if (filter.latestOnly) {
                break;  // newest first: the first one is the latest
            }
        }
    }
    return reply;
}

tools::SampleTimeoutListReply QueryEngine::SampleTimeouts(const RegistryState& state,
                                                          const tools::QueryFilter& filter) const {
    tools::SampleTimeoutListReply reply;
    const uint32_t cap = Cap(filter);
    for (const auto& [key, entry] : state.sampleTimeouts) {
        if (Matches(filter, entry)) {
            Keep(tools::SampleTimeoutEntry(entry), reply.timeouts, cap, reply.total,
                 reply.truncated);
        }
    }
    return reply;
}

tools::AllDataReply QueryEngine::All(const RegistryState& state,
                                     const tools::QueryFilter& filter) const {
    tools::AllDataReply reply;
    auto nodes = Nodes(state, filter);
    auto events = Events(state, filter);
    auto methods = Methods(state, filter);
    auto fields = Fields(state, filter);
    auto e2e = E2EConfigs(state, filter);
    auto statuses = LatencyStatuses(state, filter);
    auto results = LatencyResults(state, filter);
    auto timeouts = SampleTimeouts(state, filter);
    reply.nodes = std::move(nodes.nodes);
    reply.events = std::move(events.events);
    reply.methods = std::move(methods.methods);
    reply.fields = std::move(fields.fields);
    reply.e2eConfigs = std::move(e2e.configs);
    reply.latencyStatuses = std::move(statuses.statuses);
    reply.latencyResults = std::move(results.results);
    reply.sampleTimeouts = std::move(timeouts.timeouts);
    reply.truncated = nodes.truncated || events.truncated || methods.truncated ||
                      fields.truncated || e2e.truncated || statuses.truncated ||
                      results.truncated || timeouts.truncated;
    return reply;
}

}  // namespace orx::maintaind::daemon
