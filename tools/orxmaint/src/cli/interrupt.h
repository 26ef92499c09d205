// Waits that end early when the user presses Ctrl-C (SIGINT) or the process gets SIGTERM, for
// commands that refresh until stopped.
#pragma once

#include <signal.h>

#include <array>
#include <chrono>

namespace orx::orxmaint {

class InterruptibleWait {
  public:
    // Catches SIGINT and SIGTERM from now on. At most one instance per process. If the pipe the
    // handler needs cannot be made, the signals keep their default action (they end the process).
    InterruptibleWait();
    // Restores the previous handling of both signals.
    ~InterruptibleWait();
    InterruptibleWait(const InterruptibleWait&) = delete;
    InterruptibleWait& operator=(const InterruptibleWait&) = delete;

    // Waits up to `timeout`. Returns true as soon as one of the signals has arrived (now or at
    // any time since construction), false when the time passed quietly.
    bool WaitUnlessStopped(std::chrono::milliseconds timeout) const;

  private:
    bool catching_ = false;                    // the handlers are installed
    std::array<struct sigaction, 2> saved_{};  // the previous actions of SIGINT and SIGTERM
};

}  // namespace orx::orxmaint
