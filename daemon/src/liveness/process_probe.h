// What this host can tell about a process id: whether it runs here and since when. Behind an
// interface so tests can script processes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orx::maintaind::daemon {

class ProcessProbe {
  public:
    virtual ~ProcessProbe();

    // The start time of process `pid` on this host, in clock ticks after boot (field 22 of
    // /proc/<pid>/stat); std::nullopt when no such process runs here. A pid that is reused gets
    // a new start time, which is how a recycled pid is told from the process first seen.
    virtual std::optional<uint64_t> StartTicks(int32_t pid) const = 0;
    // This host's name.
    virtual std::string HostName() const = 0;
};

// Reads /proc of this host. Thread-safe; never throws.
class ProcProbe final : public ProcessProbe {
  public:
    std::optional<uint64_t> StartTicks(int32_t pid) const override;
    std::string HostName() const override;
};

}  // namespace orx::maintaind::daemon
