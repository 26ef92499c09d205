#include "ara/kelda/common/log/log.h"

#include "backend.h"

namespace ara::kelda::common::log {

LogLimitConfig DefaultLimitConfig(const std::string& key) {
    return LogLimitConfig{1000, 5, key};
}

void Log::InitLog(const std::string& appId, const std::string& contextId, LogLevel level,
                  const std::string& description) {
    detail::Backend::Instance().Configure(appId, contextId, level, description);
}

std::shared_ptr<Log> Log::GetLog(const std::string& contextId) {
    return detail::Backend::Instance().GetLog(contextId);
}

std::shared_ptr<Log> Log::GetDefaultLog() {
    detail::Backend& backend = detail::Backend::Instance();
    return backend.GetLog(backend.DefaultContext());
}

Log::Log(std::string contextId)
    : contextId_(std::move(contextId)), minLevel_(&detail::Backend::Instance().MinLevel()) {}

LogStream Log::LogVerbose() {
    return LogAt(LogLevel::kVerbose);
}
LogStream Log::LogDebug() {
    return LogAt(LogLevel::kDebug);
}
LogStream Log::LogInfo() {
    return LogAt(LogLevel::kInfo);
}
LogStream Log::LogWarn() {
    return LogAt(LogLevel::kWarn);
}
LogStream Log::LogError() {
    return LogAt(LogLevel::kError);
}
LogStream Log::LogFatal() {
    return LogAt(LogLevel::kFatal);
}

LogStream Log::LogWarn(const LogLimitConfig& limit) {
    // A line nobody would see does not use up the limit.
    if (!IsEnabled(LogLevel::kWarn)) {
        return LogStream();
    }
    uint32_t suppressed = 0;
    if (!detail::Backend::Instance().AllowLimited(limit, &suppressed)) {
        return LogStream();
    }
    return LogStream(this, LogLevel::kWarn, suppressed);
}

LogStream Log::LogAt(LogLevel level) {
    if (!IsEnabled(level)) {
        return LogStream();
    }
    return LogStream(this, level, 0);
}

const std::string& Log::ContextId() const {
    return contextId_;
}

}  // namespace ara::kelda::common::log
