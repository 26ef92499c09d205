#include <unistd.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/testing.h"
#include "quiet_console.h"

namespace {

using namespace ara::kelda::common::log;

enum class OneByte : uint8_t { kSeven = 7 };
enum class SignedByte : int8_t { kMinusThree = -3 };
enum Plain { kFortyTwo = 42 };

struct Point {
    int x;
    int y;
};
std::ostream& operator<<(std::ostream& os, const Point& p) {
    return os << "(" << p.x << "," << p.y << ")";
}

// Counts how often it is formatted, to show that disabled lines format nothing.
struct Counted {
    int* calls;
};
std::ostream& operator<<(std::ostream& os, const Counted& c) {
    ++*c.calls;
    return os << "counted";
}

template <typename T>
std::string AsOstream(const T& value) {
    std::ostringstream os;
    os << value;
    return os.str();
}

using LogStreamTest = QuietConsoleTest;

TEST_F(LogStreamTest, FormatsEachKindOfValue) {
    ScopedCaptureSink capture;
    auto log = Log::GetLog("FMT");

    log->LogInfo() << uint8_t{200} << ' ' << int8_t{-5} << ' ' << true << false << ' '
                   << OneByte::kSeven << ' ' << SignedByte::kMinusThree << ' ' << kFortyTwo;
    log->LogInfo() << std::numeric_limits<int64_t>::min() << ' '
                   << std::numeric_limits<uint64_t>::max() << ' ' << uint16_t{65535} << ' '
                   << int32_t{-1};
    log->LogInfo() << std::string("s") << std::string_view("v") << "lit"
                   << static_cast<const char*>(nullptr) << 'c';
    log->LogInfo() << 0.1f << ' ' << 1e20 << ' ' << 123456789.0;
    log->LogInfo() << Point{1, 2};

    const auto lines = capture->Lines();
    ASSERT_EQ(lines.size(), 5u) << capture->Dump();
    EXPECT_EQ(lines[0].second, "200 -5 10 7 -3 42");
    EXPECT_EQ(lines[1].second, "-9223372036854775808 18446744073709551615 65535 -1");
    EXPECT_EQ(lines[2].second, "svlit(null)c");
    EXPECT_EQ(lines[3].second,
              AsOstream(0.1f) + " " + AsOstream(1e20) + " " + AsOstream(123456789.0));
    EXPECT_EQ(lines[4].second, "(1,2)");
}

TEST_F(LogStreamTest, LinesBelowEverySinkThresholdFormatNothingAndReachNoSink) {
    ScopedCaptureSink warnings(LogLevel::kWarn);
    auto log = Log::GetLog("FILTER");
    int calls = 0;

    EXPECT_FALSE(log->IsEnabled(LogLevel::kInfo));
    EXPECT_TRUE(log->IsEnabled(LogLevel::kWarn));
    EXPECT_FALSE(log->LogInfo().Enabled());
    log->LogInfo() << Counted{&calls};
    log->LogDebug() << "debug";
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(warnings->Size(), 0u) << warnings->Dump();

    log->LogWarn() << Counted{&calls};
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(warnings->Contains(LogLevel::kWarn, "counted"));

    {
        // A second sink with a lower threshold gets debug lines; the first still does not.
        ScopedCaptureSink debug(LogLevel::kDebug);
        log->LogDebug() << "for debug only";
        EXPECT_TRUE(debug->Contains(LogLevel::kDebug, "for debug only"));
        EXPECT_FALSE(warnings->Contains(LogLevel::kDebug, "for debug only"));
    }
    // Once that sink is gone, debug is off again.
    EXPECT_FALSE(log->IsEnabled(LogLevel::kDebug));

    // A threshold change of a registered sink is seen by the level check.
    warnings->SetThreshold(LogLevel::kVerbose);
    EXPECT_TRUE(log->IsEnabled(LogLevel::kVerbose));
    warnings->SetThreshold(LogLevel::kOff);
    EXPECT_FALSE(log->IsEnabled(LogLevel::kFatal));

    // Nothing is ever written at kOff.
    warnings->SetThreshold(LogLevel::kVerbose);
    log->LogAt(LogLevel::kOff) << "never";
    EXPECT_EQ(warnings->CountContaining(LogLevel::kOff, "never"), 0u);
}

TEST_F(LogStreamTest, EachLevelWritesOneRecordAtItsLevelAndFatalReturns) {
    ScopedCaptureSink capture;
    auto log = Log::GetLog("LEVELS");
    EXPECT_EQ(log, Log::GetLog("LEVELS")) << "one shared logger per context";
    EXPECT_EQ(log->ContextId(), "LEVELS");

    log->LogVerbose() << "v";
    log->LogDebug() << "d";
    log->LogInfo() << "i";
    log->LogWarn() << "w";
    log->LogError() << "e";
    log->LogFatal() << "f";
    log->LogAt(LogLevel::kInfo) << "at";

    EXPECT_EQ(capture->Dump(),
              "verbose: v\ndebug: d\ninfo: i\nwarning: w\nerror: e\nfatal: f\ninfo: at\n");
    for (const auto& record : capture->Records()) {
        EXPECT_EQ(record.contextId, "LEVELS");
        EXPECT_EQ(record.suppressed, 0u);
        EXPECT_GT(record.wallTimeNs, 0);
        EXPECT_EQ(record.pid, getpid());
    }
}

TEST(LogLevelTest, NamesRoundTrip) {
    for (uint8_t value = 0; value <= 6; ++value) {
        LogLevel parsed = LogLevel::kOff;
        EXPECT_TRUE(ParseLevel(LevelName(static_cast<LogLevel>(value)), &parsed));
        EXPECT_EQ(parsed, static_cast<LogLevel>(value));
    }
    LogLevel parsed = LogLevel::kInfo;
    EXPECT_TRUE(ParseLevel("WARN", &parsed));
    EXPECT_STREQ(LevelName(parsed), "warning");
    EXPECT_FALSE(ParseLevel("loud", &parsed));
    EXPECT_EQ(parsed, LogLevel::kWarn) << "unchanged by a bad name";
    EXPECT_STREQ(LevelName(static_cast<LogLevel>(9)), "unknown");
}

}  // namespace
