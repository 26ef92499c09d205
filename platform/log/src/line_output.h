#ifndef KELDA_LOG_SRC_LINE_OUTPUT_H
#define KELDA_LOG_SRC_LINE_OUTPUT_H

#include <string>
#include <string_view>

#include "ara/kelda/common/log/log_sink.h"

namespace ara::kelda::common::log::detail {

// The console and file line:
//   2024-05-01T10:20:30.123Z [warning] [1234:1240] [CM_LOG:CM] text
// with " [suppressed N]" before the text when rate-limited lines were dropped, "-" for an empty
// application id, and a newline at the end. Wall time is UTC.
std::string FormatLine(const LogRecord& record);

// Writes all of `data` to `fd`, retrying after interruptions and short writes. Errors are
// ignored: there is nowhere left to report them.
void WriteAll(int fd, std::string_view data);

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_LINE_OUTPUT_H
