#include "cli/service_selector.h"

#include <gtest/gtest.h>

namespace orx::orxmaint {
namespace {

TEST(ServiceSelectorTest, ReadsHexAndDecimalIdsUpToTheLargestServiceId) {
    const std::pair<const char*, uint16_t> cases[] = {
        {"0x1234", 0x1234}, {"0XABcd", 0xABCD}, {"4660", 4660}, {"0", 0},
        {"65535", 65535},   {"0xffff", 0xFFFF}, {"007", 7},     {"0x00000000000000001", 1},
    };
    for (const auto& [text, id] : cases) {
        ServiceSelector selector;
        EXPECT_EQ(ParseServiceSelector(text, selector), "") << text;
        EXPECT_TRUE(selector.byId) << text;
        EXPECT_EQ(selector.serviceId, id) << text;
    }
}

TEST(ServiceSelectorTest, TakesTextThatDoesNotStartWithADigitAsServicePath) {
    ServiceSelector selector;
    EXPECT_EQ(ParseServiceSelector("/demo/RadarService", selector), "");
    EXPECT_FALSE(selector.byId);
    EXPECT_EQ(selector.serviceName, "/demo/RadarService");
    EXPECT_EQ(ParseServiceSelector("RadarService", selector), "");
    EXPECT_EQ(selector.serviceName, "RadarService");
}

TEST(ServiceSelectorTest, RefusesBadNumbersWithoutTouchingTheSelection) {
    for (const char* text :
         {"", "65536", "0x10000", "0x", "0xG1", "12abc", "1 2", "99999999999999999999"}) {
        ServiceSelector selector{true, 7, ""};
        EXPECT_NE(ParseServiceSelector(text, selector), "") << text;
        EXPECT_EQ(selector.serviceId, 7) << text;
    }
}

TEST(ServiceSelectorTest, NarrowsTheFilterByIdOrByName) {
    maintaind::tools::QueryFilter byId;
    ApplyServiceSelector(ServiceSelector{true, 0x1234, ""}, byId);
    EXPECT_TRUE(byId.hasServiceId);
    EXPECT_EQ(byId.serviceId, 0x1234);
    EXPECT_EQ(byId.serviceName, "");

    maintaind::tools::QueryFilter byName;
    ApplyServiceSelector(ServiceSelector{false, 0, "/demo/RadarService"}, byName);
    EXPECT_FALSE(byName.hasServiceId);
    EXPECT_EQ(byName.serviceName, "/demo/RadarService");
}

}  // namespace
}  // namespace orx::orxmaint
