#include "tools/event_resolver.h"

#include <map>
#include <set>

#include "registry/entry_builder.h"
#include "tools/filter_match.h"

namespace orx::maintaind::daemon {

namespace {

using Match = bool (*)(const tools::EventEntry&, const String&);

bool ByFullName(const tools::EventEntry& entry, const String& name) {
    return entry.eventName == name;
}

bool ByLastComponent(const tools::EventEntry& entry, const String& name) {
    return LastPathComponent(entry.eventName) == name;
}

bool ByTopic(const tools::EventEntry& entry, const String& name) {
    return !entry.topicName.empty() && entry.topicName == name;
}

String Describe(const LatencyKey& key, const String& eventName) {
    String text = eventName + " (serviceId=" + std::to_string(key.serviceId) +
                  ", instanceId=" + std::to_string(key.instanceId);
    if (!key.topicName.empty()) {
        text += ", topic=" + key.topicName;
    } else {
        text += ", eventId=" + std::to_string(key.eventId);
    }
    return text + ")";
}

}  // namespace

ResolvedEvent ResolveEvent(const RegistryState& state, const String& name,
                           const tools::QueryFilter& filter) {
    ResolvedEvent resolved;
    if (name.empty()) {
        resolved.code = tools::ToolsCode::BAD_REQUEST;
        resolved.message = "no event named";
        return resolved;
    }
    tools::QueryFilter scope = filter;
    scope.name.clear();

    std::map<LatencyKey, std::vector<const std::pair<const EntityKey, tools::EventEntry>*>> groups;
    for (Match match : {ByFullName, ByLastComponent, ByTopic}) {
        for (const auto& item : state.events) {
            const bool online = item.second.online && IsNodeOnline(state, NodeOf(item.first));
            if (match(item.second, name) && Matches(scope, item.second, online)) {
                groups[LatencyKeyOf(item.second)].push_back(&item);
            }
        }
        if (!groups.empty()) {
            break;
        }
    }
    if (groups.empty()) {
        resolved.code = tools::ToolsCode::UNKNOWN_EVENT;
        resolved.message = "no registered event is named \"" + name + "\"";
        return resolved;
    }
    if (groups.size() > 1) {
        resolved.code = tools::ToolsCode::AMBIGUOUS_EVENT;
        resolved.message = "\"" + name + "\" names " + std::to_string(groups.size()) +
                           " events; name one by its topic or narrow by application or service";
        for (const auto& [key, items] : groups) {
            resolved.candidates.push_back(Describe(key, items.front()->second.eventName));
        }
        return resolved;
    }

    const auto& [key, items] = *groups.begin();
    resolved.key = key;
    resolved.eventName = items.front()->second.eventName;
    bool dds = false;
    bool someip = false;
    uint16_t eventId = 0;
    for (const auto* item : items) {
        resolved.registrations.push_back(item->first);
        const auto& infos = item->second.record.eventInfos;
        dds = dds || infos.count(DriverType::DDS) > 0;
        if (infos.count(DriverType::SOMEIP) > 0) {
            someip = true;
            eventId = item->second.eventId;
        }
    }
    resolved.index.serviceId = key.serviceId;
    resolved.index.instanceId = key.instanceId;
    resolved.index.eventName = key.topicName;
    resolved.index.eventId = someip ? eventId : key.eventId;
    if (someip) {
        resolved.index.driverTypes.push_back(DriverType::SOMEIP);
    }
    if (dds) {
        resolved.index.driverTypes.push_back(DriverType::DDS);
    }
    return resolved;
}

}  // namespace orx::maintaind::daemon
