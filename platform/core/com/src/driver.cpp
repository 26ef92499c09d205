#include "vorx/vcc/driver/driver.h"

#include <atomic>
#include <string>

namespace vorx::vcc {

namespace {

uint64_t Fnv1a(const std::string& text, uint64_t hash) {
    for (const char c : text) {
        hash ^= static_cast<uint8_t>(c);
        hash *= 1099511628211ull;
    }
    return hash;
}

// A key that differs between processes and between runs of one pid: a hash of who the process is.
PeerKey KeyOf(const ProcessIdentity& process) {
    const std::string text = process.hostId + "|" + std::to_string(process.pid) + "|" +
                             std::to_string(process.startTicks) + "|" + process.hostName;
    const uint64_t low = Fnv1a(text, 1469598103934665603ull);
    const uint64_t high = Fnv1a(text, low ^ 0x9E3779B97F4A7C15ull);
    PeerKey key{};
    for (size_t i = 0; i < 8; ++i) {
        key[i] = static_cast<uint8_t>(low >> (8 * i));
        key[8 + i] = static_cast<uint8_t>(high >> (8 * i));
    }
    return key;
}

}  // namespace

// Out of line so the vtable and type information exist once, in this library.
Driver::~Driver() = default;

PeerInfo Driver::LocalPeer() const {
    PeerInfo self;
    self.process = CurrentProcessIdentity();
    self.key = KeyOf(self.process);
    return self;
}

std::optional<PeerInfo> Driver::FindPeer(const PeerKey& key) const {
    PeerInfo self = LocalPeer();
    if (self.key == key) {
        return self;
    }
    return std::nullopt;
}

PeerWatchId Driver::WatchPeers(PeerCallbacks /*callbacks*/) {
    static std::atomic<PeerWatchId> next{1};
    return next++;
}

void Driver::StopWatchPeers(PeerWatchId /*watch*/) {}

}  // namespace vorx::vcc
