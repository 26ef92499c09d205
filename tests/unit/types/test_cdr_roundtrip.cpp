// Every record survives encode and decode unchanged, and the size counter agrees with the encoder.
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "all_records.h"
#include "orx/maintaind/types.h"
#include "vorx/serialize/cdr.h"

namespace orx::maintaind::test {
namespace {

using vorx::serialize::Decode;
using vorx::serialize::DecodeError;
using vorx::serialize::Encode;
using vorx::serialize::EncodeAppend;
using vorx::serialize::EncodedSize;

template <class T>
class CdrRoundTrip : public ::testing::Test {};
TYPED_TEST_SUITE(CdrRoundTrip, AllRecords);

TYPED_TEST(CdrRoundTrip, FullyPopulatedRecordDecodesEqualAndSizesAgree) {
    for (uint64_t seed : {0u, 1u}) {
        const TypeParam original = Filled<TypeParam>(seed);
        const std::vector<uint8_t> bytes = Encode(original);
        EXPECT_EQ(EncodedSize(original), bytes.size());

        TypeParam decoded;
        auto status = Decode(bytes, decoded);
        ASSERT_TRUE(status.ok()) << status.Message();
        EXPECT_EQ(decoded, original);
        EXPECT_EQ(Encode(decoded), bytes);
    }
}

TYPED_TEST(CdrRoundTrip, DecodingOverAPopulatedRecordReplacesEveryMember) {
    for (const TypeParam& small : {Filled<TypeParam>(0, 1), TypeParam{}}) {
        TypeParam target = Filled<TypeParam>(1, 3);
        auto status = Decode(Encode(small), target);
        ASSERT_TRUE(status.ok()) << status.Message();
        EXPECT_EQ(target, small);
    }
}

TYPED_TEST(CdrRoundTrip, EveryProperPrefixIsRejectedAsShort) {
    // One element per container still reaches every member, at a fraction of the length.
    const std::vector<uint8_t> bytes = Encode(Filled<TypeParam>(1, 1));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        TypeParam decoded;
        auto status = Decode(bytes.data(), length, decoded);
        ASSERT_FALSE(status.ok()) << "prefix of " << length << " bytes";
        ASSERT_TRUE(status.error == DecodeError::kTruncated ||
                    status.error == DecodeError::kLengthPastEnd)
            << status.Message();
        ASSERT_LE(status.offset, length);
    }
}

TEST(CdrRoundTrip, DefaultAppRegisterInfoCarriesEveryNestedRecordEmpty) {
    // isPub, kind, two bytes of padding, then the event report's serviceName: length 1 and a NUL.
    // Empty strings and containers still take their length or count: no byte is 'missing'.
    const std::vector<uint8_t> bytes = Encode(AppRegisterInfo{});
    ASSERT_GT(bytes.size(), 300u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 9),
              (std::vector<uint8_t>{0, 0, 0, 0, 1, 0, 0, 0, 0}));
}

TEST(CdrRoundTrip, EncodeAppendAlignsRelativeToTheBufferStart) {
    LatencyResultInfo result;
    result.notifyTime = 0x1122334455667788ull;
    const std::vector<uint8_t> alone = Encode(result);

    std::vector<uint8_t> out(8, 0xEE);  // a header that keeps the alignment
    EncodeAppend(result, out);
    EXPECT_EQ(std::vector<uint8_t>(out.begin() + 8, out.end()), alone);

    std::vector<uint8_t> odd(3, 0xEE);  // an odd header: the first uint64 moves to offset 8
    EncodeAppend(result, odd);
    ASSERT_EQ(odd.size(), 8u + alone.size());
    EXPECT_EQ(std::vector<uint8_t>(odd.begin() + 3, odd.begin() + 8), (std::vector<uint8_t>(5, 0)));
    EXPECT_EQ(std::vector<uint8_t>(odd.begin() + 8, odd.end()), alone);
}

}  // namespace
}  // namespace orx::maintaind::test
