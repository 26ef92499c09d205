// Byte layout of the CDR encoding: alignment, padding, strings, sequences and map key order.
// The layout of each record is pinned in test_record_layouts.cpp.
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "orx/maintaind/types.h"
#include "vorx/serialize/cdr.h"

namespace orx::maintaind::test {
namespace {

using Bytes = std::vector<uint8_t>;
using vorx::serialize::Encode;
using vorx::serialize::EncodedSize;

// A record outside the maintenance set: the encoder needs nothing but Members().
struct Probe {
    uint8_t a{};
    uint32_t b{};
    bool c{};
    uint16_t d{};
    uint64_t e{};
    std::string f;
    std::vector<uint32_t> g;
    auto Members() { return std::tie(a, b, c, d, e, f, g); }
    auto Members() const { return std::tie(a, b, c, d, e, f, g); }
};

TEST(CdrLayout, PrimitivesAreLittleEndianAndAlignedToTheirSize) {
    Probe probe{0x11, 0x11223344, true, 0xAABB, 0x0102030405060708ull, "hi", {1, 2}};
    const Bytes expected = {
        0x11, 0,    0,    0,                                         // a, padding to 4
        0x44, 0x33, 0x22, 0x11,                                      // b
        0x01, 0,                                                     // c, padding to 2
        0xBB, 0xAA,                                                  // d
        0,    0,    0,    0,                                         // padding to 8
        0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,              // e
        3,    0,    0,    0,    'h',  'i',  0,                       // f: length counts the NUL
        0,                                                           // padding to 4
        2,    0,    0,    0,    1,    0,    0,    0,    2, 0, 0, 0,  // g: count, elements
    };
    EXPECT_EQ(Encode(probe), expected);
    EXPECT_EQ(EncodedSize(probe), expected.size());
}

TEST(CdrLayout, SequenceElementsAreAlignedOnlyWhenPresent) {
    EXPECT_EQ(Encode(std::vector<uint64_t>{}), (Bytes{0, 0, 0, 0}));

    struct Holder {
        std::vector<uint64_t> v;
        auto Members() const { return std::tie(v); }
        auto Members() { return std::tie(v); }
    };
    const Bytes bytes = Encode(Holder{{0x42}});
    EXPECT_EQ(bytes, (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0x42, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(EncodedSize(Holder{{0x42}}), bytes.size());
}

TEST(CdrLayout, MapsAreWrittenInAscendingKeyOrder) {
    FieldRegisterInfo field;
    field.bindingNames[DriverType::PROLOC] = "c";
    field.bindingNames[DriverType::SOMEIP] = "b";
    field.bindingNames[DriverType::DDS] = "a";
    const Bytes bytes = Encode(field.bindingNames);
    const Bytes expected = {
        3, 0, 0, 0,                        // count
        0, 0, 0, 0, 2, 0, 0,   0, 'a', 0,  // DDS, padding, "a"
        1, 0, 2, 0, 0, 0, 'b', 0,          // SOMEIP, padding, "b"
        2, 0, 2, 0, 0, 0, 'c', 0,          // PROLOC, padding, "c"
    };
    EXPECT_EQ(bytes, expected);

    // Inside a record: the event bindings start right after the two empty names.
    EventRegisterInfo event;
    event.eventInfos[DriverType::SOMEIP].someipEventInfo.serviceId = 0x2222;
    event.eventInfos[DriverType::DDS].ddsEventInfo.serviceId = 0xABCD;
    const Bytes eventBytes = Encode(event);
    // serviceName [0,5), padding, instanceName [8,13), padding, count [16,20), first key at 20.
    EXPECT_EQ(eventBytes[16], 2);
    EXPECT_EQ(eventBytes[20], static_cast<uint8_t>(DriverType::DDS));
    EXPECT_EQ(eventBytes[22], 0xCD);
    EXPECT_EQ(eventBytes[23], 0xAB);
}

}  // namespace
}  // namespace orx::maintaind::test
