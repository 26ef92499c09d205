// The list of every maintenance record type, for typed tests, and filled records.
#pragma once

#include <gtest/gtest.h>

#include "orx/maintaind/types.h"
#include "orx/test/record_filler.h"

namespace orx::maintaind::test {

// Every record of the maintenance interface; typed tests run over all of them.
using AllRecords =
    ::testing::Types<ErrorDomainInfo, SerializeConfig, E2EConfigInfo, DDSEventInfo, IsignalInfo,
                     PduConfigInfo, SomeipEventInfo, EventInfo, EventRegisterInfo, DDSMethodInfo,
                     SomeipMethodInfo, MethodInfo, MethodRegisterInfo, FieldInfo, FieldRegisterInfo,
                     EventE2EConfigInfo, AppE2EConfigInfo, NodePidInfo, NodeCommonRegisterInfo,
                     ListenerParams, LatencyIndex, LatencyModeAckInfo, LatencyResult,
                     LatencyResultInfo, LatencyInfo, AppRegisterInfo, ReturnCode, LatencySwitch>;

// A record filled with `seed` (0 and 1 set every bool once each way), `elements` entries in
// every sequence and map.
template <class T>
T Filled(uint64_t seed, std::size_t elements = 2) {
    return orx::test::FilledRecord<T>({seed, elements, elements});
}

}  // namespace orx::maintaind::test
