// The one way tests wait: on a condition, with a deadline, never on a bare sleep.
#pragma once

#include <chrono>
#include <thread>

namespace orx::test {

// Polls `condition` until it holds or `timeout` passes; returns whether it held. The condition is
// checked once more at the deadline, so a state reached just in time still counts.
template <typename Condition>
bool WaitFor(Condition&& condition, std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return static_cast<bool>(condition());
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

}  // namespace orx::test
