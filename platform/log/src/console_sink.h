#ifndef KELDA_LOG_SRC_CONSOLE_SINK_H
#define KELDA_LOG_SRC_CONSOLE_SINK_H

#include <atomic>

#include "ara/kelda/common/log/log_sink.h"

namespace ara::kelda::common::log::detail {

// The built-in sink: one line per record on stderr, written with a single write call.
class ConsoleSink final : public LogSink {
  public:
    explicit ConsoleSink(LogLevel threshold);
    void Write(const LogRecord& record) override;
    LogLevel Threshold() const override;
    void SetThreshold(LogLevel level);

  private:
    std::atomic<LogLevel> threshold_;
};

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_CONSOLE_SINK_H
