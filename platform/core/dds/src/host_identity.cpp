#include "host_identity.h"

#include <unistd.h>

#include <ctime>
#include <fstream>
#include <random>

#include "vorx/driver/dds/dds_transport.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

int64_t ClockNs(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

uint64_t Fnv1a(const std::string& text) {
    uint64_t hash = 1469598103934665603ull;
    for (const char c : text) {
        hash ^= static_cast<uint8_t>(c);
        hash *= 1099511628211ull;
    }
    return hash;
}

uint64_t ReadBootId() {
    std::ifstream file("/proc/sys/kernel/random/boot_id");
    std::string text;
    if (!std::getline(file, text) || text.empty()) {
        text = HostName();
    }
    return Fnv1a(text) | 1u;
}

}  // namespace

uint64_t RandomId() {
    std::random_device device;
    std::seed_seq seed{device(), device(), static_cast<unsigned>(getpid()),
                       static_cast<unsigned>(ClockNs(CLOCK_MONOTONIC))};
    std::mt19937_64 engine(seed);
    return engine();
}

std::string HostName() {
    char name[256] = {};
    if (gethostname(name, sizeof(name) - 1) != 0) {
        return std::string();
    }
    return std::string(name);
}

int64_t MonotonicNowNs() {
    return ClockNs(CLOCK_MONOTONIC);
}
int64_t RealtimeNowNs() {
    return ClockNs(CLOCK_REALTIME);
}

uint64_t DdsTransport::BootId() {
    static const uint64_t id = ReadBootId();
    return id;
}

int64_t LocalMonotonicSendTime(const Frame& frame) {
    if (frame.bootId == DdsTransport::BootId()) {
        return frame.sendTimeMonoNs;
    }
    return MonotonicNowNs() - (RealtimeNowNs() - frame.sendTimeRealNs);
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
