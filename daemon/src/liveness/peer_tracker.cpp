#include "liveness/peer_tracker.h"

#include <set>
#include <utility>
#include <vector>

#include "vorx/vcc/process_identity.h"

namespace orx::maintaind::daemon {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

std::optional<vorx::vcc::PeerKey> PeerFromHex(const String& hex) {
    vorx::vcc::PeerKey key{};
    if (hex.size() != key.size() * 2) {
        return std::nullopt;
    }
    auto nibble = [](char c) -> int {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        return -1;
    };
    for (size_t i = 0; i < key.size(); ++i) {
        const int high = nibble(hex[2 * i]);
        const int low = nibble(hex[2 * i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        key[i] = static_cast<uint8_t>(high * 16 + low);
    }
    return key;
}

}  // namespace

String PeerHex(const vorx::vcc::PeerKey& key) {
    bool zero = true;
    String hex;
    hex.reserve(key.size() * 2);
    for (uint8_t byte : key) {
        zero = zero && byte == 0;
        hex.push_back(kHexDigits[byte >> 4]);
        hex.push_back(kHexDigits[byte & 0xF]);
    }
    return zero ? String() : hex;
}

PeerTracker::PeerTracker(std::shared_ptr<vorx::vcc::Driver> driver, const Registry& registry,
                         Sink sink, std::chrono::milliseconds grace,
                         std::chrono::milliseconds period)
    : driver_(std::move(driver)),
      registry_(registry),
      sink_(std::move(sink)),
      grace_(grace),
      period_(period) {}

PeerTracker::~PeerTracker() {
    Stop();
}

void PeerTracker::Start() {
    vorx::vcc::PeerCallbacks callbacks;
    callbacks.onAlive = [this](const vorx::vcc::PeerInfo& peer) {
        IngestItem item;
        item.work = PeerAlive{PeerHex(peer.key)};
        sink_(std::move(item));
    };
    callbacks.onLost = [this](const vorx::vcc::PeerKey& key) {
        IngestItem item;
        item.work = PeerLost{PeerHex(key)};
        sink_(std::move(item));
    };
    watch_ = driver_->WatchPeers(std::move(callbacks));
    thread_ = std::thread([this] { Run(); });
}

void PeerTracker::Stop() {
    {
        orx::sync::MutexLock lock(mutex_);
        stopping_ = true;
    }
    wake_.NotifyAll();
    if (thread_.joinable()) {
        thread_.join();
    }
    if (watch_ != 0) {
        driver_->StopWatchPeers(watch_);
        watch_ = 0;
    }
}

ReportSender PeerTracker::Resolve(const vorx::vcc::PeerKey& key) const {
    ReportSender sender;
    sender.peer = PeerHex(key);
    if (sender.peer.empty()) {
        return sender;
    }
    const auto peer = driver_->FindPeer(key);
    if (!peer) {
        return sender;
    }
    sender.host = peer->process.hostName;
    sender.hostId = peer->process.hostId;
    sender.pid = peer->process.pid;
    sender.startTicks = peer->process.startTicks;
    sender.local = !sender.hostId.empty() && sender.hostId == vorx::vcc::LocalHostId();
    return sender;
}

size_t PeerTracker::SweepOnce() {
    const std::set<String> peers = registry_.Read([](const RegistryState& state) {
        std::set<String> online;
        for (const auto& [key, node] : state.nodes) {
            if (node.entry.online && !node.local && !node.peer.empty()) {
                online.insert(node.peer);
            }
        }
        return online;
    });
    size_t lost = 0;
    for (const String& peer : peers) {
        const auto key = PeerFromHex(peer);
        if (key && driver_->FindPeer(*key)) {
            continue;
        }
        ++lost;
        IngestItem item;
        item.work = PeerLost{peer};
        sink_(std::move(item));
    }
    return lost;
}

void PeerTracker::Run() {
    orx::sync::MutexLock lock(mutex_);
    if (wake_.WaitFor(mutex_, grace_, [this]() REQUIRES(mutex_) { return stopping_; })) {
        return;
    }
    while (!stopping_) {
        lock.Unlock();
        SweepOnce();
        lock.Lock();
        wake_.WaitFor(mutex_, period_, [this]() REQUIRES(mutex_) { return stopping_; });
    }
}

}  // namespace orx::maintaind::daemon
