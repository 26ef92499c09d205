#include "ingest/report_check.h"

#include "registry/report_class.h"

namespace orx::maintaind::daemon {

namespace {

template <class Map>
bool KnownBindingsOnly(const Map& perBinding) {
    for (const auto& item : perBinding) {
        if (item.first != DriverType::DDS && item.first != DriverType::SOMEIP) {
            return false;
        }
    }
    return true;
}

std::string CheckSender(const String& appName, int32_t pid) {
    if (appName.empty()) {
        return "empty application name";
    }
    if (pid <= 0) {
        return "pid " + std::to_string(pid) + " is not a process id";
    }
    return "";
}

// The nested records a report of `kind` must leave at their defaults.
std::string CheckOthersEmpty(const AppRegisterInfo& report, ReportClass kind) {
    const bool event = kind == ReportClass::kEvent;
    const bool method = kind == ReportClass::kMethod;
    const bool field = kind == ReportClass::kField;
    const bool node = kind == ReportClass::kE2EOrNode;
    const bool latency = kind == ReportClass::kLatency;
    const bool listener = kind == ReportClass::kListener;
    if (!event && report.eventRegisterInfo != EventRegisterInfo{}) {
        return "event record filled in a report of another kind";
    }
    if (!method && report.methodRegisterInfo != MethodRegisterInfo{}) {
        return "method record filled in a report of another kind";
    }
    if (!field && report.fieldRegisterInfo != FieldRegisterInfo{}) {
        return "field record filled in a report of another kind";
    }
    if (!node && report.nodeCommonRegisterInfo != NodeCommonRegisterInfo{}) {
        return "node record filled in a report of another kind";
    }
    if (!latency && report.latencyInfo != LatencyInfo{}) {
        return "latency record filled in a report of another kind";
    }
    if (!listener && !report.listenerParams.empty()) {
        return "listener parameters in a report of another kind";
    }
    return "";
}

std::string CheckKindRecord(const AppRegisterInfo& report) {
    switch (ClassifyReport(report)) {
        case ReportClass::kEvent: {
            const EventRegisterInfo& event = report.eventRegisterInfo;
            if (event.eventName.empty() && event.eventInfos.empty()) {
                return "event without name and bindings";
            }
            if (!KnownBindingsOnly(event.eventInfos)) {
                return "event binding other than DDS or SOMEIP";
            }
            return CheckSender(event.appName, event.pid);
        }
        case ReportClass::kMethod: {
            const MethodRegisterInfo& method = report.methodRegisterInfo;
            if (method.methodName.empty() && method.methodInfos.empty()) {
                return "method without name and bindings";
            }
            if (!KnownBindingsOnly(method.methodInfos)) {
                return "method binding other than DDS or SOMEIP";
            }
            return CheckSender(method.appName, method.pid);
        }
        case ReportClass::kField: {
            const FieldRegisterInfo& field = report.fieldRegisterInfo;
            if (field.fieldName.empty() && field.bindingNames.empty() && field.fieldInfos.empty()) {
                return "field without name and bindings";
            }
            if (!KnownBindingsOnly(field.bindingNames) || !KnownBindingsOnly(field.fieldInfos)) {
                return "field binding other than DDS or SOMEIP";
            }
            return CheckSender(field.appName, field.pid);
        }
        case ReportClass::kE2EOrNode:
            return CheckSender(report.nodeCommonRegisterInfo.appName,
                               report.nodeCommonRegisterInfo.pid);
        case ReportClass::kLatency: {
            const LatencyInfo& latency = report.latencyInfo;
            if (latency.type > 1) {
                return "latency report of unknown type " + std::to_string(latency.type);
            }
            if (latency.appName.empty()) {
                return "empty application name";
            }
            if (latency.latencyIndex.eventName.empty() && latency.latencyIndex.eventId == 0) {
                return "latency report without topic name and event id";
            }
            if (latency.type == 0 && latency.ackInfo.mode != LatencyMode::ENABLE &&
                latency.ackInfo.mode != LatencyMode::DISABLE) {
                return "latency acknowledgement of unknown mode";
            }
            return "";
        }
        case ReportClass::kListener: {
            if (report.listenerParams.size() != 1 ||
                report.listenerParams.begin()->first != ListenerType::SAMPLE_TIMEOUT) {
                return "listener report without exactly one sample-timeout entry";
            }
            if (report.listenerParams.begin()->second.listenerName.empty()) {
                return "listener report without listener name";
            }
            return "";
        }
        case ReportClass::kUnknown:
            break;
    }
    return "unknown report kind " + std::to_string(report.kind);
}

}  // namespace

std::string CheckReport(const AppRegisterInfo& report) {
    std::string problem = CheckKindRecord(report);
    if (problem.empty()) {
        problem = CheckOthersEmpty(report, ClassifyReport(report));
    }
    return problem;
}

}  // namespace orx::maintaind::daemon
