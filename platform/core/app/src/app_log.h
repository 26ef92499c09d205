#ifndef VORX_VCC_APP_SRC_APP_LOG_H
#define VORX_VCC_APP_SRC_APP_LOG_H

#include <memory>

#include "ara/kelda/common/log/log.h"

namespace vorx::vcc::app::detail {

// The application side logs on the core's "CM" logger, beside the rest of the core.
inline std::shared_ptr<ara::kelda::common::log::Log> AppLog() {
    return ara::kelda::common::log::Log::GetLog("CM");
}

// A rate limit for warnings that a busy application could repeat many times a second.
inline ara::kelda::common::log::LogLimitConfig AppLimit(const char* key) {
    return ara::kelda::common::log::DefaultLimitConfig(key);
}

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_APP_LOG_H
