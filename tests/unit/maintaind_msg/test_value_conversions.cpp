#include <gtest/gtest.h>

#include "orx/maintaind/config/orx_maintaind_config.h"

namespace {

using orx::maintaind::TransportQos;
using orx::maintaind::config::InstanceIdToNumber;
using orx::maintaind::config::ToMaintaindDriverType;
using orx::maintaind::config::ToTransportQosList;
using CoreDriverType = vorx::vcc::api::types::DriverType;
using RecordDriverType = orx::maintaind::DriverType;

TEST(ValueConversionsTest, DriverTypeTranslatesBetweenTheTwoNumberings) {
    EXPECT_EQ(ToMaintaindDriverType(CoreDriverType::DDS), RecordDriverType::DDS);
    EXPECT_EQ(ToMaintaindDriverType(CoreDriverType::SOMEIP), RecordDriverType::SOMEIP);
    EXPECT_EQ(ToMaintaindDriverType(CoreDriverType::PROLOC), RecordDriverType::PROLOC);
    EXPECT_EQ(ToMaintaindDriverType(static_cast<CoreDriverType>(7)), RecordDriverType::PROLOC);
}

TEST(ValueConversionsTest, TransportQosKeepsKnownValuesAndZeroesTheRestInSetOrder) {
    const std::vector<TransportQos> list = ToTransportQosList({0U, 1U, 2U, 3U, 4U, 255U});
    const std::vector<TransportQos> expected{TransportQos::INVALID, TransportQos::UDP,
                                             TransportQos::TCP,     TransportQos::SHM,
                                             TransportQos::INVALID, TransportQos::INVALID};
    EXPECT_EQ(list, expected);
    EXPECT_TRUE(ToTransportQosList({}).empty());
}

TEST(ValueConversionsTest, InstanceIdTextBecomesNumberOrUndefined) {
    EXPECT_EQ(InstanceIdToNumber("0"), 0U);
    EXPECT_EQ(InstanceIdToNumber("42"), 42U);
    EXPECT_EQ(InstanceIdToNumber("65534"), 65534U);
    EXPECT_EQ(InstanceIdToNumber("65535"), 65535U);
    EXPECT_EQ(InstanceIdToNumber("65536"), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber("99999999999999999999"), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber("abc"), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber(""), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber("-1"), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber(" 12"), 0xFFFFU);
    EXPECT_EQ(InstanceIdToNumber("12a"), 0xFFFFU);
}

}  // namespace
