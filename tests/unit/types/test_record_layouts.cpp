// Every record of the maintenance protocol and of the tools-side interface has its byte layout
// pinned: one record of each type, filled by the test record filler, goes through the core's
// encoder and must give exactly the bytes listed for it in record_layouts.txt. The filler takes
// each value from the member's name, so a record whose member list swaps two members of the same
// type, or changes a member's width, fails here even when everything still round-trips. (Two
// bools can only be told apart when their values differ.)
//
// Sequences and maps of plain values get one entry in the record itself and none in its nested
// records. Sequences and maps of records stay empty, as those records have rows of their own,
// except where a record holds two of one type. The one-byte enumerations have rows too, for the
// width of map keys.
//
// When a record changes on purpose, let the test write the list anew, then review the difference:
//   ORX_WRITE_RECORD_LAYOUTS=1 build/bin/orx_types_test --gtest_filter='RecordLayouts.*'
#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <typeinfo>

#include "orx/maintaind/tools/tools.h"
#include "orx/maintaind/types.h"
#include "orx/test/record_filler.h"
#include "vorx/serialize/cdr.h"

namespace orx::maintaind::tools {
namespace {

template <class T>
constexpr std::size_t kRecordEntries = 0;
template <>
constexpr std::size_t kRecordEntries<AppE2EConfigInfo> = 1;  // pub and sub lists

template <class T>
std::string HexOf() {
    const T value = orx::test::FilledRecord<T>({0, 1, 0, kRecordEntries<T>});
    std::string hex;
    char digits[3];
    for (const uint8_t byte : vorx::serialize::Encode(value)) {
        std::snprintf(digits, sizeof(digits), "%02x", byte);
        hex += digits;
    }
    return hex;
}

// Type name (without namespace) -> hex of the filled record, for every type `T...`.
template <class... T>
std::map<std::string, std::string> Encoded() {
    auto name = [](const char* mangled) {
        char* text = abi::__cxa_demangle(mangled, nullptr, nullptr, nullptr);
        const std::string full = text != nullptr ? text : mangled;
        std::free(text);
        return full.substr(full.rfind(':') + 1);
    };
    return {{name(typeid(T).name()), HexOf<T>()}...};
}

// Type name -> hex, from the lines "<type> <hex>" of the list; "#" starts a comment line.
std::map<std::string, std::string> PinnedLayouts() {
    std::map<std::string, std::string> pinned;
    std::ifstream file(ORX_RECORD_LAYOUTS_PATH);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string type;
        std::string hex;
        if (words >> type >> hex && type[0] != '#') {
            pinned[type] = hex;
        }
    }
    return pinned;
}

TEST(RecordLayouts, EveryRecordEncodesToThePinnedBytes) {
    const auto actual =
        Encoded<DriverType, ListenerType, DurabilityQos, HistoryQos, ReliabilityKind, TransportQos,
                E2EProfile, E2EDataIDMode, LatencyMode, ErrorDomainInfo, SerializeConfig,
                E2EConfigInfo, DDSEventInfo, IsignalInfo, PduConfigInfo, SomeipEventInfo, EventInfo,
                EventRegisterInfo, DDSMethodInfo, SomeipMethodInfo, MethodInfo, MethodRegisterInfo,
                FieldInfo, FieldRegisterInfo, EventE2EConfigInfo, AppE2EConfigInfo, NodePidInfo,
                NodeCommonRegisterInfo, ListenerParams, LatencyIndex, LatencyModeAckInfo,
                LatencyResult, LatencyResultInfo, LatencyInfo, AppRegisterInfo, ReturnCode,
                LatencySwitch, QueryFilter, DataTypeRequest, EventShowRequest, LatencySwitchRequest,
                NodeEntry, EventEntry, MethodEntry, FieldEntry, E2EEntry, LatencyAckEntry,
                LatencyStatusEntry, LatencyResultEntry, SampleTimeoutEntry, DataTypeEntry,
                MethodTypeEntry, DaemonCounters, NodeListReply, EventListReply, MethodListReply,
                FieldListReply, E2EListReply, LatencyStatusListReply, LatencyResultListReply,
                SampleTimeoutListReply, DataTypeListReply, DataTypeReply, MethodTypeListReply,
                EventShowReply, LatencySwitchReply, AllDataReply, DaemonStatusReply>();
    if (std::getenv("ORX_WRITE_RECORD_LAYOUTS") != nullptr) {
        std::ofstream file(ORX_RECORD_LAYOUTS_PATH);
        file << "# Written by test_record_layouts.cpp; see there before changing it.\n";
        for (const auto& [type, hex] : actual) {
            file << type << " " << hex << "\n";
        }
        ASSERT_TRUE(file.good()) << "cannot write " << ORX_RECORD_LAYOUTS_PATH;
        return;
    }
    std::map<std::string, std::string> pinned = PinnedLayouts();
    ASSERT_FALSE(pinned.empty()) << "cannot read " << ORX_RECORD_LAYOUTS_PATH;
    for (const auto& [type, hex] : actual) {
        EXPECT_EQ(hex, pinned[type]) << type;
        pinned.erase(type);
    }
    EXPECT_TRUE(pinned.empty()) << "listed but not checked: " << pinned.begin()->first;
}

}  // namespace
}  // namespace orx::maintaind::tools
