// The daemon's side of systemd's service protocol (Type=notify): readiness, the watchdog and
// stopping. Outside systemd ($NOTIFY_SOCKET unset) every call does nothing.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orx::maintaind::daemon {

class SystemdNotifier {
  public:
    // Reads the watchdog interval systemd asks for ($WATCHDOG_USEC, for this process) once.
    SystemdNotifier();

    // READY=1 with a status text: both services are offered.
    void Ready(const std::string& status) const;
    // WATCHDOG=1: the daemon is alive.
    void FeedWatchdog() const;
    // STOPPING=1: the daemon is shutting down.
    void Stopping() const;

    // How often FeedWatchdog must be called: half the watchdog interval, so that one late feed
    // is not yet a timeout. std::nullopt when no watchdog is asked for.
    std::optional<std::chrono::milliseconds> FeedPeriod() const { return feedPeriod_; }

  private:
    std::optional<std::chrono::milliseconds> feedPeriod_;
};

}  // namespace orx::maintaind::daemon
