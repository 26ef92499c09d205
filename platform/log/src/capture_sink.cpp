#include "ara/kelda/common/log/capture_sink.h"

namespace ara::kelda::common::log {

CaptureSink::CaptureSink(LogLevel threshold) : threshold_(threshold) {}

CaptureSink::~CaptureSink() = default;

void CaptureSink::Write(const LogRecord& record) {
    {
        orx::sync::MutexLock lock(mutex_);
        records_.push_back(record);
    }
    changed_.NotifyAll();
}

LogLevel CaptureSink::Threshold() const {
    return threshold_.load(std::memory_order_relaxed);
}

void CaptureSink::SetThreshold(LogLevel level) {
    threshold_.store(level, std::memory_order_relaxed);
    RefreshSinkThresholds();
}

std::vector<std::pair<LogLevel, std::string>> CaptureSink::Lines() const {
    orx::sync::MutexLock lock(mutex_);
    std::vector<std::pair<LogLevel, std::string>> lines;
    lines.reserve(records_.size());
    for (const auto& record : records_) {
        lines.emplace_back(record.level, record.text);
    }
    return lines;
}

std::vector<LogRecord> CaptureSink::Records() const {
    orx::sync::MutexLock lock(mutex_);
    return records_;
}

size_t CaptureSink::Size() const {
    orx::sync::MutexLock lock(mutex_);
    return records_.size();
}

size_t CaptureSink::CountLocked(LogLevel level, const std::string& text, bool exact) const {
    size_t count = 0;
    for (const auto& record : records_) {
        if (record.level == level &&
            (exact ? record.text == text : record.text.find(text) != std::string::npos)) {
            ++count;
        }
    }
    return count;
}

size_t CaptureSink::Count(LogLevel level, const std::string& text) const {
    orx::sync::MutexLock lock(mutex_);
    return CountLocked(level, text, true);
}

size_t CaptureSink::CountContaining(LogLevel level, const std::string& part) const {
    orx::sync::MutexLock lock(mutex_);
    return CountLocked(level, part, false);
}

bool CaptureSink::Contains(LogLevel level, const std::string& text) const {
    return Count(level, text) > 0;
}

bool CaptureSink::WaitForContaining(LogLevel level, const std::string& part, size_t count,
                                    std::chrono::milliseconds timeout) const {
    orx::sync::MutexLock lock(mutex_);
    return changed_.WaitFor(mutex_, timeout, [&]() REQUIRES(mutex_) {
        return CountLocked(level, part, false) >= count;
    });
}

std::string CaptureSink::Dump() const {
    orx::sync::MutexLock lock(mutex_);
    std::string dump;
    for (const auto& record : records_) {
        dump += LevelName(record.level);
        dump += ": ";
        dump += record.text;
        dump += '\n';
    }
    return dump;
}

void CaptureSink::Clear() {
    orx::sync::MutexLock lock(mutex_);
    records_.clear();
}

}  // namespace ara::kelda::common::log
