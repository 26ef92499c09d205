#include "vorx/vcc/app/internal/latency_stats.h"

#include <gtest/gtest.h>

namespace {

using vorx::vcc::app::LatencyStats;

constexpr long kSecond = 1000000000L;

TEST(LatencyStatsTest, PeriodFiguresAreMicrosecondsSinceTheLastQuery) {
    LatencyStats stats;
    stats.SetEnabled(true);
    stats.AddSample(kSecond, kSecond + 120000);  // 120 us
    stats.AddSample(kSecond, kSecond + 480500);  // 480.5 us, rounded up
    stats.AddSample(kSecond, kSecond + 300000);  // 300 us

    const auto first = stats.TakePeriod();
    EXPECT_EQ(first.minLatency, 120U);
    EXPECT_EQ(first.maxLatency, 481U);
    EXPECT_EQ(first.averageLatency, (120U + 481U + 300U) / 3U);

    const auto empty = stats.TakePeriod();
    EXPECT_EQ(empty.minLatency, 0U);
    EXPECT_EQ(empty.maxLatency, 0U) << "a period without samples reports 0";
    EXPECT_EQ(empty.averageLatency, 0U);

    stats.AddSample(kSecond, kSecond + 2000000);
    EXPECT_EQ(stats.TakePeriod().maxLatency, 2000U) << "a new period starts after each query";
}

TEST(LatencyStatsTest, OddStampsNeverLookLikeAnEmptyPeriod) {
    LatencyStats stats;
    stats.SetEnabled(true);
    stats.AddSample(kSecond, kSecond + 300);   // under a microsecond
    stats.AddSample(kSecond + 5000, kSecond);  // sent "after" it arrived: clocks out of step
    stats.AddSample(0, kSecond);               // not stamped: not counted
    const auto result = stats.TakePeriod();
    EXPECT_EQ(result.minLatency, 1U);
    EXPECT_EQ(result.maxLatency, 1U);
    EXPECT_EQ(result.averageLatency, 1U);
}

TEST(LatencyStatsTest, OnlyCountsWhileSwitchedOnAndEverySwitchStartsAfresh) {
    LatencyStats stats;
    stats.AddSample(kSecond, kSecond + 50000);
    EXPECT_EQ(stats.TakePeriod().maxLatency, 0U) << "off by default";

    stats.SetEnabled(true);
    stats.AddSample(kSecond, kSecond + 50000);
    stats.SetEnabled(true);
    EXPECT_EQ(stats.TakePeriod().maxLatency, 0U) << "switching drops the period so far";

    stats.AddSample(kSecond, kSecond + 70000);
    stats.SetEnabled(false);
    stats.AddSample(kSecond, kSecond + 90000);
    EXPECT_FALSE(stats.Enabled());
    EXPECT_EQ(stats.TakePeriod().maxLatency, 0U);
}

}  // namespace
