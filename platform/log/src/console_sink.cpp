#include "console_sink.h"

#include <unistd.h>

#include "line_output.h"

namespace ara::kelda::common::log::detail {

ConsoleSink::ConsoleSink(LogLevel threshold) : threshold_(threshold) {}

void ConsoleSink::Write(const LogRecord& record) {
    WriteAll(STDERR_FILENO, FormatLine(record));
}

LogLevel ConsoleSink::Threshold() const {
    return threshold_.load(std::memory_order_relaxed);
}

void ConsoleSink::SetThreshold(LogLevel level) {
    threshold_.store(level, std::memory_order_relaxed);
}

}  // namespace ara::kelda::common::log::detail
