#include "config/valid_uint16.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

namespace {

using orx::orxcm::utils::ValidUint16;

TEST(ValidUint16Test, AcceptsExactlyTheSixteenBitRange) {
    EXPECT_TRUE(ValidUint16("0"));
    EXPECT_TRUE(ValidUint16("65535"));
    EXPECT_FALSE(ValidUint16("65536"));
    EXPECT_FALSE(ValidUint16("-1"));
    EXPECT_FALSE(ValidUint16("-65535"));
    EXPECT_FALSE(ValidUint16("2147483647"));
    // Read like stoi: leading blanks skipped, reading stops at the first non-digit.
    EXPECT_TRUE(ValidUint16(" 42"));
    EXPECT_TRUE(ValidUint16("12ab"));
    EXPECT_FALSE(ValidUint16("70000x"));
}

TEST(ValidUint16Test, StoresTheValueOnlyWhenValid) {
    uint16_t value = 7U;
    EXPECT_TRUE(ValidUint16("65535", value));
    EXPECT_EQ(value, 65535U);
    EXPECT_TRUE(ValidUint16("12ab", value));
    EXPECT_EQ(value, 12U);
    EXPECT_FALSE(ValidUint16("65536", value));
    EXPECT_EQ(value, 12U);
    EXPECT_FALSE(ValidUint16("-1", value));
    EXPECT_EQ(value, 12U);
}

TEST(ValidUint16Test, ConversionErrorsPassThroughAndErrnoIsKept) {
    uint16_t value = 3U;
    errno = 1234;
    EXPECT_THROW(ValidUint16("ab"), std::invalid_argument);
    EXPECT_EQ(errno, 1234);
    EXPECT_THROW(ValidUint16("", value), std::invalid_argument);
    EXPECT_EQ(value, 3U);
    // stoi reports this one through errno (ERANGE) as well as by throwing.
    EXPECT_THROW(ValidUint16("99999999999"), std::out_of_range);
    EXPECT_EQ(errno, 1234);
    EXPECT_THROW(ValidUint16("-99999999999", value), std::out_of_range);
    EXPECT_EQ(errno, 1234);
    EXPECT_TRUE(ValidUint16("80"));
    EXPECT_EQ(errno, 1234);
}

}  // namespace
