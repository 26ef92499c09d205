#include "line_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>

namespace ara::kelda::common::log::detail {

std::string FormatLine(const LogRecord& record) {
    const time_t seconds = static_cast<time_t>(record.wallTimeNs / 1000000000);
    const int millis = static_cast<int>((record.wallTimeNs % 1000000000) / 1000000);
    struct tm utc {};
    gmtime_r(&seconds, &utc);
    char head[96];
    std::snprintf(head, sizeof(head), "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ [%s] [%d:%llu] [",
                  utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min,
                  utc.tm_sec, millis, LevelName(record.level), record.pid,
                  static_cast<unsigned long long>(record.threadId));
    std::string line;
    line.reserve(sizeof(head) + record.appId.size() + record.contextId.size() + record.text.size() +
                 32);
    line += head;
    line += record.appId.empty() ? std::string_view("-") : std::string_view(record.appId);
    line += ':';
    line += record.contextId;
    line += "] ";
    if (record.suppressed != 0) {
        line += "[suppressed ";
        line += std::to_string(record.suppressed);
        line += "] ";
    }
    line += record.text;
    line += '\n';
    return line;
}

void WriteAll(int fd, std::string_view data) {
    while (!data.empty()) {
        const ssize_t written = ::write(fd, data.data(), data.size());
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        data.remove_prefix(static_cast<size_t>(written));
    }
}

}  // namespace ara::kelda::common::log::detail
