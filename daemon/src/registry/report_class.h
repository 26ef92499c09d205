// What a RegisterApp report is about. Registration reports name it in their kind; latency and
// sample-timeout reports leave the kind at its default (0, the event kind) and are told apart by
// what they carry.
#pragma once

#include <cstdint>

#include "orx/maintaind/app.h"

namespace orx::maintaind::daemon {

enum class ReportClass : uint8_t {
    kEvent,
    kMethod,
    kField,
    kE2EOrNode,
    kLatency,   // acknowledgement of a latency switch, or a latency result
    kListener,  // sample-timeout notice
    kUnknown,   // a kind the protocol does not define
};

// A kind-0 report without an event record is a latency report when it carries a latency record
// and a sample-timeout report when it carries listener parameters (the latter wins when it
// carries both; the check then refuses it for the filled latency record). Any other kind-0
// report is an event report.
inline ReportClass ClassifyReport(const AppRegisterInfo& report) {
    switch (static_cast<ReportKind>(report.kind)) {
        case ReportKind::EVENT:
            if (report.eventRegisterInfo == EventRegisterInfo{}) {
                if (!report.listenerParams.empty()) {
                    return ReportClass::kListener;
                }
                if (report.latencyInfo != LatencyInfo{}) {
                    return ReportClass::kLatency;
                }
            }
            return ReportClass::kEvent;
        case ReportKind::METHOD:
            return ReportClass::kMethod;
        case ReportKind::FIELD:
            return ReportClass::kField;
        case ReportKind::E2E_AND_NODE:
            return ReportClass::kE2EOrNode;
    }
    return ReportClass::kUnknown;
}

// For logs.
constexpr const char* ToString(ReportClass value) {
    switch (value) {
        case ReportClass::kEvent:
            return "EVENT";
        case ReportClass::kMethod:
            return "METHOD";
        case ReportClass::kField:
            return "FIELD";
        case ReportClass::kE2EOrNode:
            return "E2E_AND_NODE";
        case ReportClass::kLatency:
            return "LATENCY";
        case ReportClass::kListener:
            return "LISTENER";
        case ReportClass::kUnknown:
            break;
    }
    return "UNKNOWN";
}

}  // namespace orx::maintaind::daemon
