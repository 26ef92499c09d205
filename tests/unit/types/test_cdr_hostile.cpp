// The decoder on hand-made hostile input: every failure is the right error value at the right
// offset, never a crash, a hang or a huge allocation. Random and mutated input is the fuzz
// target's job (tests/fuzz).
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "all_records.h"
#include "orx/maintaind/types.h"
#include "vorx/serialize/cdr.h"

namespace orx::maintaind::test {
namespace {

using Bytes = std::vector<uint8_t>;
using vorx::serialize::Decode;
using vorx::serialize::DecodeError;
using vorx::serialize::DecodeLimits;
using vorx::serialize::DecodeStatus;
using vorx::serialize::Encode;

// A record that can nest without bound, to reach the depth limit.
struct Tree {
    std::vector<Tree> children;
    auto Members() { return std::tie(children); }
    auto Members() const { return std::tie(children); }
};

Bytes Chain(std::size_t levels) {  // `levels` trees, each the only child of the one above
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < levels; ++i) {
        bytes.insert(bytes.end(), {1, 0, 0, 0});
    }
    bytes.insert(bytes.end(), {0, 0, 0, 0});
    return bytes;
}

template <class T>
DecodeStatus DecodeAs(const Bytes& bytes, const DecodeLimits& limits = {}) {
    T value{};
    return Decode(bytes, value, limits);
}

void ExpectError(const DecodeStatus& status, DecodeError error, std::size_t offset) {
    EXPECT_EQ(status.error, error) << status.Message();
    EXPECT_EQ(status.offset, offset) << status.Message();
}

TEST(CdrHostile, BadValuesAreNamedWithTheirOffset) {
    Bytes bytes = Encode(Filled<AppRegisterInfo>(1));
    bytes[0] = 2;  // isPub
    ExpectError(DecodeAs<AppRegisterInfo>(bytes), DecodeError::kBadBool, 0);

    // A string without its NUL, and one of length zero.
    ExpectError(DecodeAs<std::string>({3, 0, 0, 0, 'a', 'b', 'c'}), DecodeError::kBadString, 6);
    ExpectError(DecodeAs<std::string>({0, 0, 0, 0}), DecodeError::kBadString, 0);

    // Non-zero padding between mode and the driver-type count.
    ExpectError(DecodeAs<LatencySwitch>({1, 0, 7, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0}),
                DecodeError::kBadPadding, 2);

    // One byte too many.
    Bytes withTail = Encode(ReturnCode{1});
    withTail.push_back(0);
    ExpectError(DecodeAs<ReturnCode>(withTail), DecodeError::kTrailingBytes, 1);

    const DecodeStatus status{DecodeError::kBadBool, 17};
    EXPECT_EQ(status.Message(),
              "CDR decode failed at offset 17: kBadBool (bool byte other than 0 or 1)");
}

TEST(CdrHostile, LengthsAndCountsPastTheEndAreRefusedBeforeAllocating) {
    ExpectError(DecodeAs<std::string>({100, 0, 0, 0, 'a', 0}), DecodeError::kLengthPastEnd, 0);
    ExpectError(DecodeAs<std::vector<uint32_t>>({3, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}),
                DecodeError::kLengthPastEnd, 0);
    // Two strings need at least ten bytes; nine are left.
    ExpectError(DecodeAs<std::vector<std::string>>({2, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0}),
                DecodeError::kLengthPastEnd, 0);

    // A count of 0xFFFFFFFF: over the element limit; with the limit lifted, still refused by the
    // bytes left, before anything is reserved (32 GiB for uint64 elements, more for maps).
    const Bytes huge = {0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4};
    ExpectError(DecodeAs<std::vector<uint64_t>>(huge), DecodeError::kTooManyElements, 0);
    DecodeLimits lifted;
    lifted.maxElements = std::numeric_limits<uint32_t>::max();
    lifted.maxStringLength = std::numeric_limits<uint32_t>::max();
    ExpectError(DecodeAs<std::vector<uint64_t>>(huge, lifted), DecodeError::kLengthPastEnd, 0);
    ExpectError(DecodeAs<std::vector<AppRegisterInfo>>(huge, lifted), DecodeError::kLengthPastEnd,
                0);
    ExpectError(DecodeAs<std::map<uint32_t, EventInfo>>(huge, lifted), DecodeError::kLengthPastEnd,
                0);
    ExpectError(DecodeAs<std::string>(huge), DecodeError::kStringTooLong, 0);
    ExpectError(DecodeAs<std::string>(huge, lifted), DecodeError::kLengthPastEnd, 0);

    // The same inside a full record: the count of the event binding map. The event report
    // starts at offset 2, after isPub and kind; its two empty names end at 17.
    Bytes record = Encode(AppRegisterInfo{});
    record[20] = record[21] = record[22] = record[23] = 0xFF;
    ExpectError(DecodeAs<AppRegisterInfo>(record, lifted), DecodeError::kLengthPastEnd, 20);
}

TEST(CdrHostile, NestingIsBoundedByTheDepthLimit) {
    // Each tree level is a record and a vector: eight levels fill the default depth of 16.
    EXPECT_TRUE(DecodeAs<Tree>(Chain(8)).ok());
    ExpectError(DecodeAs<Tree>(Chain(9)), DecodeError::kTooDeep, 32);
    // Far too deep for the stack if it were followed: refused at the same place.
    ExpectError(DecodeAs<Tree>(Chain(200000)), DecodeError::kTooDeep, 32);

    DecodeLimits shallow;
    shallow.maxDepth = 2;
    const Bytes report = Encode(Filled<AppRegisterInfo>(1));
    EXPECT_EQ(DecodeAs<AppRegisterInfo>(report, shallow).error, DecodeError::kTooDeep);
    EXPECT_TRUE(DecodeAs<AppRegisterInfo>(report).ok());
}

}  // namespace
}  // namespace orx::maintaind::test
