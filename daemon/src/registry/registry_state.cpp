#include "registry/registry_state.h"

namespace orx::maintaind::daemon {

EntityKey FirstEntityKeyOf(const NodeKey& node) {
    EntityKey key;
    key.appName = node.appName;
    key.pid = node.pid;
    key.host = node.host;
    return key;  // the other members are at their smallest values
}

bool BelongsTo(const EntityKey& key, const NodeKey& node) {
    return key.appName == node.appName && key.pid == node.pid && key.host == node.host;
}

NodeKey NodeOf(const EntityKey& key) {
    return NodeKey{key.appName, key.pid, key.host};
}

bool IsNodeOnline(const RegistryState& state, const NodeKey& node) {
    auto it = state.nodes.find(node);
    return it != state.nodes.end() && it->second.entry.online;
}

namespace {

template <class Map, class Member>
void CountInto(RegistryState& state, const Map& entities, Member member) {
    for (const auto& [key, entry] : entities) {
        auto node = state.nodes.find(NodeOf(key));
        if (node != state.nodes.end()) {
            ++(node->second.entry.*member);
        }
    }
}

}  // namespace

void RecountEntities(RegistryState& state) {
    for (auto& [key, node] : state.nodes) {
        node.entry.eventCount = 0;
        node.entry.methodCount = 0;
        node.entry.fieldCount = 0;
    }
    CountInto(state, state.events, &tools::NodeEntry::eventCount);
    CountInto(state, state.methods, &tools::NodeEntry::methodCount);
    CountInto(state, state.fields, &tools::NodeEntry::fieldCount);
}

}  // namespace orx::maintaind::daemon
