// Doubles and builders shared by the maintenance daemon's unit tests: a scriptable process probe,
// a settable clock and report builders.
#ifndef TESTS_UNIT_DAEMON_DAEMON_TEST_SUPPORT_H
#define TESTS_UNIT_DAEMON_DAEMON_TEST_SUPPORT_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include <ostream>
#include <type_traits>

#include "liveness/process_probe.h"
#include "orx/maintaind/app.h"
#include "orx/maintaind/json.h"
#include "orx/test/temp_dir.h"
#include "orx/test/wait.h"
#include "registry/keys.h"
#include "registry/report_sender.h"
#include "registry/wall_clock.h"

// Records print as JSON in failure messages, for the record types of each namespace.
#define ORX_TEST_PRINT_RECORDS_AS_JSON                                            \
    template <class T, std::enable_if_t<::orx::maintaind::IsRecordV<T>, int> = 0> \
    std::ostream& operator<<(std::ostream& os, const T& value) {                  \
        return os << ::orx::maintaind::ToJson(value).dump();                      \
    }
namespace orx::maintaind {
ORX_TEST_PRINT_RECORDS_AS_JSON
}
namespace orx::maintaind::tools {
ORX_TEST_PRINT_RECORDS_AS_JSON
}
namespace orx::maintaind::daemon {
ORX_TEST_PRINT_RECORDS_AS_JSON
}

namespace orx::maintaind::daemon::test {

// Processes as the test says they are. Unknown pids do not run here.
class FakeProbe final : public ProcessProbe {
  public:
    void Run(int32_t pid, uint64_t startTicks) {
        std::lock_guard<std::mutex> lock(mutex_);
        processes_[pid] = startTicks;
    }
    void End(int32_t pid) {
        std::lock_guard<std::mutex> lock(mutex_);
        processes_.erase(pid);
    }
    std::optional<uint64_t> StartTicks(int32_t pid) const override {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = processes_.find(pid);
        return it == processes_.end() ? std::nullopt : std::optional<uint64_t>(it->second);
    }
    std::string HostName() const override { return "testhost"; }

  private:
    mutable std::mutex mutex_;
    std::map<int32_t, uint64_t> processes_;
};

inline NodeKey Key(const std::string& app, int32_t pid, const std::string& host = "") {
    return NodeKey{app, pid, host};
}

// The process `pid` of `host` as the transport names it; local means the daemon's own host.
inline ReportSender Sender(const std::string& peer, const std::string& host, int32_t pid,
                           uint64_t startTicks, bool local) {
    ReportSender sender;
    sender.peer = peer;
    sender.host = host;
    sender.hostId = host + "-id";
    sender.local = local;
    sender.pid = pid;
    sender.startTicks = startTicks;
    return sender;
}

// A wall clock the test moves.
struct ManualClock {
    std::shared_ptr<std::atomic<uint64_t>> now = std::make_shared<std::atomic<uint64_t>>(1000);
    WallClock Clock() const {
        return [now = now] { return now->load(); };
    }
    void Advance(uint64_t ms) const { now->fetch_add(ms); }
};

// Reports as the plug-in builds them.
inline AppRegisterInfo NodeReport(const std::string& app, int32_t pid, bool online) {
    AppRegisterInfo report;
    report.kind = static_cast<uint8_t>(ReportKind::E2E_AND_NODE);
    report.nodeCommonRegisterInfo.appName = app;
    report.nodeCommonRegisterInfo.pid = pid;
    report.nodeCommonRegisterInfo.nodePidInfo.isOnline = online;
    return report;
}

// A DDS event (with `topic`) or, with `someipEventId` set, also on SOME/IP.
inline AppRegisterInfo EventReport(const std::string& app, int32_t pid, const std::string& name,
                                   bool isPub, const std::string& topic, uint16_t serviceId = 0x10,
                                   uint16_t instanceId = 1, bool online = true,
                                   uint16_t someipEventId = 0) {
    AppRegisterInfo report;
    report.kind = static_cast<uint8_t>(ReportKind::EVENT);
    report.isPub = isPub;
    EventRegisterInfo& event = report.eventRegisterInfo;
    event.serviceName = "/demo/Service" + std::to_string(serviceId);
    event.instanceName = "instance" + std::to_string(instanceId);
    event.eventName = name;
    event.dataTypeName = name + "Type";
    event.appName = app;
    event.pid = pid;
    event.isOnline = online;
    if (!topic.empty()) {
        DDSEventInfo& dds = event.eventInfos[DriverType::DDS].ddsEventInfo;
        dds.serviceId = serviceId;
        dds.instanceId = instanceId;
        dds.topicName = topic;
    }
    if (someipEventId != 0) {
        SomeipEventInfo& someip = event.eventInfos[DriverType::SOMEIP].someipEventInfo;
        someip.serviceId = serviceId;
        someip.instanceId = instanceId;
        someip.eventId = someipEventId;
    }
    return report;
}

inline AppRegisterInfo MethodReport(const std::string& app, int32_t pid, const std::string& name,
                                    bool isPub, uint16_t serviceId = 0x10, bool online = true) {
    AppRegisterInfo report;
    report.kind = static_cast<uint8_t>(ReportKind::METHOD);
    report.isPub = isPub;
    MethodRegisterInfo& method = report.methodRegisterInfo;
    method.serviceName = "/demo/Service" + std::to_string(serviceId);
    method.methodName = name;
    method.serviceId = serviceId;
    method.instanceId = 1;
    method.appName = app;
    method.pid = pid;
    method.isOnline = online;
    DDSMethodInfo& dds = method.methodInfos[DriverType::DDS].ddsMethodInfo;
    dds.requestTopicName = name + "Request";
    dds.replyTopicName = name + "Reply";
    dds.requestDataTypeName = name + "In";
    dds.replyDataTypeName = name + "Out";
    return report;
}

inline AppRegisterInfo FieldReport(const std::string& app, int32_t pid, const std::string& name,
                                   bool isPub) {
    AppRegisterInfo report;
    report.kind = static_cast<uint8_t>(ReportKind::FIELD);
    report.isPub = isPub;
    FieldRegisterInfo& field = report.fieldRegisterInfo;
    field.serviceName = "/demo/Service16";
    field.fieldName = name;
    field.serviceId = 0x10;
    field.hasNotifier = true;
    field.hasGetter = true;
    field.appName = app;
    field.pid = pid;
    field.isOnline = true;
    field.bindingNames[DriverType::DDS] = name + "Short";
    return report;
}

inline AppRegisterInfo E2EReport(const std::string& app, int32_t pid, const std::string& eventName,
                                 uint16_t eventId, bool isPub) {
    AppRegisterInfo report = NodeReport(app, pid, false);
    EventE2EConfigInfo config;
    config.serviceId = 0x10;
    config.instanceId = 1;
    config.eventId = eventId;
    config.eventName = eventName;
    config.e2eConfig.profile = E2EProfile::PROFILE_04;
    config.e2eConfig.dataIdList = {7, 8};
    config.driverType = DriverType::DDS;
    config.isPub = isPub;
    auto& list = isPub ? report.nodeCommonRegisterInfo.appE2EConfig.pubE2EConfigs
                       : report.nodeCommonRegisterInfo.appE2EConfig.subE2EConfigs;
    list.push_back(config);
    return report;
}

// An acknowledgement (type 0) or a result (type 1) of a DDS event.
inline AppRegisterInfo LatencyReport(const std::string& app, const std::string& topic, uint8_t type,
                                     LatencyMode mode = LatencyMode::ENABLE,
                                     uint64_t maxLatency = 0, uint16_t serviceId = 0x10) {
    AppRegisterInfo report;
    LatencyInfo& info = report.latencyInfo;
    info.type = type;
    info.appName = app;
    info.latencyIndex.driverTypes = {DriverType::DDS};
    info.latencyIndex.serviceId = serviceId;
    info.latencyIndex.instanceId = 1;
    info.latencyIndex.eventName = topic;
    if (type == 0) {
        info.ackInfo.mode = mode;
        info.ackInfo.isSubMatched = true;
    } else {
        info.resultInfo.result = {maxLatency / 2, maxLatency, maxLatency * 3 / 4};
        info.resultInfo.notifyTime = 42;
    }
    return report;
}

inline AppRegisterInfo TimeoutReport(const std::string& listener, uint32_t count) {
    AppRegisterInfo report;
    ListenerParams& params = report.listenerParams[ListenerType::SAMPLE_TIMEOUT];
    params.listenerName = listener;
    params.sampleTimeout = 100;
    params.sampleTimeoutCount = count;
    return report;
}

using orx::test::TempDir;
using orx::test::WaitFor;

}  // namespace orx::maintaind::daemon::test

#endif  // TESTS_UNIT_DAEMON_DAEMON_TEST_SUPPORT_H
