#ifndef KELDA_LOG_SRC_BACKEND_H
#define KELDA_LOG_SRC_BACKEND_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "ara/kelda/common/log/file_sink.h"
#include "ara/kelda/common/log/log.h"
#include "console_sink.h"
#include "orx/sync/mutex.h"
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
    void Emit(const std::string& contextId, LogLevel level, std::string text, uint32_t suppressed)
        EXCLUDES(mutex_);
    // Rate-limit decision for one warning (see RateLimiter::Allow), on the monotonic clock.
    bool AllowLimited(const LogLimitConfig& limit, uint32_t* suppressed) EXCLUDES(limiterMutex_);

    void AddSink(std::shared_ptr<LogSink> sink) EXCLUDES(mutex_);
    void RemoveSink(const std::shared_ptr<LogSink>& sink) EXCLUDES(mutex_);
    void SetConsoleThreshold(LogLevel level) EXCLUDES(mutex_);
    LogLevel ConsoleThreshold() const;
    void RefreshThresholds() EXCLUDES(mutex_);

    // Log::SetUp: false, changing nothing, when the process set its logging up before.
    bool SetUp(const LogSetup& setup) EXCLUDES(mutex_, registryMutex_);
    // Log::InitLog: SetUp with ORX_LOG_LEVEL and ORX_LOG_FILE applied.
    void InitFromEnvironment(LogSetup setup) EXCLUDES(mutex_, registryMutex_);
    std::shared_ptr<Log> GetLog(const std::string& contextId) EXCLUDES(registryMutex_);
    std::string DefaultContext() const EXCLUDES(mutex_);

  private:
    Backend();
    void RecomputeMinLevelLocked() REQUIRES(mutex_);
    static void OnForkChild();

    // Held also during every sink's Write, so a sink sees one line at a time.
    mutable orx::sync::Mutex mutex_;
    std::vector<std::shared_ptr<LogSink>> sinks_ GUARDED_BY(mutex_);
    // Made by the constructor and never replaced; the sink's threshold is atomic.
    std::shared_ptr<ConsoleSink> console_;
    std::shared_ptr<FileSink> file_ GUARDED_BY(mutex_);  // from the set-up, also in sinks_
    bool setUp_ GUARDED_BY(mutex_) = false;              // the first SetUp or InitLog happened
    std::string appId_ GUARDED_BY(mutex_);
    std::string defaultContext_ GUARDED_BY(mutex_);
    std::string description_ GUARDED_BY(mutex_);
    std::atomic<uint8_t> minLevel_;
    std::atomic<int> pid_;  // getpid() is a system call; refreshed in a forked child

    orx::sync::Mutex registryMutex_;
    std::unordered_map<std::string, std::shared_ptr<Log>> logs_ GUARDED_BY(registryMutex_);

    orx::sync::Mutex limiterMutex_;
    RateLimiter limiter_ GUARDED_BY(limiterMutex_);
};

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_BACKEND_H
