#include <ctime>

#include "vorx/vcc/event_controller.h"

namespace vorx::vcc {

long GetCurMonoTime() {
    timespec now{};
    // CLOCK_MONOTONIC cannot fail on Linux with a valid pointer.
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long>(now.tv_sec) * 1000000000L + static_cast<long>(now.tv_nsec);
}

}  // namespace vorx::vcc
