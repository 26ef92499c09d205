#include "service/method_server.h"

#include "daemon_log.h"
#include "orx/sync/mutex.h"

namespace orx::maintaind::daemon {

MethodServer::MethodServer(vorx::vcc::ServiceDescription desc,
                           std::shared_ptr<vorx::vcc::Driver> driver)
    : desc_(std::move(desc)), driver_(std::move(driver)) {}

MethodServer::~MethodServer() {
    StopOffer();
}

void MethodServer::Register(uint32_t entityId, Handler handler) {
    handlers_[entityId] = std::move(handler);
}

bool MethodServer::Offer() {
    orx::sync::MutexLock offerLock(offerMutex_);
    if (IsOffered()) {
        return true;
    }
    vorx::vcc::ServerCallbacks callbacks;
    callbacks.onRequest = [this](vorx::vcc::ProviderId provider,
                                 const vorx::vcc::MethodCall& call) { Dispatch(provider, call); };
    const vorx::vcc::ProviderId provider = driver_->Offer(desc_, std::move(callbacks));
    if (provider == 0) {
        DaemonLog().LogError() << "[Maintaind][The driver refused to offer the service][driver="
                               << driver_->Name() << ", serviceId=" << desc_.serviceId
                               << ", instanceId=" << desc_.instanceId << "]";
        return false;
    }
    orx::sync::MutexLock lock(mutex_);
    provider_ = provider;
    return true;
}

void MethodServer::StopOffer() {
    orx::sync::MutexLock offerLock(offerMutex_);
    vorx::vcc::ProviderId provider = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        std::swap(provider, provider_);
    }
    if (provider != 0) {
        driver_->StopOffer(provider);  // waits for a running handler
    }
}

bool MethodServer::IsOffered() const {
    orx::sync::MutexLock lock(mutex_);
    return provider_ != 0;
}

void MethodServer::Dispatch(vorx::vcc::ProviderId provider, const vorx::vcc::MethodCall& call) {
    auto it = handlers_.find(call.entityId);
    if (it == handlers_.end()) {
        DaemonLog().LogWarn(Limit("Maintaind_UnknownMethod"))
            << "[Maintaind][Request for a method this service does not have][serviceId="
            << desc_.serviceId << ", methodEntityId=" << call.entityId << "]";
        return;
    }
    it->second(call, std::make_shared<vorx::vcc::ReplyChannel>(driver_, provider, call));
}

bool MethodServer::PublishPayload(uint32_t entityId, vorx::vcc::Payload payload) {
    vorx::vcc::ProviderId provider = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        provider = provider_;
    }
    if (provider == 0) {
        return false;
    }
    vorx::vcc::EventSample sample;
    sample.entityId = entityId;
    sample.payload = std::move(payload);
    return driver_->Publish(provider, std::move(sample));
}

}  // namespace orx::maintaind::daemon
