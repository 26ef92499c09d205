// The registration request that carries every report to the daemon, and its reply.
#pragma once

#include <cstdint>
#include <map>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/event.h"
#include "orx/maintaind/field.h"
#include "orx/maintaind/latency.h"
#include "orx/maintaind/method.h"
#include "orx/maintaind/node.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// Settings of one subscriber listener.
struct ListenerParams {
    String listenerName;
    uint32_t sampleTimeout{};
    uint32_t sampleTimeoutCount{};

    ORX_MAINTAIND_RECORD(ListenerParams, listenerName, sampleTimeout, sampleTimeoutCount)
};

// The single argument of the daemon's registration method. One record carries one report: only
// the nested record named by `kind` is filled, the others stay default and are still encoded.
struct AppRegisterInfo {
    bool isPub{};    // publisher (offering or server) side of the reported entity
    uint8_t kind{};  // a ReportKind value
    EventRegisterInfo eventRegisterInfo;
    MethodRegisterInfo methodRegisterInfo;
    FieldRegisterInfo fieldRegisterInfo;
    NodeCommonRegisterInfo nodeCommonRegisterInfo;
    LatencyInfo latencyInfo;
    std::map<ListenerType, ListenerParams> listenerParams;

    ORX_MAINTAIND_RECORD(AppRegisterInfo, isPub, kind, eventRegisterInfo, methodRegisterInfo,
                         fieldRegisterInfo, nodeCommonRegisterInfo, latencyInfo, listenerParams)
};

// Reply of every daemon method.
struct ReturnCode {
    uint8_t code{};  // 0 accepted; 1 accepted with a problem, or rejected

    ORX_MAINTAIND_RECORD(ReturnCode, code)
};

}  // namespace orx::maintaind
