#ifndef ARA_KELDA_COMMON_LOG_CAPTURE_SINK_H
#define ARA_KELDA_COMMON_LOG_CAPTURE_SINK_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_sink.h"
#include "orx/sync/mutex.h"

namespace ara::kelda::common::log {

// Keeps every line it receives in memory so tests can check what was logged (level and exact
// text). Register it with AddSink (or ara/kelda/common/log/testing.h's ScopedCaptureSink).
// All members are thread-safe; readers may run while other threads log.
class KELDA_LOG_EXPORT CaptureSink : public LogSink {
  public:
    explicit CaptureSink(LogLevel threshold = LogLevel::kVerbose);
    ~CaptureSink() override;

    void Write(const LogRecord& record) override;
    LogLevel Threshold() const override;
    // Changes the threshold and tells the backend (do not call from inside a sink's Write).
    void SetThreshold(LogLevel level);

    std::vector<std::pair<LogLevel, std::string>> Lines() const;
    std::vector<LogRecord> Records() const;
    size_t Size() const;
    // Number of lines of this level whose text equals `text` exactly.
    size_t Count(LogLevel level, const std::string& text) const;
    // Number of lines of this level whose text contains `part`.
    size_t CountContaining(LogLevel level, const std::string& part) const;
    bool Contains(LogLevel level, const std::string& text) const;
    // Waits until at least `count` lines of this level contain `part`, or the timeout passes.
    // Returns whether the lines arrived. For lines written by other threads.
    bool WaitForContaining(LogLevel level, const std::string& part, size_t count,
                           std::chrono::milliseconds timeout) const;
    // Every captured line, one per line, "level: text".
    std::string Dump() const;
    void Clear();

  private:
    size_t CountLocked(LogLevel level, const std::string& text, bool exact) const REQUIRES(mutex_);

    std::atomic<LogLevel> threshold_;
    mutable orx::sync::Mutex mutex_;
    mutable orx::sync::CondVar changed_;
    std::vector<LogRecord> records_ GUARDED_BY(mutex_);
};

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_CAPTURE_SINK_H
