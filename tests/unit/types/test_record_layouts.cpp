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
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

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

struct Layout {
    const char* type;
    std::string (*encode)();
};

#define ORX_LAYOUT(Type)      \
    Layout {                  \
#Type, &HexOf < Type> \
    }

const Layout kLayouts[] = {
    ORX_LAYOUT(DriverType),
    ORX_LAYOUT(ListenerType),
    ORX_LAYOUT(DurabilityQos),
    ORX_LAYOUT(HistoryQos),
    ORX_LAYOUT(ReliabilityKind),
    ORX_LAYOUT(TransportQos),
    ORX_LAYOUT(E2EProfile),
    ORX_LAYOUT(E2EDataIDMode),
    ORX_LAYOUT(LatencyMode),
    ORX_LAYOUT(ErrorDomainInfo),
    ORX_LAYOUT(SerializeConfig),
    ORX_LAYOUT(E2EConfigInfo),
    ORX_LAYOUT(DDSEventInfo),
    ORX_LAYOUT(IsignalInfo),
    ORX_LAYOUT(PduConfigInfo),
    ORX_LAYOUT(SomeipEventInfo),
    ORX_LAYOUT(EventInfo),
    ORX_LAYOUT(EventRegisterInfo),
    ORX_LAYOUT(DDSMethodInfo),
    ORX_LAYOUT(SomeipMethodInfo),
    ORX_LAYOUT(MethodInfo),
    ORX_LAYOUT(MethodRegisterInfo),
    ORX_LAYOUT(FieldInfo),
    ORX_LAYOUT(FieldRegisterInfo),
    ORX_LAYOUT(EventE2EConfigInfo),
    ORX_LAYOUT(AppE2EConfigInfo),
    ORX_LAYOUT(NodePidInfo),
    ORX_LAYOUT(NodeCommonRegisterInfo),
    ORX_LAYOUT(ListenerParams),
    ORX_LAYOUT(LatencyIndex),
    ORX_LAYOUT(LatencyModeAckInfo),
    ORX_LAYOUT(LatencyResult),
    ORX_LAYOUT(LatencyResultInfo),
    ORX_LAYOUT(LatencyInfo),
    ORX_LAYOUT(AppRegisterInfo),
    ORX_LAYOUT(ReturnCode),
    ORX_LAYOUT(LatencySwitch),
    ORX_LAYOUT(QueryFilter),
    ORX_LAYOUT(DataTypeRequest),
    ORX_LAYOUT(EventShowRequest),
    ORX_LAYOUT(LatencySwitchRequest),
    ORX_LAYOUT(NodeEntry),
    ORX_LAYOUT(EventEntry),
    ORX_LAYOUT(MethodEntry),
    ORX_LAYOUT(FieldEntry),
    ORX_LAYOUT(E2EEntry),
    ORX_LAYOUT(LatencyAckEntry),
    ORX_LAYOUT(LatencyStatusEntry),
    ORX_LAYOUT(LatencyResultEntry),
    ORX_LAYOUT(SampleTimeoutEntry),
    ORX_LAYOUT(DataTypeEntry),
    ORX_LAYOUT(MethodTypeEntry),
    ORX_LAYOUT(DaemonCounters),
    ORX_LAYOUT(NodeListReply),
    ORX_LAYOUT(EventListReply),
    ORX_LAYOUT(MethodListReply),
    ORX_LAYOUT(FieldListReply),
    ORX_LAYOUT(E2EListReply),
    ORX_LAYOUT(LatencyStatusListReply),
    ORX_LAYOUT(LatencyResultListReply),
    ORX_LAYOUT(SampleTimeoutListReply),
    ORX_LAYOUT(DataTypeListReply),
    ORX_LAYOUT(DataTypeReply),
    ORX_LAYOUT(MethodTypeListReply),
    ORX_LAYOUT(EventShowReply),
    ORX_LAYOUT(LatencySwitchReply),
    ORX_LAYOUT(AllDataReply),
    ORX_LAYOUT(DaemonStatusReply),
};

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
    if (std::getenv("ORX_WRITE_RECORD_LAYOUTS") != nullptr) {
        std::ofstream file(ORX_RECORD_LAYOUTS_PATH);
        file << "# Written by test_record_layouts.cpp; see there before changing it.\n";
        for (const Layout& layout : kLayouts) {
            file << layout.type << " " << layout.encode() << "\n";
        }
        ASSERT_TRUE(file.good()) << "cannot write " << ORX_RECORD_LAYOUTS_PATH;
        return;
    }
    std::map<std::string, std::string> pinned = PinnedLayouts();
    ASSERT_FALSE(pinned.empty()) << "cannot read " << ORX_RECORD_LAYOUTS_PATH;
    for (const Layout& layout : kLayouts) {
        EXPECT_EQ(layout.encode(), pinned[layout.type]) << layout.type;
        pinned.erase(layout.type);
    }
    EXPECT_TRUE(pinned.empty()) << "listed but not checked: " << pinned.begin()->first;
}

}  // namespace
}  // namespace orx::maintaind::tools
