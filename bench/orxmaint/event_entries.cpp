#include "event_entries.h"

#include <string>

namespace orx::orxmaint::bench {

namespace {

using maintaind::DriverType;

constexpr size_t kApplications = 50;
constexpr uint64_t kSeenMs = 1714564800000ULL;

maintaind::E2EConfigInfo E2E() {
    maintaind::E2EConfigInfo e2e;
    e2e.profile = maintaind::E2EProfile::PROFILE_04;
    e2e.dataIdList = {4097, 4098, 4099, 4100};
    e2e.isE2EEnabled = true;
    e2e.maxDataLength = 4096;
    e2e.counterOffset = 64;
    e2e.maxDeltaCounter = 2;
    return e2e;
}

maintaind::EventRegisterInfo Record(const maintaind::tools::EventEntry& entry) {
    maintaind::EventRegisterInfo record;
    record.serviceName = entry.serviceName;
    record.instanceName = entry.instanceName;
    record.eventName = entry.eventName;
    record.dataTypeName = entry.dataTypeName;
    record.shortName = "Objects";
    record.appName = entry.appName;
    record.pid = entry.pid;
    record.isOnline = true;
    maintaind::EventInfo dds;
    dds.ddsEventInfo.serviceId = entry.serviceId;
    dds.ddsEventInfo.instanceId = entry.instanceId;
    dds.ddsEventInfo.topicName = entry.topicName;
    dds.ddsEventInfo.dataTypeName = entry.dataTypeName;
    dds.ddsEventInfo.historyDepth = 8;
    dds.ddsEventInfo.queueSize = 8;
    dds.ddsEventInfo.transportQos = {maintaind::TransportQos::UDP};
    dds.ddsEventInfo.networkName = "127.0.0.1";
    dds.ddsEventInfo.attributes = {{"zone", "front"}, {"asil", "B"}};
    dds.ddsEventInfo.e2eConfig = E2E();
    dds.ddsEventInfo.reliability = maintaind::ReliabilityKind::RELIABLE;
    record.eventInfos[DriverType::DDS] = dds;
    maintaind::EventInfo someip;
    someip.someipEventInfo.serviceId = entry.serviceId;
    someip.someipEventInfo.instanceId = entry.instanceId;
    someip.someipEventInfo.majorVersion = 1;
    someip.someipEventInfo.eventId = entry.eventId;
    someip.someipEventInfo.eventGroupIds = {1};
    someip.someipEventInfo.port = 30501;
    someip.someipEventInfo.e2eConfig = E2E();
    someip.someipEventInfo.serializeTag.assign(96, 0x5A);
    record.eventInfos[DriverType::SOMEIP] = someip;
    return record;
}

}  // namespace

std::vector<maintaind::tools::EventEntry> MakeEventEntries(size_t count) {
    std::vector<maintaind::tools::EventEntry> entries;
    entries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const size_t app = i % kApplications;
        const size_t service = i / (2 * kApplications);
        maintaind::tools::EventEntry entry;
        entry.appName = "app" + std::to_string(app);
        entry.pid = static_cast<int32_t>(1000 + app);
        entry.serviceName = "/bench/Service" + std::to_string(service);
        entry.instanceName = "Bench/Instance" + std::to_string(service);
        entry.eventName = entry.serviceName + "/Event" + std::to_string(i);
        entry.serviceId = static_cast<uint16_t>(0x1000 + service);
        entry.instanceId = 1;
        entry.isPub = i % 2 == 0;
        entry.online = true;
        entry.bindings = {"DDS", "SOMEIP"};
        entry.topicName = "BenchTopic" + std::to_string(i);
        entry.eventId = static_cast<uint16_t>(0x8000 + i % 0x7FFF);
        entry.dataTypeName = "/bench/ObjectList";
        entry.firstSeen = kSeenMs;
        entry.lastSeen = kSeenMs + i;
        entry.record = Record(entry);
        entries.push_back(std::move(entry));
    }
    return entries;
}

}  // namespace orx::orxmaint::bench
