// The daemon's logger and its rate-limited warning keys.
#pragma once

#include <string>

#include "ara/kelda/common/log/log.h"

namespace orx::maintaind::daemon {

// The logger every part of the daemon writes through (context "MAINTAIND").
ara::kelda::common::log::Log& DaemonLog();

// The default limit for warnings about input (5 lines per second per key).
inline ara::kelda::common::log::LogLimitConfig Limit(const std::string& key) {
    return ara::kelda::common::log::DefaultLimitConfig(key);
}

}  // namespace orx::maintaind::daemon
