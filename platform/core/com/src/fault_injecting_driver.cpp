#include "vorx/vcc/driver/fault_injecting_driver.h"

#include <utility>
#include <vector>

#include "callback_gate.h"
#include "orx/sync/mutex.h"
#include "task_thread.h"

namespace vorx::vcc {

FaultInjectingDriver::FaultInjectingDriver(std::shared_ptr<Driver> inner)
    : inner_(std::move(inner)), delayer_(std::make_unique<TaskThread>("vcc-fault-delay")) {}

FaultInjectingDriver::~FaultInjectingDriver() = default;

void FaultInjectingDriver::Inject(FaultChannel channel, Fault fault, uint32_t count) {
    orx::sync::MutexLock lock(mutex_);
    auto& queue = faults_[static_cast<size_t>(channel)];
    for (uint32_t i = 0; i < count; ++i) {
        queue.push_back(fault);
    }
}

void FaultInjectingDriver::Clear() {
    orx::sync::MutexLock lock(mutex_);
    for (auto& queue : faults_) {
        queue.clear();
    }
    requestRewriter_ = nullptr;
    replyRewriter_ = nullptr;
    requestDecider_ = nullptr;
}

size_t FaultInjectingDriver::PendingFaults(FaultChannel channel) const {
    orx::sync::MutexLock lock(mutex_);
    return faults_[static_cast<size_t>(channel)].size();
}

uint64_t FaultInjectingDriver::SendCount(FaultChannel channel) const {
    orx::sync::MutexLock lock(mutex_);
    return sends_[static_cast<size_t>(channel)];
}

void FaultInjectingDriver::SetRequestRewriter(std::function<void(MethodCall&)> rewriter) {
    orx::sync::MutexLock lock(mutex_);
    requestRewriter_ = std::move(rewriter);
}

void FaultInjectingDriver::SetReplyRewriter(std::function<void(MethodReply&)> rewriter) {
    orx::sync::MutexLock lock(mutex_);
    replyRewriter_ = std::move(rewriter);
}

void FaultInjectingDriver::SetRequestDecider(std::function<Fault(const MethodCall&)> decider) {
    orx::sync::MutexLock lock(mutex_);
    requestDecider_ = std::move(decider);
}

bool FaultInjectingDriver::NextFault(FaultChannel channel, Fault& fault) {
    orx::sync::MutexLock lock(mutex_);
    ++sends_[static_cast<size_t>(channel)];
    auto& queue = faults_[static_cast<size_t>(channel)];
    if (queue.empty()) {
        fault = Fault::Pass();
        return false;
    }
    fault = queue.front();
    queue.pop_front();
    return true;
}

bool FaultInjectingDriver::Apply(const Fault& fault, std::function<bool()> forward) {
    switch (fault.kind) {
        case Fault::Kind::kDrop:
            return true;
        case Fault::Kind::kFail:
            return false;
        case Fault::Kind::kDelay:
            delayer_->PostAt(TaskThread::Clock::now() + fault.delay,
                             [forward = std::move(forward)] { forward(); });
            return true;
        case Fault::Kind::kPass:
        default:
            return forward();
    }
}

std::string FaultInjectingDriver::Name() const {
    return "faulty(" + inner_->Name() + ")";
}

PayloadMode FaultInjectingDriver::GetPayloadMode() const {
    return inner_->GetPayloadMode();
}

ProviderId FaultInjectingDriver::Offer(const ServiceDescription& offer, ServerCallbacks callbacks) {
    return inner_->Offer(offer, std::move(callbacks));
}

void FaultInjectingDriver::StopOffer(ProviderId provider) {
    inner_->StopOffer(provider);
}

FindId FaultInjectingDriver::StartFind(const ServiceDescription& search, FindCallback callback) {
    return inner_->StartFind(search, std::move(callback));
}

void FaultInjectingDriver::StopFind(FindId find) {
    inner_->StopFind(find);
}

ClientId FaultInjectingDriver::Connect(const HandleType& handle, ClientCallbacks callbacks) {
    return inner_->Connect(handle, std::move(callbacks));
}

void FaultInjectingDriver::Disconnect(ClientId client) {
    inner_->Disconnect(client);
}

bool FaultInjectingDriver::SendRequest(ClientId client, MethodCall call) {
    std::function<void(MethodCall&)> rewriter;
    std::function<Fault(const MethodCall&)> decider;
    {
        orx::sync::MutexLock lock(mutex_);
        rewriter = requestRewriter_;
        decider = requestDecider_;
    }
    if (rewriter) {
        rewriter(call);
    }
    Fault fault;
    if (!NextFault(FaultChannel::kRequest, fault) && decider) {
        fault = decider(call);
    }
    return Apply(fault, [inner = inner_, client, call = std::move(call)]() mutable {
        return inner->SendRequest(client, std::move(call));
    });
}

bool FaultInjectingDriver::SendReply(ProviderId provider, MethodReply reply) {
    std::function<void(MethodReply&)> rewriter;
    {
        orx::sync::MutexLock lock(mutex_);
        rewriter = replyRewriter_;
    }
    if (rewriter) {
        rewriter(reply);
    }
    Fault fault;
    NextFault(FaultChannel::kReply, fault);
    return Apply(fault, [inner = inner_, provider, reply = std::move(reply)]() mutable {
        return inner->SendReply(provider, std::move(reply));
    });
}

bool FaultInjectingDriver::Publish(ProviderId provider, EventSample sample) {
    Fault fault;
    NextFault(FaultChannel::kEvent, fault);
    return Apply(fault, [inner = inner_, provider, sample = std::move(sample)]() mutable {
        return inner->Publish(provider, std::move(sample));
    });
}

bool FaultInjectingDriver::Subscribe(ClientId client, uint32_t entityId) {
    return inner_->Subscribe(client, entityId);
}

void FaultInjectingDriver::Unsubscribe(ClientId client, uint32_t entityId) {
    inner_->Unsubscribe(client, entityId);
}

void FaultInjectingDriver::TellWatches(std::function<void(const PeerCallbacks&)> call) {
    std::vector<std::pair<PeerCallbacks, std::shared_ptr<CallbackGate>>> targets;
    {
        orx::sync::MutexLock lock(mutex_);
        for (const auto& [id, watch] : watches_) {
            targets.emplace_back(watch.callbacks, watch.gate);
        }
    }
    delayer_->Post([targets = std::move(targets), call = std::move(call)] {
        for (const auto& target : targets) {
            const PeerCallbacks& callbacks = target.first;
            target.second->Run([&] { call(callbacks); });
        }
    });
}

void FaultInjectingDriver::AddPeer(const PeerInfo& peer) {
    {
        orx::sync::MutexLock lock(mutex_);
        standIns_[peer.key] = peer;
    }
    TellWatches([peer](const PeerCallbacks& callbacks) {
        if (callbacks.onAlive) {
            callbacks.onAlive(peer);
        }
    });
}

void FaultInjectingDriver::LosePeer(const PeerKey& key) {
    {
        orx::sync::MutexLock lock(mutex_);
        standIns_.erase(key);
    }
    TellWatches([key](const PeerCallbacks& callbacks) {
        if (callbacks.onLost) {
            callbacks.onLost(key);
        }
    });
}

PeerInfo FaultInjectingDriver::LocalPeer() const {
    return inner_->LocalPeer();
}

std::optional<PeerInfo> FaultInjectingDriver::FindPeer(const PeerKey& key) const {
    {
        orx::sync::MutexLock lock(mutex_);
        const auto found = standIns_.find(key);
        if (found != standIns_.end()) {
            return found->second;
        }
    }
    return inner_->FindPeer(key);
}

PeerWatchId FaultInjectingDriver::WatchPeers(PeerCallbacks callbacks) {
    PeerWatch watch;
    watch.callbacks = callbacks;
    watch.gate = std::make_shared<CallbackGate>();
    watch.inner = inner_->WatchPeers(callbacks);
    std::vector<PeerInfo> known;
    std::shared_ptr<CallbackGate> gate = watch.gate;
    PeerWatchId id = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        id = nextWatch_++;
        watches_.emplace(id, std::move(watch));
        for (const auto& [key, peer] : standIns_) {
            known.push_back(peer);
        }
    }
    // The stand-ins known already are reported once, as a real driver reports the peers it knows
    // when a watch starts.
    delayer_->Post([gate, callbacks = std::move(callbacks), known = std::move(known)] {
        gate->Run([&] {
            for (const PeerInfo& peer : known) {
                if (callbacks.onAlive) {
                    callbacks.onAlive(peer);
                }
            }
        });
    });
    return id;
}

void FaultInjectingDriver::StopWatchPeers(PeerWatchId watch) {
    PeerWatch stopped;
    {
        orx::sync::MutexLock lock(mutex_);
        const auto found = watches_.find(watch);
        if (found == watches_.end()) {
            return;
        }
        stopped = std::move(found->second);
        watches_.erase(found);
    }
    inner_->StopWatchPeers(stopped.inner);
    stopped.gate->Close();
}

}  // namespace vorx::vcc
