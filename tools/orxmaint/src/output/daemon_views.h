// Sample timeouts of subscriber listeners, and maintaind's own status.
#pragma once

#include <ostream>

#include "orx/maintaind/tools/replies.h"

namespace orx::orxmaint {

void PrintSampleTimeouts(const maintaind::tools::SampleTimeoutListReply& reply, std::ostream& out);
// Name-value lines: version, host, registry file, start time, counts and counters.
void PrintDaemonStatus(const maintaind::tools::DaemonStatusReply& reply, std::ostream& out);

}  // namespace orx::orxmaint
