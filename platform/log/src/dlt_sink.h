#ifndef KELDA_LOG_SRC_DLT_SINK_H
#define KELDA_LOG_SRC_DLT_SINK_H

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "ara/kelda/common/log/log_sink.h"

namespace ara::kelda::common::log::detail {

// Hands each line to the DLT user library (libdlt) under the application registered by Open and
// the context of the line's logger, registered on first use. Only this sink's source sees
// libdlt's headers.
class DltSink final : public LogSink {
  public:
    // Registers `appId` (1 to 4 characters) with libdlt. On failure returns null and stores the
    // reason in *error. Once per process: libdlt knows one application per process.
    static std::shared_ptr<DltSink> Open(const std::string& appId, const std::string& description,
                                         LogLevel threshold, std::string* error);
    ~DltSink() override;

    // Called by the backend one line at a time (its lock held), so the context table needs no
    // lock of its own.
    void Write(const LogRecord& record) override;
    LogLevel Threshold() const override;

  private:
    struct Context;
    explicit DltSink(LogLevel threshold);
    Context& ContextOf(const std::string& logger);

    std::atomic<LogLevel> threshold_;
    std::map<std::string, std::shared_ptr<Context>> byLogger_;
    std::map<std::string, std::shared_ptr<Context>> byDltId_;  // loggers whose ids collide share
};

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_DLT_SINK_H
