#include "ara/kelda/common/log/log_stream.h"

#include <charconv>

#include "ara/kelda/common/log/log.h"
#include "backend.h"

namespace ara::kelda::common::log {

LogStream::LogStream(const Log* log, LogLevel level, uint32_t suppressed)
    : log_(log), level_(level), suppressed_(suppressed) {}

LogStream::LogStream(LogStream&& other) noexcept
    : log_(other.log_),
      level_(other.level_),
      suppressed_(other.suppressed_),
      text_(std::move(other.text_)) {
    other.log_ = nullptr;
}

LogStream& LogStream::operator=(LogStream&& other) noexcept {
    if (this != &other) {
        Emit();
        log_ = other.log_;
        level_ = other.level_;
        suppressed_ = other.suppressed_;
        text_ = std::move(other.text_);
        other.log_ = nullptr;
    }
    return *this;
}

void LogStream::Emit() noexcept {
    if (log_ == nullptr) {
        return;
    }
    const Log* log = log_;
    log_ = nullptr;
    try {
        detail::Backend::Instance().Emit(log->ContextId(), level_, std::move(text_), suppressed_);
    } catch (...) {
        // Logging never takes the caller down.
    }
}

void LogStream::AppendSigned(int64_t value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    text_.append(buffer, result.ptr);
}

void LogStream::AppendUnsigned(uint64_t value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    text_.append(buffer, result.ptr);
}

// General format with 6 significant digits is what a default std::ostream prints.
void LogStream::AppendDouble(double value) {
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 6);
    text_.append(buffer, result.ptr);
}

void LogStream::AppendLongDouble(long double value) {
    char buffer[80];
    const auto result =
        std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, 6);
    text_.append(buffer, result.ptr);
}

void LogStream::AppendCString(const char* value) {
    text_.append(value == nullptr ? "(null)" : value);
}

void LogStream::AppendText(std::string_view value) {
    text_.append(value);
}

}  // namespace ara::kelda::common::log
