#ifndef TESTS_UNIT_BASE_WAIT_FOR_H
#define TESTS_UNIT_BASE_WAIT_FOR_H

#include <chrono>
#include <thread>

#include "vorx/vcc/event_controller.h"

namespace vorx::vcc::test {

// Polls `condition` until it holds or `timeout` passes; returns whether it held.
template <typename Condition>
bool WaitFor(Condition condition, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// Keeps the calling thread busy for `ns` nanoseconds of the monotonic clock: a job that "works".
inline void BusyFor(long ns) {
    const long end = GetCurMonoTime() + ns;
    while (GetCurMonoTime() < end) {
    }
}

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_BASE_WAIT_FOR_H
