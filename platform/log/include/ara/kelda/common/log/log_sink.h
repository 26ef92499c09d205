#ifndef ARA_KELDA_COMMON_LOG_LOG_SINK_H
#define ARA_KELDA_COMMON_LOG_LOG_SINK_H

#include <cstdint>
#include <memory>
#include <string>

#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_level.h"

namespace ara::kelda::common::log {

// One finished log line as the sinks receive it.
struct LogRecord {
    LogLevel level;
    std::string appId;      // from the logging set-up (Log::InitLog), empty before it
    std::string contextId;  // the logger that wrote the line
    std::string text;       // exactly what was streamed, never decorated
    int64_t wallTimeNs;     // CLOCK_REALTIME when the line was finished
    int pid;
    uint64_t threadId;    // kernel thread id of the writer
    uint32_t suppressed;  // rate-limited lines of the same key dropped just before this one
};

// Destination of log lines. The backend calls Write under its own lock, so a sink sees one
// line at a time and needs no locking of its own against other Write calls (it does against its
// own readers). Write must not block for long, must not throw, and must not call AddSink,
// RemoveSink, SetConsoleThreshold or RefreshSinkThresholds; a line logged from inside Write is
// dropped instead of dead-locking.
class KELDA_LOG_EXPORT LogSink {
  public:
    virtual ~LogSink();
    virtual void Write(const LogRecord& record) = 0;
    // The sink gets the records at or above this level. If it changes while the sink is
    // registered, call RefreshSinkThresholds so the cheap level check sees it.
    virtual LogLevel Threshold() const = 0;
};

// Registers a sink for every line from now on. Adding the same sink twice has no effect; a null
// sink is ignored. Any thread.
KELDA_LOG_EXPORT void AddSink(std::shared_ptr<LogSink> sink);
// Unregisters a sink; once this returns, the sink gets no further Write call. Unknown sinks are
// ignored. Any thread, but not from inside a sink's Write.
KELDA_LOG_EXPORT void RemoveSink(const std::shared_ptr<LogSink>& sink);
// Sets the threshold of the built-in console sink (stderr). kOff silences the console.
KELDA_LOG_EXPORT void SetConsoleThreshold(LogLevel level);
// The console sink's current threshold.
KELDA_LOG_EXPORT LogLevel ConsoleThreshold();
// Re-reads the thresholds of all registered sinks after one of them changed.
KELDA_LOG_EXPORT void RefreshSinkThresholds();

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_LOG_SINK_H
