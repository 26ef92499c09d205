#ifndef ARA_KELDA_COMMON_LOG_LOG_H
#define ARA_KELDA_COMMON_LOG_LOG_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "ara/kelda/common/log/capture_sink.h"
#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_level.h"
#include "ara/kelda/common/log/log_sink.h"
#include "ara/kelda/common/log/log_stream.h"

namespace ara::kelda::common::log {

// Rate limit of one warning: at most `count` lines per `periodMs` for this key; the rest are
// dropped and counted, and the next line that goes out for the key carries that number in
// LogRecord::suppressed (its text is never changed). Windows are fixed: the first line after a
// period has passed starts a new one. A count of 0 drops every line; a period of 0 never limits.
// The limit state lives as long as the process, one small entry per key: use fixed keys.
struct LogLimitConfig {
    uint32_t periodMs;
    uint32_t count;
    std::string key;
};

// The default limit for `key`: at most 5 lines per 1000 ms.
KELDA_LOG_EXPORT LogLimitConfig DefaultLimitConfig(const std::string& key);

// How a process logs, as its settings say.
struct LogSetup {
    std::string appId;                // shown in every line: "[appId:contextId]"
    std::string contextId;            // of the default logger (GetDefaultLog)
    LogLevel level{LogLevel::kInfo};  // console threshold, and the log file's
    std::string filePath;             // a file every line is appended to as well; "" for none
    std::string description;          // kept for the record only
};

// A named logger (its context id). Loggers are shared, process-wide and never destroyed, so they
// keep working in destructors that run during static destruction at process exit. All calls are
// thread-safe.
class KELDA_LOG_EXPORT Log {
  public:
    // Logging is set up once per process, by whoever comes first: the application (its
    // runtime, from its settings) or, in a process without one, the first library that asks.
    // A later InitLog or SetUp changes nothing (one debug line says so), so a library that
    // initialises logging for itself, as the DFX plug-in does, never takes the application's
    // level, file or line prefix away.
    //
    // InitLog sets up the application id, the context id of the default logger and the console
    // threshold. The threshold is taken from the environment variable ORX_LOG_LEVEL (a
    // LevelName, case ignored) when it is set and valid, else from `level`; an invalid
    // ORX_LOG_LEVEL is reported by a warning. When ORX_LOG_FILE names a file, a file sink with
    // the same threshold appends every line there as well (a file that cannot be opened is
    // reported by a warning). `description` is kept for the record only.
    static void InitLog(const std::string& appId, const std::string& contextId,
                        LogLevel level = LogLevel::kInfo, const std::string& description = "");
    // Sets logging up from `setup` alone: the environment is not consulted (the caller read it
    // with its other settings). Returns false, changing nothing, when logging was set up before.
    // A log file that cannot be opened is reported by a warning; the rest still applies.
    static bool SetUp(const LogSetup& setup);
    // Returns the shared logger of this context: the same object for the same id, for the life
    // of the process. Works before InitLog.
    static std::shared_ptr<Log> GetLog(const std::string& contextId);
    // The logger of the context named when logging was set up ("DEFAULT" before).
    static std::shared_ptr<Log> GetDefaultLog();

    // Prefer GetLog; a logger made directly writes through the same sinks.
    explicit Log(std::string contextId);

    // A stream for one line at that level; a disabled one (cheap, inline) when no sink takes
    // the level.
    LogStream LogVerbose() { return LogAt(LogLevel::kVerbose); }
    LogStream LogDebug() { return LogAt(LogLevel::kDebug); }
    LogStream LogInfo() { return LogAt(LogLevel::kInfo); }
    LogStream LogWarn() { return LogAt(LogLevel::kWarn); }
    LogStream LogError() { return LogAt(LogLevel::kError); }
    // Writes at fatal level; does not abort.
    LogStream LogFatal() { return LogAt(LogLevel::kFatal); }
    // Warning under a rate limit: a line over the limit comes back as a disabled stream.
    LogStream LogWarn(const LogLimitConfig& limit);
    LogStream LogAt(LogLevel level) {
        return IsEnabled(level) ? LogStream(this, level, 0) : LogStream();
    }

    // True when at least one sink would take a line of this level. One relaxed atomic load.
    bool IsEnabled(LogLevel level) const {
        return level < LogLevel::kOff &&
               static_cast<uint8_t>(level) >= minLevel_->load(std::memory_order_relaxed);
    }
    const std::string& ContextId() const;

  private:
    std::string contextId_;
    const std::atomic<uint8_t>* minLevel_;  // the backend's lowest sink threshold; immortal
};

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_LOG_H
