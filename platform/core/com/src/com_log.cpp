#include "com_log.h"

#include <memory>

namespace vorx::vcc {

ara::kelda::common::log::Log& ComLog() {
    // Never destroyed, so lines can be written from destructors at process exit.
    static const auto* const log = new std::shared_ptr<ara::kelda::common::log::Log>(
        ara::kelda::common::log::Log::GetLog("CM"));
    return **log;
}

ara::kelda::common::log::LogLimitConfig Limit(const char* key) {
    return ara::kelda::common::log::DefaultLimitConfig(key);
}

}  // namespace vorx::vcc
