#include "liveness/liveness_monitor.h"

#include <utility>
#include <vector>

#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

LivenessMonitor::LivenessMonitor(const Registry& registry,
                                 std::shared_ptr<const ProcessProbe> probe, GoneSink sink,
                                 std::chrono::milliseconds period)
    : registry_(registry), probe_(std::move(probe)), sink_(std::move(sink)), period_(period) {}

LivenessMonitor::~LivenessMonitor() {
    Stop();
}

void LivenessMonitor::Start() {
    thread_ = std::thread([this] { Run(); });
}

void LivenessMonitor::Stop() {
    {
        orx::sync::MutexLock lock(mutex_);
        stopping_ = true;
    }
    wake_.NotifyAll();
    if (thread_.joinable()) {
        thread_.join();
    }
}

size_t LivenessMonitor::CheckOnce() {
    const std::vector<NodeGone> watched = registry_.Read([](const RegistryState& state) {
        std::vector<NodeGone> nodes;
        for (const auto& [key, node] : state.nodes) {
            if (node.entry.online && node.local) {
                nodes.push_back(NodeGone{key, node.startTicks});
            }
        }
        return nodes;
    });
    size_t gone = 0;
    for (const NodeGone& node : watched) {
        const auto ticks = probe_->StartTicks(node.node.pid);
        if (!ticks || *ticks != node.startTicks) {
            ++gone;
            sink_(node);
        }
    }
    return gone;
}

void LivenessMonitor::Run() {
    orx::sync::MutexLock lock(mutex_);
    while (!stopping_) {
        lock.Unlock();
        CheckOnce();
        lock.Lock();
        wake_.WaitFor(mutex_, period_, [this]() REQUIRES(mutex_) { return stopping_; });
    }
}

}  // namespace orx::maintaind::daemon
