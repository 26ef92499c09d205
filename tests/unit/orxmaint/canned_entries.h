// Small, readable entries of the daemon's lists for the tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orx/maintaind/tools/entries.h"

namespace orx::orxmaint::test {

// 2024-05-01T12:00:00Z in milliseconds since the epoch.
inline constexpr uint64_t kNoonMs = 1714564800000ULL;

inline maintaind::tools::NodeEntry Node(const std::string& app, int32_t pid, bool online) {
    maintaind::tools::NodeEntry node;
    node.appName = app;
    node.pid = pid;
    node.host = "ecu1";
    node.online = online;
    node.offlineReason = online ? "" : "process gone";
    node.firstSeen = kNoonMs;
    node.lastSeen = kNoonMs + 61000;
    node.eventCount = 2;
    return node;
}

inline maintaind::tools::EventEntry Event(const std::string& app, int32_t pid,
                                          const std::string& name, bool isPub) {
    maintaind::tools::EventEntry event;
    event.appName = app;
    event.pid = pid;
    event.eventName = name;
    event.serviceName = "/demo/RadarService";
    event.instanceName = "radar_1";
    event.serviceId = 0x1234;
    event.instanceId = 1;
    event.isPub = isPub;
    event.online = true;
    event.bindings = {"DDS", "SOMEIP"};
    event.topicName = "RadarObjects";
    event.eventId = 0x8001;
    event.dataTypeName = "demo::ObjectList";
    event.record.eventName = name;  // the full registration, which --json leaves out
    return event;
}

inline maintaind::tools::MethodEntry Method(const std::string& app, const std::string& name,
                                            bool isPub) {
    maintaind::tools::MethodEntry method;
    method.appName = app;
    method.pid = 42;
    method.methodName = name;
    method.serviceName = "/demo/RadarService";
    method.serviceId = 0x1234;
    method.instanceId = 1;
    method.isPub = isPub;
    method.online = true;
    method.bindings = {"DDS"};
    method.requestTopicName = "CalibrateRequest";
    return method;
}

inline maintaind::tools::FieldEntry Field(const std::string& app, const std::string& name,
                                          bool isPub) {
    maintaind::tools::FieldEntry field;
    field.appName = app;
    field.pid = 42;
    field.fieldName = name;
    field.serviceName = "/demo/RadarService";
    field.serviceId = 0x1234;
    field.instanceId = 1;
    field.isPub = isPub;
    field.online = true;
    field.bindings = {"DDS"};
    field.hasNotifier = true;
    field.hasGetter = true;
    return field;
}

inline maintaind::tools::LatencyResultEntry Result(const std::string& app, const std::string& event,
                                                   uint64_t average, uint64_t receivedAt) {
    maintaind::tools::LatencyResultEntry result;
    result.appName = app;
    result.eventName = event;
    result.latencyIndex.driverTypes = {maintaind::DriverType::DDS};
    result.latencyIndex.serviceId = 0x1234;
    result.latencyIndex.instanceId = 1;
    result.latencyIndex.eventName = "RadarObjects";
    result.minLatency = 120;
    result.averageLatency = average;
    result.maxLatency = 2500000;
    result.notifyTime = 987654;
    result.receivedAt = receivedAt;
    return result;
}

inline maintaind::tools::SampleTimeoutEntry Timeout(const std::string& app,
                                                    const std::string& listener, uint32_t count) {
    maintaind::tools::SampleTimeoutEntry timeout;
    timeout.appName = app;
    timeout.listenerName = listener;
    timeout.sampleTimeout = 100;
    timeout.sampleTimeoutCount = count;
    timeout.reportCount = 1;
    timeout.firstSeen = kNoonMs;
    timeout.lastSeen = kNoonMs;
    return timeout;
}

}  // namespace orx::orxmaint::test
