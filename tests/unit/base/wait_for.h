#ifndef TESTS_UNIT_BASE_WAIT_FOR_H
#define TESTS_UNIT_BASE_WAIT_FOR_H

#include "orx/test/wait.h"
#include "vorx/vcc/event_controller.h"

namespace vorx::vcc::test {

using orx::test::WaitFor;

// Keeps the calling thread busy for `ns` nanoseconds of the monotonic clock: a job that "works".
inline void BusyFor(long ns) {
    const long end = GetCurMonoTime() + ns;
    while (GetCurMonoTime() < end) {
    }
}

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_BASE_WAIT_FOR_H
