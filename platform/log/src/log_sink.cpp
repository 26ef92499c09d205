#include "ara/kelda/common/log/log_sink.h"

#include "backend.h"

namespace ara::kelda::common::log {

LogSink::~LogSink() = default;

void AddSink(std::shared_ptr<LogSink> sink) {
    detail::Backend::Instance().AddSink(std::move(sink));
}

void RemoveSink(const std::shared_ptr<LogSink>& sink) {
    detail::Backend::Instance().RemoveSink(sink);
}

void SetConsoleThreshold(LogLevel level) {
    detail::Backend::Instance().SetConsoleThreshold(level);
}

LogLevel ConsoleThreshold() {
    return detail::Backend::Instance().ConsoleThreshold();
}

void RefreshSinkThresholds() {
    detail::Backend::Instance().RefreshThresholds();
}

}  // namespace ara::kelda::common::log
