#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/log/testing.h"
#include "quiet_console.h"

namespace {

using namespace ara::kelda::common::log;

constexpr int kThreads = 6;
constexpr int kLinesPerThread = 400;

// Records whether two Write calls ever overlapped.
class OverlapSink : public LogSink {
  public:
    void Write(const LogRecord&) override {
        if (inside_.exchange(true)) {
            overlaps_.fetch_add(1);
        }
        std::this_thread::yield();
        inside_.store(false);
    }
    LogLevel Threshold() const override { return LogLevel::kVerbose; }
    int Overlaps() const { return overlaps_.load(); }

  private:
    std::atomic<bool> inside_{false};
    std::atomic<int> overlaps_{0};
};

std::string Payload(int thread, int line) {
    return "thread " + std::to_string(thread) + " line " + std::to_string(line) + " " +
           std::string(64, static_cast<char>('a' + thread));
}

using LogConcurrencyTest = QuietConsoleTest;

TEST_F(LogConcurrencyTest, LinesFromManyThreadsNeverInterleaveAndNoneIsLost) {
    ScopedCaptureSink capture;
    auto overlap = std::make_shared<OverlapSink>();
    AddSink(overlap);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            const std::string half(32, static_cast<char>('a' + t));
            for (int line = 0; line < kLinesPerThread; ++line) {
                // Several pieces per line, so interleaving would show.
                Log::GetLog("THREADS")->LogInfo()
                    << "thread " << t << " line " << line << " " << half << half;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    RemoveSink(overlap);

    EXPECT_EQ(overlap->Overlaps(), 0);
    const auto lines = capture->Lines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLinesPerThread));
    std::vector<int> next(kThreads, 0);
    for (const auto& line : lines) {
        const int thread = std::atoi(line.second.c_str() + 7);
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << line.second;
        // Whole, and in each thread's own order.
        ASSERT_EQ(line.second, Payload(thread, next[thread]++));
    }
}

TEST_F(LogConcurrencyTest, SinksAndLoggersCanComeAndGoWhileOthersLog) {
    ScopedCaptureSink capture;
    std::atomic<bool> stop{false};
    std::vector<std::thread> writers;
    for (int t = 0; t < 3; ++t) {
        writers.emplace_back([&stop, t] {
            while (!stop.load()) {
                Log::GetLog("CHURN" + std::to_string(t))->LogDebug() << "churn " << t;
            }
        });
    }
    for (int i = 0; i < 200; ++i) {
        auto extra = std::make_shared<CaptureSink>(LogLevel::kVerbose);
        AddSink(extra);
        SetConsoleThreshold(LogLevel::kOff);
        RemoveSink(extra);
    }
    // Every writer got through at least once while the sinks changed.
    for (int t = 0; t < 3; ++t) {
        EXPECT_TRUE(capture->WaitForContaining(LogLevel::kDebug, "churn " + std::to_string(t), 1,
                                               std::chrono::seconds(10)));
    }
    stop.store(true);
    for (auto& writer : writers) {
        writer.join();
    }
}

}  // namespace
