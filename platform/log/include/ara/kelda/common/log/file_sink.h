#ifndef ARA_KELDA_COMMON_LOG_FILE_SINK_H
#define ARA_KELDA_COMMON_LOG_FILE_SINK_H

#include <atomic>
#include <memory>
#include <string>

#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_sink.h"

namespace ara::kelda::common::log {

// Appends every line at or above its threshold to a file, in the console's format (one line per
// record: ISO-8601 wall time with milliseconds, level, pid, thread id, application and context,
// text). Each line is one append, so several processes may share the file.
class KELDA_LOG_EXPORT FileSink : public LogSink {
  public:
    // Opens (creating if needed) `path` for appending. On failure returns null and, when `error`
    // is given, stores the reason there.
    static std::shared_ptr<FileSink> Open(const std::string& path, LogLevel threshold,
                                          std::string* error = nullptr);
    ~FileSink() override;  // closes the file

    void Write(const LogRecord& record) override;
    LogLevel Threshold() const override;
    // Changes the threshold; call RefreshSinkThresholds afterwards if the sink is registered.
    void SetThreshold(LogLevel level);
    const std::string& Path() const;

  private:
    FileSink(int fd, std::string path, LogLevel threshold);

    int fd_;
    std::string path_;
    std::atomic<LogLevel> threshold_;
};

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_FILE_SINK_H
