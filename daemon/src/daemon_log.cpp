#include "daemon_log.h"

namespace orx::maintaind::daemon {

ara::kelda::common::log::Log& DaemonLog() {
    static const std::shared_ptr<ara::kelda::common::log::Log> log =
        ara::kelda::common::log::Log::GetLog("MAINTAIND");
    return *log;
}

}  // namespace orx::maintaind::daemon
