#include "rate_limiter.h"

#include <limits>

namespace ara::kelda::common::log::detail {

bool RateLimiter::Allow(const LogLimitConfig& limit, int64_t nowNs, uint32_t* suppressed) {
    Window& window = windows_[limit.key];
    const int64_t periodNs = static_cast<int64_t>(limit.periodMs) * 1000000;
    if (!window.started || nowNs - window.startNs >= periodNs) {
        window.started = true;
        window.startNs = nowNs;
        window.used = 0;
    }
    if (window.used >= limit.count) {
        if (window.dropped < std::numeric_limits<uint32_t>::max()) {
            ++window.dropped;
        }
        return false;
    }
    ++window.used;
    *suppressed = window.dropped;
    window.dropped = 0;
    return true;
}

}  // namespace ara::kelda::common::log::detail
