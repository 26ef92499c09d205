#include "ara/kelda/common/log/file_sink.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "line_output.h"

namespace ara::kelda::common::log {

std::shared_ptr<FileSink> FileSink::Open(const std::string& path, LogLevel threshold,
                                         std::string* error) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        if (error != nullptr) {
            *error = std::strerror(errno);
        }
        return nullptr;
    }
    return std::shared_ptr<FileSink>(new FileSink(fd, path, threshold));
}

FileSink::FileSink(int fd, std::string path, LogLevel threshold)
    : fd_(fd), path_(std::move(path)), threshold_(threshold) {}

FileSink::~FileSink() {
    ::close(fd_);
}

void FileSink::Write(const LogRecord& record) {
    detail::WriteAll(fd_, detail::FormatLine(record));
}

LogLevel FileSink::Threshold() const {
    return threshold_.load(std::memory_order_relaxed);
}

void FileSink::SetThreshold(LogLevel level) {
    threshold_.store(level, std::memory_order_relaxed);
}

const std::string& FileSink::Path() const {
    return path_;
}

}  // namespace ara::kelda::common::log
