#include "app/systemd_notifier.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <cstdint>

namespace orx::maintaind::daemon {

SystemdNotifier::SystemdNotifier() {
    uint64_t usec = 0;
    if (sd_watchdog_enabled(0, &usec) > 0 && usec > 0) {
        feedPeriod_ = std::max(std::chrono::milliseconds(1),
                               std::chrono::duration_cast<std::chrono::milliseconds>(
                                   std::chrono::microseconds(usec / 2)));
    }
}

void SystemdNotifier::Ready(const std::string& status) const {
    sd_notify(0, ("READY=1\nSTATUS=" + status).c_str());
}

void SystemdNotifier::FeedWatchdog() const {
    sd_notify(0, "WATCHDOG=1");
}

void SystemdNotifier::Stopping() const {
    sd_notify(0, "STOPPING=1");
}

}  // namespace orx::maintaind::daemon
