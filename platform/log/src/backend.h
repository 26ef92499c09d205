#ifndef KELDA_LOG_SRC_BACKEND_H
#define KELDA_LOG_SRC_BACKEND_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "ara/kelda/common/log/file_sink.h"
#include "ara/kelda/common/log/log.h"
#include "console_sink.h"
#include "rate_limiter.h"

namespace ara::kelda::common::log::detail {

// The one process-wide logging state: sinks, thresholds, application id, loggers and rate
// limits. It is created on first use and deliberately never destroyed, so that destructors
// running at process exit can still log. Every member function is thread-safe.
class Backend {
  public:
    static Backend& Instance();

    // Lowest threshold over all sinks (kOff when none takes anything); what Log::IsEnabled reads.
    const std::atomic<uint8_t>& MinLevel() const { return minLevel_; }

    // Hands one finished line to every sink whose threshold it reaches, one line at a time.
    // A line logged from inside a sink's Write is dropped.
    void Emit(const std::string& contextId, LogLevel level, std::string text, uint32_t suppressed);
    // Rate-limit decision for one warning (see RateLimiter::Allow), on the monotonic clock.
    bool AllowLimited(const LogLimitConfig& limit, uint32_t* suppressed);

    void AddSink(std::shared_ptr<LogSink> sink);
    void RemoveSink(const std::shared_ptr<LogSink>& sink);
    void SetConsoleThreshold(LogLevel level);
    LogLevel ConsoleThreshold() const;
    void RefreshThresholds();

    // Log::SetUp: false, changing nothing, when the process set its logging up before.
    bool SetUp(const LogSetup& setup);
    // Log::InitLog: SetUp with ORX_LOG_LEVEL and ORX_LOG_FILE applied.
    void InitFromEnvironment(LogSetup setup);
    std::shared_ptr<Log> GetLog(const std::string& contextId);
    std::string DefaultContext() const;

  private:
    Backend();
    void RecomputeMinLevelLocked();
    static void OnForkChild();

    mutable std::mutex mutex_;  // guards everything below up to registryMutex_, and all Writes
    std::vector<std::shared_ptr<LogSink>> sinks_;
    std::shared_ptr<ConsoleSink> console_;
    std::shared_ptr<FileSink> file_;  // from the set-up, also in sinks_
    bool setUp_ = false;              // the first SetUp or InitLog happened
    std::string appId_;
    std::string defaultContext_;
    std::string description_;
    std::atomic<uint8_t> minLevel_;
    std::atomic<int> pid_;  // getpid() is a system call; refreshed in a forked child

    std::mutex registryMutex_;  // guards logs_
    std::unordered_map<std::string, std::shared_ptr<Log>> logs_;

    std::mutex limiterMutex_;  // guards limiter_
    RateLimiter limiter_;
};

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_BACKEND_H
