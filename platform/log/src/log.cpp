#include "ara/kelda/common/log/log.h"

#include "backend.h"

namespace ara::kelda::common::log {

LogLimitConfig DefaultLimitConfig(const std::string& key) {
    return LogLimitConfig{1000, 5, key};
}

void Log::InitLog(const std::string& appId, const std::string& contextId, LogLevel level,
                  const std::string& description) {
    detail::Backend::Instance().InitFromEnvironment(
        LogSetup{appId, contextId, level, std::string(), description});
}

bool Log::SetUp(const LogSetup& setup) {
    return detail::Backend::Instance().SetUp(setup);
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

const std::string& Log::ContextId() const {
    return contextId_;
}

}  // namespace ara::kelda::common::log
