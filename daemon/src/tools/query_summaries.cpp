// The queries that sum up across applications: data types, method types and one event's show.
#include <map>
#include <set>
#include <tuple>

#include "tools/event_resolver.h"
#include "tools/filter_match.h"
#include "tools/query_engine.h"

namespace orx::maintaind::daemon {

namespace {

struct DataTypeUse {
    uint32_t events = 0;
    uint32_t methods = 0;
    std::set<String> apps;
};

// Every data type of the selected events and methods (a method counts for its DDS request and
// reply types).
std::map<String, DataTypeUse> CollectDataTypes(const RegistryState& state,
                                               const tools::QueryFilter& filter) {
    std::map<String, DataTypeUse> uses;
    std::vector<tools::EventEntry> events;
    std::vector<tools::MethodEntry> methods;
    uint32_t total = 0;
    bool truncated = false;
    SelectEntities(state, state.events, filter, UINT32_MAX, events, total, truncated);
    SelectEntities(state, state.methods, filter, UINT32_MAX, methods, total, truncated);
    for (const tools::EventEntry& event : events) {
        if (!event.dataTypeName.empty()) {
            DataTypeUse& use = uses[event.dataTypeName];
            ++use.events;
            use.apps.insert(event.appName);
        }
    }
    for (const tools::MethodEntry& method : methods) {
        auto dds = method.record.methodInfos.find(DriverType::DDS);
        if (dds == method.record.methodInfos.end()) {
            continue;
        }
        std::set<String> types{dds->second.ddsMethodInfo.requestDataTypeName,
                               dds->second.ddsMethodInfo.replyDataTypeName};
        types.erase(String());
        for (const String& type : types) {
            DataTypeUse& use = uses[type];
            ++use.methods;
            use.apps.insert(method.appName);
        }
    }
    return uses;
}

tools::DataTypeEntry MakeDataTypeEntry(const String& name, const DataTypeUse& use) {
    tools::DataTypeEntry entry;
    entry.dataTypeName = name;
    entry.eventCount = use.events;
    entry.methodCount = use.methods;
    entry.appNames.assign(use.apps.begin(), use.apps.end());
    return entry;
}

bool UsesDataType(const tools::MethodEntry& method, const String& type) {
    auto dds = method.record.methodInfos.find(DriverType::DDS);
    return dds != method.record.methodInfos.end() &&
           (dds->second.ddsMethodInfo.requestDataTypeName == type ||
            dds->second.ddsMethodInfo.replyDataTypeName == type);
}

}  // namespace

tools::DataTypeListReply QueryEngine::DataTypes(const RegistryState& state,
                                                const tools::QueryFilter& filter) const {
    tools::DataTypeListReply reply;
    tools::QueryFilter scope = filter;
    scope.name.clear();  // the name filter selects data types here, not entities
    const uint32_t cap = Cap(filter);
    for (const auto& [name, use] : CollectDataTypes(state, scope)) {
        if (!filter.name.empty() && name != filter.name) {
            continue;
        }
        ++reply.total;
        if (reply.dataTypes.size() < cap) {
            reply.dataTypes.push_back(MakeDataTypeEntry(name, use));
        } else {
            reply.truncated = true;
        }
    }
    return reply;
}

tools::DataTypeReply QueryEngine::DataType(const RegistryState& state,
                                           const tools::DataTypeRequest& request) const {
    tools::DataTypeReply reply;
    if (request.dataTypeName.empty()) {
        reply.code = static_cast<uint8_t>(tools::ToolsCode::BAD_REQUEST);
        reply.message = "no data type named";
        return reply;
    }
    uint32_t total = 0;
    bool truncated = false;
    std::vector<tools::EventEntry> events;
    std::vector<tools::MethodEntry> methods;
    SelectEntities(state, state.events, request.filter, UINT32_MAX, events, total, truncated);
    SelectEntities(state, state.methods, request.filter, UINT32_MAX, methods, total, truncated);
    DataTypeUse use;
    const uint32_t cap = Cap(request.filter);
    for (tools::EventEntry& event : events) {
        if (event.dataTypeName == request.dataTypeName && reply.events.size() < cap) {
            ++use.events;
            use.apps.insert(event.appName);
            reply.events.push_back(std::move(event));
        }
    }
    for (tools::MethodEntry& method : methods) {
        if (UsesDataType(method, request.dataTypeName) && reply.methods.size() < cap) {
            ++use.methods;
            use.apps.insert(method.appName);
            reply.methods.push_back(std::move(method));
        }
    }
    if (use.events == 0 && use.methods == 0) {
        reply.code = static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT);
        reply.message = "no event or method uses data type \"" + request.dataTypeName + "\"";
        return reply;
    }
    reply.dataType = MakeDataTypeEntry(request.dataTypeName, use);
    return reply;
}

tools::MethodTypeListReply QueryEngine::MethodTypes(const RegistryState& state,
                                                    const tools::QueryFilter& filter) const {
    tools::MethodTypeListReply reply;
    std::vector<tools::MethodEntry> methods;
    uint32_t total = 0;
    bool truncated = false;
    SelectEntities(state, state.methods, filter, UINT32_MAX, methods, total, truncated);
    std::map<std::tuple<String, String, uint16_t, uint16_t>, tools::MethodTypeEntry> types;
    for (const tools::MethodEntry& method : methods) {
        tools::MethodTypeEntry& type = types[std::make_tuple(method.serviceName, method.methodName,
                                                             method.serviceId, method.instanceId)];
        type.serviceName = method.serviceName;
        type.methodName = method.methodName;
        type.serviceId = method.serviceId;
        type.instanceId = method.instanceId;
        ++(method.isPub ? type.serverCount : type.clientCount);
        auto dds = method.record.methodInfos.find(DriverType::DDS);
        if (dds != method.record.methodInfos.end()) {
            if (type.requestDataTypeName.empty()) {
                type.requestDataTypeName = dds->second.ddsMethodInfo.requestDataTypeName;
            }
            if (type.replyDataTypeName.empty()) {
                type.replyDataTypeName = dds->second.ddsMethodInfo.replyDataTypeName;
            }
        }
    }
    const uint32_t cap = Cap(filter);
    for (auto& [key, type] : types) {
        ++reply.total;
        if (reply.methodTypes.size() < cap) {
            reply.methodTypes.push_back(std::move(type));
        } else {
            reply.truncated = true;
        }
    }
    return reply;
}

tools::EventShowReply QueryEngine::EventShow(const RegistryState& state,
                                             const tools::EventShowRequest& request) const {
    tools::EventShowReply reply;
    ResolvedEvent resolved = ResolveEvent(state, request.event, request.filter);
    reply.code = static_cast<uint8_t>(resolved.code);
    reply.message = resolved.message;
    reply.candidates = std::move(resolved.candidates);
    if (resolved.code != tools::ToolsCode::OK) {
        return reply;
    }
    for (const EntityKey& key : resolved.registrations) {
        tools::EventEntry entry = state.events.at(key);
        entry.online = entry.online && IsNodeOnline(state, NodeOf(key));
        reply.events.push_back(std::move(entry));
    }
    auto status = state.latencyStatuses.find(resolved.key);
    if (status != state.latencyStatuses.end()) {
        reply.latency = status->second;
    } else {
        reply.latency.eventName = resolved.eventName;
        reply.latency.latencyIndex = resolved.index;
    }
    return reply;
}

}  // namespace orx::maintaind::daemon
