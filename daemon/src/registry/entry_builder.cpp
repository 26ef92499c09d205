#include "registry/entry_builder.h"

#include <set>

namespace orx::maintaind::daemon {

namespace {

template <class Map>
std::vector<String> BindingNames(const Map& perBinding) {
    std::vector<String> names;
    for (const auto& item : perBinding) {
        names.emplace_back(ToString(item.first));
    }
    return names;
}

}  // namespace

tools::EventEntry MakeEventEntry(const EventRegisterInfo& record, bool isPub) {
    tools::EventEntry entry;
    entry.appName = record.appName;
    entry.pid = record.pid;
    entry.eventName = record.eventName;
    entry.serviceName = record.serviceName;
    entry.instanceName = record.instanceName;
    entry.isPub = isPub;
    entry.online = record.isOnline;
    entry.bindings = BindingNames(record.eventInfos);
    entry.dataTypeName = record.dataTypeName;
    auto someip = record.eventInfos.find(DriverType::SOMEIP);
    if (someip != record.eventInfos.end()) {
        entry.serviceId = someip->second.someipEventInfo.serviceId;
        entry.instanceId = someip->second.someipEventInfo.instanceId;
        entry.eventId = someip->second.someipEventInfo.eventId;
    }
    auto dds = record.eventInfos.find(DriverType::DDS);
    if (dds != record.eventInfos.end()) {
        const DDSEventInfo& info = dds->second.ddsEventInfo;
        entry.serviceId = info.serviceId;
        entry.instanceId = info.instanceId;
        entry.topicName = info.topicName;
        if (entry.dataTypeName.empty()) {
            entry.dataTypeName = info.dataTypeName;
        }
    }
    entry.record = record;
    return entry;
}

tools::MethodEntry MakeMethodEntry(const MethodRegisterInfo& record, bool isPub) {
    tools::MethodEntry entry;
    entry.appName = record.appName;
    entry.pid = record.pid;
    entry.methodName = record.methodName;
    entry.serviceName = record.serviceName;
    entry.instanceName = record.instanceName;
    entry.serviceId = record.serviceId;
    entry.instanceId = record.instanceId;
    entry.isPub = isPub;
    entry.online = record.isOnline;
    entry.bindings = BindingNames(record.methodInfos);
    auto dds = record.methodInfos.find(DriverType::DDS);
    if (dds != record.methodInfos.end()) {
        entry.requestTopicName = dds->second.ddsMethodInfo.requestTopicName;
        entry.replyTopicName = dds->second.ddsMethodInfo.replyTopicName;
    }
    auto someip = record.methodInfos.find(DriverType::SOMEIP);
    if (someip != record.methodInfos.end()) {
        entry.methodId = someip->second.someipMethodInfo.methodId;
    }
    entry.record = record;
    return entry;
}

tools::FieldEntry MakeFieldEntry(const FieldRegisterInfo& record, bool isPub) {
    tools::FieldEntry entry;
    entry.appName = record.appName;
    entry.pid = record.pid;
    entry.fieldName = record.fieldName;
    entry.serviceName = record.serviceName;
    entry.instanceName = record.instanceName;
    entry.serviceId = record.serviceId;
    entry.instanceId = record.instanceId;
    entry.isPub = isPub;
    entry.online = record.isOnline;
    std::set<DriverType> bindings;
    for (const auto& item : record.bindingNames) {
        bindings.insert(item.first);
    }
    for (const auto& item : record.fieldInfos) {
        bindings.insert(item.first);
    }
    for (DriverType binding : bindings) {
        entry.bindings.emplace_back(ToString(binding));
    }
    entry.hasNotifier = record.hasNotifier;
    entry.hasGetter = record.hasGetter;
    entry.hasSetter = record.hasSetter;
    entry.record = record;
    return entry;
}

EntityKey KeyOf(const tools::EventEntry& entry, const String& host) {
    return EntityKey{entry.appName,      entry.pid,       host,
                     entry.serviceName,  entry.eventName, entry.isPub,
                     entry.instanceName, entry.serviceId, entry.instanceId};
}

EntityKey KeyOf(const tools::MethodEntry& entry, const String& host) {
    return EntityKey{entry.appName,      entry.pid,        host,
                     entry.serviceName,  entry.methodName, entry.isPub,
                     entry.instanceName, entry.serviceId,  entry.instanceId};
}

EntityKey KeyOf(const tools::FieldEntry& entry, const String& host) {
    return EntityKey{entry.appName,      entry.pid,       host,
                     entry.serviceName,  entry.fieldName, entry.isPub,
                     entry.instanceName, entry.serviceId, entry.instanceId};
}

LatencyKey LatencyKeyOf(const tools::EventEntry& entry) {
    LatencyKey key;
    key.serviceId = entry.serviceId;
    key.instanceId = entry.instanceId;
    key.topicName = entry.topicName;
    key.eventId = entry.topicName.empty() ? entry.eventId : uint16_t{0};
    return key;
}

String LastPathComponent(const String& name) {
    const auto slash = name.rfind('/');
    return slash == String::npos ? name : name.substr(slash + 1);
}

}  // namespace orx::maintaind::daemon
