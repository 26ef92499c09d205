// Realistic reports for the daemon's benchmarks: an event on DDS and SOME/IP with E2E settings,
// as the plug-in reports one.
#ifndef BENCH_DAEMON_BENCH_REPORTS_H
#define BENCH_DAEMON_BENCH_REPORTS_H

#include <unistd.h>
#include <fstream>
#include <string>

#include "orx/maintaind/app.h"

namespace orx::maintaind::bench {

inline AppRegisterInfo EventReportFor(const std::string& app, int32_t pid, int index) {
    AppRegisterInfo report;
    report.kind = static_cast<uint8_t>(ReportKind::EVENT);
    report.isPub = index % 2 == 0;
    EventRegisterInfo& event = report.eventRegisterInfo;
    const std::string name = "Event" + std::to_string(index);
    event.serviceName = "/bench/" + app + "/Service" + std::to_string(index / 50);
    event.instanceName = "instance1";
    event.eventName = event.serviceName + "/" + name;
    event.dataTypeName = "/bench/types/" + name + "Type";
    event.shortName = name;
    event.serializeConfig.serializeType = 1;
    event.appName = app;
    event.pid = pid;
    event.isOnline = true;
    DDSEventInfo& dds = event.eventInfos[DriverType::DDS].ddsEventInfo;
    dds.serviceId = static_cast<uint16_t>(0x100 + index / 50);
    dds.instanceId = 1;
    dds.topicName = app + "_" + name + "_Topic";
    dds.dataTypeName = event.dataTypeName;
    dds.historyDepth = 10;
    dds.queueSize = 32;
    dds.transportQos = {TransportQos::UDP, TransportQos::SHM};
    dds.networkName = "127.0.0.1";
    dds.attributes = {{"zone", "cockpit"}, {"asil", "QM"}};
    dds.e2eConfig.profile = E2EProfile::PROFILE_04;
    dds.e2eConfig.dataIdList = {1, 2, 3, 4};
    dds.e2eConfig.isE2EEnabled = true;
    SomeipEventInfo& someip = event.eventInfos[DriverType::SOMEIP].someipEventInfo;
    someip.serviceId = dds.serviceId;
    someip.instanceId = 1;
    someip.eventId = static_cast<uint16_t>(0x8000 + index);
    someip.eventGroupIds = {1};
    someip.port = 30490;
    someip.e2eConfig = dds.e2eConfig;
    someip.serializeTag.assign(96, 0x5A);
    return report;
}

// Resident memory of this process in bytes.
inline size_t ResidentBytes() {
    std::ifstream statm("/proc/self/statm");
    size_t pages = 0;
    size_t resident = 0;
    statm >> pages >> resident;
    return resident * static_cast<size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace orx::maintaind::bench

#endif  // BENCH_DAEMON_BENCH_REPORTS_H
