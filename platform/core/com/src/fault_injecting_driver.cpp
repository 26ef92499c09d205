#include "vorx/vcc/driver/fault_injecting_driver.h"

#include <utility>

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

}  // namespace vorx::vcc
