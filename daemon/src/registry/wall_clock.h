// The daemon's notion of "now" for the times it records, injectable so tests control it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace orx::maintaind::daemon {

// Milliseconds since the Unix epoch.
using WallClock = std::function<uint64_t()>;

inline uint64_t SystemWallClockMs() {
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count());
}

}  // namespace orx::maintaind::daemon
