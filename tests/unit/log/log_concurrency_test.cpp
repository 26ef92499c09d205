#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ara/kelda/common/log/file_sink.h"
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

void LogMany(const std::shared_ptr<Log>& log, int thread) {
    for (int line = 0; line < kLinesPerThread; ++line) {
        // Several pieces per line, so interleaving would show.
        log->LogInfo() << "thread " << thread << " line " << line << " "
                       << std::string(32, static_cast<char>('a' + thread))
                       << std::string(32, static_cast<char>('a' + thread));
    }
}

using LogConcurrencyTest = QuietConsoleTest;

TEST_F(LogConcurrencyTest, LinesFromManyThreadsNeverInterleaveAndNoneIsLost) {
    ScopedCaptureSink capture;
    auto overlap = std::make_shared<OverlapSink>();
    AddSink(overlap);
    char path[] = "/tmp/kelda_log_concurrency_XXXXXX";
    const int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    auto file = FileSink::Open(path, LogLevel::kInfo);
    ASSERT_TRUE(file);
    AddSink(file);

    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] { LogMany(Log::GetLog("THREADS"), t); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    RemoveSink(file);
    RemoveSink(overlap);

    EXPECT_EQ(overlap->Overlaps(), 0);
    const auto lines = capture->Lines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLinesPerThread));
    std::vector<int> next(kThreads, 0);
    for (const auto& line : lines) {
        const int thread = std::atoi(line.second.c_str() + 7);
        ASSERT_GE(thread, 0);
        ASSERT_LT(thread, kThreads);
        // Whole, and in each thread's own order.
        ASSERT_EQ(line.second, Payload(thread, next[thread]));
        ++next[thread];
    }

    std::ifstream in(path);
    std::string fileLine;
    size_t fileLines = 0;
    while (std::getline(in, fileLine)) {
        ++fileLines;
        const auto textStart = fileLine.find("[-:THREADS] ");
        ASSERT_NE(textStart, std::string::npos) << fileLine;
        const std::string text = fileLine.substr(textStart + 12);
        ASSERT_EQ(text, Payload(std::atoi(text.c_str() + 7), std::atoi(text.c_str() + 14)));
    }
    EXPECT_EQ(fileLines, static_cast<size_t>(kThreads * kLinesPerThread));
    unlink(path);
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
