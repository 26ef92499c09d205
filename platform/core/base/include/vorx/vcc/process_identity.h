#ifndef VORX_VCC_PROCESS_IDENTITY_H
#define VORX_VCC_PROCESS_IDENTITY_H

#include <cstdint>
#include <optional>
#include <string>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// Who a process is, as its peers and the maintenance daemon see it. A pid alone means nothing
// across hosts (every host hands out the same small numbers), so a process is named by its host
// and its pid, and a pid that the kernel reuses is told apart by its start time.
struct ProcessIdentity {
    // The host's name (gethostname); "" when it cannot be read.
    std::string hostName;
    // Equal for processes that run under one kernel and see one pid namespace, that is, for
    // which a pid names the same process: the boot id of the kernel and the pid namespace's
    // inode. Two hosts, or two containers of one host, always differ.
    std::string hostId;
    int32_t pid{0};
    // Start of the process in clock ticks after boot (field 22 of /proc/<pid>/stat); 0 when
    // unknown.
    uint64_t startTicks{0};

    bool operator==(const ProcessIdentity& other) const {
        return hostName == other.hostName && hostId == other.hostId && pid == other.pid &&
               startTicks == other.startTicks;
    }
    bool operator!=(const ProcessIdentity& other) const { return !(*this == other); }
};

// This process, read now (so a child after fork() gets its own pid). Never throws.
VCC_EXPORT ProcessIdentity CurrentProcessIdentity();

// This host's id as ProcessIdentity::hostId gives it. Read once per process.
VCC_EXPORT const std::string& LocalHostId();

// The start time of process `pid` as this process sees it, in clock ticks after boot;
// std::nullopt when no such process runs (a zombie counts as gone: a killed process whose parent
// has not reaped it yet has ended all the same). Never throws.
VCC_EXPORT std::optional<uint64_t> ProcessStartTicks(int32_t pid);

}  // namespace vorx::vcc

#endif  // VORX_VCC_PROCESS_IDENTITY_H
