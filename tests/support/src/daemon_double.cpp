#include "orx/test/daemon_double.h"

#include <utility>

#include "delayed_runner.h"
#include "vorx/vcc/driver/driver_registry.h"

namespace orx::test {

using orx::maintaind::AppRegisterInfo;
using orx::maintaind::LatencySwitch;
using orx::maintaind::ReturnCode;
using vorx::vcc::Fault;
using vorx::vcc::FaultChannel;
using vorx::vcc::Responder;

struct DaemonDouble::State {
    explicit State(Options opts) : options(std::move(opts)) {}

    // The behaviour for the next request.
    ScriptedReply Next() {
        std::lock_guard<std::mutex> lock(mutex);
        if (script.empty()) {
            return fallback;
        }
        ScriptedReply next = script.front();
        script.pop_front();
        return next;
    }

    // Consumes a scripted request-send failure when it is next in line.
    bool TakeRequestSendFailure() {
        std::lock_guard<std::mutex> lock(mutex);
        if (script.empty() || script.front().kind != ScriptedReply::Kind::kRequestSendFails) {
            return false;
        }
        script.pop_front();
        return true;
    }

    void Record(const AppRegisterInfo& info) {
        {
            std::lock_guard<std::mutex> lock(mutex);
            received.push_back(info);
        }
        changed.notify_all();
    }

    void CountReply(bool sent) {
        if (sent) {
            std::lock_guard<std::mutex> lock(mutex);
            ++replies;
        }
    }

    const Options options;
    vorx::vcc::ServiceDescription desc;
    std::shared_ptr<vorx::vcc::Driver> previousDriver;
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    std::vector<AppRegisterInfo> received;            // guarded by mutex
    std::deque<ScriptedReply> script;                 // guarded by mutex
    ScriptedReply fallback = ScriptedReply::Code(0);  // guarded by mutex
    size_t replies = 0;                               // guarded by mutex
};

DaemonDouble::DaemonDouble() : DaemonDouble(Options{}) {}

DaemonDouble::DaemonDouble(Options options)
    : state_(std::make_shared<State>(std::move(options))),
      runner_(std::make_unique<DelayedRunner>()) {
    auto registry = vorx::vcc::DriverRegistry::GetInstance();
    const auto binding = state_->options.binding;
    state_->previousDriver = registry->GetDriver(binding);
    faults_ = std::make_shared<vorx::vcc::FaultInjectingDriver>(state_->previousDriver);
    registry->SetDriver(binding, faults_);

    std::weak_ptr<State> weakState = state_;
    faults_->SetRequestDecider([weakState](const vorx::vcc::MethodCall& call) {
        auto state = weakState.lock();
        if (state && call.entityId == kRegisterAppMethodId && state->TakeRequestSendFailure()) {
            return Fault::Fail();
        }
        return Fault::Pass();
    });

    state_->desc.serviceId = kServiceId;
    state_->desc.instanceId = state_->options.instanceId;
    state_->desc.serviceName = std::string(orx::maintaind::service::kAppServicePath);
    state_->desc.driverType = binding;
    skeleton_ = std::make_unique<vorx::vcc::Skeleton>(state_->desc);

    skeleton_->RegisterMethod<ReturnCode, AppRegisterInfo>(
        kRegisterAppMethodId, [this](const AppRegisterInfo& info, Responder<ReturnCode> responder) {
            state_->Record(info);
            const ScriptedReply behaviour = state_->Next();
            std::function<void()> act;
            switch (behaviour.kind) {
                case ScriptedReply::Kind::kCode:
                    act = [state = state_, responder, code = behaviour.code] {
                        state->CountReply(responder.Reply(ReturnCode{code}));
                    };
                    break;
                case ScriptedReply::Kind::kError:
                    act = [state = state_, responder, error = *behaviour.error] {
                        state->CountReply(responder.ReplyError(error));
                    };
                    break;
                case ScriptedReply::Kind::kReplySendFails:
                    act = [faults = faults_, responder] {
                        faults->FailNext(FaultChannel::kReply);
                        responder.Reply(ReturnCode{0});
                    };
                    break;
                case ScriptedReply::Kind::kWithdraw:
                    Withdraw();
                    if (behaviour.delay.count() > 0) {
                        runner_->RunAt(DelayedRunner::Clock::now() + behaviour.delay,
                                       [this] { Offer(); });
                    }
                    return;
                case ScriptedReply::Kind::kNoReply:
                case ScriptedReply::Kind::kRequestSendFails:
                default:
                    return;
            }
            if (behaviour.delay.count() > 0) {
                runner_->RunAt(DelayedRunner::Clock::now() + behaviour.delay, std::move(act));
            } else {
                act();
            }
        });
    if (state_->options.offerAtStart) {
        Offer();
    }
}

DaemonDouble::~DaemonDouble() {
    skeleton_->StopOfferService();  // no request handler runs after this
    runner_.reset();                // delayed replies and re-offers are dropped
    skeleton_.reset();
    faults_->SetRequestDecider(nullptr);
    auto registry = vorx::vcc::DriverRegistry::GetInstance();
    if (registry->GetDriver(state_->options.binding) == faults_) {
        registry->SetDriver(state_->options.binding, state_->previousDriver);
    }
}

const vorx::vcc::ServiceDescription& DaemonDouble::Description() const {
    return state_->desc;
}

bool DaemonDouble::Offer() {
    return skeleton_->OfferService();
}

void DaemonDouble::Withdraw() {
    skeleton_->StopOfferService();
}

bool DaemonDouble::IsOffered() const {
    return skeleton_->IsOffered();
}

void DaemonDouble::Script(const ScriptedReply& behaviour, size_t count) {
    std::lock_guard<std::mutex> lock(state_->mutex);
    for (size_t i = 0; i < count; ++i) {
        state_->script.push_back(behaviour);
    }
}

void DaemonDouble::SetDefault(const ScriptedReply& behaviour) {
    std::lock_guard<std::mutex> lock(state_->mutex);
    state_->fallback = behaviour;
}

size_t DaemonDouble::ScriptedLeft() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->script.size();
}

bool DaemonDouble::PublishLatencySwitch(const LatencySwitch& order) {
    return skeleton_->Send(kLatencyEventId, order);
}

std::vector<AppRegisterInfo> DaemonDouble::Received() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->received;
}

size_t DaemonDouble::ReceivedCount() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->received.size();
}

bool DaemonDouble::WaitForCount(size_t count,
                                std::chrono::steady_clock::time_point deadline) const {
    std::unique_lock<std::mutex> lock(state_->mutex);
    return state_->changed.wait_until(lock, deadline,
                                      [&] { return state_->received.size() >= count; });
}

bool DaemonDouble::WaitFor(
    const std::function<bool(const std::vector<AppRegisterInfo>&)>& predicate,
    std::chrono::steady_clock::time_point deadline) const {
    std::unique_lock<std::mutex> lock(state_->mutex);
    return state_->changed.wait_until(lock, deadline, [&] { return predicate(state_->received); });
}

size_t DaemonDouble::RepliesSent() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->replies;
}

}  // namespace orx::test
