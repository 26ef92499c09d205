#include "tools/filter_match.h"

#include "registry/entry_builder.h"

namespace orx::maintaind::daemon {

namespace {

bool SideMatches(uint8_t side, bool isPub) {
    return side == tools::kAnySide || (side == tools::kPubSide && isPub) ||
           (side == tools::kSubSide && !isPub);
}

bool IdsMatch(const tools::QueryFilter& filter, uint16_t serviceId, uint16_t instanceId) {
    return (!filter.hasServiceId || filter.serviceId == serviceId) &&
           (!filter.hasInstanceId || filter.instanceId == instanceId);
}

bool AppMatches(const tools::QueryFilter& filter, const String& appName, int32_t pid) {
    return (filter.appName.empty() || filter.appName == appName) &&
           (filter.pid == 0 || filter.pid == pid);
}

}  // namespace

bool NameMatches(const String& filterName, const String& name, const String& topic) {
    if (filterName.empty()) {
        return true;
    }
    return name == filterName || LastPathComponent(name) == filterName ||
           (!topic.empty() && topic == filterName);
}

bool CommonMatches(const tools::QueryFilter& filter, const String& appName, int32_t pid,
                   uint16_t serviceId, uint16_t instanceId, const String& serviceName, bool isPub,
                   bool online) {
    return AppMatches(filter, appName, pid) && IdsMatch(filter, serviceId, instanceId) &&
           (filter.serviceName.empty() || filter.serviceName == serviceName) &&
           SideMatches(filter.side, isPub) && (!filter.onlineOnly || online);
}

bool Matches(const tools::QueryFilter& filter, const tools::EventEntry& entry, bool online) {
    return CommonMatches(filter, entry.appName, entry.pid, entry.serviceId, entry.instanceId,
                         entry.serviceName, entry.isPub, online) &&
           NameMatches(filter.name, entry.eventName, entry.topicName);
}

bool Matches(const tools::QueryFilter& filter, const tools::MethodEntry& entry, bool online) {
    return CommonMatches(filter, entry.appName, entry.pid, entry.serviceId, entry.instanceId,
                         entry.serviceName, entry.isPub, online) &&
           NameMatches(filter.name, entry.methodName);
}

bool Matches(const tools::QueryFilter& filter, const tools::FieldEntry& entry, bool online) {
    return CommonMatches(filter, entry.appName, entry.pid, entry.serviceId, entry.instanceId,
                         entry.serviceName, entry.isPub, online) &&
           NameMatches(filter.name, entry.fieldName);
}

bool Matches(const tools::QueryFilter& filter, const tools::NodeEntry& entry) {
    return AppMatches(filter, entry.appName, entry.pid) && (!filter.onlineOnly || entry.online);
}

bool Matches(const tools::QueryFilter& filter, const tools::E2EEntry& entry, bool online) {
    return AppMatches(filter, entry.appName, entry.pid) &&
           IdsMatch(filter, entry.config.serviceId, entry.config.instanceId) &&
           SideMatches(filter.side, entry.isPub) && (!filter.onlineOnly || online) &&
           NameMatches(filter.name, entry.config.eventName);
}

bool Matches(const tools::QueryFilter& filter, const tools::LatencyStatusEntry& entry) {
    if (!IdsMatch(filter, entry.latencyIndex.serviceId, entry.latencyIndex.instanceId) ||
        !NameMatches(filter.name, entry.eventName, entry.latencyIndex.eventName)) {
        return false;
    }
    if (filter.appName.empty()) {
        return true;
    }
    for (const tools::LatencyAckEntry& ack : entry.acks) {
        if (ack.appName == filter.appName) {
            return true;
        }
    }
    return false;
}

bool Matches(const tools::QueryFilter& filter, const tools::LatencyResultEntry& entry) {
    return (filter.appName.empty() || filter.appName == entry.appName) &&
           IdsMatch(filter, entry.latencyIndex.serviceId, entry.latencyIndex.instanceId) &&
           NameMatches(filter.name, entry.eventName, entry.latencyIndex.eventName);
}

bool Matches(const tools::QueryFilter& filter, const tools::SampleTimeoutEntry& entry) {
    return (filter.appName.empty() || filter.appName == entry.appName) &&
           (filter.name.empty() || entry.listenerName.find(filter.name) != String::npos);
}

}  // namespace orx::maintaind::daemon
