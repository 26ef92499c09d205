// The process that sent a report, as the transport named it: the report's own application name
// and pid are checked against nothing on the daemon's host; the host and the liveness of a node
// come from here.
#pragma once

#include <cstdint>
#include <string>

#include "orx/maintaind/record.h"

namespace orx::maintaind::daemon {

struct ReportSender {
    String peer;    // the sending peer's key as hex; "" when the transport named none
    String host;    // host name of the sending process; "" when the peer is not known
    String hostId;  // its host id (equal for processes that share a kernel and pid namespace)
    bool local{};   // hostId is the daemon's own: the process can be checked through /proc
    int32_t pid{};  // the sender's pid as its peer gave it; 0 unknown
    uint64_t startTicks{};  // its start time in clock ticks after boot; 0 unknown
};

}  // namespace orx::maintaind::daemon
