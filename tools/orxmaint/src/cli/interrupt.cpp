#include "cli/interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

namespace orx::orxmaint {

namespace {

// The signal handler may only touch async-signal-safe things: it writes one byte into a pipe,
// which the waiting thread polls. The byte stays there, so every later wait returns at once.
int g_pipe[2] = {-1, -1};

extern "C" void OnStopSignal(int) {
    const int saved = errno;
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
    errno = saved;
}

constexpr std::array<int, 2> kSignals = {SIGINT, SIGTERM};

}  // namespace

InterruptibleWait::InterruptibleWait() {
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        g_pipe[0] = g_pipe[1] = -1;
        return;
    }
    struct sigaction action {};
    action.sa_handler = OnStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (size_t i = 0; i < saved_.size(); ++i) {
        ::sigaction(kSignals[i], &action, &saved_[i]);
    }
    catching_ = true;
}

InterruptibleWait::~InterruptibleWait() {
    if (catching_) {
        for (size_t i = 0; i < saved_.size(); ++i) {
            ::sigaction(kSignals[i], &saved_[i], nullptr);
        }
    }
    for (int& fd : g_pipe) {
        if (fd >= 0) {
            ::close(fd);
            fd = -1;
        }
    }
}

bool InterruptibleWait::WaitUnlessStopped(std::chrono::milliseconds timeout) const {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + timeout;
    if (!catching_) {
        std::this_thread::sleep_until(deadline);
        return false;
    }
    for (;;) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        struct pollfd ready {};
        ready.fd = g_pipe[0];
        ready.events = POLLIN;
        const int result = ::poll(&ready, 1, left.count() > 0 ? static_cast<int>(left.count()) : 0);
        if (result > 0) {
            return true;
        }
        if (result == 0 || errno != EINTR) {
            return false;
        }
        // Interrupted by a signal: poll again, which sees the byte if it was one of ours.
    }
}

}  // namespace orx::orxmaint
