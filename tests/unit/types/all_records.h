// The list of every maintenance record type, for typed tests.
#pragma once

#include <gtest/gtest.h>

#include "orx/maintaind/types.h"

namespace orx::maintaind::test {

// Every record of the maintenance interface; typed tests run over all of them.
using AllRecords =
    ::testing::Types<ErrorDomainInfo, SerializeConfig, E2EConfigInfo, DDSEventInfo, IsignalInfo,
                     PduConfigInfo, SomeipEventInfo, EventInfo, EventRegisterInfo, DDSMethodInfo,
                     SomeipMethodInfo, MethodInfo, MethodRegisterInfo, FieldInfo, FieldRegisterInfo,
                     EventE2EConfigInfo, AppE2EConfigInfo, NodePidInfo, NodeCommonRegisterInfo,
                     ListenerParams, LatencyIndex, LatencyModeAckInfo, LatencyResult,
                     LatencyResultInfo, LatencyInfo, AppRegisterInfo, ReturnCode, LatencySwitch>;

}  // namespace orx::maintaind::test
