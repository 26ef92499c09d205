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
    EXPECT_EQ(empty.minLatency + empty.maxLatency + empty.averageLatency, 0U)
        << "a new period starts after each query, and one without samples reports 0";

    // Odd stamps never look like an empty period: under a microsecond counts as 1, a sender's
    // clock ahead of the receiver's as 1, an unstamped sample not at all.
    stats.AddSample(kSecond, kSecond + 300);
    stats.AddSample(kSecond + 5000, kSecond);
    stats.AddSample(0, kSecond);
    const auto odd = stats.TakePeriod();
    EXPECT_EQ(odd.minLatency, 1U);
    EXPECT_EQ(odd.maxLatency, 1U);
    EXPECT_EQ(odd.averageLatency, 1U);
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
