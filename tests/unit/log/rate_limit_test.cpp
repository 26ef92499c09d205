#include <chrono>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/testing.h"
#include "orx/test/wait.h"
#include "quiet_console.h"
#include "rate_limiter.h"

namespace {

using namespace ara::kelda::common::log;
using detail::RateLimiter;

constexpr int64_t kMs = 1000000;

TEST(RateLimiterTest, CountsLinesPerPeriodAndKeyAndReportsDropsOnRollOver) {
    RateLimiter limiter;
    const LogLimitConfig a{100, 2, "a"};
    const LogLimitConfig b{100, 2, "b"};
    uint32_t suppressed = 99;

    EXPECT_TRUE(limiter.Allow(a, 0, &suppressed));
    EXPECT_EQ(suppressed, 0u);
    EXPECT_TRUE(limiter.Allow(a, 10 * kMs, &suppressed));
    EXPECT_FALSE(limiter.Allow(a, 20 * kMs, &suppressed));
    EXPECT_FALSE(limiter.Allow(a, 99 * kMs, &suppressed));
    // Another key has its own window.
    EXPECT_TRUE(limiter.Allow(b, 99 * kMs, &suppressed));
    EXPECT_EQ(suppressed, 0u);
    EXPECT_FALSE(limiter.Allow(a, 99 * kMs, &suppressed));

    // The window of "a" started at 0: at 100 ms a new one begins, and its first line carries the
    // three drops.
    EXPECT_TRUE(limiter.Allow(a, 100 * kMs, &suppressed));
    EXPECT_EQ(suppressed, 3u);
    EXPECT_TRUE(limiter.Allow(a, 150 * kMs, &suppressed));
    EXPECT_EQ(suppressed, 0u);
    EXPECT_FALSE(limiter.Allow(a, 199 * kMs, &suppressed));
    // "b" started its window at 99 ms: one line left until 199 ms.
    EXPECT_TRUE(limiter.Allow(b, 198 * kMs, &suppressed));
    EXPECT_FALSE(limiter.Allow(b, 198 * kMs, &suppressed));
}

TEST(RateLimiterTest, ZeroCountDropsEverythingAndZeroPeriodNeverLimits) {
    RateLimiter limiter;
    uint32_t suppressed = 0;
    const LogLimitConfig never{1000, 0, "never"};
    EXPECT_FALSE(limiter.Allow(never, 0, &suppressed));
    EXPECT_FALSE(limiter.Allow(never, 5000 * kMs, &suppressed));

    const LogLimitConfig always{0, 1, "always"};
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(limiter.Allow(always, 0, &suppressed));
    }
}

using RateLimitedWarningTest = QuietConsoleTest;

TEST_F(RateLimitedWarningTest, DropsLinesOverTheLimitAndCountsThemOnTheNextLine) {
    ScopedCaptureSink capture;
    auto log = Log::GetLog("LIMIT");
    // Long enough that the five lines below share the first window even on a slow machine.
    const LogLimitConfig limit{300, 2, "RateLimitedWarningTest"};

    for (int i = 0; i < 5; ++i) {
        log->LogWarn(limit) << "limited " << i;
    }
    // Other keys and unlimited warnings are not affected.
    log->LogWarn(DefaultLimitConfig("RateLimitedWarningTest_other")) << "other key";
    log->LogWarn() << "unlimited";
    EXPECT_EQ(capture->Dump(),
              "warning: limited 0\nwarning: limited 1\nwarning: other key\n"
              "warning: unlimited\n");

    // Once the window is over the key writes again, its text unchanged, and the line carries the
    // number of lines dropped before it: the three above and every try that came too early.
    capture->Clear();
    uint32_t tries = 0;
    ASSERT_TRUE(orx::test::WaitFor(
        [&] {
            ++tries;
            log->LogWarn(limit) << "after the period";
            return capture->Size() == 1;
        },
        std::chrono::seconds(5)));
    const auto records = capture->Records();
    EXPECT_EQ(records[0].text, "after the period");
    EXPECT_EQ(records[0].suppressed, 3u + tries - 1u);
}

TEST_F(RateLimitedWarningTest, WarningsNobodyTakesDoNotUseUpTheLimit) {
    ScopedCaptureSink capture(LogLevel::kError);
    auto log = Log::GetLog("LIMIT");
    const LogLimitConfig limit{60000, 1, "RateLimitedWarningTest_unseen"};

    log->LogWarn(limit) << "unseen";
    capture->SetThreshold(LogLevel::kWarn);
    log->LogWarn(limit) << "seen";
    log->LogWarn(limit) << "over the limit";

    const auto records = capture->Records();
    ASSERT_EQ(records.size(), 1u) << capture->Dump();
    EXPECT_EQ(records[0].text, "seen");
    EXPECT_EQ(records[0].suppressed, 0u);
}

}  // namespace
