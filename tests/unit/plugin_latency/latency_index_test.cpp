#include "orxmaintaind/orx_maintaind_latency_index.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using orx::orxcm::orxmaintaind::DDSLatencyIndex;
using orx::orxcm::orxmaintaind::SomeipLatencyIndex;

TEST(LatencyIndexTest, DdsIndexOrdersByServiceThenInstanceThenTopicBytes) {
    EXPECT_LT(DDSLatencyIndex(1, 2, "a"), DDSLatencyIndex(1, 2, "ab"));
    EXPECT_LT(DDSLatencyIndex(1, 2, "ab"), DDSLatencyIndex(1, 3, ""));
    EXPECT_LT(DDSLatencyIndex(1, 65535, "z"), DDSLatencyIndex(2, 0, ""));
    EXPECT_LT(DDSLatencyIndex(1, 2, "B"), DDSLatencyIndex(1, 2, "a"));
    EXPECT_FALSE(DDSLatencyIndex(1, 2, "a") < DDSLatencyIndex(1, 2, "a"));

    // Equal keys collapse; the set walks them in ascending order.
    const std::set<DDSLatencyIndex> keys{{1, 3, ""}, {1, 2, "ab"}, {1, 2, "a"}, {1, 2, "a"}};
    ASSERT_EQ(keys.size(), 3U);
    auto it = keys.begin();
    EXPECT_EQ(it->topicName, "a");
    EXPECT_EQ((++it)->topicName, "ab");
    EXPECT_EQ((++it)->instanceId, 3U);
}

TEST(LatencyIndexTest, SomeipIndexOrdersNumericallyFieldByField) {
    EXPECT_LT(SomeipLatencyIndex(1, 2, 3), SomeipLatencyIndex(1, 2, 4));
    EXPECT_LT(SomeipLatencyIndex(1, 2, 65535), SomeipLatencyIndex(1, 3, 0));
    EXPECT_LT(SomeipLatencyIndex(1, 65535, 65535), SomeipLatencyIndex(2, 0, 0));
    EXPECT_FALSE(SomeipLatencyIndex(1, 2, 3) < SomeipLatencyIndex(1, 2, 3));
    EXPECT_FALSE(SomeipLatencyIndex(2, 0, 0) < SomeipLatencyIndex(1, 9, 9));
}

}  // namespace
