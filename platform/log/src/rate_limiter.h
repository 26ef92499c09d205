#ifndef KELDA_LOG_SRC_RATE_LIMITER_H
#define KELDA_LOG_SRC_RATE_LIMITER_H

#include <cstdint>
#include <string>
#include <unordered_map>

#include "ara/kelda/common/log/log.h"

namespace ara::kelda::common::log::detail {

// Decides which rate-limited lines go out. Time comes in as a parameter (monotonic
// nanoseconds), so the rules can be checked without waiting. Not thread-safe: the owner locks.
class RateLimiter {
  public:
    // True when a line under `limit` may go out at `nowNs`. When it may, *suppressed receives
    // the number of lines of this key dropped since the last line that went out (then reset);
    // when it may not, the line is counted as dropped.
    bool Allow(const LogLimitConfig& limit, int64_t nowNs, uint32_t* suppressed);

  private:
    struct Window {
        int64_t startNs = 0;
        uint32_t used = 0;     // lines out in this window
        uint32_t dropped = 0;  // lines dropped since the last one that went out
        bool started = false;
    };
    std::unordered_map<std::string, Window> windows_;
};

}  // namespace ara::kelda::common::log::detail

#endif  // KELDA_LOG_SRC_RATE_LIMITER_H
